/// Runs the tests of cameras with the fake device preloaded.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <opencv2/core.hpp>
#include <string>

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

/// The loader takes in what is to be preloaded when a program starts, so this one starts once more.
void StartAgainWithFakeDevice(char** argv) {
  setenv("LD_PRELOAD", (SanitizerRuntime() + VELMORA_FAKE_CAMERA).c_str(), 1);
  // This back end looks for cameras first, in vain and with leaks of its own.
  setenv("OPENCV_VIDEOIO_PRIORITY_GSTREAMER", "0", 1);
  execv("/proc/self/exe", argv);
  std::perror("cannot start again");
  std::exit(1);
}

}  // namespace

int main(int argc, char** argv) {
  if (std::getenv("LD_PRELOAD") == nullptr) StartAgainWithFakeDevice(argv);
  if (std::getenv("VELMORA_TEST_SINGLE_THREAD") != nullptr) cv::setNumThreads(1);
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
