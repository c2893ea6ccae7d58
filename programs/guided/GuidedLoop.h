/// The live window of a guided calibration, from the first pose to the saved result.
#pragma once

#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "Calibrator.h"
#include "common/ExitStatus.h"
#include "common/FrameFeed.h"
#include "common/LensModels.h"
#include "common/OutputFiles.h"
#include "common/Screen.h"
#include "guided/NextPoses.h"

namespace guided {

struct LoopOptions {
  std::string poses;   ///< model file of the assistant
  std::string output;  ///< result file, without its extension
  cv::Size frame;      ///< processing size
  std::string source;  ///< what frames come from, in words
  /// True once a recording has no more frames.
  std::function<bool()> sourceEnded = [] { return false; };
  /// Pixels to which projections are to be known, by poses that are chosen for it; 0: by those of the model.
  double until = 0.0;
  int mostPoses = 20;  ///< that are chosen
  /// The lens model of the result, one of common::LensModels.
  int model = Calibrator::MODEL_RATIONAL;
  bool strict = false;  ///< a worthless result gets a status of its own
  /// Called when a view was taken.
  std::function<void()> taken = [] {};
};

/// Shows each frame with the pose to reach, reports each pose that was reached, and saves the result once the
/// computation that follows the last pose is done. The poses are those of the model or, with a target
/// accuracy, the most informative ones until it is reached. Made, run and destroyed on the window thread.
class GuidedLoop {
 public:
  static const char* const WINDOW;

  GuidedLoop(Calibrator& calibrator, common::FrameFeed& feed, common::Screen& screen,
             const LoopOptions& options, std::ostream& out, std::ostream& err);

  common::ExitStatus Run();

 private:
  enum class Step { GoOn, Stop };

  bool Begin();
  Step ShowNext();
  void DetectIn(cv::Mat& frame);
  Step React(int key);
  void TakeWhatIsInView();
  Step Follow();
  Step FollowComputation();
  bool ComputesAnother();
  std::string ResultName() const;
  Step Save();
  std::string Write(const CalibrationVerdict& verdict, common::OutputFiles& files);
  void TellOfPoses();
  void AskForNext();
  void BeginComputation();
  void DrawPrecision(cv::Mat& frame) const;

  Calibrator& calibrator_;
  common::FrameFeed& feed_;
  common::Screen& screen_;
  const LoopOptions options_;
  std::ostream& out_;
  std::ostream& err_;
  std::optional<NextPoses> next_;  ///< with a target accuracy
  common::ExitStatus status_ = common::NO_RESULT;
  int goal_ = 0;
  int reached_ = 0;
  int besides_ = 0;                                 ///< snapshots that were taken by hand
  bool fresh_ = false;                              ///< a frame was shown in this turn
  bool computing_ = false;                          ///< the last pose was reached
  std::optional<common::ChosenModel> lens_;         ///< of the result, once it is known which it is to be
  std::vector<std::vector<cv::Point2d>> observed_;  ///< the circles of each snapshot
  std::vector<std::string> names_;                  ///< of the snapshots: "pose 2", "by hand 1"
};

}  // namespace guided
