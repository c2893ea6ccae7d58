/// Windows and keys, as far as the interactive loops need them.
#include "Screen.h"

#include <opencv2/highgui.hpp>

namespace app {

void DesktopScreen::Show(const std::string& window, const cv::Mat& picture) {
  // Made before its first picture: the window that imshow makes by itself has a tool bar wider than the
  // picture.
  if (opened_.insert(window).second) cv::namedWindow(window, cv::WINDOW_AUTOSIZE | cv::WINDOW_GUI_NORMAL);
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

}  // namespace app
