/// The headless tool on rendered pictures of fisheyes: from pictures to a camera that is right at all angles.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <string>

#include "FisheyeResult.h"
#include "LensError.h"
#include "Process.h"
#include "TemporaryFolder.h"
#include "Truth.h"

namespace {

using support::Process;
constexpr std::chrono::minutes LONG_ENOUGH{4};
/// What an error of projections may come to at any angle where there are data, pixels.
constexpr double BAR = 0.05;

class FisheyePictures : public ::testing::TestWithParam<int> {
 protected:
  std::string Run(std::vector<std::string> words) {
    Process tool(words);
    EXPECT_EQ(tool.WaitForExit(LONG_ENOUGH), 0) << tool.Errors();
    return tool.Output();
  }

  support::TemporaryFolder folder_;
};

TEST_P(FisheyePictures, MakeACameraThatIsRightAtAllAngles) {
  const std::string views = folder_.File("views");
  const std::string name = folder_.File("camera");
  Run({VELMORA_RENDER, "--fisheye", std::to_string(GetParam()), "--views", "16", "--spread", "--size",
       "1280x960", "--noise", "2", "--seed", "3", "--output", views});
  const std::string told = Run({VELMORA_BATCH, views, "--hdist", "0.2", "--output", name});
  EXPECT_NE(told.find("Model: fisheye"), std::string::npos) << told;

  const FisheyeResult result = FisheyeResult::FromJson(support::ReadText(name + "_fisheye.json"));
  const world::Truth truth = world::LoadTruth(views + "/truth.json");
  EXPECT_LT(result.rms, 0.02);
  std::vector<double> limits;
  for (double angle = 0.0; angle < result.widestAngle; angle += 5.0) limits.push_back(angle);
  ASSERT_GT(limits.size(), 10U);
  const auto bands =
      world::ProjectionDistancesByAngle(truth.lens, world::FisheyeFrom(result.K, result.coefficients),
                                        truth.imageSize, limits, {}, world::Alignment::Rotated);
  for (size_t k = 0; k + 1 < limits.size(); ++k) {
    EXPECT_GT(bands[k].count, 0) << limits[k];
    EXPECT_LT(bands[k].max, BAR) << "from " << limits[k] << " degrees";
  }
}

INSTANTIATE_TEST_SUITE_P(Fields, FisheyePictures, ::testing::Values(120, 150, 180));

}  // namespace
