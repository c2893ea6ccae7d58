/// Centres of a found grid as near the truth as the pixels allow, and how near that is.
#include "finder/CentreFit.h"

#include "finder/DiscFit.h"
#include "finder/DiscWindow.h"
#include "finder/GridProjection.h"
#include "finder/Pattern.h"
#include "finder/SharedLight.h"
#include "finder/WideFit.h"

namespace velmora {

namespace {

using finder::GridProjection;
using finder::LabelledDiscs;

/// How far a centroid may be off that nothing else speaks for: pixels, and shares of the radius.
constexpr double UNSURE = 0.1;
constexpr double UNSURE_RADII = 0.02;
/// The deviation of the centroids of small discs, pixels.
constexpr double USUAL = 0.03;

finder::FoundDisc FoundAt(const GridProjection& projection, const LabelledDiscs& discs, size_t k) {
  const finder::DiscWindow window = finder::WindowOf(projection, discs, k);
  finder::FoundDisc found;
  found.centre = window.centre;
  found.outline = window.toSteps * (1.0 / window.disc);
  found.reach = window.outer / window.disc;
  return found;
}

}  // namespace

MeasuredCentres MeasureCentres(const cv::Mat& grey, const cv::Size& grid,
                               const std::vector<cv::Point2d>& centres, const std::vector<double>& radii) {
  MeasuredCentres measured;
  measured.centres = centres;
  measured.deviations.assign(centres.size(), 0.0);
  measured.fitted.assign(centres.size(), false);
  LabelledDiscs discs;
  discs.grid = grid;
  discs.gridIndices = finder::PatternIndices(grid);
  discs.centres = centres;
  discs.radii = radii;
  const size_t count = discs.gridIndices.size();
  GridProjection projection;
  const bool usable = grey.type() == CV_8UC1 && centres.size() == count && radii.size() == count;
  const bool fits = usable && (finder::FitWide(projection, discs, grey.size()) || projection.Fit(discs));
  if (!fits) {
    measured.deviations.assign(centres.size(), UNSURE);
    return measured;
  }
  if (discs.MedianRadius() < LEAST_FITTED_RADIUS) {
    for (size_t k = 0; k < count; ++k) measured.deviations[k] = discs.Has(k) ? USUAL : 0.0;
    return measured;
  }
  std::vector<finder::FittedDisc> fitted(count);
  for (size_t k = 0; k < count; ++k) {
    if (discs.Has(k)) fitted[k] = finder::FitDisc(grey, FoundAt(projection, discs, k));
  }
  finder::ShareLight(fitted);
  for (size_t k = 0; k < count; ++k) {
    if (!discs.Has(k)) continue;
    measured.deviations[k] = fitted[k].holds ? fitted[k].deviation : UNSURE + UNSURE_RADII * radii[k];
    if (fitted[k].holds) measured.centres[k] = fitted[k].centre;
    measured.fitted[k] = fitted[k].holds;
  }
  return measured;
}

}  // namespace velmora
