/// Tells discs from other shapes at the grid's points.
#pragma once

#include <opencv2/core.hpp>

#include "finder/GridProjection.h"

namespace velmora::finder {

/// How far spots are from discs, in the sheet's plane: the harmonic moments of second, third and fourth order
/// as shares of a disc's absolute ones, as a mean over all spots. Discs have none; a square has 0.49 of the
/// fourth, a triangle 0.63 of the third.
struct ShapeMoments {
  double second = 0.0;
  double third = 0.0;
  double fourth = 0.0;
};
ShapeMoments MeanShape(const GridProjection& projection, const cv::Mat& grey, const LabelledDiscs& discs);

/// True when the spots, refined before, are discs seen in perspective.
bool AreDiscs(const GridProjection& projection, const cv::Mat& grey, const LabelledDiscs& discs);

}  // namespace velmora::finder
