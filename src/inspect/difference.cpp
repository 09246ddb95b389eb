#include "difference.h"

#include <algorithm>
#include <iostream>
#include <set>

#include <qorn/str.h>

namespace qorn::inspect {
namespace {

using Json = nlohmann::json;

std::string text_of(const Json& value) {
  return str::printable(value.is_string()
                            ? value.get<std::string>()
                            : value.dump(-1, ' ', false, Json::error_handler_t::replace));
}

/// Lists of records that bear a name of their own are compared by it, whatever their order.
bool is_keyed(const Json& list, const char* key) {
  return list.is_array() && !list.empty() &&
         std::all_of(list.begin(), list.end(), [&](const Json& each) {
           return each.is_object() && each.contains(key) && each[key].is_string();
         });
}

Json keyed(const Json& list, const char* key) {
  Json object = Json::object();
  for (const Json& each : list) {
    std::string name = each[key];
    while (object.contains(name)) {
      name += "'";  // what comes twice is compared in order
    }
    object[name] = each;
  }
  return object;
}

class Comparison {
 public:
  explicit Comparison(DifferencePrinter& printer) : printer_(printer) {}

  void compare(const std::string& name, const Json& a, const Json& b) {
    if (a == b) {
      return;
    }
    if (a.is_object() && b.is_object()) {
      return compare_objects(name, a, b);
    }
    for (const char* key : {"name", "path", "id"}) {
      if ((is_keyed(a, key) || a == Json::array()) && (is_keyed(b, key) || b == Json::array())) {
        return compare_objects(name, keyed(a, key), keyed(b, key));
      }
    }
    if (a.is_array() && b.is_array()) {
      return compare_lists(name, a, b);
    }
    printer_.changed(str::printable(name), text_of(a), text_of(b));
  }

 private:
  void compare_objects(const std::string& name, const Json& a, const Json& b) {
    const std::string prefix = name.empty() ? "" : name + ".";
    for (const auto& [key, value] : a.items()) {
      if (!b.contains(key)) {
        printer_.removed(str::printable(prefix + key) + short_text(value));
      } else {
        compare(prefix + key, value, b[key]);
      }
    }
    for (const auto& [key, value] : b.items()) {
      if (!a.contains(key)) {
        printer_.added(str::printable(prefix + key) + short_text(value));
      }
    }
  }

  /// Records stand for themselves by their name; their content would fill the screen.
  static std::string short_text(const Json& value) {
    return value.is_object() || value.is_array() ? "" : " = " + text_of(value);
  }

  void compare_lists(const std::string& name, const Json& a, const Json& b) {
    const std::multiset<Json> in_a(a.begin(), a.end());
    const std::multiset<Json> in_b(b.begin(), b.end());
    if (in_a == in_b) {
      return printer_.changed(str::printable(name), text_of(a), text_of(b) + " (order)");
    }
    std::vector<Json> only;
    std::set_difference(in_a.begin(), in_a.end(), in_b.begin(), in_b.end(),
                        std::back_inserter(only));
    for (const Json& each : only) {
      printer_.removed(str::printable(name) + ": " + text_of(each));
    }
    only.clear();
    std::set_difference(in_b.begin(), in_b.end(), in_a.begin(), in_a.end(),
                        std::back_inserter(only));
    for (const Json& each : only) {
      printer_.added(str::printable(name) + ": " + text_of(each));
    }
  }

  DifferencePrinter& printer_;
};

}  // namespace

void DifferencePrinter::print(Terminal::Color color, const std::string& line) {
  if (!title_.empty()) {
    std::cout << title_ << '\n';
    title_.clear();
  }
  std::cout << terminal_.paint(color, line) << '\n';
  found_any_ = true;
}

void compare_json(const std::string& name, const Json& a, const Json& b,
                  DifferencePrinter& printer) {
  Comparison(printer).compare(name, a, b);
}

}  // namespace qorn::inspect
