/// Runs the tests of cameras with the fake device preloaded.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <opencv2/core.hpp>
#include <string>

namespace {

void Append(const char* variable, const std::string& text) {
  const char* earlier = std::getenv(variable);
  setenv(variable, (earlier == nullptr ? text : std::string(earlier) + ":" + text).c_str(), 1);
}

/// The loader takes in what is to be preloaded when a program starts, so this one starts once more.
void StartAgainWithFakeDevice(char** argv) {
  setenv("LD_PRELOAD", VELMORA_FAKE_CAMERA, 1);
  Append("ASAN_OPTIONS", "verify_asan_link_order=0");
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
