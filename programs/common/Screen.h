/// Windows and keys, as far as the interactive loops need them.
#pragma once

#include <opencv2/core.hpp>
#include <set>
#include <string>

namespace common {

/// Shows pictures in named windows and reads keys. All calls come from one thread.
class Screen {
 public:
  virtual ~Screen() = default;

  /// Shows the picture; opens the window if need be.
  virtual void Show(const std::string& window, const cv::Mat& picture) = 0;
  /// The code of the key pressed within that many milliseconds, -1 without one.
  virtual int WaitKey(int milliseconds) = 0;
  virtual void Close(const std::string& window) = 0;
  /// Whether its user has closed the window since it was shown. To be asked after WaitKey.
  virtual bool WasClosed(const std::string&) { return false; }
};

/// The windows of the desktop.
class DesktopScreen final : public Screen {
 public:
  void Show(const std::string& window, const cv::Mat& picture) override;
  int WaitKey(int milliseconds) override;
  void Close(const std::string& window) override;
  bool WasClosed(const std::string& window) override;

 private:
  std::set<std::string> opened_;
};

}  // namespace common
