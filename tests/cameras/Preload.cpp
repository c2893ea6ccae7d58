/// Has a program see the fake capture device.
#include "cameras/Preload.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace cameras {

namespace {

/// A sanitizer's runtime, which has to come before anything else that is preloaded; empty without one.
std::string SanitizerRuntime() {
  for (const char* const function : {"__tsan_init", "__asan_init"}) {
    Dl_info info{};
    void* const address = dlsym(RTLD_DEFAULT, function);
    if (address != nullptr && dladdr(address, &info) != 0) return std::string(info.dli_fname) + ":";
  }
  return "";
}

}  // namespace

void PreloadFakeDevice(char** argv) {
  if (std::getenv("LD_PRELOAD") != nullptr) return;
  setenv("LD_PRELOAD", (SanitizerRuntime() + VELMORA_FAKE_CAMERA).c_str(), 1);
  execv("/proc/self/exe", argv);
  std::perror("cannot start again");
  std::exit(1);
}

}  // namespace cameras
