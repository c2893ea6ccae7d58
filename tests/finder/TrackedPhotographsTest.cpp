/// Following the grid through sequences made of photographs. Skipped where the photographs are absent.
#include <gtest/gtest.h>

#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "finder/Sequences.h"

namespace {

constexpr int FRAMES = 8;

class TrackedPhotographs : public ::testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    if (!std::filesystem::is_directory(VELMORA_SHARED_DATA)) {
      GTEST_SKIP() << "no photographs at " << VELMORA_SHARED_DATA;
    }
  }

  static std::vector<cv::Mat> Photographs() {
    std::vector<cv::String> files;
    cv::glob(std::string(VELMORA_SHARED_DATA) + "/" + GetParam(), files);
    std::vector<cv::Mat> photographs;
    for (const cv::String& file : files) {
      const cv::Mat photograph = cv::imread(file);
      if (photograph.empty()) continue;
      // As wide or high as the frame, and cut to it.
      const double scale = std::max(640.0 / photograph.cols, 480.0 / photograph.rows);
      cv::Mat scaled;
      cv::resize(photograph, scaled, cv::Size(), scale, scale, cv::INTER_AREA);
      photographs.push_back(
          scaled(cv::Rect((scaled.cols - 640) / 2, (scaled.rows - 480) / 2, 640, 480)).clone());
    }
    return photographs;
  }
};

/// The photograph as a camera that moves a little sees it in frame k.
cv::Mat Moved(const cv::Mat& photograph, int k) {
  const double angle = 0.02 * std::sin(0.7 * k);
  const double scale = 1.0 + 0.02 * std::sin(0.4 * k);
  const double lean = 2e-5 * std::sin(0.5 * k);
  const cv::Matx33d toMiddle(1, 0, -320, 0, 1, -240, 0, 0, 1);
  const cv::Matx33d move(scale * std::cos(angle), -scale * std::sin(angle), 320 + 5 * std::sin(0.3 * k),
                         scale * std::sin(angle), scale * std::cos(angle), 240 + 4 * std::sin(0.6 * k), lean,
                         -lean, 1);
  cv::Mat frame;
  cv::warpPerspective(photograph, frame, move * toMiddle, photograph.size(), cv::INTER_LINEAR,
                      cv::BORDER_REPLICATE);
  return frame;
}

TEST_P(TrackedPhotographs, AreFollowedToTheCentresThatASearchOfEachFrameFinds) {
  const std::vector<cv::Mat> photographs = Photographs();
  ASSERT_FALSE(photographs.empty());
  int found = 0;
  int followed = 0;
  for (size_t number = 0; number < photographs.size(); ++number) {
    SCOPED_TRACE(number);
    const unit::FollowedFrames all =
        unit::Follow(FRAMES, [&](int k) { return Moved(photographs[number], k); });
    EXPECT_EQ(all.otherFaults, 0);
    EXPECT_LT(all.farthest, 1e-3);
    found += all.found;
    followed += all.followed;
  }
  EXPECT_GT(found, 0.7 * FRAMES * static_cast<double>(photographs.size()));
  // Not the first frame of each.
  EXPECT_GT(followed, 0.7 * found);
}

INSTANTIATE_TEST_SUITE_P(Of, TrackedPhotographs,
                         ::testing::Values("office-4x11/*.jpg", "flat-4x11/*.png",
                                           "endoscope-stereo-4x11/left/*.png",
                                           "endoscope-stereo-4x11/right/*.png"));

}  // namespace
