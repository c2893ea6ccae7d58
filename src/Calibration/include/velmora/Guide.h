/// Leads somebody who holds the printed grid before a camera from pose to pose, in words.
#pragma once

#include <memory>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "Export.h"

namespace velmora {

struct GuideSettings {
  cv::Size grid;          ///< circles per row, rows; both at least 2
  cv::Size frame;         ///< of each camera's images, pixels
  int cameras = 1;        ///< 2: a pair, of which the left camera's view is compared with the targets
  bool mirrored = false;  ///< whether the picture is shown mirrored; see GuideHint
};

/// What the cameras show at a moment. Centres are those of all circles in the order of the grid search,
/// pixels of the frame, never mirrored; empty when the grid was not found.
struct GuideFrame {
  cv::Mat image;  ///< 8 bits, grey or BGR, of the frame's size; empty: how blurred it is is not asked
  std::vector<cv::Point2d> centres;
  /// Of each circle more than 0, or 0 where it was not seen and is only where it would be. Empty: all were
  /// seen.
  std::vector<double> weights{};
  std::string whyNotFound{};  ///< as Calibrator::WhyNotFound says it; may be empty
  double time = 0.0;          ///< seconds, of any clock that does not go back
  // What the right camera of a pair shows, likewise.
  cv::Mat rightImage{};
  std::vector<cv::Point2d> rightCentres{};
  std::vector<double> rightWeights{};
};

enum class GuideState {
  NoTarget,   ///< all targets were reached or left out, or none was set
  NotFound,   ///< there is a target and no grid
  Away,       ///< the grid is not at the target, or not all of it is seen there
  HoldStill,  ///< it is at the target, and was not still for long enough yet
  Reached,    ///< this view can be taken
  Refused     ///< it is at the target and still, but the view would be of no use
};

/// What to do. Left, right, up and down, and clockwise, are those of the picture that the user sees: "left"
/// is toward the left side of the picture, and the left edge is the one that is farther left in it. In a
/// mirrored picture they are the other way round in the frame, and the guide knows that by its settings.
/// Closer, farther and away are told from the camera.
enum class GuideHint {
  None,
  ShowGrid,
  PartOutside,   ///< part of the grid is outside the picture
  PartHidden,    ///< something is before some circles
  ShowRightToo,  ///< the right camera of a pair does not see the grid
  TurnRound,     ///< by half a turn in the picture
  Left,
  Right,
  Up,
  Down,
  Closer,
  Farther,
  Clockwise,
  Anticlockwise,
  LeftEdgeAway,
  RightEdgeAway,
  TopEdgeAway,
  BottomEdgeAway,
  HoldStill,
  Sharpen,  ///< the view is out of focus
  Skip      ///< the target is a view that was taken already
};

struct GuideAnswer {
  GuideState state = GuideState::NoTarget;
  double closeness = 0.0;  ///< to the target: 0 far away or not found, 1 at it; grows all the way
  GuideHint hint = GuideHint::None;
  std::string instruction;  ///< the hint, in English: a line of at most 42 letters; empty without one
  /// Why the view cannot be taken though it is at the target: blurred, moving, the same as one before; a
  /// clause in English. Empty in all states but Refused and HoldStill.
  std::string refusal;
};

/// Compares what is found of the grid with a target pose, and says what to do to reach it: logic on values,
/// in which the same calls have the same answers. It draws nothing, and takes no snapshots: whoever does
/// tells it of them.
///
///   while (guide.TargetNumber() > 0) {
///     const GuideAnswer answer = guide.Look(frame);          // of each frame that was searched
///     if (answer.state == GuideState::Reached && TakeSnapshot()) {
///       guide.Kept(frame.centres);
///       guide.Advance();
///     }
///   }
///
/// A target counts as reached at the distance at which CalibAssistant takes it, and at a little more; or,
/// when the lens shows it nowhere as it was drawn, where it comes nearest. The grid must then be still for
/// 0.3 s.
///
/// Not thread-safe: one thread at a time may use a guide. Errors are std::invalid_argument for arguments that
/// make no sense and std::runtime_error for a file that cannot be used, with sentences in plain English;
/// after one, everything is as it was.
class VELMORA_API Guide {
 public:
  explicit Guide(const GuideSettings& settings);
  ~Guide();
  Guide(Guide&& other) noexcept;
  Guide& operator=(Guide&& other) noexcept;

  const GuideSettings& Settings() const;
  void SetMirrored(bool mirrored);
  /// The hint in English, as instructions have it.
  static std::string Words(GuideHint hint);

  // ---- Targets. They have numbers, from 1 in the order in which they were set.

  /// Takes the poses of a model file, mapped to the frame as CalibAssistant does it; none of them is reached.
  void LoadTargets(const std::string& path);
  /// Takes poses that are given by the centres of all circles, pixels of the frame.
  void SetTargets(const std::vector<std::vector<cv::Point2d>>& targets);
  /// Takes this pose alone, as of Calibrator::ProposePose: also where a view was taken there before.
  void SetTarget(const std::vector<cv::Point2d>& centres);

  int Targets() const;                             ///< how many there are
  int TargetNumber() const;                        ///< of the target to reach now; 0: there is none left
  const std::vector<cv::Point2d>& Target() const;  ///< its centres; empty: there is none left
  std::vector<int> Reached() const;                ///< numbers, ascending
  std::vector<int> LeftOut() const;                ///< numbers of those that were skipped twice, ascending

  /// The target was reached, by the view that was kept last; the next one that was not is asked for.
  void Advance();
  /// Asks for another target. This one comes again after all others; skipped once more then, it is left out.
  void Skip();
  /// Asks for all targets again, from the first one, and forgets all views.
  void Restart();
  /// Goes on where an earlier session ended: these targets are reached, and no others; nothing is left out.
  void SetReached(const std::vector<int>& numbers);
  /// The targets, ascending, that views of an earlier session reached: each view that is at a target counts
  /// for one of them. Views are centres of all circles; empty ones count for none.
  std::vector<int> ReachedBy(const std::vector<std::vector<cv::Point2d>>& views) const;

  // ---- Views that were taken, for a target or by hand.

  void Kept(const std::vector<cv::Point2d>& centres);
  /// Forgets the view that was kept last. If it reached a target, that is the target to reach now.
  void TakenBack();
  int Views() const;  ///< how many are kept

  // ---- Frames.

  /// Compares the frame with the target. Expects every frame that is searched, in the order of their times:
  /// what moves is known from those before.
  GuideAnswer Look(const GuideFrame& frame);
  /// Why this view should not be taken wherever the target is, as a clause in English: the grid was not
  /// found, is moving, is blurred, or is where it was in a view that is kept. Empty: nothing speaks against
  /// it. Also for the frame that Look has just seen; part of a grid will do.
  std::string ReasonAgainst(const GuideFrame& frame) const;

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace velmora
