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

}  // namespace common
