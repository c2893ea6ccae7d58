/// A calibrator's use of the preview window.
#pragma once

#include <atomic>
#include <mutex>
#include <opencv2/core.hpp>
#include <string>

#include "capture/PreviewWindow.h"

namespace velmora {

/// Whether a calibrator shows its frames, and whether the window is open for it. When no window can be opened
/// one error line is printed and the preview is off. All functions are thread-safe; Show never waits for the
/// window.
class Preview {
 public:
  explicit Preview(PreviewWindow& window = PreviewWindow::Instance());
  ~Preview();
  Preview(const Preview&) = delete;
  Preview& operator=(const Preview&) = delete;

  /// Switches the preview on and opens the window; nothing happens when it is on.
  void Open();
  /// Switches it off and closes the window; nothing happens when it is off.
  void Close();

  /// To be told of each source that was opened: opens the window again when the preview is on.
  void SourceOpened();
  /// To be told of each source that was closed: closes the window. The preview stays on.
  void SourceClosed();

  bool Enabled() const { return enabled_; }
  /// Shows a copy of the frame, when the preview is on.
  void Show(const cv::Mat& frame);
  /// Both side by side; the frame alone when the right one is empty.
  void Show(const cv::Mat& frame, const cv::Mat& right);

 private:
  void OpenWindow();
  void CloseWindow();

  PreviewWindow& window_;
  std::atomic<bool> enabled_{false};
  std::mutex lock_;
  bool windowOpen_ = false;  ///< guarded by lock_
};

/// A picture of both: the right one is brought to the left one's size, and grey ones to colour, where they
/// differ.
cv::Mat SideBySidePicture(const cv::Mat& left, const cv::Mat& right);

}  // namespace velmora
