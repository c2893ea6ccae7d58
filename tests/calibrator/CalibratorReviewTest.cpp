/// The review of a computation: when it is refused, and that it opens and closes its own window.
#include <gtest/gtest.h>

#include "Calibrator.h"
#include "unit/Collection.h"
#include "unit/Scopes.h"

namespace {

/// Without a display every review that is not refused beforehand prints this.
const char* const NO_DISPLAY =
    "ERROR : Cannot show the reprojection. No display to open a window on: DISPLAY is not set.\n";

TEST(WatchReprojection, ReturnsWithAnErrorLineWithoutADisplay) {
  const unit::ScopedNoDisplay none;
  const auto calibrator = unit::CompletedCalibrator();
  EXPECT_EQ(unit::PrintedBy([&] { calibrator->WatchReprojection(); }), NO_DISPLAY);
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_COMPLETED);
}

TEST(WatchReprojection, IsAllowedInEveryStatusButProgress) {
  const unit::ScopedNoDisplay none;
  const auto calibrator = unit::MakeCalibrator();
  for (const int status : {100, 200, 300, 500}) {
    calibrator->SetStatus(status);
    EXPECT_EQ(unit::PrintedBy([&] { calibrator->WatchReprojection(); }), NO_DISPLAY);
  }
}

TEST(WatchReprojection, ReturnsAtOnceDuringProgress) {
  const unit::ScopedNoDisplay none;
  const auto calibrator = unit::CompletedCalibrator();
  calibrator->SetStatus(Calibrator::STATUS_PROGRESS);
  EXPECT_EQ(unit::PrintedBy([&] { calibrator->WatchReprojection(); }), "");
}

TEST(WatchReprojection, ReturnsAtOnceInAStereoCalibrator) {
  const unit::ScopedNoDisplay none;
  const auto stereo = unit::MakeCalibrator(Calibrator::STEREO);
  for (const int status : {100, 300}) {
    stereo->SetStatus(status);
    EXPECT_EQ(unit::PrintedBy([&] { stereo->WatchReprojection(); }), "");
  }
}

TEST(WatchReprojection, OpensAndClosesItsWindowWithoutSnapshots) {
  const unit::ScopedNoDisplay none;
  const unit::ScopedVariable offscreen("QT_QPA_PLATFORM", "offscreen");
  // In a child: the window library keeps its state until the process ends.
  const int result = unit::InChild([] {
    unit::MakeCalibrator()->WatchReprojection();
    return 0;
  });
  EXPECT_EQ(result, 0);
}

}  // namespace
