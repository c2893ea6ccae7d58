/// Keeps the video libraries from writing to the console beside the programs' own lines.
#include "common/LibraryNoise.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <mutex>

#if __has_include(<opencv2/core/utils/logger.hpp>)
#include <opencv2/core/utils/logger.hpp>
#define VELMORA_HAS_LIBRARY_LOG 1
#endif

namespace common {

namespace {

bool UserWantsLibraryLog() {
  return std::getenv("OPENCV_LOG_LEVEL") != nullptr;
}

/// Who mutes now, of all threads.
struct Mutes {
  std::mutex lock;
  int count = 0;
  int saved = -1;  ///< what standard error was; -1 when it was left alone
};

Mutes mutes;

int CopyOf(int file) {
  return fcntl(file, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
}

/// Standard error goes nowhere from now on. What it was; -1 when it still is that.
int Divert() {
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (nowhere < 0) return -1;
  const int saved = CopyOf(STDERR_FILENO);
  if (saved >= 0) dup2(nowhere, STDERR_FILENO);
  close(nowhere);
  return saved;
}

/// A copy of what standard error is, whether it is muted now or not.
int UnmutedStandardError() {
  const std::lock_guard<std::mutex> lock(mutes.lock);
  return CopyOf(mutes.saved >= 0 ? mutes.saved : STDERR_FILENO);
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
  const std::lock_guard<std::mutex> lock(mutes.lock);
  counted_ = true;
  if (mutes.count++ == 0) mutes.saved = Divert();
}

MutedStandardError::~MutedStandardError() {
  if (!counted_) return;
  const std::lock_guard<std::mutex> lock(mutes.lock);
  if (--mutes.count > 0 || mutes.saved < 0) return;
  dup2(mutes.saved, STDERR_FILENO);
  close(mutes.saved);
  mutes.saved = -1;
}

StandardErrorStream::StandardErrorStream() : std::ostream(nullptr), buffer_(UnmutedStandardError()) {
  rdbuf(&buffer_);
}

StandardErrorStream::Buffer::~Buffer() {
  Buffer::sync();
  if (file_ >= 0) close(file_);
}

int StandardErrorStream::Buffer::overflow(int letter) {
  if (letter != traits_type::eof()) text_.push_back(traits_type::to_char_type(letter));
  return traits_type::not_eof(letter);
}

std::streamsize StandardErrorStream::Buffer::xsputn(const char* text, std::streamsize length) {
  text_.append(text, static_cast<size_t>(length));
  return length;
}

int StandardErrorStream::Buffer::sync() {
  size_t written = 0;
  while (written < text_.size()) {
    const ssize_t now = ::write(file_, text_.data() + written, text_.size() - written);
    if (now < 0 && errno == EINTR) continue;
    if (now <= 0) break;
    written += static_cast<size_t>(now);
  }
  const bool all = written == text_.size();
  text_.clear();
  return all ? 0 : -1;
}

}  // namespace common
