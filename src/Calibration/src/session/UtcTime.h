/// Moments as ISO 8601 texts in UTC.
#pragma once

#include <chrono>
#include <string>

namespace velmora {

/// "2026-05-04T12:30:00.250Z".
std::string UtcText(std::chrono::system_clock::time_point moment);

/// Whether the text is such a moment, with any number of digits for fractions of a second, or without.
bool IsUtcText(const std::string& text);

}  // namespace velmora
