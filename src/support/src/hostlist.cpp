#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>
#include <utility>

#include <qorn/node.h>

#include "node_input.h"

namespace qorn::node {
namespace {

constexpr std::size_t MOST_DIGITS = 18;    // so that every number fits 64 bits
constexpr std::size_t LONGEST_NAME = 253;  // more of a name is never collected

constexpr auto is_digit = [](char c) { return c >= '0' && c <= '9'; };

/// The value of at most MOST_DIGITS digits.
std::uint64_t number_value(std::string_view digits) {
  std::uint64_t value = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), value);
  return value;
}

void append_number(std::string& text, std::uint64_t value, std::size_t width) {
  char digits[MOST_DIGITS + 2];
  const auto length = static_cast<std::size_t>(
      std::to_chars(std::begin(digits), std::end(digits), value).ptr - std::begin(digits));
  text.append(width > length ? width - length : 0, '0').append(digits, length);
}

/// A number or a range of a bracket.
struct Range {
  std::uint64_t first;
  std::uint64_t last;
  std::size_t width;  // shorter numbers are padded with zeros
};

/// A text and the bracket behind it.
struct Part {
  std::string_view text;
  std::vector<Range> ranges;
};

/// One host name or folded name, taken apart.
struct Pattern {
  std::vector<Part> parts;
  std::string_view tail;
  std::size_t count = 0;  // of the names that come out
  std::string reason;     // why it is refused; empty when it isn't
};

/// The numbers of a bracket.
struct Bracket {
  std::vector<Range> ranges;
  std::size_t count = 0;
  std::string reason;  // why it is refused; empty when it isn't
};

/// The pieces between commas that stand outside of brackets.
struct Pieces {
  std::string_view rest;
  bool more = true;

  std::string_view next() {
    std::size_t end = 0;
    for (bool inside = false; end < rest.size() && (inside || rest[end] != ','); ++end) {
      inside = rest[end] == '[' || (inside && rest[end] != ']');
    }
    const std::string_view piece = rest.substr(0, end);
    more = end < rest.size();
    rest.remove_prefix(more ? end + 1 : end);
    return piece;
  }
};

/// Adds a number or a range to `bracket`, which may have `most` numbers.
void add_range(std::string_view text, std::size_t most, Bracket& bracket) {
  const std::size_t dash = std::min(text.find('-'), text.size());
  const std::string_view first = text.substr(0, dash);
  const std::string_view last = dash < text.size() ? text.substr(dash + 1) : first;
  const auto is_number = [](std::string_view digits) {
    return !digits.empty() && std::all_of(digits.begin(), digits.end(), is_digit);
  };
  if (!is_number(first) || !is_number(last)) {
    bracket.reason = "expected a number or a range such as 01-16, found " + quoted(text);
    return;
  }
  if (std::max(first.size(), last.size()) > MOST_DIGITS) {
    bracket.reason = "expected numbers of at most 18 digits, found " + quoted(text);
    return;
  }
  const Range range{number_value(first), number_value(last), first.size()};
  if (range.first > range.last) {
    bracket.reason = "expected the lower end of a range first, found " + quoted(text);
    return;
  }
  const std::size_t numbers = range.last - range.first + 1;
  if (numbers > most - bracket.count) {
    bracket.reason = too_many_hosts();
    return;
  }
  bracket.count += numbers;
  bracket.ranges.push_back(range);
}

/// Reads what stands between brackets.
Bracket parse_bracket(std::string_view text, std::size_t most) {
  Bracket bracket;
  for (std::size_t start = 0; bracket.reason.empty() && start <= text.size();) {
    const std::size_t end = std::min(text.find(',', start), text.size());
    add_range(text.substr(start, end - start), most, bracket);
    start = end + 1;
  }
  return bracket;
}

/// Which number stands in a bracket changes nothing about a name's form but its length.
void append_longest(std::string& name, const std::vector<Range>& ranges) {
  std::uint64_t largest = 0;
  std::size_t width = 0;
  for (const Range& range : ranges) {
    largest = std::max(largest, range.last);
    width = std::max(width, range.width);
  }
  append_number(name, largest, width);
}

/// Takes a name apart that may give `most` names.
Pattern parse_pattern(std::string_view piece, std::size_t most) {
  Pattern pattern;
  pattern.count = 1;
  std::string longest;  // of the names that come out
  std::string_view rest = piece;
  for (std::size_t open = rest.find_first_of("[]");
       open != std::string_view::npos && longest.size() <= LONGEST_NAME;
       open = rest.find_first_of("[]")) {
    const std::size_t close = rest.find(']', open);
    if (close == open || close == std::string_view::npos) {
      pattern.reason =
          close == open ? "expected '[' ahead of ']', found " : "expected ']' behind '[', found ";
      pattern.reason += quoted(piece);
      return pattern;
    }
    Bracket bracket = parse_bracket(rest.substr(open + 1, close - open - 1), most / pattern.count);
    if (!bracket.reason.empty()) {
      pattern.reason = bracket.reason + " in " + quoted(piece);
      return pattern;
    }
    pattern.count *= bracket.count;
    append_longest(longest.append(rest.substr(0, open)), bracket.ranges);
    pattern.parts.push_back({rest.substr(0, open), std::move(bracket.ranges)});
    rest.remove_prefix(close + 1);
  }
  pattern.tail = rest;
  if (!Nodelist::hostname_valid(longest.append(rest.substr(0, LONGEST_NAME + 1)))) {
    pattern.reason = bad_host_name(longest) + (pattern.parts.empty() ? "" : " in " + quoted(piece));
  }
  return pattern;
}

/// Calls `take` with `name` and all that the rest of a pattern gives.
void expand_parts(std::span<const Part> parts, std::string_view tail, std::string& name,
                  const std::function<void(std::string_view)>& take) {
  const std::size_t length = name.size();
  if (parts.empty()) {
    take(name.append(tail));
    name.resize(length);
    return;
  }
  name += parts.front().text;
  const std::size_t start = name.size();
  for (const Range& range : parts.front().ranges) {
    for (std::uint64_t number = range.first; number <= range.last; ++number) {
      append_number(name, number, range.width);
      expand_parts(parts.subspan(1), tail, name, take);
      name.resize(start);
    }
  }
  name.resize(length);
}

/// The length of the digits that `text` starts with.
std::size_t leading_digits(std::string_view text) {
  return static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), is_digit) -
                                  text.begin());
}

/// Orders names byte by byte, but numbers in them by length and value.
bool natural_less(std::string_view a, std::string_view b) {
  while (!a.empty() && !b.empty()) {
    const std::size_t length = leading_digits(a);
    const std::size_t other = leading_digits(b);
    if (length != other && length != 0 && other != 0) {
      return length < other;
    }
    const std::size_t common = std::max<std::size_t>(std::min(length, other), 1);
    if (const int order = a.substr(0, common).compare(b.substr(0, common)); order != 0) {
      return order < 0;
    }
    a.remove_prefix(common);
    b.remove_prefix(common);
  }
  return a.size() < b.size();
}

}  // namespace

HostCount count_hosts(std::string_view hosts) {
  std::size_t count = 0;
  Pieces pieces{hosts};
  for (std::string_view before = hosts; pieces.more;) {
    const std::string_view from_here = pieces.rest;
    const std::string_view piece = pieces.next();
    if (piece.empty()) {
      return {
          0, "expected host names joined by single commas without blanks, found " + quoted(before)};
    }
    before = from_here;
    if (Nodelist::hostname_valid(piece)) {
      ++count;
    } else {
      Pattern pattern = parse_pattern(piece, MOST_HOSTS - count);
      if (!pattern.reason.empty()) {
        return {0, std::move(pattern.reason)};
      }
      count += pattern.count;
    }
    if (count > MOST_HOSTS) {
      return {0, too_many_hosts()};
    }
  }
  return {count, {}};
}

void for_each_host(std::string_view hosts, const std::function<void(std::string_view)>& take) {
  if (hosts.find('[') == std::string_view::npos && hosts.find(',') == std::string_view::npos) {
    return take(hosts);
  }
  std::string name;
  for (Pieces pieces{hosts}; pieces.more;) {
    const std::string_view piece = pieces.next();
    if (piece.find('[') == std::string_view::npos) {
      take(piece);
    } else if (const Pattern pattern = parse_pattern(piece, MOST_HOSTS); pattern.reason.empty()) {
      expand_parts(pattern.parts, pattern.tail, name, take);
    }
  }
}

HostNames expand_hosts(std::string_view hosts) {
  HostNames result;
  HostCount count = count_hosts(hosts);
  result.reason = std::move(count.reason);
  if (result.reason.empty()) {
    result.names.reserve(count.hosts);
    for_each_host(hosts, [&](std::string_view name) { result.names.emplace_back(name); });
  }
  return result;
}

/// Moves the last number of `head`, and the text behind it, into `number` and `tail`; without a
/// number, `number` is empty and all of `head` in `tail`.
void HostFolder::cut_last_number(Fold& fold) {
  fold.number = {};
  std::size_t start = fold.head.size();
  while (start > 0 && fold.number.empty()) {
    std::size_t end = start;
    while (end > 0 && !is_digit(fold.head[end - 1])) {
      --end;
    }
    start = end;
    while (start > 0 && is_digit(fold.head[start - 1])) {
      --start;
    }
    if (end - start <= MOST_DIGITS) {
      fold.number = fold.head.substr(start, end - start);
    }
  }
  fold.last = fold.number;
  fold.tail.insert(0, fold.head.substr(start + fold.number.size()));
  fold.head = fold.head.substr(0, start);
}

/// Counts the number in `expected_` up by one.
void HostFolder::expect_next() {
  const Fold& fold = folds_.back();
  const std::size_t start = fold.head.size();
  for (std::size_t i = start + fold.number.size(); i > start; --i) {
    if (expected_[i - 1] != '9') {
      ++expected_[i - 1];
      return;
    }
    expected_[i - 1] = '0';
  }
  expected_.clear();  // no number, or the next one is longer
}

/// The numbers of `sorted` folds: one alone as it stands, several in brackets.
std::string HostFolder::bracket(const Fold* sorted, std::size_t count) {
  const std::span<const Fold> folds(sorted, count);
  std::string text;
  bool alone = true;
  for (std::size_t start = 0; start < folds.size();) {
    const std::string_view first = folds[start].number;
    std::string_view last = folds[start].last;
    std::uint64_t value = number_value(last);
    std::size_t end = start + 1;
    for (; end < folds.size() && folds[end].number.size() == first.size() &&
           number_value(folds[end].number) <= value + 1;
         ++end) {
      if (const std::uint64_t next = number_value(folds[end].last); next > value) {
        value = next;
        last = folds[end].last;
      }
    }
    text.append(start == 0 ? "" : ",").append(first);
    if (last != first) {
      text.append("-").append(last);
    }
    alone = start == 0 && last == first;
    start = end;
  }
  return alone ? text : "[" + text + "]";
}

/// Unites folds that differ in their number alone; what they have in common is united.
void HostFolder::unite(std::vector<Fold>& folds) {
  std::sort(folds.begin(), folds.end(), [](const Fold& a, const Fold& b) {
    if (const int order = a.head.compare(b.head); order != 0) {
      return order < 0;
    }
    if (const int order = a.tail.compare(b.tail); order != 0) {
      return order < 0;
    }
    return a.number.size() != b.number.size() ? a.number.size() < b.number.size()
                                              : a.number < b.number;
  });
  std::size_t united = 0;
  for (std::size_t start = 0; start < folds.size();) {
    std::size_t end = start + 1;
    while (end < folds.size() && folds[end].head == folds[start].head &&
           folds[end].tail == folds[start].tail) {
      ++end;
    }
    folds[start].tail.insert(0, bracket(&folds[start], end - start));
    std::swap(folds[united++], folds[start]);
    start = end;
  }
  folds.resize(united);
}

void HostFolder::add(std::string_view name) {
  if (!expected_.empty() && name == expected_) {
    Fold& run = folds_.back();
    run.last = name.substr(run.head.size(), run.number.size());
  } else {
    Fold& fold = folds_.emplace_back(Fold{name, name, {}, {}, {}});
    cut_last_number(fold);
    expected_ = name;
  }
  expect_next();
}

std::string HostFolder::fold() {
  expected_.clear();
  std::vector<Fold> done;
  while (!folds_.empty()) {
    const auto end = std::partition(folds_.begin(), folds_.end(),
                                    [](const Fold& fold) { return !fold.number.empty(); });
    done.insert(done.end(), std::move_iterator(end), std::move_iterator(folds_.end()));
    folds_.erase(end, folds_.end());
    unite(folds_);
    std::for_each(folds_.begin(), folds_.end(), cut_last_number);
  }
  std::sort(done.begin(), done.end(),
            [](const Fold& a, const Fold& b) { return natural_less(a.first, b.first); });
  std::string text;
  for (std::size_t i = 0; i < done.size(); ++i) {
    if (i == 0 || done[i].tail != done[i - 1].tail) {
      text.append(i == 0 ? "" : ",").append(done[i].tail);
    }
  }
  return text;
}

std::string fold_hosts(const std::vector<std::string>& names) {
  HostFolder folder;
  for (const std::string& name : names) {
    folder.add(name);
  }
  return folder.fold();
}

}  // namespace qorn::node
