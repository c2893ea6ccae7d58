/// Leads the user from pose to pose by an assistant.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

class CalibAssistant;

namespace velmora {

/// Holds the assistant, if there is one, and decides when a detection is the pose that it asks for. All
/// functions are thread-safe; an assistant that is replaced meanwhile serves the detection that began with
/// it.
class Guidance {
 public:
  Guidance(const cv::Size& grid, const cv::Size& processingSize)
      : grid_(grid), processingSize_(processingSize) {}

  /// Replaces the assistant by one of the poses of a model file, started.
  void Start(const std::string& modelPath);
  /// Replaces it by one that asks for a single pose; false, with an error line, for centres that are none.
  bool StartAt(const std::vector<cv::Point2d>& centres);
  void End();

  /// The number of its poses; -1 without an assistant.
  int Goal() const;
  /// Null without one.
  std::shared_ptr<CalibAssistant> Current() const;

  /// What a detection comes to under an assistant.
  enum class Step {
    Elsewhere,  ///< the grid is not at the pose, or its snapshot was refused: the same pose is asked for
    Taken,      ///< a snapshot was taken
    Finished    ///< and it was the last pose: a computation is to follow
  };
  /// `take` takes the snapshot and answers the new count of snapshots, 0 when it is refused.
  Step Assess(const std::shared_ptr<CalibAssistant>& assistant, const std::vector<cv::Point2d>& points,
              const std::function<size_t()>& take);

 private:
  void Replace(std::shared_ptr<CalibAssistant> assistant);
  void EndIf(const std::shared_ptr<CalibAssistant>& assistant);

  const cv::Size grid_;
  const cv::Size processingSize_;
  mutable std::mutex lock_;  ///< guards which assistant there is
  std::shared_ptr<CalibAssistant> assistant_;
};

}  // namespace velmora
