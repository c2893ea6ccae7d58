/// A run of the application on a virtual desktop, driven as its user drives it.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "VirtualDisplay.h"

namespace system_test {

/// The running application. A key press is repeated only when it has shown no effect for seconds: the window
/// takes keys from the moment on at which it is ready for them, which is not to be seen from outside.
class Session {
 public:
  /// Starts the application in the folder, with variables of its own beside those of this process.
  Session(VirtualDisplay& virtualDisplay, const std::vector<std::string>& arguments,
          const std::string& folder, const std::map<std::string, std::string>& environment = {});

  support::Process& Application() { return application_; }

  /// Presses a key in the window of that title until the effect shows; false when it never does.
  bool Press(const std::string& title, const std::string& key, const std::function<bool()>& effect);

  /// Waits until the live window shows a picture; false when it never does.
  bool AwaitPicture();

  /// Presses p once; the line that this prints, empty when there is none.
  std::string TakeSnapshot();
  /// Presses ENTER and, once the calibration is computed, walks through the review with a key press per view.
  /// The number of views that were shown.
  int CalibrateAndReview();
  /// Presses ENTER and waits until the calibration is computed and the loop goes on, without a review. False
  /// when that never happens.
  bool Calibrate();
  /// Presses q; the exit status.
  int Quit();

  /// What the window of that title shows, once it holds still.
  cv::Mat StillPicture(const std::string& title);

 private:
  bool ReviewIsOpen();

  VirtualDisplay& virtualDisplay_;
  support::Process application_;
};

/// Runs the application without any desktop to its end; DISPLAY is taken away, or set to the given one.
struct Ending {
  int status;
  std::string output;
  std::string errors;
};
Ending RunToEnd(const std::vector<std::string>& arguments, const std::string& display = "");

/// True when both pictures are the same.
bool Same(const cv::Mat& a, const cv::Mat& b);

}  // namespace system_test
