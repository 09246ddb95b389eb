#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <unordered_set>
#include <utility>

#include <qorn/run_notes.h>

namespace qorn::detail {
#pragma GCC visibility push(hidden)

/// While one lives, what a run notices is noted. Of nested ones the innermost counts.
class NoteScope {
 public:
  /// At most `most` notes of each kind are kept, the rest is counted.
  explicit NoteScope(std::size_t most);
  NoteScope(const NoteScope&) = delete;
  NoteScope& operator=(const NoteScope&) = delete;
  ~NoteScope();

  const RunNotes& notes() const { return notes_; }

  /// Gives the notes away, which are empty from then on.
  RunNotes take_notes() { return std::exchange(notes_, {}); }

  template <typename Note>
  void keep(std::vector<Note> RunNotes::*list, std::size_t RunNotes::Dropped::*dropped, Note note) {
    if ((notes_.*list).size() < most_) {
      (notes_.*list).push_back(std::move(note));
    } else {
      ++(notes_.dropped.*dropped);
    }
  }

  /// Whether `path` wasn't named as that kind so far; from now on it was.
  bool is_new(DocumentKind kind, const std::string& path) {
    return named_[kind].insert(path).second;
  }

  static NoteScope* current;

 private:
  RunNotes notes_;
  std::map<DocumentKind, std::unordered_set<std::string>> named_;
  std::size_t most_;
  NoteScope* outer_;
};

// Outside of a run these do nothing.

void note_opened(const std::string& path);
void note_named(Reference reference);
/// Gives what to note of a file that wasn't named as that kind so far: most are named often.
template <typename Make>
void note_named(DocumentKind kind, const std::string& path, Make make) {
  if (NoteScope::current != nullptr && NoteScope::current->is_new(kind, path)) {
    NoteScope::current->keep(&RunNotes::named, &RunNotes::Dropped::named, make());
  }
}
void note_passed_over(RunNotes::PassedOver passed_over);
void note_setting(RunNotes::Setting setting);

/// While one lives, settings that are noted without a source come from this one.
class SettingSource {
 public:
  explicit SettingSource(std::string source);
  SettingSource(const SettingSource&) = delete;
  SettingSource& operator=(const SettingSource&) = delete;
  ~SettingSource();

  static const std::string& current();

 private:
  std::string source_;
  SettingSource* outer_;
};

#pragma GCC visibility pop
}  // namespace qorn::detail
