/// The shapes that a sheet can be taken to have, as terms.
#pragma once

#include <opencv2/core.hpp>
#include <vector>

#include "model/Rig.h"
#include "model/Sheet.h"

namespace velmora::solver {

/// Of a plane target of at least six points that do not lie on a conic section, about the middle of them.
///
/// Bends and proportions are in the unit of the target: what a point at half the target's longer side is
/// moved by. Free heights are a Gaussian process with a deviation of 2 % of half that side, correlated over
/// half of it, and 0.03 % on their own; free places in the plane have 0.05 % to begin with, and where the
/// level has no proportions they stand for those too. Proportions have 1 %.
SheetTerms TermsOf(const std::vector<cv::Point3d>& target, SheetLevel level);

/// The three heights of a bend alone, which a view has of its own.
SheetTerms OwnBendOf(const std::vector<cv::Point3d>& target);

/// Puts the points of views to where the sheet and the views' own bends have them.
void PutToShape(const Sheet& sheet, std::vector<TargetView>& views);
/// Of one view, given the points of the shape that all views share.
void PutToShape(const Sheet& sheet, const std::vector<cv::Point3d>& common, TargetView& view);

}  // namespace velmora::solver
