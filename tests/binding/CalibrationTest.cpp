/// The process-wide services: verbosity and version.
#include "Calibration.h"

#include <gtest/gtest.h>

#include <limits>

#include "Calibrator.h"
#include "Log.h"
#include "unit/Scopes.h"

namespace {

std::string PrintedAtAllSeverities() {
  return unit::PrintedBy([] {
    Log::error("e");
    Log::warn("w");
    Log::info("i");
    Log::debug("d");
    Log::trace("t");
  });
}

class LogLevelOutOfRange : public ::testing::TestWithParam<int> {};

TEST_P(LogLevelOutOfRange, MeansInformationAndNotTheNearestBound) {
  const unit::ScopedLogLevel restored(Log::LOG_LEVEL);
  Calibration::SetLogLevel(GetParam());
  EXPECT_EQ(Log::LOG_LEVEL, 3);
  EXPECT_EQ(PrintedAtAllSeverities(), "ERROR : e\nWARN  : w\nINFO  : i\n");
}

INSTANTIATE_TEST_SUITE_P(Calibration, LogLevelOutOfRange,
                         ::testing::Values(-1, 6, 100, std::numeric_limits<int>::min(),
                                           std::numeric_limits<int>::max()));

TEST(Calibration, KeepsLogLevelsFromZeroToFive) {
  const unit::ScopedLogLevel restored(Log::LOG_LEVEL);
  for (int level = 0; level <= 5; ++level) {
    Calibration::SetLogLevel(level);
    EXPECT_EQ(Log::LOG_LEVEL, level);
  }
}

TEST(Calibration, SetsTheLogLevelWithoutAMessage) {
  const unit::ScopedLogLevel restored(Log::LOG_LEVEL);
  EXPECT_EQ(unit::PrintedBy([] {
              Calibration::SetLogLevel(5);
              Calibration::SetLogLevel(7);
            }),
            "");
}

TEST(Calibration, SilencesEverythingAtLevelZero) {
  const unit::ScopedLogLevel restored(Log::LOG_LEVEL);
  Calibration::SetLogLevel(0);
  EXPECT_EQ(PrintedAtAllSeverities(), "");
}

TEST(Calibration, PrintsTraceLinesAtLevelFive) {
  const unit::ScopedLogLevel restored(Log::LOG_LEVEL);
  Calibration::SetLogLevel(5);
  EXPECT_EQ(PrintedAtAllSeverities(), "ERROR : e\nWARN  : w\nINFO  : i\nDEBUG : d\nTRACE : t\n");
}

TEST(Calibration, AnswersDisableConsoleLoggerWithAWarningAndGoesOnLogging) {
  EXPECT_EQ(unit::PrintedBy([] {
              Calibration::DisableConsoleLogger();
              Log::error("still here");
            }),
            "WARN  : diableConsoleLogger not defined if log4cxx is disabled. Ignored.\n"
            "ERROR : still here\n");
}

TEST(Calibration, AnswersDisableFileLoggerWithAWarning) {
  EXPECT_EQ(unit::PrintedBy(Calibration::DisableFileLogger),
            "WARN  : disableFileLogger not defined if log4cxx is disabled. Ignored.\n");
}

TEST(Calibration, KeepsThoseWarningsBackBelowWarningLevel) {
  const unit::ScopedLogLevel errorsOnly(Log::ERROR_LEVEL);
  EXPECT_EQ(unit::PrintedBy([] {
              Calibration::DisableConsoleLogger();
              Calibration::DisableFileLogger();
            }),
            "");
}

TEST(Calibration, HasTheVersionOfTheCalibrator) {
  EXPECT_EQ(Calibration::GetVersion(), "5.1.0");
  EXPECT_EQ(Calibrator::GetVersion(), "5.1.0");
  EXPECT_EQ(Calibrator::VERSION, "5.1.0");
}

}  // namespace
