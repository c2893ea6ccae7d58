/// The headless tool with the two kinds of centres, on views in uneven light.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <opencv2/imgcodecs.hpp>

#include "JSON.h"
#include "LensError.h"
#include "Process.h"
#include "Renderer.h"
#include "TemporaryFolder.h"
#include "Views.h"

namespace {

using support::Process;
constexpr std::chrono::minutes LONG_ENOUGH{4};
constexpr int VIEWS = 8;

/// The picture in light that falls on the sheet through a blind: soft stripes across it.
cv::Mat ThroughABlind(const cv::Mat& image, double phase) {
  cv::Mat lit = image.clone();
  for (int y = 0; y < image.rows; ++y) {
    for (int x = 0; x < image.cols; ++x) {
      const double light = 0.65 + 0.35 * std::sin(2.0 * CV_PI * (x + 0.6 * y) / (0.25 * image.cols) + phase);
      for (int c = 0; c < 3; ++c) {
        lit.at<cv::Vec3b>(y, x)[c] = cv::saturate_cast<uchar>(light * image.at<cv::Vec3b>(y, x)[c]);
      }
    }
  }
  return lit;
}

class CentresProgram : public ::testing::Test {
 protected:
  CentresProgram() {
    scene_.camera = world::CameraFromFieldOfView({1024, 768}, 62.0, {-0.21, 0.06, 0.0008, -0.0006, -0.008});
    scene_.noise = 1.0;
    scene_.blur = 0.7;
    world::Renderer renderer(scene_);
    std::filesystem::create_directory(folder_.File("views"));
    std::uint64_t number = 0;
    for (const world::Pose& pose : world::SpreadViews(scene_.camera, VIEWS)) {
      const cv::Mat lit = ThroughABlind(renderer.Render(pose, number), 1.3 * static_cast<double>(number));
      cv::imwrite(folder_.File("views/" + std::to_string(100 + number) + ".png"), lit);
      ++number;
    }
  }

  /// Root of the mean square of projections' distances over the whole image, pixels.
  double ErrorWith(const std::vector<std::string>& options) {
    const std::string name = folder_.File("result");
    std::vector<std::string> words = {
        VELMORA_BATCH, folder_.File("views"), "--hdist", "0.2", "--model", "classic", "--output", name};
    words.insert(words.end(), options.begin(), options.end());
    Process tool(words);
    EXPECT_EQ(tool.WaitForExit(LONG_ENOUGH), 0) << tool.Errors();
    JSON result;
    EXPECT_TRUE(result.load(name + ".json"));
    return world::MeanProjectionDistance(
               scene_.camera.lens,
               world::LensFrom(result.readMat("cameraMatrix"), result.readMat("distCoefs")),
               scene_.camera.size)
        .rms;
  }

  support::TemporaryFolder folder_;
  world::Scene scene_;
};

TEST_F(CentresProgram, FineOnesAreUsedUnlessPlainOnesAreAskedFor) {
  const double usual = ErrorWith({});
  const double plain = ErrorWith({"--centres", "plain"});
  EXPECT_EQ(ErrorWith({"--centres", "fine"}), usual);
  EXPECT_LT(usual, 0.5 * plain);
}

}  // namespace
