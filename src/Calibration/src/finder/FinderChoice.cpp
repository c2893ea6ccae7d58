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

/// What to search by.
struct Choice {
  int finder;
  bool parts;
};

/// `details` is null when nobody wants them.
GridFault Search(const Choice& choice, const cv::Mat& frame, const cv::Size& grid, Centres& points,
                 bool& found, GridDetails* details) {
  if (choice.finder == velmora::FINDER_STANDARD || !finder::HasOneOrder(grid)) {
    found = FindGridStandard(frame, grid, points);
    return GridFault::None;
  }
  GridFinding finding = details != nullptr && choice.parts ? SearchGridRobust(frame, grid, details->part)
                                                           : SearchGridRobust(frame, grid);
  points = std::move(finding.centres);
  if (details != nullptr) details->radii = std::move(finding.radii);
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
  fault_ = Search({finder_, false}, frame, grid, points, found, nullptr);
  return found;
}

bool FinderChoice::Find(const cv::Mat& frame, const cv::Size& grid, Centres& points, GridDetails& details) {
  bool found = false;
  details = {};
  fault_ = Search({finder_, partial_}, frame, grid, points, found, &details);
  return found;
}

bool FinderChoice::FindBoth(const cv::Mat& left, const cv::Mat& right, const cv::Size& grid,
                            Centres& leftPoints, Centres& rightPoints, GridDetails& leftDetails,
                            GridDetails& rightDetails) {
  const Choice choice{finder_, partial_};
  leftDetails = {};
  rightDetails = {};
  // The search draws random numbers from its thread's generator.
  const std::uint64_t randomState = cv::theRNG().state;
  // A list of its own, handed over at the end: callers may pass one list for both.
  Centres ofRight;
  bool foundRight = false;
  // Without a thread to be had, the second search follows the first.
  auto rightSearch = std::async(std::launch::async | std::launch::deferred, [&] {
    cv::theRNG().state = randomState;
    return Search(choice, right, grid, ofRight, foundRight, &rightDetails);
  });
  bool foundLeft = false;
  const GridFault leftFault = Search(choice, left, grid, leftPoints, foundLeft, &leftDetails);
  const GridFault rightFault = rightSearch.get();
  rightPoints = std::move(ofRight);
  fault_ = leftFault != GridFault::None ? leftFault : rightFault;
  return foundLeft && foundRight;
}

}  // namespace velmora
