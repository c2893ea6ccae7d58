/// What a guide can be given.
#pragma once

#include "velmora/Guide.h"

namespace velmora {

/// These raise std::invalid_argument, with a sentence, for values that make no sense.
void CheckGuideSettings(const GuideSettings& settings);
/// Centres that must be all there are.
void CheckGuideCentres(const GuideSettings& settings, const std::vector<cv::Point2d>& centres);
void CheckGuideFrame(const GuideSettings& settings, const GuideFrame& frame);

/// Whether all circles of these weights were seen that are in the frame at `where`.
bool AllSeen(const std::vector<double>& weights, const std::vector<cv::Point2d>& where,
             const cv::Size& frame);

}  // namespace velmora
