/// Names and sentences of the result file and the status answer.
#pragma once

#include <string>

namespace velmora {

/// Local date and time as strftime's "%Y%m%d%X" gives it.
std::string CurrentDateTime();

/// The path followed by ".json" (always appended); without a path a name of kind, date and time.
std::string ResultFileName(const std::string& path, int kind);

/// What a status means to a user.
const char* StatusSentence(int status);

}  // namespace velmora
