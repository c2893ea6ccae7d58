/// What a guide can be given.
#include "assistant/GuideChecks.h"

#include <cmath>
#include <stdexcept>
#include <string>

namespace velmora {

namespace {

void Require(bool condition, const std::string& fault) {
  if (!condition) throw std::invalid_argument(fault);
}

std::string Named(const cv::Size& size) {
  return std::to_string(size.width) + " x " + std::to_string(size.height);
}

void CheckView(const GuideSettings& settings, const cv::Mat& image, const std::vector<cv::Point2d>& centres,
               const std::vector<double>& weights) {
  if (!image.empty()) {
    Require(image.type() == CV_8UC1 || image.type() == CV_8UC3,
            "the guide's images are of 8 bits, grey or BGR");
    Require(image.size() == settings.frame, "the guide's images are of " + Named(settings.frame) +
                                                " pixels, and this one is of " + Named(image.size()));
  }
  if (!centres.empty()) CheckGuideCentres(settings, centres);
  Require(weights.empty() || weights.size() == centres.size(),
          "there are " + std::to_string(weights.size()) + " weights of " + std::to_string(centres.size()) +
              " circles");
}

}  // namespace

void CheckGuideSettings(const GuideSettings& settings) {
  Require(settings.grid.width >= 2 && settings.grid.height >= 2,
          "a guide needs a grid of two rows of two circles at least");
  Require(settings.frame.width > 0 && settings.frame.height > 0, "a guide needs the size of the frames");
  Require(settings.cameras == 1 || settings.cameras == 2, "a guide is for one camera or two");
}

void CheckGuideCentres(const GuideSettings& settings, const std::vector<cv::Point2d>& centres) {
  Require(centres.size() == static_cast<size_t>(settings.grid.area()),
          "there are " + std::to_string(centres.size()) + " centres, and the grid has " +
              std::to_string(settings.grid.area()) + " circles");
  Require(cv::checkRange(cv::Mat(centres)), "a centre is not finite");
}

void CheckGuideFrame(const GuideSettings& settings, const GuideFrame& frame) {
  Require(std::isfinite(frame.time), "the time of a frame is not finite");
  CheckView(settings, frame.image, frame.centres, frame.weights);
  CheckView(settings, frame.rightImage, frame.rightCentres, frame.rightWeights);
}

bool AllSeen(const std::vector<double>& weights, const std::vector<cv::Point2d>& where,
             const cv::Size& frame) {
  const cv::Rect2d inside(0.0, 0.0, frame.width, frame.height);
  for (size_t i = 0; i < weights.size(); ++i) {
    if (weights[i] <= 0.0 && inside.contains(where[i])) return false;
  }
  return true;
}

}  // namespace velmora
