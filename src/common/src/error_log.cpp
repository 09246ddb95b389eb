#include <algorithm>
#include <iostream>
#include <limits>
#include <string_view>

#include <syslog.h>

#include <qorn/log/error_log.h>

namespace qorn::log {

int LOG_LEVEL = level::ERROR;
int LOG_OUTPUT = 0;

ErrorLog::ErrorLog(const char* /*file*/, const char* /*function*/, unsigned int /*line*/,
                   int message_level)
    : ErrorLog(message_level) {
}

// Otherwise a stream swallows a failed allocation, and its text just seems to end.
ErrorLog::ErrorLog(int message_level) : level(message_level) {
  exceptions(std::ios_base::badbit);
}

// The text is viewed, not copied: an allocation that fails in a destructor would end the process.
ErrorLog::~ErrorLog() {
  if (level > LOG_LEVEL) {
    return;
  }
  const std::string_view text = rdbuf()->view();
  if (LOG_OUTPUT == 0) {
    std::cerr << text << '\n';
    return;
  }
  constexpr std::size_t MOST = std::numeric_limits<int>::max();
  syslog(level, "%.*s\n", static_cast<int>(std::min(text.size(), MOST)), text.data());
}

void debug(std::string_view words, std::string_view value) {
  if (level::DEBUG <= LOG_LEVEL) {
    ErrorLog(level::DEBUG).stream() << words << value;
  }
}

}  // namespace qorn::log
