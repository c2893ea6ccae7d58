/// The information overlay of the live image.
#include "imaging/Overlay.h"

#include <algorithm>
#include <array>
#include <limits>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>
#include <optional>
#include <sstream>

#include "foundation/Version.h"
#include "model/Codes.h"

namespace velmora {

namespace {

const cv::Scalar WHITE(255, 255, 255);
const cv::Scalar GREY = cv::Scalar::all(200);
/// Those in which OpenCV draws the rows of a grid, in turn.
const std::array<cv::Scalar, 7> ROW_COLOURS = {
    cv::Scalar(0, 0, 255),   cv::Scalar(0, 128, 255), cv::Scalar(0, 200, 200), cv::Scalar(0, 255, 0),
    cv::Scalar(200, 200, 0), cv::Scalar(255, 0, 0),   cv::Scalar(255, 0, 255)};

struct SpeedLabel {
  int atLeast;  ///< detections per second, truncated
  const char* text;
  cv::Scalar colour;
};

const SpeedLabel SPEED_LABELS[] = {{31, "excellent", cv::Scalar(0, 255, 0)},
                                   {23, "good", cv::Scalar(0, 255, 128)},
                                   {16, "medium", cv::Scalar(0, 255, 255)},
                                   {8, "low", cv::Scalar(0, 128, 255)},
                                   {std::numeric_limits<int>::min(), "poor", cv::Scalar(0, 0, 255)}};

const char* StatusWord(int status) {
  switch (status) {
    case velmora::STATUS_NOT_READY:
      return "NOT READY";
    case velmora::STATUS_READY:
      return "READY";
    case velmora::STATUS_COMPLETED:
      return "COMPLETED";
    case velmora::STATUS_PROGRESS:
      return "PROGRESS";
    default:
      return "UNKNOWN";
  }
}

/// A rate beyond the range of an int (no time elapsed at all) says nothing about the speed: the lowest label.
const SpeedLabel& LabelOf(double rate) {
  const bool countable = rate < static_cast<double>(std::numeric_limits<int>::max());
  const int truncated = countable ? static_cast<int>(rate) : std::numeric_limits<int>::min();
  const SpeedLabel* label = SPEED_LABELS;
  while (truncated < label->atLeast) ++label;
  return *label;
}

OverlayText SpeedText(double elapsed) {
  const double rate = 1.0 / elapsed;
  const SpeedLabel& label = LabelOf(rate);
  std::ostringstream text;
  text.precision(3);
  text << label.text << " (" << rate << ")";
  return {text.str(), {130, 100}, label.colour};
}

std::string SnapshotText(const OverlayState& state) {
  std::ostringstream text;
  text << "snapshot: " << state.snapshots;
  if (state.goal > 5) text << " / " << state.goal;
  return text.str();
}

std::string SizeText(const cv::Size& size) {
  std::ostringstream text;
  text << "image size: [" << size.width << " x " << size.height << "]";
  return text.str();
}

}  // namespace

std::vector<OverlayText> OverlayTexts(const OverlayState& state) {
  return {{SnapshotText(state), {10, 60}, WHITE},
          {SizeText(state.frameSize), {10, 40}, WHITE},
          {std::string("version: ") + velmora::VERSION, {10, 20}, WHITE},
          {std::string("status: ") + StatusWord(state.status), {10, 80}, WHITE},
          {"performances:", {10, 100}, WHITE},
          SpeedText(state.elapsed)};
}

void DrawOverlay(const OverlayState& state, cv::Mat& frame) {
  for (const OverlayText& line : OverlayTexts(state)) {
    cv::putText(frame, line.text, line.origin, cv::FONT_HERSHEY_DUPLEX, 0.5, line.colour, 1, cv::LINE_AA,
                false);
  }
}

void DrawGrid(const std::vector<cv::Point2d>& points, const cv::Size& patternSize, cv::Mat& frame) {
  cv::Mat corners;
  cv::Mat(points).convertTo(corners, CV_32F);
  cv::drawChessboardCorners(frame, patternSize, corners, true);
}

void DrawSeenGrid(const std::vector<cv::Point2d>& points, const std::vector<double>& weights,
                  const cv::Size& patternSize, cv::Mat& frame) {
  const auto isObserved = [](double weight) { return weight > 0.0; };
  if (std::all_of(weights.begin(), weights.end(), isObserved)) return DrawGrid(points, patternSize, frame);
  constexpr int RADIUS = 4;
  constexpr int SHIFT = 4;  // sixteenths of a pixel
  constexpr double SCALE = 16.0;
  const auto columns = static_cast<size_t>(patternSize.width);
  std::optional<cv::Point> before;
  for (size_t k = 0; k < points.size(); ++k) {
    if (!isObserved(weights[k])) continue;
    const cv::Point at(cvRound(points[k].x * SCALE), cvRound(points[k].y * SCALE));
    const cv::Scalar colour = frame.channels() == 1 ? GREY : ROW_COLOURS.at(k / columns % ROW_COLOURS.size());
    if (before) cv::line(frame, *before, at, colour, 1, cv::LINE_AA, SHIFT);
    cv::circle(frame, at, RADIUS * static_cast<int>(SCALE), colour, 1, cv::LINE_AA, SHIFT);
    before = at;
  }
}

}  // namespace velmora
