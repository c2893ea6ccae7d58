/// A file system that refuses what other ones do: the program's own functions come before the C library's.
#include "documents/RefusedCalls.h"

#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>

namespace {

std::atomic<int> refusals[3];

/// The C library's function, or the error that is asked for.
template <typename... Arguments>
int Answer(unit::RefusedCall::Call call, const char* name, Arguments... arguments) {
  if (refusals[call] != 0) {
    errno = refusals[call];
    return -1;
  }
  using Function = int (*)(Arguments...);
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name))(arguments...);
}

}  // namespace

extern "C" int rename(const char* from, const char* to) noexcept {
  return Answer(unit::RefusedCall::RENAME, "rename", from, to);
}

extern "C" int fchmod(int descriptor, mode_t mode) noexcept {
  return Answer(unit::RefusedCall::FCHMOD, "fchmod", descriptor, mode);
}

extern "C" int fchown(int descriptor, uid_t user, gid_t group) noexcept {
  return Answer(unit::RefusedCall::FCHOWN, "fchown", descriptor, user, group);
}

namespace unit {

RefusedCall::RefusedCall(Call call, int error) : call_(call) {
  refusals[call] = error;
}

RefusedCall::~RefusedCall() {
  refusals[call_] = 0;
}

}  // namespace unit
