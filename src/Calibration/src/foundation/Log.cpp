/// The console log.
#include "Log.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>

namespace Log {

namespace {

std::atomic<int> level{DEBUG_LEVEL};

/// The four steps of a line, with the stream locked so that lines of different threads do not mix.
#if defined(__GNUC__)
__attribute__((format(printf, 2, 0)))
#endif
void print(const char* prefix, const char* format, std::va_list arguments) {
  flockfile(stdout);
  std::fputs(prefix, stdout);
  std::vfprintf(stdout, format, arguments);
  std::fputc('\n', stdout);
  std::fflush(stdout);
  funlockfile(stdout);
}

}  // namespace

Level LOG_LEVEL;

Level::operator int() const {
  return level;
}

Level& Level::operator=(int value) {
  level = value;
  return *this;
}

#define VELMORA_LOG_FUNCTION(name, threshold, prefix)                       \
  void name(const char* format, ...) {                                      \
    if (::Log::level.load(std::memory_order_relaxed) < (threshold)) return; \
    std::va_list arguments;                                                 \
    va_start(arguments, format);                                            \
    print(prefix, format, arguments);                                       \
    va_end(arguments);                                                      \
  }

VELMORA_LOG_FUNCTION(error, ERROR_LEVEL, "ERROR : ")
VELMORA_LOG_FUNCTION(warn, WARN_LEVEL, "WARN  : ")
VELMORA_LOG_FUNCTION(info, INFO_LEVEL, "INFO  : ")
VELMORA_LOG_FUNCTION(debug, DEBUG_LEVEL, "DEBUG : ")
VELMORA_LOG_FUNCTION(trace, TRACE_LEVEL, "TRACE : ")

#undef VELMORA_LOG_FUNCTION

}  // namespace Log
