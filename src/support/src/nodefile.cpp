#include <algorithm>
#include <cstddef>
#include <memory>

#include <sys/mman.h>

#include <qorn/constants.h>
#include <qorn/log/error_log.h>
#include <qorn/node.h>
#include <qorn/str.h>

#include "node_input.h"

namespace qorn::node {
namespace {

constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";
constexpr std::string_view ROLE = "role";
constexpr std::string_view SUBCLUSTER = "subcluster";
/// Words of lines, each counted once for each host: a file that multiplies them is refused.
constexpr std::size_t MOST_WORD_BYTES = std::size_t{1} << 30U;

/// The words behind a keyword and how many they are.
struct Words {
  std::string_view text;
  std::size_t count = 0;
};

/// What stands behind the hosts of a line.
struct Keywords {
  Words roles;
  Words subcluster;
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
bool read_words(std::string_view keyword, std::string_view& rest, Words& words,
                std::string& reason) {
  const std::string_view all = rest;
  std::string_view last = rest;  // from the last word on, for the message
  bool word_missing = false;     // behind a comma
  std::string_view ahead = rest;
  for (std::string_view token = next_token(ahead); !token.empty(); token = next_token(ahead)) {
    if (token == ",") {
      if (words.count == 0 || word_missing) {
        word_missing = true;
        break;
      }
      word_missing = true;
    } else if (token == ":" || colon_follows(ahead)) {
      break;
    } else {
      word_missing = false;
      ++words.count;
      last = rest;
    }
    rest = ahead;
  }
  words.text = all.substr(0, all.size() - rest.size());
  if (word_missing) {
    reason = "expected a word on either side of each comma, found " + quoted(str::stripws(last));
  } else if (words.count == 0) {
    reason = "expected a word behind '" + std::string(keyword) + ":', found " + quoted_next(rest);
  } else if (keyword == SUBCLUSTER && words.count > 1) {
    reason = "expected one word behind 'subcluster:', found " + quoted(str::stripws(words.text));
  } else {
    return true;
  }
  return false;
}

/// Reads what stands behind the hosts: each keyword once, in either order.
bool read_keywords(std::string_view rest, Keywords& keywords, std::string& reason) {
  for (rest = skip_blanks(rest); !rest.empty(); rest = skip_blanks(rest)) {
    std::string_view ahead = rest;
    const std::string_view word = next_token(ahead);
    if (!is_keyword(word) || !colon_follows(ahead)) {
      reason = "expected 'role:' or 'subcluster:' behind the hosts, found " + quoted_next(rest);
      return false;
    }
    next_token(ahead);
    rest = ahead;
    Words& words = word == ROLE ? keywords.roles : keywords.subcluster;
    if (words.count != 0) {
      reason = "expected '" + std::string(word) + ":' once on a line, found it twice";
      return false;
    }
    if (!read_words(word, rest, words, reason)) {
      return false;
    }
  }
  return true;
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

/// What the lines so far ask for.
struct Totals {
  std::size_t hosts = 0;
  std::size_t word_bytes = 0;
  bool refused = false;  // the file was found too large: said once
};

bool add_to_totals(std::size_t hosts, const Keywords& keywords, Totals& totals,
                   std::string& reason) {
  totals.hosts += hosts;
  totals.word_bytes += hosts * (keywords.roles.count * sizeof(std::string) +
                                keywords.roles.text.size() + keywords.subcluster.text.size());
  if (totals.refused) {
    return true;
  }
  totals.refused = true;
  if (totals.hosts > MOST_HOSTS) {
    reason = too_many_hosts() + " with this line";
    return false;
  }
  if (totals.word_bytes > MOST_WORD_BYTES) {
    reason =
        "expected at most 1 GiB of role and subcluster words for all hosts, found more with "
        "this line";
    return false;
  }
  totals.refused = false;
  return true;
}

/// Reads one line; `hosts` is the number of its hosts, 0 for a blank line.
bool read_line(std::string_view line, std::size_t& hosts, Keywords& keywords, std::string& reason) {
  hosts = 1;
  if (Nodelist::hostname_valid(line)) {  // as most lines of large files
    return true;
  }
  std::string_view rest;
  const std::string_view names = cut_hosts(line, rest);
  std::string_view ahead = line;
  if (const std::string_view word = next_token(ahead); is_keyword(word) && colon_follows(ahead)) {
    reason = "expected host names ahead of '" + std::string(word) + ":'";
    return false;
  }
  hosts = 0;
  return names.empty() ||
         (count_hosts(names, hosts, reason) && read_keywords(rest, keywords, reason));
}

/// Logs each faulty line; `hosts` is the number of hosts when there is none.
bool check_lines(const std::string& name, std::string_view content, std::size_t& hosts) {
  Totals totals;
  bool good = true;
  std::string reason;
  for (std::size_t number = 1; !content.empty(); ++number) {
    std::size_t count = 0;
    Keywords keywords;
    if (!read_line(next_line(content), count, keywords, reason) ||
        !add_to_totals(count, keywords, totals, reason)) {
      log::ErrorLog(log::level::ERROR).stream() << name << ':' << number << ": " << reason;
      good = false;
    }
  }
  hosts = totals.hosts;
  return good;
}

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

/// Makes the nodes of lines that were checked.
std::vector<Node> make_nodes(std::string_view content, std::size_t count) {
  std::vector<Node> nodes;
  reserve_at_once(nodes, count);
  std::vector<std::string_view> roles;
  std::string_view subcluster;
  const std::function<void(std::string_view)> add = [&](std::string_view name) {
    Node& node = nodes.emplace_back();
    node.subcluster = subcluster;
    node.hostname = name;
    node.roles.assign(roles.begin(), roles.end());
  };
  std::string_view before;  // the keywords in force: neighbouring lines mostly say the same
  std::string reason;
  while (!content.empty()) {
    std::string_view rest;
    const std::string_view hosts = cut_hosts(next_line(content), rest);
    if (rest != before) {
      Keywords keywords;
      read_keywords(rest, keywords, reason);
      roles = split_words(keywords.roles);
      subcluster = next_token(keywords.subcluster.text);
      before = rest;
    }
    if (!hosts.empty()) {
      for_each_host(hosts, add);
    }
  }
  return nodes;
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

bool read_nodefile(const std::string& file, Nodelist& list) {
  const std::string path = str::unescape_blanks(file);
  const std::string name = str::printable(path);
  std::string content;
  std::string reason;
  if (!read_input(path, content, reason)) {
    log::ErrorLog(log::level::ERROR).stream() << name << ": " << reason;
    return false;
  }
  std::string_view lines = content;
  if (lines.starts_with(BYTE_ORDER_MARK)) {
    lines.remove_prefix(BYTE_ORDER_MARK.size());
  }
  std::size_t hosts = 0;
  if (!check_lines(name, lines, hosts)) {
    return false;
  }
  list.nodes = make_nodes(lines, hosts);
  return true;
}

}  // namespace qorn::node
