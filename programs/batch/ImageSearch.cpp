/// The search of the grid in one camera's images.
#include "batch/ImageSearch.h"

#include "common/EngineOptions.h"

namespace batch {

namespace {

const cv::Size SUPPLIED_GRID(4, 11);
constexpr size_t KEPT = 4;  // images, which may be large

std::string SizeText(const cv::Size& size) {
  return std::to_string(size.width) + " x " + std::to_string(size.height);
}

}  // namespace

int FewestCircles(const cv::Size& grid) {
  return (3 * grid.area() + 3) / 4;
}

std::string ImageSearch::FaultOf(const NamedImage& input, const SearchOutcome& outcome) {
  if (outcome.size.empty()) return outcome.fault;
  if (calibrator_ == nullptr) {
    inputSize_ = outcome.size;
    const cv::Size frame = FrameSize();
    calibrator_ = std::make_unique<Calibrator>(arguments_.grid, UnitOf(arguments_), Calibrator::MONOCULAR,
                                               frame.width, frame.height);
    common::ApplyEngineOptions(arguments_, UnitOf(arguments_), *calibrator_);
    calibrator_->SetPartialGrids(arguments_.TakesParts());
  }
  if (outcome.size != inputSize_) return "of another size than the first (" + SizeText(inputSize_) + ")";
  if (!outcome.fault.empty() && arguments_.grid != SUPPLIED_GRID && withoutGrid_.size() < KEPT &&
      !input.image.empty()) {
    withoutGrid_.push_back(input.image.clone());
  }
  return outcome.fault;
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

}  // namespace batch
