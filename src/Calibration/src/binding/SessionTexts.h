/// What programs on numbers exchange with a session, as JSON: the fields are those of its files
/// (docs/formats.md), and what the files do not have.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "velmora/Session.h"

namespace velmora {

/// Raises std::invalid_argument for a text that is not of settings.
SessionSettings SettingsFrom(const std::string& text);

/// An object of `folder`, `settings` and `warnings`.
std::string AnswerOf(const Session& session);

/// A snapshot that is to be added: `name`, `takenAt`, `score` (or null), and `cameras` with centres, weights,
/// deviations, radii and, of an image file, `path` and `copy`. Pixels are not in it. Raises
/// std::invalid_argument for other texts.
SessionSnapshot SnapshotFrom(const std::string& text);

/// The object of snapshot.json with `number`, `decision` ("used", "excluded", "removed"), `fault`, and of
/// images `kind` ("png", "copy", "reference"), `path` (absolute) and `fault`; and an array of such.
std::string AnswerOf(const StoredSnapshot& snapshot);
std::string AnswerOf(const std::vector<StoredSnapshot>& snapshots);

/// An object of `kind` ("add", "exclude", "include", "remove", "bring back") and `numbers`; empty for none.
std::string AnswerOf(const std::optional<SessionStep>& step);

}  // namespace velmora
