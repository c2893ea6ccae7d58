#include "Screen.h"

#include <opencv2/highgui.hpp>

namespace app {

void DesktopScreen::Show(const std::string& window, const cv::Mat& picture) {
  cv::imshow(window, picture);
}

int DesktopScreen::WaitKey(int milliseconds) {
  return cv::waitKey(milliseconds);
}

void DesktopScreen::Close(const std::string& window) {
  try {
    cv::destroyWindow(window);
  } catch (const cv::Exception&) {
    // Closed by its user already.
  }
}

}  // namespace app
