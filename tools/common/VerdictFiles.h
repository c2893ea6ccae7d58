/// The files that tell what a result is worth.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "PairVerdict.h"
#include "Verdict.h"
#include "common/OutputFiles.h"

namespace tools {

/// Where the verdict on the result NAME goes: NAME_verdict.json, and the picture of how sure projections are,
/// NAME_uncertainty.png.
struct VerdictFiles {
  std::string text;
  std::string picture;

  explicit VerdictFiles(const std::string& name)
      : text(name + "_verdict.json"), picture(name + "_uncertainty.png") {}
};

/// Writes both and notes them; the picture shows the circles that were seen. The file that could not be
/// written, or an empty text.
std::string SaveVerdict(const CalibrationVerdict& verdict, const cv::Size& frame,
                        const std::vector<std::vector<cv::Point2d>>& seen, const std::string& name,
                        OutputFiles& files);

/// Writes that on a pair, which has no picture.
std::string SaveVerdict(const PairVerdict& verdict, const std::string& name, OutputFiles& files);

}  // namespace tools
