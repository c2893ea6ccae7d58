/// Finds the views and points that do not belong to the picture of a camera that the others give.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "solver/LensStages.h"

namespace sparse {

/// What was left out, and why.
struct Rejected {
  static constexpr int WHOLE_VIEW = -1;

  size_t view = 0;
  int point = WHOLE_VIEW;
  double residual = 0.0;  ///< pixels; of a view the root of the mean square
  std::string reason;
};

/// Which views to keep, with weights of zero for points that are left out.
struct Selection {
  std::vector<size_t> kept;
  std::vector<View> views;
  std::vector<Rejected> rejected;
};

/// The views whose points are near those of a homography: others are in a wrong order or no grid at all.
Selection Screened(const std::vector<View>& views, const cv::Size& imageSize);

/// Solves with weights that fall with the residuals until outliers hardly count, then leaves out points
/// beyond 4.5 standard deviations and views in which more than a quarter are. The pixels are changed by
/// `correct` once a camera is known. Never leaves fewer than five views, or half of them: then nothing is
/// left out after the screening.
Selection Selected(
    const std::vector<View>& views, const StageOptions& options,
    const std::function<std::vector<View>(const std::vector<View>&, const Estimate&)>& correct);

}  // namespace sparse
