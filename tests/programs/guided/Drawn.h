/// What the tests of the guided window's drawings have in common.
#pragma once

#include <algorithm>
#include <cmath>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "guided/Keys.h"
#include "guided/Lettering.h"
#include "guided/Picture.h"

/// The keys of the live window; the estimate's keys work or not.
inline std::vector<guided::Key> LiveKeys(bool estimated = true) {
  return {{"Space", "take view"},
          {"u", "undo"},
          {"Enter", "compute", estimated},
          {"s", "skip pose"},
          {"v", "undistorted", estimated},
          {"m", "map", estimated},
          {"r", "start again"},
          {"q", "quit"}};
}

/// Pictures of the ground that texts are drawn over: white, black, grey, and noise of full contrast.
inline std::vector<cv::Mat> Grounds(const cv::Size& size) {
  cv::Mat noise(size, CV_8UC3);
  cv::RNG random(7);
  random.fill(noise, cv::RNG::UNIFORM, 0, 256);
  std::vector<cv::Mat> grounds = {noise};
  for (const double grey : {255.0, 0.0, 128.0}) grounds.emplace_back(size, CV_8UC3, cv::Scalar::all(grey));
  return grounds;
}

/// Centres of the 4 x 11 grid: the first one, the step along a row's X and the step from row to row.
inline std::vector<cv::Point2d> GridCentres(const cv::Point2d& first, const cv::Point2d& x,
                                            const cv::Point2d& y) {
  std::vector<cv::Point2d> centres;
  centres.reserve(44);
  for (int row = 0; row < 11; ++row) {
    for (int column = 0; column < 4; ++column) {
      centres.push_back(first + x * (2 * column + row % 2) + y * row);
    }
  }
  return centres;
}

/// True when no two of the boxes have pixels in common.
inline bool Apart(const std::vector<cv::Rect>& boxes) {
  for (size_t i = 0; i < boxes.size(); ++i) {
    for (size_t k = i + 1; k < boxes.size(); ++k) {
      if ((boxes[i] & boxes[k]).area() > 0) return false;
    }
  }
  return true;
}

inline bool Within(const cv::Rect& box, const cv::Rect& whole) {
  return (box & whole) == box;
}

/// The boxes of all texts and of all keys.
template <typename Layout>
std::vector<cv::Rect> TextBoxesOf(const Layout& layout) {
  std::vector<cv::Rect> boxes;
  boxes.reserve(layout.texts.size() + 2 * layout.keys.size());
  for (const guided::PlacedText& text : layout.texts) boxes.push_back(text.box);
  for (const guided::PlacedKey& key : layout.keys) {
    boxes.push_back(key.cap);
    boxes.push_back(key.words);
  }
  return boxes;
}

template <typename Layout>
const guided::PlacedText* TextOf(const Layout& layout, const std::string& what) {
  const auto found = std::find_if(layout.texts.begin(), layout.texts.end(),
                                  [&](const guided::PlacedText& text) { return text.what == what; });
  return found == layout.texts.end() ? nullptr : &*found;
}

/// How bright a pixel is, 0 to 1, as contrast is computed from it.
inline double Luminance(const cv::Vec3b& pixel) {
  const auto linear = [](double value) { return std::pow(value / 255.0, 2.2); };
  return 0.0722 * linear(pixel[0]) + 0.7152 * linear(pixel[1]) + 0.2126 * linear(pixel[2]);
}

inline double Quantile(std::vector<double> values, double share) {
  const auto at = static_cast<std::ptrdiff_t>(share * static_cast<double>(values.size() - 1));
  std::nth_element(values.begin(), values.begin() + at, values.end());
  return values[static_cast<size_t>(at)];
}

/// The contrast of light letters against what is right around them: the ratio of luminances, 1 to 21. Nine
/// of ten pixels at either side have at least that.
inline double ContrastOf(const guided::PlacedText& text, const cv::Mat& picture) {
  cv::Mat alone(picture.size(), CV_8UC3, cv::Scalar::all(0));
  guided::WriteText(text.text, text.box, text.align, {cv::Scalar::all(255), cv::Scalar::all(0)}, alone);
  cv::Mat letters;
  cv::cvtColor(alone, letters, cv::COLOR_BGR2GRAY);
  cv::Mat around;
  cv::dilate(letters > 20, around, cv::Mat(), cv::Point(-1, -1), 2);
  around &= letters == 0;
  std::vector<double> light;
  std::vector<double> dark;
  for (int y = 0; y < picture.rows; ++y) {
    for (int x = 0; x < picture.cols; ++x) {
      const cv::Point at(x, y);
      if (letters.at<unsigned char>(at) > 200) light.push_back(Luminance(picture.at<cv::Vec3b>(at)));
      if (around.at<unsigned char>(at) != 0) dark.push_back(Luminance(picture.at<cv::Vec3b>(at)));
    }
  }
  if (light.empty() || dark.empty()) return 0.0;
  return (Quantile(light, 0.1) + 0.05) / (Quantile(dark, 0.9) + 0.05);
}

/// How different two pictures are at a place: the largest difference of a channel within `radius` pixels.
inline int DifferenceAround(const cv::Mat& a, const cv::Mat& b, const cv::Point& at, int radius) {
  const cv::Rect box = cv::Rect(at - cv::Point(radius, radius), cv::Size(2 * radius + 1, 2 * radius + 1)) &
                       cv::Rect(cv::Point(), a.size());
  return box.empty() ? 0 : cvRound(cv::norm(a(box), b(box), cv::NORM_INF));
}
