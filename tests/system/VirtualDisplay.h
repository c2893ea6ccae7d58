/// A virtual desktop of its own: an X server without a monitor, its windows, keys and pictures.
#pragma once

#include <chrono>
#include <functional>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "Process.h"
#include "TemporaryFolder.h"

namespace system_test {

/// Far more than anything in these tests takes on a busy machine; reached only when a test fails.
constexpr std::chrono::milliseconds PATIENCE{60000};

/// Calls the function again and again until it returns true; false when the deadline comes first.
bool WaitUntil(const std::function<bool()>& condition, std::chrono::milliseconds deadline = PATIENCE);

/// An X server that lives as long as the object, on a display number that was free.
class VirtualDisplay {
 public:
  /// Throws std::runtime_error when the server does not start.
  VirtualDisplay();

  /// Such as ":5".
  const std::string& Display() const { return display_; }

  /// The first window whose title is exactly this; empty when there is none.
  std::string FindWindow(const std::string& title);
  /// Waits for a window and finds it.
  std::string AwaitWindow(const std::string& title);

  /// Presses and releases a key in the window. Keys are named as xdotool names them.
  void PressKey(const std::string& window, const std::string& key);

  /// Asks the window to close, as the X in its title bar does. Throws std::runtime_error when it cannot be
  /// asked.
  void CloseWindow(const std::string& window);

  /// The size of the window's inside; empty when it is gone.
  cv::Size SizeOf(const std::string& window);

  /// What the window shows; empty when it is gone.
  cv::Mat PictureOf(const std::string& window);

 private:
  /// Runs a program on the desktop; its standard output, empty when it failed.
  std::string RunTool(const std::vector<std::string>& arguments);

  support::TemporaryFolder folder_;
  support::Process server_;
  std::string display_;
};

}  // namespace system_test
