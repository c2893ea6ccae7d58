/// Which search a calibrator uses, and what the last one said.
#include "finder/FinderChoice.h"

#include <future>

#include "finder/CentreFit.h"
#include "finder/Grey.h"
#include "finder/Pattern.h"
#include "finder/StandardFinder.h"
#include "model/Codes.h"

namespace velmora {

namespace {

using Centres = std::vector<cv::Point2d>;

static_assert(velmora::FINDER_STANDARD == 0, "a choice starts with the default search");

/// Measures the centres of the grid, or of the part of it, that was found.
void MeasureFound(const cv::Mat& frame, const cv::Size& grid, GridFinding& finding, PartialGrid* part) {
  const auto measure = [&](Centres& centres, const std::vector<double>& radii) {
    centres = MeasureCentres(finder::GreyOf(frame), grid, centres, radii).centres;
  };
  if (finding.Found()) measure(finding.centres, finding.radii);
  if (part != nullptr && part->Found()) measure(part->points, part->radii);
}

/// Which search, and whether its centres are measured anew.
struct Choice {
  int finder;
  bool fine;
};

/// `part` is null when nobody wants one.
GridFault Search(const Choice& choice, const cv::Mat& frame, const cv::Size& grid, Centres& points,
                 bool& found, PartialGrid* part) {
  if (choice.finder == velmora::FINDER_STANDARD || !finder::HasOneOrder(grid)) {
    found = FindGridStandard(frame, grid, points);
    return GridFault::None;
  }
  GridFinding finding =
      part != nullptr ? SearchGridRobust(frame, grid, *part) : SearchGridRobust(frame, grid);
  if (choice.fine) MeasureFound(frame, grid, finding, part);
  points = std::move(finding.centres);
  found = finding.Found();
  return finding.fault;
}

}  // namespace

bool FinderChoice::Set(int finder) {
  if (finder != velmora::FINDER_STANDARD && finder != velmora::FINDER_ROBUST) return false;
  finder_ = finder;
  return true;
}

bool FinderChoice::Find(const cv::Mat& frame, const cv::Size& grid, Centres& points) {
  bool found = false;
  fault_ = Search({finder_, fine_}, frame, grid, points, found, nullptr);
  return found;
}

bool FinderChoice::Find(const cv::Mat& frame, const cv::Size& grid, Centres& points, PartialGrid& part) {
  bool found = false;
  part = {};
  fault_ = Search({finder_, fine_}, frame, grid, points, found, partial_ ? &part : nullptr);
  return found;
}

bool FinderChoice::FindBoth(const cv::Mat& left, const cv::Mat& right, const cv::Size& grid,
                            Centres& leftPoints, Centres& rightPoints) {
  return FindPair(left, right, grid, leftPoints, rightPoints, nullptr, nullptr);
}

bool FinderChoice::FindBoth(const cv::Mat& left, const cv::Mat& right, const cv::Size& grid,
                            Centres& leftPoints, Centres& rightPoints, PartialGrid& leftPart,
                            PartialGrid& rightPart) {
  const bool partial = partial_;
  leftPart = {};
  rightPart = {};
  return FindPair(left, right, grid, leftPoints, rightPoints, partial ? &leftPart : nullptr,
                  partial ? &rightPart : nullptr);
}

bool FinderChoice::FindPair(const cv::Mat& left, const cv::Mat& right, const cv::Size& grid,
                            Centres& leftPoints, Centres& rightPoints, PartialGrid* leftPart,
                            PartialGrid* rightPart) {
  const Choice choice{finder_, fine_};
  // The search draws random numbers from its thread's generator.
  const std::uint64_t randomState = cv::theRNG().state;
  // A list of its own, handed over at the end: callers may pass one list for both.
  Centres ofRight;
  bool foundRight = false;
  // Without a thread to be had, the second search follows the first.
  auto rightSearch = std::async(std::launch::async | std::launch::deferred, [&] {
    cv::theRNG().state = randomState;
    return Search(choice, right, grid, ofRight, foundRight, rightPart);
  });
  bool foundLeft = false;
  const GridFault leftFault = Search(choice, left, grid, leftPoints, foundLeft, leftPart);
  const GridFault rightFault = rightSearch.get();
  rightPoints = std::move(ofRight);
  fault_ = leftFault != GridFault::None ? leftFault : rightFault;
  return foundLeft && foundRight;
}

}  // namespace velmora
