// Runs every file that is named through a fuzz target's entry point, without a fuzzer.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fputs("no input was named\n", stderr);
    return EXIT_FAILURE;
  }
  for (int i = 1; i < argc; ++i) {
    std::ifstream file(argv[i], std::ios::binary);
    const std::string input{std::istreambuf_iterator<char>(file), {}};
    if (!file) {
      std::fprintf(stderr, "can't read %s\n", argv[i]);
      return EXIT_FAILURE;
    }
    std::printf("%s, %zu bytes\n", argv[i], input.size());
    std::fflush(stdout);  // the last line names the input of a crash
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
  }
  return EXIT_SUCCESS;
}
