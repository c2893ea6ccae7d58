/// What is asked of the records of a rig before it is computed.
#pragma once

#include <string>

#include "velmora/RigCalibration.h"

namespace velmora {

/// Raises cv::Exception with that code and text.
[[noreturn]] void Fail(int code, const std::string& text);

/// Raises cv::Exception (a bad argument) with the text unless the condition holds.
void Require(bool condition, const std::string& text);

/// Raises cv::Exception, with a text in plain English, for records that do not match each other or the
/// options.
void RequireMatching(const RigRecords& records, const RigOptions& options);

}  // namespace velmora
