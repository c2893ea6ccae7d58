/// Process-wide services of the engine.
#include "Calibration.h"

#include <opencv2/core/utility.hpp>

#include "Calibrator.h"
#include "Log.h"

void Calibration::SetLogLevel(int level) {
  // Out-of-range values mean "information", not the nearest bound.
  Log::LOG_LEVEL = level >= 0 && level <= Log::TRACE_LEVEL ? level : Log::INFO_LEVEL;
}

void Calibration::DisableConsoleLogger() {
  // The misspelling is part of the message, which callers may look for.
  Log::warn("diableConsoleLogger not defined if log4cxx is disabled. Ignored.");
}

void Calibration::DisableFileLogger() {
  Log::warn("disableFileLogger not defined if log4cxx is disabled. Ignored.");
}

std::string Calibration::GetVersion() {
  return Calibrator::GetVersion();
}

std::string Calibration::GetOpenCVBuildInfo() {
  return cv::getBuildInformation();
}
