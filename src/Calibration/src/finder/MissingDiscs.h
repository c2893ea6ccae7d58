/// Looks for discs that are not among the candidates, where the others predict them.
#pragma once

#include <opencv2/core.hpp>

#include "finder/GridProjection.h"

namespace velmora::finder {

/// Fills missing discs in that are dark spots of the right size at the right position in `grey`.
void RecoverMissing(const GridProjection& projection, const cv::Mat& grey, LabelledDiscs& discs);

/// True when a missing disc's expected position is at the edge of an image of this size or beyond it.
bool MissesOutside(const GridProjection& projection, const LabelledDiscs& discs, const cv::Size& size);

/// True when there is no room for another row between some disc and the edge of the image.
bool ReachesEdge(const GridProjection& projection, const LabelledDiscs& discs, const cv::Size& size);

}  // namespace velmora::finder
