/// The arguments of the headless tool.
#pragma once

#include <functional>
#include <opencv2/core.hpp>
#include <set>
#include <string>
#include <vector>

#include "Calibrator.h"
#include "batch/CheckOptions.h"
#include "batch/ImageStream.h"
#include "common/EngineOptions.h"
#include "common/Hdist.h"
#include "common/SourceSettings.h"

namespace batch {

/// How images of a rig's cameras are known to be of the same time.
enum class Match { Order, Names };

struct Arguments : common::EngineOptions {
  std::vector<std::string> inputs;       ///< of the only or left camera, or of split images
  std::vector<std::string> rightInputs;  ///< of the right camera of a pair
  common::Split split = common::Split::None;
  std::string calibLeft;  ///< result files of the cameras of a pair; empty: they are calibrated first
  std::string calibRight;
  bool refineLenses = false;             ///< of a pair, together with it
  bool wholeGrids = false;               ///< parts of the grid are no views
  std::vector<std::string> rig;          ///< an input for each camera of a rig
  Match match = Match::Order;            ///< of a rig
  std::vector<std::string> intrinsics;   ///< result files of a rig's cameras; empty: they are estimated
  float hdist = common::SUPPLIED_HDIST;  ///< metres across all row intervals of the grid
  int model = 0;                         ///< one of common::LensModels
  std::string modelName;                 ///< when it was not given, that of the default
  cv::Size grid{4, 11};
  cv::Size frame;  ///< processing size; zero members: the size of the input
  int maxViews = 30;
  std::string output = "calibration";  ///< without .json
  bool strict = false;                 ///< a worthless result gets a status of its own
  std::string recordModel;             ///< model file of the assistant to record, instead of a calibration
  CheckArguments check;                ///< of an earlier result, instead of a calibration
  SamplingOptions sampling;
  int threads = 0;  ///< that read and search images; 0: as many as there are cores

  std::string session;                ///< the folder that keeps what is found; empty: none does
  bool keepImages = false;            ///< with copies of the images
  bool noImages = false;              ///< without a word of where the images are
  std::vector<std::string> excluded;  ///< views of the session, by name or number
  std::vector<std::string> included;
  bool list = false;            ///< the session's views are listed instead of a calibration
  bool pairOfSession = false;   ///< a session tells that it is a pair
  bool rigOfSession = false;    ///< `rig` are not inputs but the names that the session has
  std::set<std::string> given;  ///< the options that the command line has, such as "--grid"

  bool WasGiven(const std::string& option) const { return given.count(option) > 0; }
  /// Whether there are images to be searched.
  bool HasInputs() const { return !inputs.empty() || (IsRig() && !rigOfSession); }
  size_t Cameras() const { return IsRig() ? rig.size() : IsPair() ? 2 : 1; }
  /// The names of the result: in the session, if there is one, and wherever the user wants it.
  std::vector<std::string> Outputs() const;
  bool IsRig() const { return !rig.empty(); }
  /// Whether parts of the grid are views: where the search finds them, and outliers
  /// among them are left out.
  bool TakesParts() const {
    return !wholeGrids && finder == Calibrator::FINDER_ROBUST && solver == Calibrator::SOLVER_SPARSE;
  }
  /// How many threads read and search images.
  int Threads() const;
  bool IsPair() const { return split != common::Split::None || !rightInputs.empty() || pairOfSession; }
};

/// What the command line asks for: run, or end with that status (help was printed, or what is wrong).
struct Parsed {
  Arguments arguments;
  bool run = false;
  int exitStatus = 0;
};

/// `settle` is called before the arguments are checked against each other, when a session is named: it may
/// fill in what was not given.
Parsed ParseArguments(int argc, char** argv, const std::function<void(Arguments&)>& settle = {});

}  // namespace batch
