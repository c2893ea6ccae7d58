/// The sheet as a user prints it: with marks that say what to measure, and in its true size.
#pragma once

#include <opencv2/core.hpp>
#include <string>

#include "Sheet.h"

namespace render {

/// The sheet (8-bit grey) with an arrow across its row intervals, in words what to measure, and a ruler of
/// 100 mm where there is room. All of it lies in the margins. Pictures that are rendered do not have the
/// marks.
cv::Mat DrawPrintedSheet(const world::Sheet& sheet);

/// The resolution at which the drawing has the sheet's true size.
double PixelsPerMetre(const world::Sheet& sheet);

/// Throws std::invalid_argument unless the name ends in .png.
void CheckSheetName(const std::string& path);

/// Writes the printed sheet as a PNG that holds its resolution. Throws std::runtime_error when it cannot be
/// written.
void WriteSheet(const std::string& path, const world::Sheet& sheet);

/// How large the sheet is, and what to do with it; whole lines.
std::string AdviceOn(const std::string& path, const world::Sheet& sheet);

}  // namespace render
