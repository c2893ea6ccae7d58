/// Draws the pose to reach.
#include "assistant/AssistantDrawing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <opencv2/imgproc.hpp>

#include "CalibAssistant.h"

namespace velmora {

namespace {

const cv::Scalar BLACK(0, 0, 0);
const cv::Scalar WHITE(255, 255, 255);
const cv::Scalar GREEN(0, 255, 0);
const std::array<cv::Scalar, 7> PALETTE = {
    cv::Scalar(0, 0, 255),   cv::Scalar(0, 128, 255), cv::Scalar(0, 200, 200), cv::Scalar(0, 255, 0),
    cv::Scalar(200, 200, 0), cv::Scalar(255, 0, 0),   cv::Scalar(255, 0, 255)};

constexpr double CIRCLE_RADIUS = 9.0;
constexpr float FULL_BAR = 2850.0F;  ///< score above the threshold at which the bar spans the frame

cv::Point Rounded(const cv::Point2f& point) {
  return {cvRound(point.x), cvRound(point.y)};
}
cv::Point Truncated(const cv::Point2f& point) {
  return {static_cast<int>(point.x), static_cast<int>(point.y)};
}

std::vector<cv::Point2f> Mapped(const std::vector<cv::Point2f>& points, const cv::Mat& homography) {
  std::vector<cv::Point2f> mapped;
  cv::perspectiveTransform(points, mapped, homography);
  return mapped;
}

void Fill(cv::Mat& layer, const std::vector<cv::Point>& polygon, const cv::Scalar& colour) {
  cv::fillPoly(layer, std::vector<std::vector<cv::Point>>{polygon}, colour, cv::LINE_8);
}

int RadiusOf(const TargetDrawing& drawing) {
  return std::max(0, static_cast<int>(drawing.scale * CIRCLE_RADIUS));
}

/// All that the figure and the sheet can touch, within the frame.
cv::Rect TouchedPart(const std::vector<cv::Point2f>& corners, const std::vector<cv::Point2f>& circles,
                     int radius, const cv::Size& frame) {
  constexpr int LINE_MARGIN = 4;
  std::vector<cv::Point2f> all = corners;
  all.insert(all.end(), circles.begin(), circles.end());
  const cv::Rect bounds = cv::boundingRect(all);
  const int margin = radius + LINE_MARGIN;
  return cv::Rect(bounds.tl() - cv::Point(margin, margin), bounds.br() + cv::Point(margin, margin)) &
         cv::Rect(cv::Point(), frame);
}

void DrawFigure(const TargetDrawing& drawing, const std::vector<cv::Point2f>& corners,
                const std::vector<cv::Point2f>& circles, cv::Mat& layer) {
  const int radius = RadiusOf(drawing);
  for (size_t i = 0; i < circles.size(); ++i) {
    const cv::Scalar& colour = PALETTE[i / static_cast<size_t>(drawing.columns) % PALETTE.size()];
    cv::circle(layer, Rounded(circles[i]), radius, colour, 1, cv::LINE_AA);
  }
  const auto line = [&](size_t from, size_t to) {
    cv::line(layer, Rounded(corners[from]), Rounded(corners[to]), BLACK, 2, cv::LINE_AA);
  };
  line(0, 1);
  line(1, 2);
  line(2, 3);
  line(3, 0);
  line(4, 5);
  // Filled shapes truncate where lines round; the pixel between them at the edges is accepted.
  Fill(layer, {Truncated(corners[3]), Truncated(corners[4]), Truncated(corners[5])}, BLACK);
}

/// Where the (convex) polygon covers each row of the frame. A target stays for many frames, so this is worked
/// out when it changes.
const std::vector<cv::Range>& SpansOf(const std::vector<cv::Point>& polygon, const cv::Size& frame,
                                      DrawingLayers& layers) {
  if (polygon == layers.polygon && frame == layers.frame) return layers.spans;
  cv::Mat mask = cv::Mat::zeros(frame, CV_8U);
  Fill(mask, polygon, WHITE);
  layers.spans.assign(static_cast<size_t>(frame.height), cv::Range(0, 0));
  for (int y = 0; y < frame.height; ++y) {
    const auto* const row = mask.ptr<unsigned char>(y);
    const auto* const first = std::find(row, row + frame.width, 255);
    const auto* last = row + frame.width;
    while (last > first && last[-1] == 0) --last;
    layers.spans[static_cast<size_t>(y)] = {static_cast<int>(first - row), static_cast<int>(last - row)};
  }
  layers.polygon = polygon;
  layers.frame = frame;
  return layers.spans;
}

/// Makes the part of the sheet layer the frame with the sheet's paper blended in: white in the polygon,
/// weighing 0.3.
void BlendPaper(const cv::Mat& frame, const cv::Rect& part, const std::vector<cv::Point>& polygon,
                DrawingLayers& layers) {
  const std::vector<cv::Range>& spans = SpansOf(polygon, frame.size(), layers);
  layers.sheet.create(frame.size(), frame.type());
  cv::Mat sheet = layers.sheet(part);
  // Everywhere at first, in one pass: 0.3 of white and 0.7 of the frame. Then what is no paper is put back.
  frame(part).convertTo(sheet, -1, 0.7, 0.3 * 255.0);
  const size_t pixel = frame.elemSize();
  for (int y = part.y; y < part.br().y; ++y) {
    const cv::Range& span = spans[static_cast<size_t>(y)];
    const auto putBack = [&](int from, int to) {
      if (from >= to) return;
      const auto* const source = frame.ptr<unsigned char>(y);
      std::copy(source + static_cast<size_t>(from) * pixel, source + static_cast<size_t>(to) * pixel,
                layers.sheet.ptr<unsigned char>(y) + static_cast<size_t>(from) * pixel);
    };
    putBack(part.x, std::min(span.start, part.br().x));
    putBack(std::max(span.end, part.x), part.br().x);
  }
}

void DrawScoreBar(const TargetDrawing& drawing, cv::Mat& frame) {
  const int half = drawing.frameSize.width / 2;
  const float above = drawing.score - static_cast<float>(CalibAssistant::SCORE_TH);
  const int length = std::max(0, static_cast<int>(static_cast<float>(half) * (above / FULL_BAR)));
  const int y = drawing.frameSize.height - 2;
  cv::line(frame, {half + length, y}, {half - length, y}, GREEN, 2, cv::LINE_AA);
}

}  // namespace

void DrawTarget(const TargetDrawing& drawing, cv::Mat& frame, DrawingLayers& layers) {
  const std::vector<cv::Point2f> corners = Mapped(drawing.outline, drawing.homography);
  const std::vector<cv::Point2f> circles = Mapped(drawing.circles, drawing.homography);
  // Elsewhere the layers equal the frame, and blending would change nothing.
  const cv::Rect part = TouchedPart(corners, circles, RadiusOf(drawing), frame.size());
  if (!part.empty()) {
    BlendPaper(frame, part,
               {Truncated(corners[0]), Truncated(corners[1]), Truncated(corners[2]), Truncated(corners[3])},
               layers);
    // The frame itself becomes the layer of the figure.
    DrawFigure(drawing, corners, circles, frame);
    // Between 0.5 and 1.5: weights above 1 over-expose the figure, so that it stands out from the real sheet.
    const double weight = 1.0 - 0.5 * std::cos(5.0 * drawing.age);
    cv::Mat target = frame(part);
    cv::addWeighted(target, weight, layers.sheet(part), 1.0 - weight, 0.0, target);
  }
  DrawScoreBar(drawing, frame);
}

}  // namespace velmora
