/// Reads JSON that a program on numbers gives.
#pragma once

#include <stdexcept>
#include <string>

#include "session/JsonFields.h"

namespace velmora {

/// What the text says, by `read`. A fault of it is one of the caller's argument, not of a file: the
/// std::invalid_argument says that it is one of the text of `what`.
template <typename Read>
auto FromGiven(const std::string& text, const std::string& what, Read read) {
  try {
    return read(ParsedJson(text));
  } catch (const std::runtime_error& fault) {
    throw std::invalid_argument("The text of " + what + " " + fault.what() + ".");
  }
}

}  // namespace velmora
