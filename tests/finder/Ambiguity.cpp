/// Whether a part of the 4 x 11 grid can be of one set of its discs only.
#include "finder/Ambiguity.h"

#include <algorithm>
#include <set>
#include <utility>

#include "finder/DiscView.h"

namespace unit {

namespace {

/// A turn by quarters and a shift.
struct Motion {
  int quarters;
  cv::Point shift;

  cv::Point Of(cv::Point p) const {
    for (int k = 0; k < quarters; ++k) p = {-p.y, p.x};
    return p + shift;
  }
};

}  // namespace

bool Tells(const std::vector<bool>& seen, const std::function<bool(const cv::Point& gridIndex)>& blank) {
  const std::vector<cv::Point> gridIndices = Places({4, 11});
  std::set<std::pair<int, int>> own;
  for (const cv::Point& p : gridIndices) own.insert({p.x, p.y});
  std::set<std::pair<int, int>> visible;
  for (size_t k = 0; k < gridIndices.size(); ++k) {
    if (seen[k]) visible.insert({gridIndices[k].x, gridIndices[k].y});
  }
  const auto explains = [&](const Motion& motion) {
    return std::count_if(gridIndices.begin(), gridIndices.end(),
                         [&](const cv::Point& p) {
                           const cv::Point q = motion.Of(p);
                           return visible.count({q.x, q.y}) != 0;
                         }) +
               2 >
           static_cast<std::ptrdiff_t>(visible.size());
  };
  const auto isContradicted = [&](const Motion& motion) {
    return std::count_if(gridIndices.begin(), gridIndices.end(), [&](const cv::Point& p) {
             const cv::Point q = motion.Of(p);
             return own.count({q.x, q.y}) == 0 && blank(q);
           }) >= 2;
  };
  for (int quarters = 0; quarters < 4; ++quarters) {
    for (int y = -22; y <= 22; ++y) {
      for (int x = -22; x <= 22; ++x) {
        if ((x + y) % 2 != 0 || (quarters == 0 && x == 0 && y == 0)) continue;
        const Motion motion = {quarters, {x, y}};
        if (explains(motion) && !isContradicted(motion)) return false;
      }
    }
  }
  const auto blankAlong = [&](const cv::Point& from, const cv::Point& step, int count) {
    int found = 0;
    for (int k = 0; k < count; ++k) found += blank(from + k * step) ? 1 : 0;
    return found >= 2;
  };
  return (blankAlong({1, -1}, {2, 0}, 4) || blankAlong({0, 11}, {2, 0}, 4)) &&
         (blankAlong({-1, 1}, {0, 2}, 5) || blankAlong({8, 0}, {0, 2}, 6));
}

}  // namespace unit
