/// A picture of one printed disc, exact but for what is asked of it: blur, uneven light and noise.
#include "finder/DiscPicture.h"

#include <Eigen/Dense>
#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace unit {

namespace {

/// Lines of the disc to a pixel.
constexpr int LINES = 10;
/// Abscissae and weights of Gauss and Legendre for the width of a pixel.
constexpr std::array<double, 4> PLACES = {-0.430568155797026, -0.169990521792428, 0.169990521792428,
                                          0.430568155797026};
constexpr std::array<double, 4> SHARES = {0.173927422568727, 0.326072577431273, 0.326072577431273,
                                          0.173927422568727};

double Below(double z) {
  return 0.5 * std::erfc(-z / std::sqrt(2.0));
}
double Density(double z) {
  return std::exp(-0.5 * z * z) / std::sqrt(2.0 * CV_PI);
}

/// Adds what a line of the disc, `offset` below the centre, adds to the paper.
void AddLine(const DiscPicture& picture, double offset, double height, cv::Mat& exposure) {
  const cv::Matx22d form = picture.outline.t() * picture.outline;
  const double square = 1.0 - (form(1, 1) - form(0, 1) * form(0, 1) / form(0, 0)) * offset * offset;
  if (square <= 0.0) return;
  const double middle = -form(0, 1) * offset / form(0, 0);
  const double half = std::sqrt(square / form(0, 0));
  const double left = middle - half;
  const double right = middle + half;
  const double s = picture.blur;
  const cv::Vec2d slope = (picture.ink.slope - picture.paper.slope) / picture.radius;
  const double level = picture.ink.level - picture.paper.level + slope[1] * offset;
  const int from = std::max(0, cvFloor(picture.centre.x + left - 7.0 * s - 1.0));
  const int to = std::min(picture.size.width - 1, cvCeil(picture.centre.x + right + 7.0 * s + 1.0));
  std::vector<double> line(static_cast<size_t>(picture.size.width), 0.0);
  // Farther from both ends than that the blur does not reach them.
  const double reach = 7.0 * s + 1.0;
  for (int x = from; x <= to; ++x) {
    const double away = x - picture.centre.x;
    double& pixel = line[static_cast<size_t>(x)];
    if (away > left + reach && away < right - reach) {
      pixel = level + slope[0] * away;
      continue;
    }
    for (size_t k = 0; k < PLACES.size(); ++k) {
      const double at = away + PLACES[k];
      const double a = (left - at) / s;
      const double b = (right - at) / s;
      // The mean of level + slope * x' over the blur around `at`, inside the line.
      pixel += SHARES[k] *
               ((level + slope[0] * at) * (Below(b) - Below(a)) - slope[0] * s * (Density(b) - Density(a)));
    }
  }
  const double row = picture.centre.y + offset;
  const int top = std::max(0, cvFloor(row - 7.0 * s - 1.0));
  const int bottom = std::min(picture.size.height - 1, cvCeil(row + 7.0 * s + 1.0));
  for (int y = top; y <= bottom; ++y) {
    const double share = height * (Below((y + 0.5 - row) / s) - Below((y - 0.5 - row) / s));
    double* pixels = exposure.ptr<double>(y);
    for (int x = from; x <= to; ++x) pixels[x] += share * line[static_cast<size_t>(x)];
  }
}

}  // namespace

DiscPicture PictureOfDisc(double radius, double blur, double squeezed) {
  DiscPicture picture;
  const int side = 2 * cvCeil(1.8 * radius + 3.0 * blur + 4.0);
  picture.size = {side, side};
  picture.centre = {0.5 * side, 0.5 * side};
  picture.radius = radius;
  picture.blur = blur;
  const double c = std::cos(CV_PI / 6.0);
  const double s = std::sin(CV_PI / 6.0);
  const cv::Matx22d turn(c, s, -s, c);
  const double root = std::sqrt(squeezed);
  picture.outline = turn.t() * cv::Matx22d(1.0 / (radius * root), 0.0, 0.0, root / radius) * turn;
  return picture;
}

cv::Mat Exposure(const DiscPicture& picture) {
  cv::Mat exposure(picture.size, CV_64F);
  const cv::Vec2d slope = picture.paper.slope / picture.radius;
  for (int y = 0; y < exposure.rows; ++y) {
    for (int x = 0; x < exposure.cols; ++x) {
      exposure.at<double>(y, x) =
          picture.paper.level + slope[0] * (x - picture.centre.x) + slope[1] * (y - picture.centre.y);
    }
  }
  const cv::Matx22d form = picture.outline.t() * picture.outline;
  const double half = std::sqrt(form(0, 0) / cv::determinant(form));
  const int count = cvCeil(2.0 * half * LINES);
  const double height = 2.0 * half / count;
  for (int k = 0; k < count; ++k) AddLine(picture, (k + 0.5) * height - half, height, exposure);
  return exposure;
}

cv::Mat Shot(const cv::Mat& exposure, double noise, cv::RNG& random) {
  cv::Mat shot(exposure.size(), CV_8U);
  for (int y = 0; y < shot.rows; ++y) {
    for (int x = 0; x < shot.cols; ++x) {
      shot.at<unsigned char>(y, x) =
          cv::saturate_cast<unsigned char>(exposure.at<double>(y, x) + random.gaussian(noise));
    }
  }
  return shot;
}

double LeastDeviation(const DiscPicture& picture, double noise, double reach) {
  constexpr int UNKNOWNS = 12;
  const auto changed = [&](int unknown, double by) {
    DiscPicture other = picture;
    switch (unknown) {
      case 0:
        other.centre.x += by;
        break;
      case 1:
        other.centre.y += by;
        break;
      case 2:
        other.blur += by;
        break;
      case 3:
        other.outline(0, 0) *= 1.0 + by / picture.radius;
        break;
      case 4:
        other.outline(1, 1) *= 1.0 + by / picture.radius;
        break;
      case 5:
        other.outline(0, 1) += by / (picture.radius * picture.radius);
        other.outline(1, 0) += by / (picture.radius * picture.radius);
        break;
      case 6:
        other.ink.level += by;
        break;
      case 7:
        other.ink.slope[0] += by;
        break;
      case 8:
        other.ink.slope[1] += by;
        break;
      case 9:
        other.paper.level += by;
        break;
      case 10:
        other.paper.slope[0] += by;
        break;
      default:
        other.paper.slope[1] += by;
    }
    return Exposure(other);
  };
  constexpr double STEP = 0.02;
  std::array<cv::Mat, UNKNOWNS> derivatives;
  for (int k = 0; k < UNKNOWNS; ++k) {
    derivatives[static_cast<size_t>(k)] = (changed(k, STEP) - changed(k, -STEP)) / (2.0 * STEP);
  }
  Eigen::Matrix<double, UNKNOWNS, UNKNOWNS> normal = Eigen::Matrix<double, UNKNOWNS, UNKNOWNS>::Zero();
  for (int y = 0; y < picture.size.height; ++y) {
    for (int x = 0; x < picture.size.width; ++x) {
      const cv::Vec2d away(x - picture.centre.x, y - picture.centre.y);
      if (cv::norm(picture.outline * away) > reach) continue;
      Eigen::Matrix<double, UNKNOWNS, 1> row;
      for (int k = 0; k < UNKNOWNS; ++k) row(k) = derivatives[static_cast<size_t>(k)].at<double>(y, x);
      normal += row * row.transpose();
    }
  }
  const Eigen::Matrix<double, UNKNOWNS, UNKNOWNS> inverse = normal.inverse();
  // Rounding adds the variance of a step of one grey level.
  return std::sqrt((noise * noise + 1.0 / 12.0) * 0.5 * (inverse(0, 0) + inverse(1, 1)));
}

}  // namespace unit
