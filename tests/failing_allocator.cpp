// For LD_PRELOAD: the N-th allocation behind the start of main fails, once. QORN_FAILING is "new:N"
// for operator new or "libxml2:N" for what libxml2 allocates; N of 0 fails none. At its end, and
// when it crashes, the program writes a line to the file that QORN_FAILING_REPORT names: the number
// of allocations of that kind, or the place of the crash. Whatever crashes once libxml2 has failed
// to allocate while it compiles a schema is libxml2's: version 2.9.14 then writes behind the ends
// of lists that could not grow.

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <new>

#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <link.h>
#include <unistd.h>

// The C library's own names, under which it can be reached.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
}

namespace {

enum class Kind { NONE, NEW, LIBXML2 };

Kind failing = Kind::NONE;
unsigned long failing_number = 0;
unsigned long count = 0;
bool in_main = false;
bool schema_lost = false;  // the failed allocation was for a schema
std::uintptr_t libxml2_start = 0;
std::uintptr_t libxml2_end = 0;

bool is_turn() {
  return ++count == failing_number;
}

bool called_by_libxml2(const void* caller) {
  const auto address = reinterpret_cast<std::uintptr_t>(caller);
  return address >= libxml2_start && address < libxml2_end;
}

bool compiles_schema() {
  void* frames[64];
  const int depth = backtrace(frames, 64);
  return std::any_of(frames, frames + depth, [](const void* frame) {
    Dl_info info{};
    return dladdr(frame, &info) != 0 && info.dli_sname != nullptr &&
           std::strcmp(info.dli_sname, "xmlSchemaParse") == 0;
  });
}

bool fails(const void* caller) {
  if (!in_main || failing != Kind::LIBXML2 || !called_by_libxml2(caller) || !is_turn()) {
    return false;
  }
  schema_lost = compiles_schema();
  errno = ENOMEM;
  return true;
}

void* allocate(std::size_t size) {
  if (in_main && failing == Kind::NEW && is_turn()) {
    throw std::bad_alloc();
  }
  void* block = __libc_malloc(size);
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  return block;
}

void report(const char* words, const char* place) {
  const char* file = std::getenv("QORN_FAILING_REPORT");
  const int descriptor = file == nullptr ? -1 : open(file, O_WRONLY | O_CREAT | O_TRUNC, 0600);
  if (descriptor >= 0) {
    char line[600];  // no allocation: after a crash the heap may be broken
    const int length = std::snprintf(line, sizeof line, "%s%s\n", words, place);
    static_cast<void>(!write(descriptor, line, static_cast<std::size_t>(length)));
    close(descriptor);
  }
}

bool is_part_of(const char* file, const char* library) {
  return std::strstr(file, library) != nullptr;
}

/// Names the innermost function outside the C and C++ libraries and this one.
void report_crash(int signal_number) {
  std::signal(SIGABRT, SIG_DFL);
  std::signal(SIGSEGV, SIG_DFL);
  void* frames[64];
  const int depth = backtrace(frames, 64);
  char place[512] = "an unknown place";
  for (int i = 0; i < depth; ++i) {
    Dl_info info{};
    if (dladdr(frames[i], &info) == 0 || info.dli_fname == nullptr ||
        is_part_of(info.dli_fname, "/libc.so") || is_part_of(info.dli_fname, "libstdc++") ||
        is_part_of(info.dli_fname, "libgcc") || is_part_of(info.dli_fname, "failing_allocator")) {
      continue;
    }
    std::snprintf(place, sizeof place, "%s %s", std::strrchr(info.dli_fname, '/') + 1,
                  info.dli_sname == nullptr ? "+" : info.dli_sname);
    break;
  }
  report(schema_lost ? "crash in libxml2, which had no memory for a schema: " : "crash in ", place);
  _exit(128 + signal_number);
}

int find_libxml2(dl_phdr_info* info, std::size_t /*size*/, void* /*data*/) {
  if (is_part_of(info->dlpi_name, "libxml2.so")) {
    libxml2_start = info->dlpi_addr;
    for (int i = 0; i < info->dlpi_phnum; ++i) {
      const auto& part = info->dlpi_phdr[i];
      if (part.p_type == PT_LOAD) {
        libxml2_end = libxml2_start + part.p_vaddr + part.p_memsz;
      }
    }
  }
  return 0;
}

void prepare() {
  dl_iterate_phdr(find_libxml2, nullptr);
  void* frame = nullptr;
  backtrace(&frame, 1);  // loads what it needs now
  for (const int signal_number : {SIGSEGV, SIGABRT, SIGBUS, SIGFPE, SIGILL}) {
    std::signal(signal_number, report_crash);
  }
  const char* what = std::getenv("QORN_FAILING");
  if (what != nullptr) {
    failing = std::strncmp(what, "new:", 4) == 0 ? Kind::NEW : Kind::LIBXML2;
    failing_number = std::strtoul(std::strchr(what, ':') + 1, nullptr, 10);
  }
}

using Main = int (*)(int, char**, char**);
Main program_main = nullptr;

int counted_main(int argc, char** argv, char** environment) {
  prepare();
  in_main = true;
  const int status = program_main(argc, argv, environment);
  in_main = false;
  char number[32];
  std::snprintf(number, sizeof number, "%lu", count);
  report("allocations: ", number);
  return status;
}

}  // namespace

// The library's other forms of new end here, and its delete in free.
void* operator new(std::size_t size) {
  return allocate(size);
}

extern "C" {

void* malloc(std::size_t size) {
  return fails(__builtin_return_address(0)) ? nullptr : __libc_malloc(size);
}
void* calloc(std::size_t number, std::size_t size) {
  return fails(__builtin_return_address(0)) ? nullptr : __libc_calloc(number, size);
}
void* realloc(void* block, std::size_t size) {
  return fails(__builtin_return_address(0)) ? nullptr : __libc_realloc(block, size);
}

int __libc_start_main(Main main, int argc, char** argv, void (*init)(), void (*fini)(),
                      void (*loader_fini)(), void* stack_end) {
  using Start = int (*)(Main, int, char**, void (*)(), void (*)(), void (*)(), void*);
  program_main = main;
  const auto start = reinterpret_cast<Start>(dlsym(RTLD_NEXT, "__libc_start_main"));
  return start(counted_main, argc, argv, init, fini, loader_fini, stack_end);
}

}  // extern "C"
