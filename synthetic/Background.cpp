/// Draws cluttered backgrounds and computes uneven light.
#include "Background.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "Seed.h"

namespace world {

namespace {

constexpr std::uint64_t CLUTTER_SEQUENCE = 0x636c7574;
constexpr std::uint64_t LIGHT_SEQUENCE = 0x6c696768;

cv::Scalar RandomColour(cv::RNG& random) {
  const int grey = random.uniform(30, 225);
  const auto channel = [&] { return std::min(255, std::max(0, grey + random.uniform(-35, 36))); };
  const int blue = channel();
  const int green = channel();
  const int red = channel();
  return {static_cast<double>(blue), static_cast<double>(green), static_cast<double>(red)};
}

cv::Point RandomPoint(cv::RNG& random, cv::Size size) {
  const int x = random.uniform(0, size.width);
  const int y = random.uniform(0, size.height);
  return {x, y};
}

void DrawPolygon(cv::Mat& image, cv::RNG& random, double reach) {
  const cv::Point middle = RandomPoint(random, image.size());
  const int corners = random.uniform(3, 8);
  std::vector<cv::Point> polygon;
  for (int k = 0; k < corners; ++k) {
    const double radius = random.uniform(0.3, 1.0) * reach;
    const double angle = 2.0 * CV_PI * (k + random.uniform(-0.3, 0.3)) / corners;
    polygon.emplace_back(middle.x + cvRound(radius * std::cos(angle)),
                         middle.y + cvRound(radius * std::sin(angle)));
  }
  const std::vector<std::vector<cv::Point>> polygons = {polygon};
  cv::fillPoly(image, polygons, RandomColour(random), cv::LINE_AA);
}

void DrawObject(cv::Mat& image, cv::RNG& random) {
  const double extent = std::max(image.cols, image.rows);
  switch (random.uniform(0, 4)) {
    case 0: {
      const cv::Point middle = RandomPoint(random, image.size());
      const int radius = cvRound(extent * random.uniform(0.008, 0.07)) + 1;
      cv::circle(image, middle, radius, RandomColour(random), cv::FILLED, cv::LINE_AA);
      break;
    }
    case 1: {
      const cv::Point from = RandomPoint(random, image.size());
      const cv::Point to = RandomPoint(random, image.size());
      const int thickness = 1 + cvRound(extent * random.uniform(0.0, 0.012));
      cv::line(image, from, to, RandomColour(random), thickness, cv::LINE_AA);
      break;
    }
    default:
      DrawPolygon(image, random, extent * random.uniform(0.03, 0.2));
  }
}

/// Adds noise of a few grain sizes, smooth between its grains.
void AddTexture(cv::Mat& image, cv::RNG& random) {
  cv::Mat sum;
  image.convertTo(sum, CV_32FC3);
  for (const int grain : {64, 12, 3}) {
    cv::Mat coarse((image.rows + grain - 1) / grain + 1, (image.cols + grain - 1) / grain + 1, CV_32FC1);
    random.fill(coarse, cv::RNG::UNIFORM, -12.0, 12.0);
    cv::Mat fine;
    cv::resize(coarse, fine, image.size(), 0.0, 0.0, cv::INTER_LINEAR);
    cv::Mat colour;
    cv::cvtColor(fine, colour, cv::COLOR_GRAY2BGR);
    sum += colour;
  }
  sum.convertTo(image, CV_8UC3);
}

}  // namespace

cv::Mat MakeBackground(cv::Size size, int level, int clutter, std::uint64_t seed) {
  cv::Mat image(size, CV_8UC3, cv::Scalar::all(level));
  if (clutter <= 0) return image;
  cv::RNG random(MixSeeds(seed, CLUTTER_SEQUENCE));
  for (int k = 0; k < clutter; ++k) DrawObject(image, random);
  AddTexture(image, random);
  return image;
}

cv::Mat MakeLight(cv::Size size, double strength, std::uint64_t seed) {
  cv::RNG random(MixSeeds(seed, LIGHT_SEQUENCE));
  const double direction = random.uniform(0.0, 2.0 * CV_PI);
  const double radius = 0.5 * std::hypot(size.width, size.height);
  cv::Mat light(size, CV_32FC1);
  for (int row = 0; row < size.height; ++row) {
    float* out = light.ptr<float>(row);
    for (int column = 0; column < size.width; ++column) {
      const double x = (column - 0.5 * (size.width - 1)) / radius;
      const double y = (row - 0.5 * (size.height - 1)) / radius;
      const double ramp = 0.5 + 0.5 * (x * std::cos(direction) + y * std::sin(direction));
      const double corner = x * x + y * y;
      out[column] = static_cast<float>(1.0 - strength * (0.35 * ramp + 0.35 * corner));
    }
  }
  return light;
}

}  // namespace world
