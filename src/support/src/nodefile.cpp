#include <algorithm>
#include <cstddef>
#include <memory>

#include <sys/mman.h>

#include <qorn/constants.h>
#include <qorn/log/error_log.h>
#include <qorn/node.h>
#include <qorn/str.h>
#include <qorn/str/lines.h>

#include "node_input.h"

namespace qorn::node {
namespace {

constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";
constexpr std::string_view ROLE = "role";
constexpr std::string_view SUBCLUSTER = "subcluster";
/// Words of lines, each counted once for each host: a file that multiplies them is refused.
constexpr std::size_t MOST_WORD_BYTES = std::size_t{1} << 30U;

/// The words behind a keyword.
struct Words {
  std::string_view text;
  std::size_t count = 0;
  std::string_view last;      // the text from the last word on, and what follows it
  bool word_missing = false;  // beside a comma
};

/// What stands behind the hosts of a line.
struct Keywords {
  Words roles;
  Words subcluster;
  std::string reason;  // why it can't be used; empty when it can
};

std::string_view skip_blanks(std::string_view text) {
  std::size_t start = 0;
  while (start < text.size() && is_blank(text[start])) {
    ++start;
  }
  return text.substr(start);
}

/// Cuts the next word, comma or colon off `text`; empty at its end.
std::string_view next_token(std::string_view& text) {
  text = skip_blanks(text);
  const auto ends_word = [](char c) { return is_blank(c) || c == ',' || c == ':'; };
  std::size_t end = 0;
  while (end < text.size() && !ends_word(text[end])) {
    ++end;
  }
  const std::string_view token = text.substr(0, std::max<std::size_t>(end, 1));
  text.remove_prefix(token.size());
  return token;
}

bool colon_follows(std::string_view text) {
  return skip_blanks(text).starts_with(':');
}

bool is_keyword(std::string_view word) {
  return word == ROLE || word == SUBCLUSTER;
}

/// The next token for a message, with the colon that makes it a keyword.
std::string quoted_next(std::string_view rest) {
  const std::string_view token = next_token(rest);
  return token.empty() ? "the end of the line"
                       : quoted(std::string(token) + (colon_follows(rest) ? ":" : ""));
}

/// Cuts the words behind a keyword off `rest`, up to the next keyword or the end of the line.
Words cut_words(std::string_view& rest) {
  const std::string_view all = rest;
  Words words;
  words.last = rest;
  std::string_view ahead = rest;
  for (std::string_view token = next_token(ahead); !token.empty(); token = next_token(ahead)) {
    if (token == ",") {
      const bool is_misplaced = words.count == 0 || words.word_missing;
      words.word_missing = true;
      if (is_misplaced) {
        break;
      }
    } else if (token == ":" || colon_follows(ahead)) {
      break;
    } else {
      words.word_missing = false;
      ++words.count;
      words.last = rest;
    }
    rest = ahead;
  }
  words.text = all.substr(0, all.size() - rest.size());
  return words;
}

/// Why the words can't stand behind that keyword; empty when they can.
std::string refusal(const Words& words, std::string_view keyword, std::string_view rest) {
  if (words.word_missing) {
    return "expected a word on either side of each comma, found " +
           quoted(str::stripws(words.last));
  }
  if (words.count == 0) {
    return "expected a word behind '" + std::string(keyword) + ":', found " + quoted_next(rest);
  }
  if (keyword == SUBCLUSTER && words.count > 1) {
    return "expected one word behind 'subcluster:', found " + quoted(str::stripws(words.text));
  }
  return {};
}

/// Reads what stands behind the hosts: each keyword once, in either order.
Keywords read_keywords(std::string_view rest) {
  Keywords keywords;
  for (rest = skip_blanks(rest); keywords.reason.empty() && !rest.empty();
       rest = skip_blanks(rest)) {
    std::string_view ahead = rest;
    const std::string_view word = next_token(ahead);
    if (!is_keyword(word) || !colon_follows(ahead)) {
      keywords.reason =
          "expected 'role:' or 'subcluster:' behind the hosts, found " + quoted_next(rest);
      return keywords;
    }
    next_token(ahead);
    rest = ahead;
    Words& words = word == ROLE ? keywords.roles : keywords.subcluster;
    if (words.count != 0) {
      keywords.reason = "expected '" + std::string(word) + ":' once on a line, found it twice";
      return keywords;
    }
    words = cut_words(rest);
    keywords.reason = refusal(words, word, rest);
  }
  return keywords;
}

/// Gives the hosts of a line, empty on a blank one; `rest` is what stands behind them.
std::string_view cut_hosts(std::string_view line, std::string_view& rest) {
  line = skip_blanks(line.substr(0, line.find('#')));
  std::size_t end = 0;
  while (end < line.size() && !is_blank(line[end])) {
    ++end;
  }
  rest = skip_blanks(line.substr(end));
  return line.substr(0, end);
}

/// What a line asks for, or why it can't be used.
struct Demand {
  std::size_t hosts = 0;  // 0 for a blank line
  std::size_t word_bytes = 0;
  std::string reason;  // empty for a good line
};

Demand demand_of_words(std::string_view names, std::string_view rest) {
  HostCount count = count_hosts(names);
  if (!count.reason.empty()) {
    return {0, 0, std::move(count.reason)};
  }
  Keywords keywords = read_keywords(rest);
  const Words& roles = keywords.roles;
  const std::size_t bytes =
      roles.count * sizeof(std::string) + roles.text.size() + keywords.subcluster.text.size();
  return {count.hosts, count.hosts * bytes, std::move(keywords.reason)};
}

Demand demand_of(std::string_view line) {
  if (Nodelist::hostname_valid(line)) {  // as most lines of large files
    return {1, 0, {}};
  }
  std::string_view rest;
  const std::string_view names = cut_hosts(line, rest);
  Demand demand = names.empty() ? Demand() : demand_of_words(names, rest);
  if (!demand.reason.empty()) {
    const std::string_view word = next_token(line);
    if (is_keyword(word) && colon_follows(line)) {
      demand.reason = "expected host names ahead of '" + std::string(word) + ":'";
    }
  }
  return demand;
}

/// What the lines so far ask for.
struct Totals {
  std::size_t hosts = 0;
  std::size_t word_bytes = 0;
  bool refused = false;  // the file was found too large: said once

  /// Adds a good line, which is refused when the file is too large with it.
  void add(Demand& line) {
    hosts += line.hosts;
    word_bytes += line.word_bytes;
    if (refused || (hosts <= MOST_HOSTS && word_bytes <= MOST_WORD_BYTES)) {
      return;
    }
    refused = true;
    line.reason = hosts > MOST_HOSTS ? too_many_hosts() + " with this line"
                                     : "expected at most 1 GiB of role and subcluster words for "
                                       "all hosts, found more with this line";
  }
};

std::vector<std::string_view> split_words(const Words& words) {
  std::vector<std::string_view> result;
  result.reserve(words.count);
  std::string_view rest = words.text;
  for (std::string_view word = next_token(rest); !word.empty(); word = next_token(rest)) {
    if (word != ",") {
      result.push_back(word);
    }
  }
  return result;
}

/// Reserves room that is filled at once. In huge pages it costs a page fault for each 2 MiB, not
/// for each 4 KiB, which is a third of the time of reading a large file. Only a hint, and only
/// for what the allocator maps by itself.
void reserve_at_once(std::vector<Node>& nodes, std::size_t count) {
  constexpr std::size_t HUGE_PAGE = std::size_t{2} << 20U;
  constexpr std::size_t LARGE = std::size_t{64} << 20U;
  nodes.reserve(count);
  std::size_t size = nodes.capacity() * sizeof(Node);
  void* start = nodes.data();
  if (size >= LARGE && std::align(HUGE_PAGE, HUGE_PAGE, start, size) != nullptr) {
    madvise(start, size / HUGE_PAGE * HUGE_PAGE, MADV_HUGEPAGE);
  }
}

std::string_view without_mark(std::string_view text) {
  return text.substr(text.starts_with(BYTE_ORDER_MARK) ? BYTE_ORDER_MARK.size() : 0);
}

std::vector<Node> make_nodes(const NodeLines& lines) {
  std::vector<Node> nodes;
  reserve_at_once(nodes, lines.hosts);
  for_each_line(lines, [&](const NodeLine& line) {
    for_each_host(line.hosts, [&](std::string_view name) {
      Node& node = nodes.emplace_back();
      node.subcluster = line.subcluster;
      node.hostname = name;
      node.roles.assign(line.roles.begin(), line.roles.end());
    });
  });
  return nodes;
}

bool is_role(const std::string& word) {
  return std::find(NODE_ROLES.begin(), NODE_ROLES.end(), word) != NODE_ROLES.end();
}

std::map<std::string, int> number_roles() {
  std::map<std::string, int> numbers;
  for (const char* role : NODE_ROLES) {
    numbers.emplace(role, static_cast<int>(numbers.size()));
  }
  return numbers;
}

}  // namespace

const std::map<std::string, int> role_str_map = number_roles();

std::optional<NodeLines> read_lines(const std::string& path,
                                    const std::function<void(const LineFault&)>& take_fault) {
  fs::FileText file = fs::read_file(path, NODE_INPUT);
  if (!file.was_read()) {
    take_fault({0, file.reason});
    return std::nullopt;
  }
  Totals totals;
  bool good = true;
  for (str::Lines lines(without_mark(file.text)); lines.next();) {
    Demand demand = demand_of(lines.line());
    if (demand.reason.empty()) {
      totals.add(demand);
    }
    if (!demand.reason.empty()) {
      take_fault({lines.number(), std::move(demand.reason)});
      good = false;
    }
  }
  return good ? std::optional(NodeLines{std::move(file.text), totals.hosts}) : std::nullopt;
}

void for_each_line(const NodeLines& lines, const std::function<void(const NodeLine&)>& take) {
  NodeLine line;
  std::string_view before;  // the keywords in force: neighbouring lines mostly say the same
  for (str::Lines texts(without_mark(lines.text)); texts.next();) {
    std::string_view rest;
    line.number = texts.number();
    line.hosts = cut_hosts(texts.line(), rest);
    if (rest != before) {
      Keywords keywords = read_keywords(rest);
      line.roles = split_words(keywords.roles);
      line.subcluster = next_token(keywords.subcluster.text);
      before = rest;
    }
    if (!line.hosts.empty()) {
      take(line);
    }
  }
}

bool read_nodefile(const std::string& file, Nodelist& list) {
  const std::string path = str::unescape_blanks(file);
  const auto lines = read_lines(path, [&](const LineFault& fault) {
    const std::string line = fault.line == 0 ? "" : ":" + std::to_string(fault.line);
    log::ErrorLog(log::level::ERROR).stream()
        << str::printable(path) << line << ": " << fault.reason;
  });
  if (!lines) {
    return false;
  }
  list.nodes = make_nodes(*lines);
  return true;
}

void complete_roles(std::vector<std::string>& roles) {
  std::sort(roles.begin(), roles.end());
  if (std::none_of(roles.begin(), roles.end(), is_role)) {
    roles.emplace_back(DEFAULT_ROLE);
  }
}

}  // namespace qorn::node
