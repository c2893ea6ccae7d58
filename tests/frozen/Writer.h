/// Writes numbers down, one in a line, under the name of the calibration that they are of.
#pragma once

#include <opencv2/core.hpp>
#include <ostream>
#include <string>

#include "Calibrator.h"

namespace frozen {

class Writer {
 public:
  explicit Writer(std::ostream& out) : out_(out) {}

  /// What follows is of this calibration.
  void Begin(const std::string& name) { name_ = name; }

  /// With all digits, so that two texts are equal where two numbers are.
  void Number(const std::string& what, double value);
  void Text(const std::string& what, const std::string& value);
  /// Each element of a matrix of any number of channels.
  void Matrix(const std::string& what, const cv::Mat& values);

  /// All that can be asked of a calibrator of one camera, with the next poses and the choice of a model.
  void Camera(Calibrator& calibrator);
  /// All that can be asked of a calibrator of a pair.
  void Pair(Calibrator& calibrator);

 private:
  void Proposal(const std::string& what, const PoseProposal& proposal);
  void Verdict(const CalibrationVerdict& verdict);

  std::ostream& out_;
  std::string name_;
};

}  // namespace frozen
