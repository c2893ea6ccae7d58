/// Keeps the video libraries from writing to the console beside the programs' own lines.
#include "common/LibraryNoise.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>

#if __has_include(<opencv2/core/utils/logger.hpp>)
#include <opencv2/core/utils/logger.hpp>
#define VELMORA_HAS_LIBRARY_LOG 1
#endif

namespace common {

namespace {

bool UserWantsLibraryLog() {
  return std::getenv("OPENCV_LOG_LEVEL") != nullptr;
}

}  // namespace

void SilenceLibraries() {
#ifdef VELMORA_HAS_LIBRARY_LOG
  // The library reads the variable while it is loaded, so that setting it here would come too late.
  if (!UserWantsLibraryLog()) cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
#endif
  const char* const silent = "-8";  // FFmpeg's AV_LOG_QUIET
  setenv("OPENCV_FFMPEG_LOGLEVEL", silent, 0);
}

MutedStandardError::MutedStandardError() {
  if (UserWantsLibraryLog()) return;
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (nowhere < 0) return;
  saved_ = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  if (saved_ >= 0) dup2(nowhere, STDERR_FILENO);
  close(nowhere);
}

MutedStandardError::~MutedStandardError() {
  if (saved_ >= 0) {
    dup2(saved_, STDERR_FILENO);
    close(saved_);
  }
}

}  // namespace common
