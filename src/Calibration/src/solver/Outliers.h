/// Tells from residuals which points and views do not belong to the camera that the others give.
#pragma once

#include <vector>

#include "solver/Selection.h"

namespace velmora::solver {

/// Distances between seen and projected points, pixels, of each point of each view.
using Residuals = std::vector<std::vector<double>>;

/// Of points in front of the camera; infinite for others.
Residuals ResidualsOf(const std::vector<View>& views, const Estimate& estimate);

/// The standard deviation of a coordinate that the median distance speaks of: outliers hardly move it.
double DeviationOf(const Residuals& residuals);

/// True of a distance that noise of this deviation does not reach.
bool IsOutlier(double residual, double deviation);

double RootMeanSquare(const std::vector<double>& values);

/// Leaves points out that are beyond 4.5 standard deviations, and views of which less than the share `least`
/// is left, or points that no longer span the target. `residuals` are those of the selection's views.
Selection WithoutOutliers(const Selection& selection, const Residuals& residuals, double deviation,
                          double least);

}  // namespace velmora::solver
