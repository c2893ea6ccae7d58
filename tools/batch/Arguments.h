/// The arguments of the headless tool.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "batch/Pictures.h"

namespace batch {

struct Arguments {
  std::vector<std::string> inputs;
  float hdist = 0.19F;  ///< metres across all row intervals of the grid
  int model = 0;        ///< of Calibrator
  std::string modelName = "rational";
  cv::Size grid{4, 11};
  cv::Size frame;  ///< processing size; zero members: the size of the input
  int maxViews = 30;
  std::string output = "calibration";
  SamplingOptions sampling;
};

/// What the command line asks for: run, or end with that status (help was printed, or what is wrong).
struct Parsed {
  Arguments arguments;
  bool run = false;
  int exitStatus = 0;
};

Parsed ParseArguments(int argc, char** argv);

}  // namespace batch
