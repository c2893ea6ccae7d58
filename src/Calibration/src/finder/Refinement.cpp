/// Moves the discs' centres to where the grey values put them.
#include "finder/Refinement.h"

#include <cmath>

#include "finder/DiscWindow.h"
#include "finder/MovedWindow.h"

namespace velmora::finder {

namespace {

constexpr int ROUNDS = 2;

}  // namespace

void RefineDiscs(const GridProjection& projection, const cv::Mat& grey, LabelledDiscs& discs) {
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    if (!discs.Has(k)) continue;
    const double radius = discs.radii[k];
    DiscWindow window = WindowOf(projection, discs, k);
    double area = 0.0;
    MovedWindow moved(grey);
    bool refined = true;
    for (int round = 0; round < ROUNDS && refined; ++round) {
      refined = moved.MoveTo(window) && moved.FindMiddle(window.centre, area);
    }
    if (!refined || cv::norm(window.centre - discs.centres[k]) > 0.25 * radius + 0.5) continue;
    discs.centres[k] = window.centre;
    discs.radii[k] = std::sqrt(area / CV_PI);
  }
}

}  // namespace velmora::finder
