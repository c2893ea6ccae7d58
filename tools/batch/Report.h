/// The table that ends a headless calibration.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <utility>
#include <vector>

namespace batch {

/// A picture that was not used, and why.
struct Rejection {
  std::string name;
  std::string reason;
};

/// What a calibration of one camera gave.
struct Report {
  std::string model;
  cv::Size frame;
  std::vector<std::string> used;  ///< names of the views, in the order of the errors
  std::vector<Rejection> rejected;
  double rms = 0.0;
  cv::Mat K, D, stdDevs, viewErrors;  ///< as the engine hands them out
};

/// How many views were used, and the pictures that were not, by reason.
std::string ViewsTable(const std::vector<std::string>& used, const std::vector<Rejection>& rejected);

/// The whole table: views, model, RMS, parameters with standard deviations, the worst views.
std::string ResultTable(const Report& report);

}  // namespace batch
