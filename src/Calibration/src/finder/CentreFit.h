/// Centres of a found grid as near the truth as the pixels allow, and how near that is.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace velmora {

/// The centres of a grid's discs with what is known of their errors. All lists are of all discs, row by row.
struct MeasuredCentres {
  std::vector<cv::Point2d> centres;
  std::vector<double>
      deviations;            ///< standard deviations along an axis, pixels; 0 for discs that are not seen
  std::vector<bool> fitted;  ///< false for centres that stayed as they were
};

/// Measures the centres of a grid that was found in a grey image (8 bits, one channel) anew, by fitting to
/// each disc what a camera sees of one (finder::DiscModel). `radii` are those that the search gave, 0 for
/// discs that are not seen.
///
/// A centre is what it is to the search: the centroid of the disc's image, for which the solver's correction
/// for discs is made. A fit gives the middle of the ellipse, which is the same point.
///
/// Discs that do not look like one (glare, dirt, something in front, the image's border) stay where they
/// were, with a deviation so large that they hardly count. So do all discs, with one deviation, where their
/// median radius is below LEAST_FITTED_RADIUS: fits and centroids differ by what is common to a grid, and
/// must not be mixed. Lists of different lengths, and discs that no plane holds, stay as they are.
///
/// Some milliseconds for a usual grid. The same image always gives the same. Thread-safe.
MeasuredCentres MeasureCentres(const cv::Mat& grey, const cv::Size& grid,
                               const std::vector<cv::Point2d>& centres, const std::vector<double>& radii);

/// Below that a fit is no nearer to the truth than the centroid of darkness, pixels.
constexpr double LEAST_FITTED_RADIUS = 5.0;

}  // namespace velmora
