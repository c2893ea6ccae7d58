/// The widths of edges, told by the blur that was rendered.
#include "assistant/EdgeBlur.h"

#include <gtest/gtest.h>

#include <cmath>

#include "assistant/GuideScenes.h"

using namespace velmora;

namespace {

const cv::Size FRAME(1280, 720);
const cv::Size GRID(4, 11);

class Edges : public ::testing::Test {
 protected:
  EdgeBlur Measured(const cv::Mat& image) const {
    EdgeBlur blur;
    EXPECT_TRUE(MeasureEdgeBlur(image, GRID, unit::CentresAt(camera_, pose_), {}, blur));
    return blur;
  }

  const world::Camera camera_ = unit::UsualCamera(FRAME);
  const world::Pose pose_ = unit::PoseAtTarget(unit::GuideWithPoses(FRAME), camera_);
};

TEST_F(Edges, AreAsWideAsTheBlurThatMadeThem) {
  for (const double sigma : {1.0, 2.0, 4.0}) {
    const EdgeBlur blur = Measured(unit::RenderedAt(camera_, pose_, sigma));
    // A pixel's own extent comes on top, about half of one.
    const double expected = std::hypot(sigma, 0.5);
    EXPECT_NEAR(blur.least, expected, 0.12 + 0.04 * sigma);
    EXPECT_NEAR(blur.most, expected, 0.12 + 0.04 * sigma);
    EXPECT_LT(blur.OneSided(), 0.3 * blur.most);
  }
}

TEST_F(Edges, StayNarrowUnderTheNoiseOfAWebcam) {
  EXPECT_LT(Measured(unit::RenderedAt(camera_, pose_, 0.7, 10.0)).most, 1.1);
}

TEST_F(Edges, TellTheRadiusOfTheDiscs) {
  const double width = cv::norm(unit::CentresAt(camera_, pose_)[4] - unit::CentresAt(camera_, pose_)[0]);
  // Neighbours in a diagonal are the root of two steps apart.
  EXPECT_NEAR(Measured(unit::RenderedAt(camera_, pose_, 1.0)).radius,
              world::Sheet::DISC_RADIUS * width / std::sqrt(2.0), 1.0);
}

TEST_F(Edges, AreWidestAcrossTheWayOfAMovement) {
  const double depth = pose_.tvec[2];
  for (const cv::Vec3d& direction : {cv::Vec3d(1.0, 0.0, 0.0), cv::Vec3d(0.0, 1.0, 0.0)}) {
    const double pixels = 12.0;
    const double focal = camera_.lens.K()(0, 0);
    const EdgeBlur blur = Measured(unit::SmearedAt(camera_, pose_, pixels * depth / focal * direction));
    EXPECT_NEAR(blur.OneSided(), 0.33 * pixels, 0.06 * pixels);
    EXPECT_LT(blur.least, 1.4);
  }
}

TEST_F(Edges, AreNotThereWithoutContrast) {
  const cv::Mat fog(FRAME, CV_8UC1, cv::Scalar(120));
  EdgeBlur blur;
  EXPECT_FALSE(MeasureEdgeBlur(fog, GRID, unit::CentresAt(camera_, pose_), {}, blur));
}

TEST_F(Edges, OfCirclesThatAreNotSeenDoNotCount) {
  const std::vector<cv::Point2d> centres = unit::CentresAt(camera_, pose_);
  cv::Mat image = unit::RenderedAt(camera_, pose_, 0.7);
  // All but the last rows are out of focus.
  const cv::Mat soft = unit::RenderedAt(camera_, pose_, 5.0);
  std::vector<double> weights(centres.size(), 0.0);
  for (size_t i = 32; i < centres.size(); ++i) weights[i] = 1.0;
  cv::Mat mask = cv::Mat::zeros(FRAME, CV_8UC1);
  for (size_t i = 0; i < 32; ++i)
    cv::Mat(mask, cv::Rect(cv::Point(centres[i]) - cv::Point(35, 35), cv::Size(70, 70)) & cv::Rect({}, FRAME))
        .setTo(255);
  for (size_t i = 32; i < centres.size(); ++i)
    cv::Mat(mask, cv::Rect(cv::Point(centres[i]) - cv::Point(35, 35), cv::Size(70, 70)) & cv::Rect({}, FRAME))
        .setTo(0);
  soft.copyTo(image, mask);
  EdgeBlur all;
  EdgeBlur seen;
  ASSERT_TRUE(MeasureEdgeBlur(image, GRID, centres, {}, all));
  ASSERT_TRUE(MeasureEdgeBlur(image, GRID, centres, weights, seen));
  EXPECT_GT(all.least, 3.0);
  EXPECT_LT(seen.most, 1.4);
}

}  // namespace
