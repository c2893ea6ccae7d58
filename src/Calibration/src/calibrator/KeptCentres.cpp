/// Measures the centres of what is kept.
#include "calibrator/KeptCentres.h"

#include <utility>

#include "finder/CentreFit.h"

namespace velmora {

CameraSnapshot WithMeasuredCentres(const cv::Size& grid, CameraSnapshot view) {
  if (view.image.grey.empty()) return view;
  MeasuredCentres measured = MeasureCentres(view.image.grey, grid, view.points, view.image.radii);
  view.points = std::move(measured.centres);
  view.deviations = std::move(measured.deviations);
  return view;
}

}  // namespace velmora
