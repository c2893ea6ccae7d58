/// The result file of a calibration.
#pragma once

#include <string>

#include "Calibrator.h"
#include "common/Report.h"

namespace common {

/// Fills in what the calibrator's computation came to.
void CopyResult(Calibrator& calibrator, Report& report);

/// Saves the calibrator's result as NAME.json and reads it back; the text, empty when that failed.
std::string SaveResultFile(Calibrator& calibrator, const std::string& name);

/// Saves the calibrator's fisheye as NAME_fisheye.json and reads it back; the text, empty when that failed.
std::string SaveFisheyeFile(Calibrator& calibrator, const std::string& name);

/// Raises InputError when NAME.json cannot be written: that should be known before minutes of work.
void CheckOutput(const std::string& name);

/// Raises InputError when NAME.json or a file of its verdict cannot be written.
void CheckOutputWithVerdict(const std::string& name);

/// Raises InputError when the file, as it is named, cannot be written.
void CheckWritable(const std::string& path);

}  // namespace common
