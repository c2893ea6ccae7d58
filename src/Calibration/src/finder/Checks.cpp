/// What tells the grid from other things that can be labelled like it.
#include "finder/Checks.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "finder/Grey.h"

namespace velmora::finder {

namespace {

// All in steps.
constexpr double OUTLIER = 0.16;
constexpr double FARTHEST_OFF = 0.9;
constexpr double OFF_TOGETHER = 0.3;
constexpr double BEYOND = 0.17;
/// More discs than this around the grid are no accident.
constexpr int BEYOND_AT_MOST = 3;
/// Squares of a chessboard cover half of it and touch at their corners: the gaps between them are half dark.
/// Between discs of the usual size there is light, but around tiny ones blur tells nothing.
constexpr double DENSE = 0.2;
constexpr double DARK_BETWEEN = 0.24;

double Median(std::vector<double>& values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/// The indices of the pattern's lattice next to the grid that are not part of it.
std::vector<cv::Point> IndicesAround(const LabelledDiscs& discs) {
  // Two columns on each side, and a row.
  const int width = 2 * discs.grid.width + 4;
  std::vector<char> taken(static_cast<size_t>(width * (discs.grid.height + 2)), 0);
  const auto cellOf = [&](const cv::Point& p) -> char& {
    return taken[static_cast<size_t>((p.y + 1) * width + p.x + 2)];
  };
  for (const cv::Point& p : discs.gridIndices) cellOf(p) = 1;
  std::vector<cv::Point> around;
  for (const cv::Point& p : discs.gridIndices) {
    for (const cv::Point& step : {cv::Point(1, 1), cv::Point(1, -1), cv::Point(-1, 1), cv::Point(-1, -1),
                                  cv::Point(2, 0), cv::Point(-2, 0)}) {
      char& cell = cellOf(p + step);
      if (cell == 0) around.push_back(p + step);
      cell = 1;
    }
  }
  return around;
}

}  // namespace

bool RejectOutliers(GridProjection& projection, LabelledDiscs& discs, int atMost) {
  for (;;) {
    double farthest = OUTLIER;
    size_t outlier = discs.gridIndices.size();
    for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
      const double off =
          discs.Has(k) ? projection.ScaledResidual(discs, k) - 0.5 / projection.Step(discs.gridIndices[k])
                       : 0.0;
      if (off <= farthest) continue;
      farthest = off;
      outlier = k;
    }
    if (outlier == discs.gridIndices.size()) return true;
    // One at a time: the farthest one may be all that is wrong with the others.
    discs.radii[outlier] = 0.0;
    if (discs.Missing() > atMost || !projection.Fit(discs)) return false;
  }
}

bool FitsProjection(const GridProjection& projection, const LabelledDiscs& discs) {
  double sum = 0.0;
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    if (!discs.Has(k)) continue;
    const double step = projection.Step(discs.gridIndices[k]);
    const double off = cv::norm(discs.centres[k] - projection.Project(discs.gridIndices[k])) / step;
    if (!(off < FARTHEST_OFF) || projection.ScaledResidual(discs, k) > OUTLIER + 0.5 / step) return false;
    sum += off * off;
  }
  const double known = static_cast<double>(discs.gridIndices.size()) - discs.Missing();
  return std::sqrt(sum / known) < OFF_TOGETHER;
}

int CountBeyond(const GridProjection& projection, const LabelledDiscs& discs, const CandidateIndex& index,
                SearchBudget& budget) {
  const double radius = discs.MedianRadius();
  const auto isOwn = [&](int k) {
    return std::any_of(discs.centres.begin(), discs.centres.end(), [&](const cv::Point2d& centre) {
      return cv::norm(index[k].centre - centre) < 0.7 * radius;
    });
  };
  int beyond = 0;
  for (const cv::Point& gridIndex : IndicesAround(discs)) {
    const double reach = BEYOND * projection.Step(gridIndex) + 0.5;
    const int found = index.Nearest(projection.Predict(gridIndex), reach, budget, [&](int k) {
      return index[k].radius > 0.65 * radius && index[k].radius < 1.5 * radius && !isOwn(k);
    });
    if (found >= 0) ++beyond;
  }
  return beyond;
}

bool GoesOn(const GridProjection& projection, const LabelledDiscs& discs, const CandidateIndex& index,
            SearchBudget& budget) {
  return CountBeyond(projection, discs, index, budget) > BEYOND_AT_MOST;
}

bool IsChessboard(const GridProjection& projection, const LabelledDiscs& discs, const cv::Mat& grey) {
  std::vector<double> cover;
  std::vector<double> between;
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    if (!discs.Has(k)) continue;
    const cv::Point2d gridIndex = discs.gridIndices[k];
    const double step = projection.Step(gridIndex);
    cover.push_back(CV_PI * discs.radii[k] * discs.radii[k] / (2.0 * step * step));
    const cv::Point2d offset = discs.centres[k] - projection.Project(gridIndex);
    const double dark = GreyAt(grey, discs.centres[k]);
    const double light = GreyAt(grey, projection.Project(gridIndex + cv::Point2d(1.0, 0.0)) + offset);
    const double middle = GreyAt(grey, projection.Project(gridIndex + cv::Point2d(0.5, 0.5)) + offset);
    between.push_back(light - dark > 1.0 ? (light - middle) / (light - dark) : 1.0);
  }
  return Median(cover) > DENSE && Median(between) > DARK_BETWEEN;
}

}  // namespace velmora::finder
