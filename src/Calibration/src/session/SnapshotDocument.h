/// The text of a snapshot's snapshot.json.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "velmora/Session.h"

namespace velmora {

/// Everything but number, decision and faults. Images in the snapshot's folder are told by their file names.
nlohmann::json JsonOf(const StoredSnapshot& snapshot);
std::string TextOf(const StoredSnapshot& snapshot);

/// A camera's part of it, but for the image; raises std::runtime_error likewise.
SessionObservation ObservationIn(const nlohmann::json& camera);

/// `folder` is that of the snapshot. Raises std::runtime_error with what goes behind "its snapshot.json ".
StoredSnapshot SnapshotOf(const std::string& text, const std::string& folder);

}  // namespace velmora
