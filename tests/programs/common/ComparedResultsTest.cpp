/// velmora-compare with two results of one camera.
#include <gtest/gtest.h>

#include "JSON.h"
#include "Process.h"

namespace {

using support::Process;
constexpr std::chrono::minutes LONG_ENOUGH{2};

class ComparedResults : public ::testing::Test {
 protected:
  void Write(const std::string& name, double focalLength, double cx, int width = 640) const {
    JSON result;
    result.addInt("imgWidth", width);
    result.addInt("imgHeight", 480);
    result.addDouble("error", 0.1);
    result.addMat("cameraMatrix",
                  (cv::Mat_<double>(3, 3) << focalLength, 0.0, cx, 0.0, focalLength, 240.0, 0.0, 0.0, 1.0));
    result.addMat("distCoefs", cv::Mat::zeros(1, 5, CV_64F));
    ASSERT_TRUE(result.save(folder_.File(name)));
  }
  std::string Compared(const std::string& first, const std::string& second, int status = 0) const {
    Process tool({VELMORA_COMPARE, folder_.File(first), folder_.File(second)});
    EXPECT_EQ(tool.WaitForExit(LONG_ENOUGH), status);
    return tool.Output() + tool.Errors();
  }

  support::TemporaryFolder folder_;
};

TEST_F(ComparedResults, AreShownBesideEachOtherWithTheirDistance) {
  Write("before.json", 500.0, 320.0);
  Write("after.json", 505.0, 321.0);
  const std::string text = Compared("after.json", "before.json");
  EXPECT_NE(text.find("result |          other |   difference"), std::string::npos) << text;
  EXPECT_NE(text.find("fx         505.000000 |     500.000000 |     5.000000  (1.0000 %)"), std::string::npos)
      << text;
  EXPECT_NE(text.find("  after the best rotation of the camera mean    "), std::string::npos) << text;
}

TEST_F(ComparedResults, OfTheSameLensAreNotApart) {
  Write("before.json", 500.0, 320.0);
  const std::string text = Compared("before.json", "before.json");
  EXPECT_NE(text.find("after the best rotation of the camera mean    0.0000 px | max    0.0000 px"),
            std::string::npos)
      << text;
}

TEST_F(ComparedResults, AreOfImagesOfOneSize) {
  Write("before.json", 500.0, 320.0);
  Write("small.json", 250.0, 160.0, 320);
  EXPECT_EQ(Compared("small.json", "before.json", 2),
            "ERROR: the results are of images of different sizes.\n");
}

}  // namespace
