/// Snapshots on their way from a calibrator to a session and back.
#include <gtest/gtest.h>

#include "Calibrator.h"
#include "Matchers.h"
#include "TemporaryFolder.h"
#include "unit/Collection.h"
#include "velmora/Session.h"

using namespace velmora;

namespace {

SessionSettings SettingsOfGrid() {
  SessionSettings settings;
  settings.grid = unit::GRID;
  settings.unit = unit::UNIT;
  settings.imageSizes = {unit::FRAME};
  settings.lensModel = "classic";
  settings.finder = "robust";
  settings.solver = "sparse";
  settings.sheetShape = "flat";
  return settings;
}

std::unique_ptr<Calibrator> SparseCalibrator() {
  auto calibrator = unit::MakeCalibrator();
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  calibrator->SetPartialGrids(true);
  return calibrator;
}

TEST(SnapshotConversion, LetsAStoredSessionComputeWhatTheUnbrokenOneDid) {
  const support::TemporaryFolder folder;
  const auto unbroken = SparseCalibrator();
  auto session = Session::Create(folder.File("s.velmora"), SettingsOfGrid());
  const auto views = unit::NoisyViews(8);
  for (size_t i = 0; i < views.size(); ++i) {
    std::vector<double> weights(44, 1.0);
    std::vector<double> deviations(44, 0.02 + 0.003 * static_cast<double>(i));
    if (i % 3 == 1) weights[40] = deviations[40] = 0.0;
    ASSERT_TRUE(unbroken->AddPoints(views[i], weights, deviations));
    session->Add(ToBeStored(unbroken->GetSnapshot(static_cast<int>(i))));
  }
  session = nullptr;
  session = Session::Open(folder.File("s.velmora"), SettingsOfGrid());
  const auto resumed = SparseCalibrator();
  for (const StoredSnapshot& snapshot : session->Snapshots())
    ASSERT_TRUE(resumed->AddSnapshot(FromStored(snapshot)));
  EXPECT_EQ(resumed->ComputeCalibration(Calibrator::MODEL_CLASSIC),
            unbroken->ComputeCalibration(Calibrator::MODEL_CLASSIC));
  EXPECT_SAME_MAT(resumed->GetK(), unbroken->GetK());
  EXPECT_SAME_MAT(resumed->GetDistCoefs(), unbroken->GetDistCoefs());
}

TEST(SnapshotConversion, StoresThePictureOfADetection) {
  const support::TemporaryFolder folder;
  const auto calibrator = unit::MakeCalibrator();
  cv::Mat image = unit::ImageWithGrid();
  const cv::Mat before = image.clone();
  std::vector<cv::Point2d> points;
  ASSERT_TRUE(calibrator->DetectPoints(image, points, true));
  ASSERT_TRUE(calibrator->AddPoints());
  const auto session = Session::Create(folder.File("s.velmora"), SettingsOfGrid());
  const int number = session->Add(ToBeStored(calibrator->GetSnapshot(0)));
  EXPECT_SAME_MAT(session->LoadImage(number, 0), before);
}

TEST(SnapshotConversion, HasNoCentresForACameraThatDidNotSeeTheGrid) {
  StoredSnapshot stored;
  stored.observations.resize(2);
  stored.observations[1].centres = unit::NoisyViews(1)[0];
  const GridSnapshot snapshot = FromStored(stored);
  ASSERT_EQ(snapshot.cameras.size(), 2U);
  EXPECT_TRUE(snapshot.cameras[0].centres.empty());
  EXPECT_EQ(snapshot.cameras[1].centres, stored.observations[1].centres);
}

}  // namespace
