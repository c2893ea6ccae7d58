/// Leaves the reading of numbered images to the capture library's own back end: those of other libraries
/// bring threads and leaks of their own.
#include <gtest/gtest.h>

#include <cstdlib>

namespace {

class BackEnds : public testing::Environment {
 public:
  // The capture library reads these when it is first asked to open something.
  void SetUp() override {
    for (const char* variable : {"OPENCV_VIDEOIO_PRIORITY_FFMPEG", "OPENCV_VIDEOIO_PRIORITY_GSTREAMER",
                                 "OPENCV_VIDEOIO_PRIORITY_GPHOTO2"}) {
      setenv(variable, "0", 1);
    }
  }
};

const testing::Environment* const BACK_ENDS = testing::AddGlobalTestEnvironment(new BackEnds);

}  // namespace
