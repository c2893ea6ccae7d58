/// Finds, from residuals, the points and views that are outliers for the camera that the others determine.
#pragma once

#include <vector>

#include "solver/Selection.h"

namespace velmora::solver {

/// Distances between observed and projected points, pixels over the point's deviation: of each view, of each
/// camera, of each point. Where the errors of all points are alike, that is pixels.
using Residuals = std::vector<std::vector<std::vector<double>>>;

/// The residuals at the views' poses. Infinite for points that are not in front of the camera.
Residuals ResidualsOf(const std::vector<TargetView>& views, const Rig& rig);

/// The standard deviation of a coordinate of a usual point that follows from the median distance: outliers
/// hardly move it.
double StandardDeviationOf(const Residuals& residuals);

/// True of a distance that noise of this standard deviation does not reach.
bool IsOutlier(double residual, double standardDeviation);

double RootMeanSquare(const std::vector<double>& values);

/// Rejects points that are beyond 4.5 standard deviations, and a camera's image of a view when less than the
/// share `least` of it is left, or points that no longer span the target; a view of which no image is left
/// goes whole. `residuals` are those of the selection's views.
Selection WithoutOutliers(const Selection& selection, const Residuals& residuals, double standardDeviation,
                          double least);

}  // namespace velmora::solver
