/// Runs the tests of cameras with the fake device preloaded.
#include <gtest/gtest.h>

#include <cstdlib>
#include <opencv2/core.hpp>

#include "cameras/Preload.h"

int main(int argc, char** argv) {
  // These back ends look for cameras of their own, in vain and with leaks.
  setenv("OPENCV_VIDEOIO_PRIORITY_GSTREAMER", "0", 1);
  setenv("OPENCV_VIDEOIO_PRIORITY_GPHOTO2", "0", 1);
  cameras::PreloadFakeDevice(argv);
  if (std::getenv("VELMORA_TEST_SINGLE_THREAD") != nullptr) cv::setNumThreads(1);
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
