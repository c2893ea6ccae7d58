/// Images of the review after a computation.
#include "imaging/Review.h"

#include <opencv2/imgproc.hpp>
#include <sstream>

#include "imaging/Overlay.h"

namespace velmora {

namespace {

const cv::Scalar WHITE(255, 255, 255);
constexpr int LINE_HEIGHT = 20;

template <typename... Parts>
std::string Text(const Parts&... parts) {
  std::ostringstream text;
  (text << ... << parts);
  return text.str();
}

}  // namespace

std::vector<std::string> ReviewTexts(const ReviewView& view, const ReviewResult* result) {
  std::vector<std::string> texts = {Text("Frame: ", view.number, " / ", view.total)};
  if (result != nullptr) {
    texts.push_back(Text("Error: ", result->error));
    texts.push_back(Text("Total RMS: ", result->rms));
  }
  return texts;
}

cv::Mat DrawReview(const ReviewView& view, const ReviewResult* result) {
  cv::Mat image = view.snapshot.empty() ? cv::Mat::zeros(view.blankSize, CV_8UC3) : view.snapshot.clone();
  int y = 0;
  for (const std::string& text : ReviewTexts(view, result)) {
    y += LINE_HEIGHT;
    cv::putText(image, text, {10, y}, cv::FONT_HERSHEY_SIMPLEX, 0.5, WHITE, 1, cv::LINE_8, false);
  }
  if (result != nullptr && !result->projected.empty())
    DrawSeenGrid(result->projected, view.weights, view.patternSize, image);
  return image;
}

}  // namespace velmora
