/// The files of a result's verdict.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "PairVerdict.h"
#include "Verdict.h"
#include "common/OutputFiles.h"

namespace common {

/// Where the verdict on the result NAME goes: NAME_verdict.json, and the picture of how sure projections are,
/// NAME_uncertainty.png. Of a result of several cameras there is a picture of each,
/// NAME_uncertainty_CAMERA.png.
struct VerdictFiles {
  std::string text;
  std::string picture;

  explicit VerdictFiles(const std::string& name)
      : text(name + "_verdict.json"), picture(name + "_uncertainty.png"), name_(name) {}

  std::string PictureOf(const std::string& camera) const { return name_ + "_uncertainty_" + camera + ".png"; }

 private:
  std::string name_;
};

/// Writes both and notes them; the picture shows the circles that were seen. The text says which result it is
/// on: that in NAME.json, which was written before. The file that could not be written, or an empty text.
std::string SaveVerdict(const CalibrationVerdict& verdict, const cv::Size& frame,
                        const std::vector<std::vector<cv::Point2d>>& seen, const std::string& name,
                        OutputFiles& files);

/// The verdict that was written beside a result file; of grade None where there is none that can be read, and
/// where it is on another result: `warning` then says so, and is empty else. A verdict that does not say
/// which result it is on is believed.
CalibrationVerdict VerdictBeside(const std::string& resultFile, std::string& warning);

/// What the cameras of a pair saw, view by view.
struct SeenByPair {
  cv::Size frame;
  std::vector<std::vector<cv::Point2d>> left;
  std::vector<std::vector<cv::Point2d>> right;
};

/// Writes that on a pair, with a picture of each camera: "left" and "right".
std::string SaveVerdict(const PairVerdict& verdict, const SeenByPair& seen, const std::string& name,
                        OutputFiles& files);

/// Writes the picture of one of a rig's cameras alone, which is told by its number.
std::string SavePictureOf(size_t camera, const CalibrationVerdict& verdict, const cv::Size& frame,
                          const std::vector<std::vector<cv::Point2d>>& seen, const std::string& name,
                          OutputFiles& files);

}  // namespace common
