/// Keeps the video libraries from writing to the console beside the programs' own lines.
#pragma once

#include <ostream>
#include <streambuf>
#include <string>

namespace common {

/// Silences the logs of the image and video libraries, unless the user has chosen a level of his own through
/// OPENCV_LOG_LEVEL or OPENCV_FFMPEG_LOGLEVEL. Call it before the first capture is opened.
void SilenceLibraries();

/// Discards what is written to the process's standard error while it lives: some libraries have no level that
/// silences them. Does nothing when the user has set OPENCV_LOG_LEVEL. It holds for all threads, so for short
/// stretches only; several may live at a time, on any threads, and the last one lets standard error speak
/// again.
class MutedStandardError {
 public:
  MutedStandardError();
  ~MutedStandardError();
  MutedStandardError(const MutedStandardError&) = delete;
  MutedStandardError& operator=(const MutedStandardError&) = delete;

 private:
  bool counted_ = false;  ///< among those that mute
};

/// Standard error as it was when this was made, for what is to be said while other threads mute it. Writes
/// when it is flushed. Of one thread at a time.
class StandardErrorStream : public std::ostream {
 public:
  StandardErrorStream();

 private:
  class Buffer : public std::streambuf {
   public:
    explicit Buffer(int file) : file_(file) {}
    ~Buffer() override;
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

   protected:
    int overflow(int letter) override;
    std::streamsize xsputn(const char* text, std::streamsize length) override;
    int sync() override;

   private:
    const int file_;  ///< negative when there is no standard error
    std::string text_;
  };

  Buffer buffer_;
};

}  // namespace common
