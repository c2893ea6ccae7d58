/// The arguments of the guided calibration.
#pragma once

#include <opencv2/core.hpp>
#include <string>

#include "common/EngineOptions.h"
#include "common/Hdist.h"
#include "common/LensModels.h"
#include "common/SourceSettings.h"

namespace guided {

/// The only one whose poses can be asked for.
inline const cv::Size GRID(4, 11);

struct Arguments : common::EngineOptions {
  common::SourceSettings source;
  bool sizeGiven = false;                        ///< width and height were asked for
  common::Camera select = common::Camera::None;  ///< of a pair, the one to calibrate
  bool fast = false;                             ///< recordings are not played at their own rate
  bool silent = false;                           ///< no tone when a view is taken
  float hdist = common::SUPPLIED_HDIST;          ///< metres across the ten row intervals
  std::string poses;                             ///< model file of the assistant
  double until =
      0.0;  ///< ask for poses until projections are known to this many pixels; 0: those of the model
  int mostPoses = 20;                  ///< asked for at most
  int model = common::MODEL_AUTO;      ///< one of common::LensModels
  std::string output = "calibration";  ///< without .json
  std::string session;                 ///< that is written, gone on with if it exists; empty: a new one
  bool keepImages = true;              ///< in the session
  bool close = false;                  ///< computes when the source ends, and does not stay at the end
  bool strict = false;                 ///< a worthless result gets a status of its own
};

/// The grid's unit, metres.
float UnitOf(const Arguments& arguments);

/// What the command line asks for: run, list the cameras, or end with that status (help was printed, or what
/// is wrong).
struct Parsed {
  Arguments arguments;
  bool run = false;
  bool listCameras = false;  ///< instead of running
  int exitStatus = 0;
};

/// `shippedPoses` is the model file unless another one is asked for.
Parsed ParseArguments(int argc, const char* const* argv, const std::string& shippedPoses);

/// The model file that belongs to an executable: share/velmora/poses-4x11.json beside its bin folder.
std::string ShippedPoses(const std::string& executable);

}  // namespace guided
