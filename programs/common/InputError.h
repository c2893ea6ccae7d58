/// What programs raise for inputs and outputs that they cannot use.
#pragma once

#include <stdexcept>

namespace common {

/// An input or output that cannot be used at all: wrong path, empty folder, nothing that reads as image or
/// video. The text is a sentence without its full stop.
class InputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace common
