#pragma once

#include <string>

#include <nlohmann/json.hpp>

#include "terminal.h"

namespace qorn::inspect {

/// Prints differences to std::cout, those of one section under its title once there is one.
class DifferencePrinter {
 public:
  explicit DifferencePrinter(const Terminal& terminal) : terminal_(terminal) {}

  void start(const char* title) { title_ = title; }

  void removed(const std::string& text) { print(Terminal::RED, "  - " + text); }
  void added(const std::string& text) { print(Terminal::GREEN, "  + " + text); }
  void changed(const std::string& name, const std::string& a, const std::string& b) {
    print(Terminal::YELLOW, "  ~ " + name + ": " + a + " -> " + b);
  }

  bool found_any() const { return found_any_; }

 private:
  void print(Terminal::Color color, const std::string& line);

  const Terminal& terminal_;
  std::string title_;
  bool found_any_ = false;
};

/// Prints what differs between two values of a document, called `name`: members of objects one by
/// one, lists of named records by the names, whatever their order, and other lists as a whole.
void compare_json(const std::string& name, const nlohmann::json& a, const nlohmann::json& b,
                  DifferencePrinter& printer);

}  // namespace qorn::inspect
