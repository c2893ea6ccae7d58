/// The search of the pose behind given pixels.
#include "Reach.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "Cameras.h"
#include "Views.h"

namespace {

using namespace world;  // NOLINT

const std::vector<double> DISTORTION = {-0.2, 0.06, 0.0008, -0.0006, -0.008};

TEST(Reach, FindsThePoseOfItsOwnPicture) {
  const Camera camera = CameraFromFieldOfView({640, 480}, 65.0, DISTORTION);
  const Sheet sheet;
  for (const Pose& pose : SpreadViews(camera, 12, sheet)) {
    const Pose found = PoseNearest(camera, sheet, TrueCentres(camera.lens, sheet, pose));
    EXPECT_LT(cv::norm(found.rvec - pose.rvec), 1e-5);
    EXPECT_LT(cv::norm(found.tvec - pose.tvec), 1e-5);
  }
}

TEST(Reach, FindsThePoseBeforeAFisheye) {
  const Sheet sheet;
  for (const Camera& camera : ManyFisheyes()) {
    for (const Pose& pose : SampleViews(camera, 12, 4, sheet)) {
      const Pose found = PoseNearest(camera, sheet, TrueCentres(camera.lens, sheet, pose));
      const auto expected = ToCamera(sheet.GridPoints(), pose);
      const auto reached = ToCamera(sheet.GridPoints(), found);
      for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_LT(cv::norm(reached[i] - expected[i]), 1e-5);
    }
  }
}

TEST(Reach, ComesNearThePictureOfAnotherCamera) {
  const Camera other = CameraFromFieldOfView({640, 480}, 64.0);
  const Camera camera = CameraFromFieldOfView({640, 480}, 75.0, DISTORTION);
  const Sheet sheet;
  const auto wanted = TrueCentres(other.lens, sheet, SpreadViews(other, 1, sheet).front());
  const auto reached = TrueCentres(camera.lens, sheet, PoseNearest(camera, sheet, wanted));
  ASSERT_EQ(reached.size(), wanted.size());
  for (std::size_t i = 0; i < wanted.size(); ++i) EXPECT_LT(cv::norm(reached[i] - wanted[i]), 12.0);
}

TEST(Reach, RefusesWhatNoSheetLooksLike) {
  const Camera camera = CameraFromFieldOfView({640, 480}, 65.0);
  const Sheet sheet;
  auto centres = TrueCentres(camera.lens, sheet, SpreadViews(camera, 1, sheet).front());
  auto mirrored = centres;
  for (cv::Point2d& centre : mirrored) centre.x = 639.0 - centre.x;
  EXPECT_THROW(PoseNearest(camera, sheet, mirrored), std::runtime_error);
  centres.pop_back();
  EXPECT_THROW(PoseNearest(camera, sheet, centres), std::runtime_error);
}

}  // namespace
