/// One camera's way from pictures to a result.
#pragma once

#include <memory>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "Calibrator.h"
#include "batch/Arguments.h"
#include "batch/Pictures.h"
#include "batch/Report.h"

namespace batch {

using Centres = std::vector<cv::Point2d>;

constexpr size_t ENOUGH_VIEWS = 5;

/// The distance between adjacent rows, metres.
float UnitOf(const Arguments& arguments);

/// The processing size for pictures of a size.
cv::Size FrameSizeFor(const Arguments& arguments, const cv::Size& input);

/// That the last search found no grid, and why, if that is known.
std::string FaultOfSearch(Calibrator& calibrator);

/// The views of one camera, and the calibrator that they go to.
class CameraViews {
 public:
  explicit CameraViews(const Arguments& arguments) : arguments_(arguments) {}

  /// Searches the grid in the picture, which is changed. The reason when it gives no view, else an empty
  /// text.
  std::string Take(Picture& picture);

  /// False as long as no picture could be decoded.
  bool SawPictures() const { return calibrator_ != nullptr; }
  cv::Size FrameSize() const { return FrameSizeFor(arguments_, inputSize_); }
  const std::vector<Centres>& Views() const { return views_; }
  /// Those that the computation was of.
  const std::vector<Centres>& Used() const { return used_; }
  const std::vector<std::string>& Names() const { return names_; }
  const std::vector<Rejection>& Rejected() const { return rejected_; }

  /// Computes from the views that spread best; the others are set aside. There must be enough.
  Report Calibrate();

  /// Of the computation.
  CalibrationVerdict Verdict();

  /// Writes the result file, extension added, and reads it back. The text, which is empty when that failed.
  std::string Save(const std::string& output);

 private:
  std::string FaultOf(Picture& picture, Centres& centres);
  /// The model to compute; of an automatic choice the report gets name and reasons.
  int ChosenModel(Report& report);

  const Arguments& arguments_;
  cv::Size inputSize_;  ///< of the first picture; the others must agree
  std::unique_ptr<Calibrator> calibrator_;
  std::vector<std::string> names_;
  std::vector<Centres> views_;
  std::vector<Centres> used_;
  std::vector<Rejection> rejected_;
};

/// Saves the calibrator's result and reads it back; the text, empty when that failed.
std::string SaveResultFile(Calibrator& calibrator, const std::string& output);

/// Raises InputError when NAME.json cannot be written: that should be known before minutes of work.
void CheckOutput(const std::string& output);

/// The same for a file as it is named.
void CheckWritable(const std::string& name);

}  // namespace batch
