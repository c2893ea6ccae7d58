/// What the window shows of results.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "guided/EndPage.h"
#include "guided/Outcome.h"
#include "velmora/Session.h"

namespace guided {

/// How well the cameras are known, in a line: "known to 0.42 px, from 7 views"; empty of a result that
/// failed.
std::string PrecisionOf(const Outcome& outcome);

/// The maps of uncertainty, side by side; empty of a result that failed.
cv::Mat MapOf(const Outcome& outcome);

/// The page at the end. Images of the worst views come from the session, where it keeps images.
EndPage EndPageOf(const Outcome& outcome, const velmora::Session& session,
                  const std::vector<std::string>& files);

}  // namespace guided
