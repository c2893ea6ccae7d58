/// Cuts the frames of a side-by-side camera.
#include "capture/FrameSplit.h"

namespace velmora {

namespace {

constexpr int RIGHT_ALONE = 1;
constexpr int LEFT_ALONE = -1;
constexpr int PAIR = 0;

}  // namespace

CapturedViews SplitViews(const cv::Mat& frame, int mode) {
  const int half = frame.cols / 2;
  const auto left = [&] { return frame(cv::Rect(0, 0, half, frame.rows)).clone(); };
  const auto right = [&] { return frame(cv::Rect(half, 0, half, frame.rows)).clone(); };
  if (mode == RIGHT_ALONE) return {right(), {}, false};
  if (mode == LEFT_ALONE) return {left(), {}, false};
  return {left(), right(), mode == PAIR};
}

}  // namespace velmora
