#include <qorn/detail/notes.h>

namespace qorn::detail {
namespace {

SettingSource* innermost_source = nullptr;

}  // namespace

NoteScope* NoteScope::current = nullptr;

NoteScope::NoteScope(std::size_t most) : most_(most), outer_(std::exchange(current, this)) {
}

NoteScope::~NoteScope() {
  current = outer_;
}

void note_opened(const std::string& path) {
  if (NoteScope::current != nullptr) {
    NoteScope::current->keep(&RunNotes::opened, &RunNotes::Dropped::opened, path);
  }
}

void note_named(Reference reference) {
  if (NoteScope::current != nullptr && NoteScope::current->is_new(reference.kind, reference.path)) {
    NoteScope::current->keep(&RunNotes::named, &RunNotes::Dropped::named, std::move(reference));
  }
}

void note_passed_over(RunNotes::PassedOver passed_over) {
  if (NoteScope::current != nullptr) {
    NoteScope::current->keep(&RunNotes::passed_over, &RunNotes::Dropped::passed_over,
                             std::move(passed_over));
  }
}

void note_setting(RunNotes::Setting setting) {
  if (NoteScope::current == nullptr) {
    return;
  }
  if (setting.source.empty() && setting.place.file.empty()) {
    setting.source = SettingSource::current();
  }
  NoteScope::current->keep(&RunNotes::settings, &RunNotes::Dropped::settings, std::move(setting));
}

SettingSource::SettingSource(std::string source)
    : source_(std::move(source)), outer_(std::exchange(innermost_source, this)) {
}

SettingSource::~SettingSource() {
  innermost_source = outer_;
}

const std::string& SettingSource::current() {
  static const std::string NONE;
  return innermost_source == nullptr ? NONE : innermost_source->source_;
}

}  // namespace qorn::detail
