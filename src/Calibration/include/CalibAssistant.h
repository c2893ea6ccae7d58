/// Guides the user through a sequence of target poses of the grid.
#pragma once

#include <memory>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "Export.h"

/// The pose assistant: shows one target pose at a time, scores how close the detected grid is to it, and
/// moves on to the next.
///
/// States, told by the pose index and the pose count (the goal):
///  1. constructed: index -1, count -2;
///  2. running, after Start, StartAt or Reset: index 0 to count - 1, one target shown;
///  3. finished, after Next on the last pose: index equals count, the last target stays shown;
///  4. stopped, after Stop: index -1, count -1, no poses.
/// A Start that fails leaves (or brings) the assistant to "stopped"; nothing of a half-read model remains.
///
/// Poses are lists of circle centres in pixels of the assistant's frame, in the order of the grid search.
/// Thread-safe but for InitDefaultPattern and DrawPattern, which the others call.
class VELMORA_API CalibAssistant {
 public:
  /// Scores below this count as reached.
  static constexpr int SCORE_TH = 150;
  /// Reserved for a success animation; no drawing uses it yet.
  static constexpr int DRAW_SUCCESS_LENGTH = 10;

  /// Size of the frames to work in, pixels, and of the grid, circles.
  CalibAssistant(const int& frameWidth, const int& frameHeight, const int& patternColumns,
                 const int& patternRows);
  ~CalibAssistant();

  /// Fills the built-in printed sheet (44 circles, 6 outline points; 1753 x 1239 units). For the constructor.
  void InitDefaultPattern();

  /// Reads the model file and maps its poses to the frame. False, silently, when it cannot be read; false,
  /// with an error line that names the file and the fault, when it is no model for this assistant. The poses
  /// are then as they were.
  bool LoadModel(const std::string& path);

  /// Loads the model and shows the first pose. A model that cannot be read or used stops the assistant, with
  /// an error line that names the file and the fault.
  void Start(const std::string& path);
  /// Shows one pose, given by the circles' centres. False, with an error line, for one that cannot be shown;
  /// the poses are then as they were.
  bool StartAt(const std::vector<cv::Point2d>& centres);
  /// True after StartAt: the one who gave the pose decides what follows it.
  bool IsSinglePose() const;
  void Stop();
  /// Back to the first pose; nothing happens without poses.
  void Reset();
  /// Moves on to the next pose. True when the sequence is finished (the last target then stays).
  bool Next();

  /// Number of poses; -2 before the first Start, -1 after Stop.
  int GetGoal() const;
  /// Number of poses minus the index of the current one.
  int GetRemainingPoseCount() const;
  /// The result of the last CheckValidity; 10000 when nothing could be compared.
  float GetScore() const;

  /// Scores the detected centres against the target; true when the pose is reached (score below SCORE_TH).
  bool CheckValidity(const std::vector<cv::Point2d>& points);

  /// Draws the target and the score bar on an 8-bit frame, in place. Nothing is drawn before Start and after
  /// Stop.
  void DrawPose(cv::Mat& frame);
  /// The drawing itself, without the lock: for DrawPose.
  void DrawPattern(cv::Mat& frame);

 private:
  struct Impl;
  const std::unique_ptr<Impl> impl_;
};
