/// A disk that refuses, or ends the process, at a step that a test chooses: the program's own functions come
/// before the C library's.
#include "session/DiskSteps.h"

#include <dlfcn.h>
#include <signal.h>
#include <stdio.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>

namespace {

std::atomic<int> stepsLeft{0};  ///< until that at which something happens; 0: nothing does, or did
std::atomic<int> failure{0};    ///< the error; 0: the end of the process

/// Whether this step fails, with errno set.
bool Fails() {
  if (stepsLeft == 0 || --stepsLeft > 0) return false;
  if (failure == 0) kill(getpid(), SIGKILL);
  errno = failure;
  return true;
}

template <typename... Arguments>
int Answer(const char* name, Arguments... arguments) {
  if (Fails()) return -1;
  using Function = int (*)(Arguments...);
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name))(arguments...);
}

}  // namespace

extern "C" int fsync(int descriptor) {
  return Answer("fsync", descriptor);
}

extern "C" int rename(const char* from, const char* to) noexcept {
  return Answer("rename", from, to);
}

namespace unit {

DiskSteps::DiskSteps(int step, int error) {
  failure = error;
  stepsLeft = step;
}

DiskSteps::~DiskSteps() {
  stepsLeft = 0;
}

bool DiskSteps::Came() const {
  return stepsLeft == 0;
}

}  // namespace unit
