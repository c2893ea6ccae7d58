/// Which session a guided calibration writes.
#pragma once

#include <memory>
#include <ostream>

#include "guided/Arguments.h"
#include "velmora/Session.h"

namespace guided {

/// What the session of these arguments goes by; the cameras are as many as the source has.
velmora::SessionSettings SettingsOf(const Arguments& arguments, const std::string& source,
                                    const cv::Size& frame, size_t cameras);

/// The session that the arguments name, gone on with if it exists; without one a new one beside the output,
/// which takes another name where there is one already. Says on `out` which it is. Raises what Session raises
/// for one that cannot be used, which is then as it was.
std::unique_ptr<velmora::Session> ChooseSession(const Arguments& arguments,
                                                const velmora::SessionSettings& settings, std::ostream& out);

}  // namespace guided
