/// Brings the text of an exception to one line of the log.
#pragma once

#include <string>

namespace velmora {

/// The text with every run of white space that holds a line break replaced by one blank; none at its ends.
/// The exceptions of OpenCV have a line for each argument of theirs, and a line break at the end.
std::string OneLine(const std::string& text);

}  // namespace velmora
