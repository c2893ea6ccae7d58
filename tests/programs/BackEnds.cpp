/// Keeps these tests away from capture back ends whose libraries leak while they look around for sources.
#include <gtest/gtest.h>

#include <cstdlib>

namespace {

class BackEnds : public testing::Environment {
 public:
  // The capture library reads these when it is first asked to open something.
  void SetUp() override {
    setenv("OPENCV_VIDEOIO_PRIORITY_GSTREAMER", "0", 1);
    setenv("OPENCV_VIDEOIO_PRIORITY_GPHOTO2", "0", 1);
  }
};

const testing::Environment* const BACK_ENDS = testing::AddGlobalTestEnvironment(new BackEnds);

}  // namespace
