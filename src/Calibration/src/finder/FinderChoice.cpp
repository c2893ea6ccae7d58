/// Which search a calibrator uses, and what the last one said.
#include "finder/FinderChoice.h"

#include <future>

#include "finder/Pattern.h"
#include "finder/StandardFinder.h"
#include "model/Codes.h"

namespace velmora {

namespace {

using Centres = std::vector<cv::Point2d>;

static_assert(velmora::FINDER_STANDARD == 0, "a choice starts with the default search");

}  // namespace

bool FinderChoice::Set(int finder) {
  if (finder != velmora::FINDER_STANDARD && finder != velmora::FINDER_ROBUST) return false;
  finder_ = finder;
  return true;
}

GridFault FinderChoice::Search(int finder, const cv::Mat& frame, const cv::Size& grid, Centres& points,
                               bool& found, const Sequel& sequel) {
  if (finder == velmora::FINDER_STANDARD || !finder::HasOneOrder(grid)) {
    if (sequel.tracker != nullptr) *sequel.tracker = {};
    found = FindGridStandard(frame, grid, points);
    return GridFault::None;
  }
  GridTracker unknown;
  PartialGrid* const part = sequel.parts ? &sequel.details->part : nullptr;
  GridFinding finding =
      SearchGridRobust(frame, grid, sequel.tracker != nullptr ? *sequel.tracker : unknown, part);
  points = std::move(finding.centres);
  if (sequel.details != nullptr) sequel.details->radii = std::move(finding.radii);
  found = finding.Found();
  return finding.fault;
}

std::array<GridTracker, 2> FinderChoice::Trackers() const {
  const std::lock_guard<std::mutex> lock(lock_);
  return trackers_;
}

void FinderChoice::Keep(const std::array<GridTracker, 2>& trackers) {
  const std::lock_guard<std::mutex> lock(lock_);
  trackers_ = trackers;
}

bool FinderChoice::Find(const cv::Mat& frame, const cv::Size& grid, Centres& points) {
  bool found = false;
  fault_ = Search(finder_, frame, grid, points, found, {});
  return found;
}

bool FinderChoice::Find(const cv::Mat& frame, const cv::Size& grid, Centres& points, GridDetails& details) {
  bool found = false;
  details = {};
  std::array<GridTracker, 2> trackers = Trackers();
  fault_ = Search(finder_, frame, grid, points, found, {&trackers[0], &details, partial_});
  Keep(trackers);
  return found;
}

bool FinderChoice::FindBoth(const cv::Mat& left, const cv::Mat& right, const cv::Size& grid,
                            Centres& leftPoints, Centres& rightPoints, GridDetails& leftDetails,
                            GridDetails& rightDetails) {
  const int finder = finder_;
  const bool partial = partial_;
  leftDetails = {};
  rightDetails = {};
  std::array<GridTracker, 2> trackers = Trackers();
  // The search draws random numbers from its thread's generator.
  const std::uint64_t randomState = cv::theRNG().state;
  // A list of its own, handed over at the end: callers may pass one list for both.
  Centres ofRight;
  bool foundRight = false;
  // Without a thread to be had, the second search follows the first.
  auto rightSearch = std::async(std::launch::async | std::launch::deferred, [&] {
    cv::theRNG().state = randomState;
    return Search(finder, right, grid, ofRight, foundRight, {&trackers[1], &rightDetails, partial});
  });
  bool foundLeft = false;
  const GridFault leftFault =
      Search(finder, left, grid, leftPoints, foundLeft, {&trackers[0], &leftDetails, partial});
  const GridFault rightFault = rightSearch.get();
  rightPoints = std::move(ofRight);
  fault_ = leftFault != GridFault::None ? leftFault : rightFault;
  return foundLeft && foundRight;
}

}  // namespace velmora
