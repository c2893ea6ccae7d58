/// How the programs tell what is wrong.
#pragma once

#include <exception>
#include <ostream>
#include <string>

namespace common {

/// A line that begins with "ERROR: ". The sentence comes with its full stop.
void PrintError(std::ostream& err, const std::string& sentence);

/// The same of an exception, in one line and with a full stop. `failed` says what it ended, such as "the
/// calibration failed"; it is left out when it is empty.
void PrintError(std::ostream& err, const std::exception& fault, const std::string& failed = "");

}  // namespace common
