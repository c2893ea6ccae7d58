/// The table that ends a calibration.
#pragma once

#include <opencv2/core.hpp>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace common {

/// A picture that was not used, and why.
struct Rejection {
  std::string name;
  std::string reason;
  bool hasGrid = false;  ///< it was found, and set aside all the same
};

/// Why a picture with the grid was left out that the solver rejected.
extern const char* const DISAGREES;

/// Of a picture with the grid, when there are more than that many views.
Rejection NotNeeded(const std::string& name, int maxViews);

/// Views that are parts of the grid.
struct Parts {
  std::vector<size_t> circles;  ///< that are seen, of each such view
  size_t of = 0;                ///< circles of the grid
};

/// Says how many of the views are parts of the grid; an empty text when none is.
std::string PartsText(const Parts& parts, size_t views);

/// What a calibration of one camera gave.
struct Report {
  std::string model;
  std::vector<std::string> modelReasons;  ///< of an automatic choice
  cv::Size frame;
  std::vector<std::string> used;  ///< names of the views, in the order of the errors
  std::set<size_t> disagreeing;   ///< indexes of views that the solver rejected
  Parts parts;
  std::vector<Rejection> rejected;
  double rms = 0.0;
  cv::Mat K, D, stdDevs, viewErrors;  ///< as the engine hands them out
  bool fisheye = false;               ///< D and its deviations are a fisheye's k1 to k4
};

/// How far off the points of one of a pair's cameras are, pixels.
struct SideErrors {
  double rms = 0.0;
  std::vector<double> views;  ///< RMS of each; negative where the image was left out
};

/// What a calibration of a pair gave.
struct PairReport {
  std::string model;
  std::vector<std::string> used;
  std::set<size_t> disagreeing;  ///< indexes of pairs of which the solver rejected an image
  Parts parts;                   ///< circles that both cameras see
  std::vector<Rejection> rejected;
  double rms = 0.0;
  SideErrors left, right;
  cv::Mat R, T;                       ///< right from left
  double epipolarDistance = 0.0;      ///< mean, pixels, of the pairs that agree
  cv::Mat refinedLeft, refinedRight;  ///< camera matrices that were refined with the pair; else empty
};

/// How many views were used, and the pictures that were not, by reason; of long lists the first names.
/// `disagreeing` are those of the views that the solver rejected, `what` is the word for one picture.
std::string ViewsTable(const std::vector<std::string>& used, const std::vector<Rejection>& rejected,
                       const std::set<size_t>& disagreeing = {}, const std::string& what = "image");

/// The whole table: views, model, RMS, parameters with standard deviations, the worst views.
std::string ResultTable(const Report& report);

/// The whole table of a pair: views, RMS, baseline, rotation, epipolar distance, the worst views.
std::string PairTable(const PairReport& report);

}  // namespace common
