/// The list of a session's views.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "batch/ViewNotes.h"
#include "velmora/Session.h"

namespace batch {

/// Number, name, decision, RMS, size on the disk and remarks of each view, then what there is in all.
std::string SessionTable(const velmora::Session& session, const std::map<int, ViewNote>& notes);

/// "1.2 MB".
std::string MegabytesText(std::uint64_t bytes);

}  // namespace batch
