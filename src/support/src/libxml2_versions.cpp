#include "libxml2_versions.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>

#include <libxml/parser.h>

namespace qorn::xml {

std::size_t look_ahead() {
  // Of the library that is there now: 2.9 to 2.13 can take each other's place without a build.
  static const auto version = std::strtol(xmlParserVersion, nullptr, 10);
  return version < 21100 ? 256 : 0;
}

bool is_warning(const xmlError& error) {
  const auto* parser = static_cast<const xmlParserCtxt*>(error.ctxt);
  const bool is_about_content =
      error.code == XML_WAR_UNDECLARED_ENTITY && parser != nullptr && parser->inSubset == 0;
  return error.level == XML_ERR_WARNING && !is_about_content;
}

bool is_about_length(const xmlError& error) {
  // Only from 2.13 on most of them have one number.
  constexpr std::array<std::string_view, 4> WORDS = {"XML_PARSE_HUGE", "Huge input lookup",
                                                     "too long", "too big"};
  const std::string_view text = error.message == nullptr ? "" : error.message;
  return error.domain == XML_FROM_PARSER &&
         std::any_of(WORDS.begin(), WORDS.end(),
                     [&](std::string_view word) { return text.find(word) != text.npos; });
}

}  // namespace qorn::xml
