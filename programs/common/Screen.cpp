/// Windows and keys, as far as the interactive loops need them.
#include "common/Screen.h"

#include <opencv2/highgui.hpp>

#include "Display.h"

namespace common {

void DesktopScreen::Show(const std::string& window, const cv::Mat& picture) {
  // Made before its first picture: the window that imshow makes by itself has a tool bar wider than the
  // picture, and is as large as that.
  if (opened_.insert(window).second) OpenPictureWindow(window, picture.size());
  cv::imshow(window, picture);
}

int DesktopScreen::WaitKey(int milliseconds) {
  return cv::waitKey(milliseconds);
}

void DesktopScreen::Close(const std::string& window) {
  opened_.erase(window);
  try {
    cv::destroyWindow(window);
  } catch (const cv::Exception&) {
    // Closed by its user already.
  }
}

bool DesktopScreen::WasClosed(const std::string& window) {
  if (opened_.count(window) == 0) return false;
  try {
    return cv::getWindowProperty(window, cv::WND_PROP_VISIBLE) == 0.0;  // negative: it cannot be told
  } catch (const cv::Exception&) {
    return true;  // no window is left
  }
}

}  // namespace common
