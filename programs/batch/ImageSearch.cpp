/// The search of the grid in one camera's images.
#include "batch/ImageSearch.h"

#include <algorithm>

#include "batch/Chessboard.h"
#include "common/EngineOptions.h"

namespace batch {

namespace {

const cv::Size SUPPLIED_GRID(4, 11);
const std::string CUT = "the file ends too early";
constexpr size_t KEPT = 4;  // images, which may be large

std::string SizeText(const cv::Size& size) {
  return std::to_string(size.width) + " x " + std::to_string(size.height);
}

}  // namespace

float UnitOf(const Arguments& arguments) {
  return arguments.hdist / static_cast<float>(arguments.grid.height - 1);
}

bool GridView::IsPart() const {
  return std::any_of(weights.begin(), weights.end(), [](double weight) { return weight == 0.0; });
}

Centres GridView::Seen() const {
  Centres seen;
  for (size_t k = 0; k < points.size(); ++k) {
    if (weights[k] > 0.0) seen.push_back(points[k]);
  }
  return seen;
}

void KeepCommon(GridView& left, GridView& right) {
  for (size_t k = 0; k < left.weights.size(); ++k) {
    const double both = std::min(left.weights[k], right.weights[k]);
    left.weights[k] = both;
    right.weights[k] = both;
  }
}

int FewestCircles(const cv::Size& grid) {
  return (3 * grid.area() + 3) / 4;
}

std::string ImageSearch::FaultBeforeSearch(const NamedImage& input) {
  if (input.image.empty()) return "cannot be decoded" + (input.endsTooEarly ? ": " + CUT : "");
  if (calibrator_ == nullptr) {
    inputSize_ = input.image.size();
    const cv::Size frame = FrameSize();
    calibrator_ = std::make_unique<Calibrator>(arguments_.grid, UnitOf(arguments_), Calibrator::MONOCULAR,
                                               frame.width, frame.height);
    common::ApplyEngineOptions(arguments_, UnitOf(arguments_), *calibrator_);
    calibrator_->SetPartialGrids(arguments_.TakesParts());
  }
  if (input.image.size() != inputSize_)
    return "of another size than the first (" + SizeText(inputSize_) + ")";
  return "";
}

std::string ImageSearch::FaultOf(NamedImage& input, Centres& centres) {
  std::string fault = FaultBeforeSearch(input);
  if (!fault.empty()) return fault;
  return calibrator_->DetectPoints(input.image, centres, false) ? "" : FaultWithoutGrid(input);
}

std::string ImageSearch::FaultOf(NamedImage& input, GridView& view) {
  std::string fault = FaultBeforeSearch(input);
  if (!fault.empty()) return fault;
  const bool found =
      calibrator_->DetectPartial(input.image, view.points, view.weights, view.deviations, false);
  return found ? "" : FaultWithoutGrid(input);
}

std::string ImageSearch::FaultWithoutGrid(const NamedImage& input) {
  if (arguments_.grid != SUPPLIED_GRID && withoutGrid_.size() < KEPT) {
    withoutGrid_.push_back(input.image.clone());
  }
  const std::string reason = input.endsTooEarly             ? CUT
                             : ShowsChessboard(input.image) ? "a chessboard; a grid of circles is needed"
                                                            : calibrator_->WhyNotFound();
  return reason.empty() ? "no grid found" : "no grid found: " + reason;
}

std::string ImageSearch::OtherGridText() {
  if (withoutGrid_.empty()) return "";
  const cv::Size frame = FrameSize();
  Calibrator supplied(SUPPLIED_GRID, UnitOf(arguments_), Calibrator::MONOCULAR, frame.width, frame.height);
  supplied.SetFinder(Calibrator::FINDER_ROBUST);
  for (cv::Mat& image : withoutGrid_) {
    Centres centres;
    if (!supplied.DetectPoints(image, centres, false)) continue;
    return "These images show a 4x11 grid, not one of " + std::to_string(arguments_.grid.width) + "x" +
           std::to_string(arguments_.grid.height) + ": leave --grid out.\n";
  }
  return "";
}

cv::Size ImageSearch::FrameSize() const {
  return {arguments_.frame.width > 0 ? arguments_.frame.width : inputSize_.width,
          arguments_.frame.height > 0 ? arguments_.frame.height : inputSize_.height};
}

}  // namespace batch
