/// Records the poses of snapshots for a model of the assistant.
#pragma once

#include <mutex>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "JSON.h"

namespace velmora {

/// Thread-safe; the file is written without a lock. Poses are numbered over all recordings: a second one's
/// file begins with the number after the first one's last.
class PoseRecording {
 public:
  explicit PoseRecording(const cv::Size& processingSize) : processingSize_(processingSize) {}

  /// Nothing when a recording is under way.
  void Start();
  /// The centres of a snapshot; nothing without a recording.
  void Add(const std::vector<cv::Point2d>& points);
  /// Ends the recording, whether or not the file can be written.
  void Stop();
  /// Ends it and writes its poses. False when nothing is recorded, and when the file cannot be written: the
  /// recording then goes on.
  bool StopInto(const std::string& path);

 private:
  bool Current(JSON& document);
  void End();

  const cv::Size processingSize_;
  std::mutex lock_;  ///< guards all that follows
  bool recording_ = false;
  int poses_ = 0;  ///< of all recordings
  JSON document_;
};

}  // namespace velmora
