#include "xml_faults.h"

#include <algorithm>
#include <set>

#include <qorn/log/error_log.h>
#include <qorn/str.h>

#include "libxml2_versions.h"

namespace qorn::xml {
namespace {

/// A document can have a fault in every element; nobody reads more than these.
constexpr std::size_t MOST_FAULTS = 1000;

/// libxml2's words where they name its own options or functions, said for a document's author.
std::string plain_words(const xmlError& error) {
  const std::string_view words = error.message == nullptr ? "unknown fault" : error.message;
  if (is_about_length(error)) {
    return "a name, a value or a comment is longer than the parser's limit";
  }
  if (words.find("there is at least one entity reference") != std::string_view::npos) {
    return "an entity without a declaration can't be validated";
  }
  return str::stripws(words);
}

}  // namespace

bool FaultCollector::add(Fault fault) {
  fault.file = fault.file.empty() ? file_ : fault.file;
  const auto same = [&](const Fault& other) {
    return other.line == fault.line && other.text == fault.text && other.file == fault.file;
  };
  if (faults_.size() - first_ == MOST_FAULTS) {
    fault = {.file = file_, .text = "further faults are not shown"};
  } else if (faults_.size() - first_ > MOST_FAULTS) {
    return false;
  }
  // libxml2 repeats a fault at once or not at all.
  const auto recent =
      faults_.size() > first_ + 8 ? faults_.end() - 8 : faults_.begin() + static_cast<long>(first_);
  if (std::any_of(recent, faults_.end(), same)) {
    return false;
  }
  faults_.push_back(std::move(fault));
  return true;
}

void FaultCollector::fail(const std::string& reason) {
  check_memory();
  const auto is_error = [](const Fault& f) { return f.severity == Fault::Severity::ERROR; };
  if (std::none_of(faults_.begin() + static_cast<long>(first_), faults_.end(), is_error)) {
    add({.text = reason});
  }
}

void FaultCollector::replace_by(Fault fault) {
  faults_.resize(first_);
  add(std::move(fault));
}

void FaultCollector::take(const xmlError& error) {
  if (ignore_errors_) {
    return;
  }
  Fault fault;
  if (follow_includes_ && error.file != nullptr) {
    fault.file = error.file;
  }
  auto* node = static_cast<xmlNode*>(error.node);
  node = node != nullptr && node->type == XML_ATTRIBUTE_NODE ? node->parent : node;
  const bool has_node = node != nullptr && node->type == XML_ELEMENT_NODE;
  fault.line = std::max(has_node ? xmlGetLineNo(node) : error.line, 0L);
  fault.column = error.domain == XML_FROM_PARSER ? std::max(error.int2, 0) : 0;
  fault.severity = is_warning(error) ? Fault::Severity::WARNING : Fault::Severity::ERROR;
  fault.text = plain_words(error);
  if (add(std::move(fault)) && origins_ != nullptr) {
    origins_->emplace_back(has_node ? node : nullptr, error.code);
  }
}

std::string to_string(const Fault& fault) {
  std::string text = str::printable(fault.file);
  if (fault.line > 0) {
    text.append(":").append(std::to_string(fault.line));
  }
  return text.append(": ").append(str::printable(fault.text));
}

void report(const std::vector<Fault>& faults) {
  std::set<std::string> reported;
  for (const Fault& fault : faults) {
    const std::string line = to_string(fault);
    if (reported.insert(line).second) {
      const bool is_error = fault.severity == Fault::Severity::ERROR;
      log::ErrorLog(is_error ? log::level::ERROR : log::level::WARNING).stream() << line;
    }
  }
}

}  // namespace qorn::xml
