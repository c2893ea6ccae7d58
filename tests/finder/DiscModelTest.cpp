/// The model of a disc's image, beside pictures of discs.
#include "finder/DiscModel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "finder/DiscPicture.h"

using namespace velmora;

namespace {

using finder::DiscModel;

constexpr double RADIUS = 10.0;
constexpr double BLUR = 0.9;

unit::DiscPicture Picture(double squeezed) {
  unit::DiscPicture picture = unit::PictureOfDisc(RADIUS, BLUR, squeezed);
  picture.centre += cv::Point2d(0.23, -0.31);
  picture.ink = {50.0, {8.0, -11.0}};
  picture.paper = {170.0, {-14.0, 6.0}};
  return picture;
}

/// The unknowns of a picture, with the origin at its centre.
DiscModel::Unknowns UnknownsOf(const unit::DiscPicture& picture) {
  DiscModel::Unknowns unknowns;
  const cv::Matx22d form = picture.outline * (RADIUS * RADIUS);
  unknowns << 0.0, 0.0, form(0, 0), form(1, 1), form(0, 1),
      std::sqrt(picture.blur * picture.blur + 1.0 / 12.0), picture.ink.level, picture.ink.slope[0],
      picture.ink.slope[1], picture.paper.level, picture.paper.slope[0], picture.paper.slope[1];
  return unknowns;
}

/// All pixels within 16 of the centre, by chunks.
std::vector<DiscModel::Pixels> PixelsOf(const unit::DiscPicture& picture) {
  const cv::Mat exposure = unit::Exposure(picture);
  std::vector<DiscModel::Pixels> chunks;
  Eigen::Index filled = DiscModel::CHUNK;
  for (int y = 0; y < exposure.rows; ++y) {
    for (int x = 0; x < exposure.cols; ++x) {
      const cv::Point2d away = cv::Point2d(x, y) - picture.centre;
      if (cv::norm(away) > 16.0) continue;
      if (filled == DiscModel::CHUNK) {
        chunks.emplace_back();
        filled = 0;
      }
      chunks.back().x(filled) = static_cast<float>(away.x);
      chunks.back().y(filled) = static_cast<float>(away.y);
      chunks.back().grade(filled++) = static_cast<float>(exposure.at<double>(y, x));
    }
  }
  if (filled < DiscModel::CHUNK) chunks.pop_back();
  return chunks;
}

DiscModel::Equations EquationsOf(const DiscModel::Unknowns& unknowns, const DiscModel::Pixels& pixels) {
  DiscModel::Equations equations;
  DiscModel::Floats shares;
  DiscModel(RADIUS).Evaluate(unknowns, pixels, equations, shares);
  return equations;
}

float WorstRestOf(const unit::DiscPicture& picture) {
  float worst = 0.0F;
  for (const DiscModel::Pixels& pixels : PixelsOf(picture)) {
    worst = std::max(worst, EquationsOf(UnknownsOf(picture), pixels).col(DiscModel::REST).abs().maxCoeff());
  }
  return worst;
}

TEST(DiscModel, IsWhatACameraSeesOfACircle) {
  EXPECT_LT(WorstRestOf(Picture(1.0)), 0.4F);
}

TEST(DiscModel, IsNearWhatACameraSeesOfAnEllipse) {
  EXPECT_LT(WorstRestOf(Picture(0.7)), 1.5F);
}

TEST(DiscModel, ChangesWithTheUnknownsAsItSays) {
  const unit::DiscPicture picture = Picture(0.9);
  const DiscModel::Unknowns unknowns = UnknownsOf(picture);
  constexpr double STEP = 0.03;
  for (const DiscModel::Pixels& pixels : PixelsOf(picture)) {
    const DiscModel::Equations equations = EquationsOf(unknowns, pixels);
    for (int k = 0; k < DiscModel::UNKNOWNS; ++k) {
      DiscModel::Unknowns change = DiscModel::Unknowns::Zero();
      change(k) = STEP;
      const DiscModel::Floats more = EquationsOf(unknowns + change, pixels).col(DiscModel::REST);
      const DiscModel::Floats less = EquationsOf(unknowns - change, pixels).col(DiscModel::REST);
      const DiscModel::Floats derivative = (less - more) / static_cast<float>(2.0 * STEP);
      const float scale = k < DiscModel::INK ? 60.0F : 1.0F;
      EXPECT_LT((derivative - equations.col(k)).abs().maxCoeff(), 0.1F * scale) << k;
    }
  }
}

TEST(DiscModel, KnowsHowFarFromTheOutlineAPointIs) {
  const unit::DiscPicture circle = Picture(1.0);
  const finder::OutlineDistance distance(UnknownsOf(circle), RADIUS);
  EXPECT_NEAR(distance.Of(13.0F, 0.0F), 3.0F, 1e-4F);
  EXPECT_NEAR(distance.Of(-3.0F, 4.0F), -5.0F, 1e-4F);
  EXPECT_NEAR(distance.Of(6.0F, 8.0F), 0.0F, 1e-4F);
}

}  // namespace
