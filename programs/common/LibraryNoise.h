/// Keeps the video libraries from writing to the console beside the programs' own lines.
#pragma once

namespace common {

/// Silences the logs of the image and video libraries, unless the user has chosen a level of his own through
/// OPENCV_LOG_LEVEL or OPENCV_FFMPEG_LOGLEVEL. Call it before the first capture is opened.
void SilenceLibraries();

/// Discards what is written to the process's standard error while it lives: some libraries have no level that
/// silences them. Does nothing when the user has set OPENCV_LOG_LEVEL. One at a time, and for short
/// stretches: it holds for all threads.
class MutedStandardError {
 public:
  MutedStandardError();
  ~MutedStandardError();
  MutedStandardError(const MutedStandardError&) = delete;
  MutedStandardError& operator=(const MutedStandardError&) = delete;

 private:
  int saved_ = -1;  ///< what standard error was; -1 when it was left alone
};

}  // namespace common
