/// The text of a snapshot's snapshot.json.
#pragma once

#include <string>

#include "velmora/Session.h"

namespace velmora {

/// Everything but number, decision and faults. Images in the snapshot's folder are told by their file names.
std::string TextOf(const StoredSnapshot& snapshot);

/// `folder` is that of the snapshot. Raises std::runtime_error with what goes behind "its snapshot.json ".
StoredSnapshot SnapshotOf(const std::string& text, const std::string& folder);

}  // namespace velmora
