/// The window of a guided calibration, from the first view to the page at the end.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "common/ExitStatus.h"
#include "common/OutputFiles.h"
#include "common/Screen.h"
#include "guided/Collector.h"
#include "guided/EndPage.h"
#include "guided/Estimator.h"
#include "guided/ImagesFeed.h"
#include "guided/NextPoses.h"
#include "guided/Picture.h"
#include "guided/Undistortion.h"
#include "guided/Views.h"
#include "velmora/Guide.h"
#include "velmora/Session.h"

namespace guided {

struct LoopOptions {
  ComputationSettings computation;
  std::string poses;   ///< model file with the poses to reach
  std::string output;  ///< result file, without its extension
  std::string source;  ///< what frames come from, in words
  /// Pixels to which projections are to be known, by poses that are chosen for it; 0: by those of the file.
  double until = 0.0;
  int mostPoses = 20;         ///< that are chosen
  bool strict = false;        ///< a worthless result gets a status of its own
  bool endsByItself = false;  ///< computes when the source ends, and does not stay at the end

  /// What is wrong with the source, in words for the picture; empty while frames arrive.
  std::function<std::string()> remark = [] { return std::string(); };
  std::function<bool()> sourceEnded = [] { return false; };  ///< there are no more frames
  std::function<bool()> interrupted = [] { return false; };  ///< the program has been asked to end
  std::function<void()> taken = [] {};                       ///< called when a view was taken
  std::function<double()> clock;                             ///< when a frame was taken, seconds
};

/// Shows what the cameras see and what to do, takes views as their poses are reached, computes, and stays
/// with the result until a key ends it. What is taken is in the session before it is said to be. Made, run
/// and destroyed on the window thread.
class GuidedLoop {
 public:
  static const char* const WINDOW;

  /// Goes on with what the session holds. Raises std::runtime_error when the poses cannot be used.
  GuidedLoop(velmora::Session& session, ImagesFeed& feed, common::Screen& screen, LoopOptions options,
             std::ostream& out, std::ostream& err);

  /// With the result SUCCESS, or WORTHLESS where that is asked for; NO_RESULT when it was ended before.
  common::ExitStatus Run();

 private:
  enum class Stage { Taking, Computing, Done, Over };
  using Moment = std::chrono::steady_clock::time_point;

  void Welcome();
  bool LookAtNext();
  void LookAtSource();
  void FollowGuide();
  void Take(bool reachesTarget);
  void TakeByHand();
  void BeginAgain();
  void AfterChange();
  void AskForNext();
  void Skip();
  void BeginComputing();
  void FollowComputation();
  void Finish(const Outcome& outcome);
  bool SaveAll(const Outcome& outcome, common::OutputFiles& files);
  void React(int key);
  void ReactWhileTaking(int key);
  void ReactAtTheEnd(int key);
  void End();
  void SayHowToGoOn();

  void Say(const std::string& message);
  void Draw();
  Picture PictureNow();
  CameraPicture CameraNow(size_t camera) const;
  void AddWords(Picture& picture) const;
  void AddEstimate(Picture& picture);
  std::vector<Key> KeysNow() const;

  velmora::Session& session_;
  ImagesFeed& feed_;
  common::Screen& screen_;
  const LoopOptions options_;
  std::ostream& out_;
  std::ostream& err_;

  Collector collector_;
  velmora::Guide guide_;
  Views views_;
  Estimator estimator_;
  std::optional<NextPoses> next_;                   ///< with a target accuracy
  std::vector<std::vector<cv::Point2d>> standIns_;  ///< poses in place of chosen ones that are skipped
  size_t nextStandIn_ = 0;

  Stage stage_ = Stage::Taking;
  common::ExitStatus status_ = common::NO_RESULT;

  std::vector<cv::Mat> images_;   ///< that were looked at last
  std::vector<Finding> found_;    ///< in them
  velmora::GuideFrame lookedAt_;  ///< the same, as the guide takes it
  velmora::GuideAnswer answer_;   ///< on them
  std::string message_;
  Moment said_;     ///< the message
  Moment flashed_;  ///< a view was taken then
  bool undistorted_ = false;
  MapPlace mapPlace_ = MapPlace::None;
  std::shared_ptr<const Outcome> drawn_;  ///< the outcome that these are of
  cv::Mat map_;
  std::vector<Undistortion> undistortions_;
  EndPage endPage_;
};

}  // namespace guided
