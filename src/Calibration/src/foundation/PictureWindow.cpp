/// Opens windows that fit a screen.
#include <algorithm>
#include <opencv2/highgui.hpp>

#include "Display.h"

namespace {

/// What nearly every screen has room for.
const cv::Size ROOM(1280, 720);

}  // namespace

bool FitsAScreen(const cv::Size& picture) {
  return picture.width <= ROOM.width && picture.height <= ROOM.height;
}

void OpenPictureWindow(const std::string& title, const cv::Size& picture) {
  // With its tool bar a window would be wider than its picture.
  if (FitsAScreen(picture)) {
    cv::namedWindow(title, cv::WINDOW_AUTOSIZE | cv::WINDOW_GUI_NORMAL);
    return;
  }
  cv::namedWindow(title, cv::WINDOW_NORMAL | cv::WINDOW_KEEPRATIO | cv::WINDOW_GUI_NORMAL);
  const double scale = std::min(static_cast<double>(ROOM.width) / picture.width,
                                static_cast<double>(ROOM.height) / picture.height);
  cv::resizeWindow(title, std::max(cvRound(scale * picture.width), 1),
                   std::max(cvRound(scale * picture.height), 1));
}
