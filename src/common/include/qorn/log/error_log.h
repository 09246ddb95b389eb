#pragma once

#include <ostream>
#include <sstream>
#include <string_view>

namespace qorn::log {

/// The highest level that ErrorLog delivers: syslog priorities, 1 alert to 7 debug.
extern int LOG_LEVEL;
/// Where ErrorLog delivers: 0 the standard error stream, anything else syslog.
extern int LOG_OUTPUT;

/// Levels by name, for the callers of ErrorLog.
namespace level {
inline constexpr int ERROR = 3;
inline constexpr int WARNING = 4;
inline constexpr int NOTICE = 5;
inline constexpr int INFO = 6;
inline constexpr int DEBUG = 7;
}  // namespace level

/// One diagnostic message. It is delivered, with a line end behind it and nothing before it,
/// when the object goes and its level is not above LOG_LEVEL.
class ErrorLog : public std::stringstream {
 public:
  explicit ErrorLog(int message_level);
  /// The place in the sources is not part of the message.
  ErrorLog(const char* file, const char* function, unsigned int line, int message_level);
  ErrorLog(const ErrorLog&) = delete;
  ErrorLog& operator=(const ErrorLog&) = delete;
  ~ErrorLog() override;

  std::ostream& stream() { return *this; }

  int level;
};

/// Delivers `words` and `value`, joined, as one message at level 7. Cheap while that level isn't
/// shown: for lines that are written once for each document or edge.
void debug(std::string_view words, std::string_view value = {});

}  // namespace qorn::log
