/// Keeps a folder to one program at a time.
#include "session/FolderLock.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <thread>
#include <utility>

#include "documents/DurableFile.h"
#include "session/Reasons.h"

namespace velmora {

namespace {

bool Lock(int descriptor) {
  int result = 0;
  do {
    result = flock(descriptor, LOCK_EX | LOCK_NB);
  } while (result != 0 && errno == EINTR);
  return result == 0;
}

/// The process that the file tells, when it lives; else 0.
pid_t LivingHolder(const std::string& path) {
  std::ifstream file(path);
  pid_t number = 0;
  if (!(file >> number) || number <= 0) return 0;
  return kill(number, 0) == 0 || errno == EPERM ? number : 0;
}

bool IsWriteRefused(int error) {
  return error == EACCES || error == EPERM || error == EROFS;
}

}  // namespace

FolderLock::FolderLock(const std::string& path, const std::string& what) : owner_(getpid()) {
  descriptor_ = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
  if (descriptor_ < 0 && IsWriteRefused(errno)) {
    descriptor_ = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor_ < 0 && (errno == ENOENT || IsWriteRefused(errno))) return;
  }
  if (descriptor_ < 0) Refuse("Cannot lock " + what, LastSystemError());
  try {
    Take(path, what);
  } catch (...) {
    close(descriptor_);
    throw;
  }
  // Whom it belongs to is for people; that it is locked does not depend on it.
  if (ftruncate(descriptor_, 0) == 0) WriteAll(descriptor_, std::to_string(owner_) + "\n");
}

void FolderLock::Take(const std::string& path, const std::string& what) const {
  // Whoever took it a moment ago has yet to write its number over that of a dead process.
  constexpr int MOST_TRIES = 100;
  for (int tries = 0; !Lock(descriptor_); ++tries) {
    if (errno != EWOULDBLOCK) Refuse("Cannot lock " + what, LastSystemError());
    const pid_t holder = LivingHolder(path);
    if (holder != 0) {
      throw std::runtime_error(what + " is in use by process " + std::to_string(holder) + ".");
    }
    if (tries == MOST_TRIES) throw std::runtime_error(what + " is in use by another process.");
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

FolderLock::~FolderLock() {
  if (descriptor_ < 0) return;
  // A child that was forked off shares the lock, and must not end it for its parent.
  if (getpid() == owner_) {
    if (ftruncate(descriptor_, 0) != 0) errno = 0;
    flock(descriptor_, LOCK_UN);
  }
  close(descriptor_);
}

FolderLock::FolderLock(FolderLock&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)), owner_(other.owner_) {
}

}  // namespace velmora
