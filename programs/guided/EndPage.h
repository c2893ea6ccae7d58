/// The page at the end of a guided calibration, drawn from values.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "Verdict.h"
#include "guided/Keys.h"
#include "guided/Lettering.h"
#include "guided/Picture.h"

namespace guided {

/// A number that is known, in words: {"fx", "912.34", "+- 0.45 px"}.
struct KnownNumber {
  std::string name;
  std::string value;
  std::string deviation;
};

/// The view with the largest residuals.
struct WorstView {
  std::string name;  ///< "pose 7"
  double rms = 0.0;  ///< pixels
  cv::Mat image;     ///< 8 bits, grey or BGR; empty when images are not kept: points on grey then
  cv::Size frame;    ///< of an absent image, pixels
  std::vector<cv::Point2d> points;     ///< observed centres, pixels of the image
  std::vector<cv::Point2d> residuals;  ///< of each, pixels: observed minus projected
};

struct EndPage {
  cv::Size window{1280, 800};  ///< pixels; of the result. At least 160 x 120
  CalibrationVerdict::Grade grade = CalibrationVerdict::Grade::None;
  std::string verdict;                 ///< a heading; empty: that of the grade, "Verdict: usable with care"
  std::vector<std::string> sentences;  ///< reasons and advice, one paragraph each
  std::vector<KnownNumber> numbers;    ///< intrinsics, RMS; of a pair also rotation and baseline
  std::vector<cv::Mat> maps;           ///< of uncertainty, BGR; one for each camera
  std::vector<WorstView> worst;        ///< one for each camera
  std::vector<std::string> files;      ///< that were written
  std::vector<Key> keys;
};

/// Where things are in the page. Empty rectangles stand for what is not shown.
struct EndPageLayout {
  cv::Size picture;
  cv::Rect head;
  cv::Rect icon;
  std::vector<cv::Rect> maps;
  std::vector<cv::Rect> worst;  ///< places of the images
  std::vector<double> zoom;     ///< of each worst view: by how much its residuals are enlarged, in its pixels
  std::vector<PlacedText> texts;  ///< none over another, all in the picture
  std::vector<PlacedKey> keys;
};

EndPageLayout LayoutOf(const EndPage& page);

/// Draws it; BGR, 8 bits, of the window's size.
cv::Mat Draw(const EndPage& page);

}  // namespace guided
