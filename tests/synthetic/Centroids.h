/// Measures discs in images.
#pragma once

#include <algorithm>
#include <cmath>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <vector>

/// A square around a point, as a polygon.
inline std::vector<cv::Point2d> SquareAround(const cv::Point2d& middle, double reach) {
  return {middle + cv::Point2d(-reach, -reach), middle + cv::Point2d(reach, -reach),
          middle + cv::Point2d(reach, reach), middle + cv::Point2d(-reach, reach)};
}

/// The polygon with all its corners `distance` further away from the middle.
inline std::vector<cv::Point2d> Widened(const std::vector<cv::Point2d>& polygon, const cv::Point2d& middle,
                                        double distance) {
  std::vector<cv::Point2d> wide;
  for (const cv::Point2d& p : polygon) wide.push_back(p + (p - middle) * (distance / cv::norm(p - middle)));
  return wide;
}

/// The centre of gravity of the darkness within a convex polygon, in the first channel of an 8-bit BGR
/// image. Darkness counts below a share of the brightest pixel; with a share under 1, paper in uneven light
/// has none.
inline cv::Point2d DarkCentroid(const cv::Mat& image, const std::vector<cv::Point2d>& polygon,
                                double share = 1.0) {
  std::vector<cv::Point> corners;
  for (const cv::Point2d& p : polygon) corners.emplace_back(cvRound(p.x), cvRound(p.y));
  cv::Mat mask = cv::Mat::zeros(image.size(), CV_8UC1);
  cv::fillConvexPoly(mask, corners, cv::Scalar(255));
  const cv::Rect window = cv::boundingRect(corners) & cv::Rect({0, 0}, image.size());
  cv::Mat levels;
  cv::extractChannel(image, levels, 0);
  double brightest = 0.0;
  cv::minMaxLoc(levels(window), nullptr, &brightest, nullptr, nullptr, mask(window));
  double sum = 0.0;
  cv::Point2d centre(0.0, 0.0);
  for (int y = window.y; y < window.br().y; ++y) {
    for (int x = window.x; x < window.br().x; ++x) {
      if (mask.at<uchar>(y, x) == 0) continue;
      const double darkness = std::max(0.0, share * brightest - levels.at<uchar>(y, x));
      sum += darkness;
      centre += darkness * cv::Point2d(x, y);
    }
  }
  return centre / sum;
}

/// The centre of gravity of a polygon's area.
inline cv::Point2d AreaCentroid(const std::vector<cv::Point2d>& polygon) {
  double area = 0.0;
  cv::Point2d centre(0.0, 0.0);
  const cv::Point2d origin = polygon.front();
  for (std::size_t k = 0; k < polygon.size(); ++k) {
    const cv::Point2d a = polygon[k] - origin;
    const cv::Point2d b = polygon[(k + 1) % polygon.size()] - origin;
    area += a.cross(b);
    centre += a.cross(b) * (a + b) / 3.0;
  }
  return origin + centre / area;
}
