/// Whether a snapshot is one of a session.
#pragma once

#include <string>
#include <vector>

#include "velmora/Session.h"

namespace velmora {

/// Why these are no observations of the session's cameras, as a sentence; empty when they are.
std::string FaultOf(const std::vector<SessionObservation>& observations, const SessionSettings& settings);

/// Why the snapshot cannot be added to the session, in the same way. Files are not looked at.
std::string FaultOf(const SessionSnapshot& snapshot, const SessionSettings& settings);

}  // namespace velmora
