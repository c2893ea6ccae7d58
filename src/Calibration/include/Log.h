/// Console log with one process-wide verbosity level.
#pragma once

#include "Export.h"

/// Each line is a fixed-width level prefix, the message, a newline and a flush, all on standard output.
/// All functions are thread-safe; a line is printed when LOG_LEVEL is at least its level. The format and its
/// arguments are those of printf.
namespace Log {

constexpr int ERROR_LEVEL = 1;
constexpr int WARN_LEVEL = 2;
constexpr int INFO_LEVEL = 3;
constexpr int DEBUG_LEVEL = 4;
constexpr int TRACE_LEVEL = 5;

/// A whole number that is read and written whole, by any thread at any time.
class VELMORA_API Level {
 public:
  // Used like the number that it is.
  operator int() const;  // NOLINT(google-explicit-constructor)
  Level& operator=(int value);
};

/// 0 silences everything, 5 prints everything. Initially 4. Set through Calibration::SetLogLevel.
VELMORA_API extern Level LOG_LEVEL;

#if defined(__GNUC__)
#define VELMORA_PRINTF_LIKE __attribute__((format(printf, 1, 2)))
#else
#define VELMORA_PRINTF_LIKE
#endif

VELMORA_API void error(const char* format, ...) VELMORA_PRINTF_LIKE;
VELMORA_API void warn(const char* format, ...) VELMORA_PRINTF_LIKE;
VELMORA_API void info(const char* format, ...) VELMORA_PRINTF_LIKE;
VELMORA_API void debug(const char* format, ...) VELMORA_PRINTF_LIKE;
VELMORA_API void trace(const char* format, ...) VELMORA_PRINTF_LIKE;

#undef VELMORA_PRINTF_LIKE

}  // namespace Log
