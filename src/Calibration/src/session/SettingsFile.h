/// The text of session.json: what a session goes by.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "velmora/Session.h"

namespace velmora {

/// The format that this version writes, and the only one that it reads.
constexpr int SESSION_FORMAT = 1;

/// Why the settings make no sense, as a sentence; empty when they do.
std::string FaultOf(const SessionSettings& settings);

/// The fields of session.json that are settings; SettingsIn raises std::runtime_error, with the words that go
/// behind "its session.json ", for an object that lacks one or has it in another type.
nlohmann::json JsonOf(const SessionSettings& settings);
SessionSettings SettingsIn(const nlohmann::json& document);

/// `created` is a moment as an ISO 8601 text.
std::string TextOf(const SessionSettings& settings, const std::string& created);

/// Raises std::runtime_error with a sentence about `session` when the text is of another format, or damaged.
SessionSettings SettingsOf(const std::string& text, const std::string& session);

/// Raises std::runtime_error with a sentence about `session` that names what it has and what is expected,
/// where these have to be the same: grid, unit, cameras, image sizes.
void RequireSame(const SessionSettings& settings, const SessionSettings& expected,
                 const std::string& session);

}  // namespace velmora
