/// Which images are taken for a chessboard's.
#include "batch/Chessboard.h"

#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#include "Renderer.h"
#include "Views.h"

namespace {

/// A board of 9 x 6 fields, seen from the side.
cv::Mat Board(double rotation) {
  constexpr int FIELD = 40;
  cv::Mat flat(8 * FIELD, 11 * FIELD, CV_8UC3, cv::Scalar::all(230));
  for (int row = 0; row < 6; ++row) {
    for (int column = 0; column < 9; ++column) {
      if ((row + column) % 2 == 0) {
        flat(cv::Rect((column + 1) * FIELD, (row + 1) * FIELD, FIELD, FIELD)).setTo(cv::Scalar::all(25));
      }
    }
  }
  const std::vector<cv::Point2f> corners = {{0, 0}, {440, 0}, {440, 320}, {0, 320}};
  const std::vector<cv::Point2f> seen = {{110, 90}, {520, 60}, {560, 400}, {90, 360}};
  const cv::Mat turned = cv::getRotationMatrix2D({220, 160}, rotation, 0.9);
  cv::Mat rotated;
  cv::warpAffine(flat, rotated, turned, flat.size(), cv::INTER_LINEAR, cv::BORDER_CONSTANT,
                 cv::Scalar::all(230));
  cv::Mat image(480, 640, CV_8UC3, cv::Scalar::all(120));
  cv::warpPerspective(rotated, image, cv::getPerspectiveTransform(corners, seen), image.size(),
                      cv::INTER_LINEAR, cv::BORDER_TRANSPARENT);
  cv::Mat noise(image.size(), CV_16SC3);
  cv::RNG(3).fill(noise, cv::RNG::NORMAL, 0.0, 6.0);
  cv::add(image, noise, image, cv::noArray(), CV_8U);
  return image;
}

TEST(Chessboard, IsRecognisedFromTheSideAndTurned) {
  for (const double rotation : {0.0, 20.0, 45.0})
    EXPECT_TRUE(batch::ShowsChessboard(Board(rotation))) << rotation;
  cv::Mat large;
  cv::resize(Board(10.0), large, cv::Size(2560, 1920));
  EXPECT_TRUE(batch::ShowsChessboard(large));
}

TEST(Chessboard, IsNotSeenInPicturesOfTheSheetOrOfOtherThings) {
  world::Scene scene;
  scene.camera = world::CameraFromFieldOfView({640, 480}, 60.0);
  scene.noise = 6.0;
  scene.clutter = 40;
  world::Renderer renderer(scene);
  std::uint64_t number = 0;
  for (const world::Pose& pose : world::SpreadViews(scene.camera, 8)) {
    EXPECT_FALSE(batch::ShowsChessboard(renderer.Render(pose, ++number))) << number;
  }
  EXPECT_FALSE(batch::ShowsChessboard(renderer.RenderEmpty()));
  cv::Mat noise(480, 640, CV_8UC3);
  cv::RNG(5).fill(noise, cv::RNG::UNIFORM, 0, 255);
  EXPECT_FALSE(batch::ShowsChessboard(noise));
  EXPECT_FALSE(batch::ShowsChessboard(cv::Mat(480, 640, CV_8UC3, cv::Scalar::all(90))));
  EXPECT_FALSE(batch::ShowsChessboard(cv::Mat(3, 3, CV_8UC1, cv::Scalar::all(90))));
}

}  // namespace
