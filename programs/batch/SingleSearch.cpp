/// What is seen of the grid in one image, whatever others show.
#include "batch/SingleSearch.h"

#include <algorithm>
#include <cstdint>
#include <exception>

#include "Calibrator.h"
#include "batch/Chessboard.h"
#include "common/EngineOptions.h"
#include "common/OneLine.h"

namespace batch {

namespace {

const std::string CUT = "the file ends too early";

/// OpenCV's search draws random numbers from its thread's generator, whose first state this is.
constexpr std::uint64_t RANDOM_STATE = 0xffffffff;

std::string FaultWithoutGrid(const NamedImage& input, Calibrator& calibrator) {
  const std::string reason = input.endsTooEarly             ? CUT
                             : ShowsChessboard(input.image) ? "a chessboard; a grid of circles is needed"
                                                            : calibrator.WhyNotFound();
  return reason.empty() ? "no grid found" : "no grid found: " + reason;
}

void Search(NamedImage& input, const Arguments& arguments, Wanted wanted, SearchOutcome& outcome) {
  Read(input);
  outcome.size = input.image.size();
  if (input.image.empty()) {
    outcome.fault = "cannot be decoded" + (input.endsTooEarly ? ": " + CUT : "");
    return;
  }
  // A calibrator of its own: one that has seen other images looks first where these had the grid.
  const cv::Size frame = FrameSizeOf(arguments, outcome.size);
  Calibrator calibrator(arguments.grid, UnitOf(arguments), Calibrator::MONOCULAR, frame.width, frame.height);
  common::ApplyEngineOptions(arguments, UnitOf(arguments), calibrator);
  calibrator.SetPartialGrids(wanted == Wanted::Views && arguments.TakesParts());
  cv::theRNG().state = RANDOM_STATE;
  GridView& view = outcome.view;
  const bool found = wanted == Wanted::Views ? calibrator.DetectPartial(input.image, view.points,
                                                                        view.weights, view.deviations, false)
                                             : calibrator.DetectPoints(input.image, view.points, false);
  if (!found) {
    outcome.fault = FaultWithoutGrid(input, calibrator);
    view = {};
  }
}

}  // namespace

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

float UnitOf(const Arguments& arguments) {
  return arguments.hdist / static_cast<float>(arguments.grid.height - 1);
}

cv::Size FrameSizeOf(const Arguments& arguments, const cv::Size& imageSize) {
  return {arguments.frame.width > 0 ? arguments.frame.width : imageSize.width,
          arguments.frame.height > 0 ? arguments.frame.height : imageSize.height};
}

SearchOutcome SearchImage(NamedImage& input, const Arguments& arguments, Wanted wanted) {
  return OutcomeOf([&](SearchOutcome& outcome) { Search(input, arguments, wanted, outcome); });
}

SearchOutcome OutcomeOf(const std::function<void(SearchOutcome&)>& look) {
  SearchOutcome outcome;
  try {
    look(outcome);
  } catch (const std::exception& error) {
    outcome.view = {};
    outcome.fault = "cannot be searched: " + common::OneLine(error.what());
  }
  return outcome;
}

}  // namespace batch
