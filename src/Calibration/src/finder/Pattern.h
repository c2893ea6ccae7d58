/// The grid indices of the asymmetric circles grid, and which sizes of it have one order only.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

namespace velmora::finder {

/// The discs' grid indices (2j + i mod 2, i), row by row, in steps.
std::vector<cv::Point> PatternIndices(const cv::Size& grid);

/// A grid index of the pattern in the base ((1, 1), (1, -1)) of its steps.
cv::Point LatticeIndex(const cv::Point& gridIndex);

/// How many discs may be missing among the candidates at first.
int MissingAllowed(const cv::Size& grid);

/// True for the sizes that the robust search takes: with an odd number of rows (otherwise half a turn leads
/// the grid onto itself, and the order would be a guess), at least 2 x 5 and of at least 12 and at most 600
/// discs.
bool HasOneOrder(const cv::Size& grid);

}  // namespace velmora::finder
