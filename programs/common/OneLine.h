/// Brings the text of an exception to one line of the console.
#pragma once

#include <string>

namespace common {

/// The text with every run of white space, line ends included, replaced by one blank; none at its ends.
std::string OneLine(const std::string& text);

}  // namespace common
