/// Single snapshots of a calibrator: handed out, added again, taken out, and what the result makes of each.
#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>

#include "Calibrator.h"
#include "Matchers.h"
#include "unit/Collection.h"
#include "unit/Scopes.h"
#include "unit/StereoCollection.h"

using namespace velmora;

namespace {

/// Views with a weight and a deviation of each point; the second lacks its first row.
std::unique_ptr<Calibrator> WithDeviations(size_t count) {
  auto calibrator = unit::MakeCalibrator();
  calibrator->SetPartialGrids(true);
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  const auto views = unit::NoisyViews(static_cast<int>(count));
  for (size_t i = 0; i < count; ++i) {
    std::vector<double> weights(views[i].size(), 1.0);
    std::vector<double> deviations(views[i].size(), 0.03 + 0.01 * static_cast<double>(i));
    for (size_t k = 0; i == 1 && k < 4; ++k) weights[k] = deviations[k] = 0.0;
    EXPECT_TRUE(calibrator->AddPoints(views[i], weights, deviations));
  }
  return calibrator;
}

double RootMeanSquare(const SnapshotFit::Camera& fit) {
  double squares = 0.0;
  double count = 0.0;
  for (size_t k = 0; k < fit.residuals.size(); ++k) {
    if (std::isnan(fit.residuals[k].x)) continue;
    squares += fit.residuals[k].dot(fit.residuals[k]);
    count += 1.0;
  }
  return std::sqrt(squares / count);
}

TEST(SnapshotAccess, HandsOutWhatWasAdded) {
  const auto calibrator = WithDeviations(3);
  const GridSnapshot second = calibrator->GetSnapshot(1);
  ASSERT_EQ(second.cameras.size(), 1U);
  EXPECT_EQ(second.cameras[0].centres, unit::NoisyViews(3)[1]);
  ASSERT_EQ(second.cameras[0].weights.size(), 44U);
  EXPECT_EQ(second.cameras[0].weights[3], 0.0);
  EXPECT_EQ(second.cameras[0].weights[4], 1.0);
  ASSERT_EQ(second.cameras[0].deviations.size(), 44U);
  EXPECT_EQ(second.cameras[0].deviations[4], 0.04);
  EXPECT_TRUE(calibrator->GetSnapshot(0).cameras[0].weights.empty()) << "all were seen";
}

TEST(SnapshotAccess, HandsOutThePictureOfADetection) {
  const auto calibrator = unit::MakeCalibrator();
  cv::Mat image = unit::ImageWithGrid();
  const cv::Mat before = image.clone();
  std::vector<cv::Point2d> points;
  ASSERT_TRUE(calibrator->DetectPoints(image, points, true));
  ASSERT_TRUE(calibrator->AddPoints());
  const GridSnapshot snapshot = calibrator->GetSnapshot(0);
  EXPECT_EQ(snapshot.cameras[0].centres, points);
  EXPECT_SAME_MAT(snapshot.cameras[0].frame, before);
}

TEST(SnapshotAccess, ComputesTheSameFromSnapshotsThatWereHandedOut) {
  const auto original = WithDeviations(7);
  const auto copy = unit::MakeCalibrator();
  copy->SetPartialGrids(true);
  copy->SetSolver(Calibrator::SOLVER_SPARSE);
  for (int i = 0; i < 7; ++i) ASSERT_TRUE(copy->AddSnapshot(original->GetSnapshot(i)));
  EXPECT_EQ(copy->GetStatus(), Calibrator::STATUS_READY);
  EXPECT_EQ(copy->ComputeCalibration(Calibrator::MODEL_CLASSIC),
            original->ComputeCalibration(Calibrator::MODEL_CLASSIC));
  EXPECT_SAME_MAT(copy->GetK(), original->GetK());
  EXPECT_SAME_MAT(copy->GetDistCoefs(), original->GetDistCoefs());
}

TEST(SnapshotAccess, ComputesWithoutASnapshotThatWasTakenOut) {
  const auto views = unit::NoisyViews(7);
  const auto calibrator = unit::CalibratorWith(views);
  auto others = views;
  others.erase(others.begin() + 2);
  const auto expected = unit::CalibratorWith(others);
  ASSERT_TRUE(calibrator->RemoveSnapshot(2));
  EXPECT_EQ(calibrator->GetNumberOfRecords(), 6);
  EXPECT_EQ(calibrator->GetSnapshot(2).cameras[0].centres, views[3]);
  for (const auto& each : {calibrator.get(), expected.get()}) {
    each->SetSolver(Calibrator::SOLVER_SPARSE);
    each->ComputeCalibration(Calibrator::MODEL_CLASSIC);
  }
  EXPECT_SAME_MAT(calibrator->GetK(), expected->GetK());
}

TEST(SnapshotAccess, IsNotReadyAndHasNoErrorWithFewerThanFive) {
  const auto calibrator = unit::CalibratorWith(unit::NoisyViews(6));
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  ASSERT_GT(calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC), 0.0F);
  const cv::Mat K = calibrator->GetK();
  ASSERT_TRUE(calibrator->RemoveSnapshot(5));
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_READY);
  EXPECT_EQ(calibrator->GetRMS(), -1.0F);
  EXPECT_SAME_MAT(calibrator->GetK(), K);
  ASSERT_TRUE(calibrator->RemoveSnapshot(0));
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_NOT_READY);
  EXPECT_EQ(calibrator->GetRMS(), -1.0F);
}

TEST(SnapshotAccess, GivesNoVerdictOnOtherSnapshotsThoughTheyAreAsMany) {
  const auto views = unit::NoisyViews(8);
  const auto calibrator = unit::CalibratorWith({views.begin(), views.begin() + 7});
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC);
  ASSERT_NE(calibrator->GetVerdict().grade, CalibrationVerdict::Grade::None);
  ASSERT_EQ(calibrator->GetSnapshotFit(6).cameras.size(), 1U);
  calibrator->RemoveSnapshot(0);
  calibrator->AddPoints(views[7]);
  EXPECT_EQ(calibrator->GetVerdict().grade, CalibrationVerdict::Grade::None);
  EXPECT_TRUE(calibrator->GetSnapshotFit(6).cameras.empty());
  calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC);
  EXPECT_NE(calibrator->GetVerdict().grade, CalibrationVerdict::Grade::None);
}

TEST(SnapshotAccess, ShowsHowTheResultAgreesWithEachSnapshot) {
  for (const int solver : {Calibrator::SOLVER_OPENCV, Calibrator::SOLVER_SPARSE}) {
    const auto calibrator = unit::CalibratorWith(unit::NoisyViews(7));
    calibrator->SetSolver(solver);
    EXPECT_TRUE(calibrator->GetSnapshotFit(3).cameras.empty()) << "there is no result yet";
    calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC);
    for (int i = 0; i < 7; ++i) {
      const SnapshotFit fit = calibrator->GetSnapshotFit(i);
      ASSERT_EQ(fit.cameras.size(), 1U);
      EXPECT_FALSE(fit.rejected);
      // OpenCV rounds its points to single precision.
      const double tolerance = solver == Calibrator::SOLVER_SPARSE ? 1e-9 : 1e-5;
      EXPECT_NEAR(fit.cameras[0].rms, calibrator->GetPerViewErrors().at<double>(i), tolerance);
      EXPECT_NEAR(RootMeanSquare(fit.cameras[0]), fit.cameras[0].rms, 1e-12);
    }
  }
}

TEST(SnapshotAccess, ShowsWhatWasRejectedAndWhy) {
  auto views = unit::NoisyViews(9);
  for (cv::Point2d& point : views[4]) point.x += 15.0 * std::sin(0.05 * point.y);
  views[6][20].y += 8.0;
  const auto calibrator = unit::CalibratorWith(views);
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  calibrator->SetRobust(true);
  calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC);
  const SnapshotFit bent = calibrator->GetSnapshotFit(4);
  EXPECT_TRUE(bent.rejected);
  EXPECT_FALSE(bent.reason.empty());
  ASSERT_EQ(bent.cameras.size(), 1U);
  EXPECT_GT(bent.cameras[0].rms, 1.0);
  const SnapshotFit misread = calibrator->GetSnapshotFit(6);
  EXPECT_FALSE(misread.rejected);
  EXPECT_EQ(misread.cameras[0].outliers, std::vector<int>{20});
  EXPECT_NEAR(misread.cameras[0].residuals[20].y, 8.0, 1.0);
  EXPECT_LT(misread.cameras[0].rms, 0.5) << "of those that were used";
}

TEST(SnapshotAccess, LeavesUnseenCirclesOutOfTheResiduals) {
  const auto calibrator = WithDeviations(7);
  calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC);
  const SnapshotFit fit = calibrator->GetSnapshotFit(1);
  ASSERT_EQ(fit.cameras.at(0).residuals.size(), 44U);
  for (size_t k = 0; k < 44; ++k) EXPECT_EQ(std::isnan(fit.cameras[0].residuals[k].x), k < 4) << k;
}

TEST(SnapshotAccess, ShowsBothImagesOfAPair) {
  const auto calibrator = unit::StereoCalibratorWith(unit::NoisyPairs(8));
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  const float rms = calibrator->ComputeCalibrationStereo(unit::LeftResult(), unit::RightResult(),
                                                         Calibrator::MODEL_RATIONAL, false);
  double squares = 0.0;
  for (int i = 0; i < 8; ++i) {
    const SnapshotFit fit = calibrator->GetSnapshotFit(i);
    ASSERT_EQ(fit.cameras.size(), 2U);
    for (const auto& camera : fit.cameras) squares += camera.rms * camera.rms / 16.0;
    ASSERT_EQ(calibrator->GetSnapshot(i).cameras.size(), 2U);
  }
  EXPECT_NEAR(std::sqrt(squares), static_cast<double>(rms), 1e-6);
}

TEST(SnapshotAccess, RefusesNumbersThatThereAreNot) {
  const auto calibrator = unit::CalibratorWith(unit::NoisyViews(3));
  for (const int number : {-1, 3, 1000}) {
    EXPECT_THROW(calibrator->GetSnapshot(number), std::out_of_range);
    EXPECT_THROW(calibrator->RemoveSnapshot(number), std::out_of_range);
    EXPECT_THROW(calibrator->GetSnapshotFit(number), std::out_of_range);
  }
  EXPECT_EQ(calibrator->GetNumberOfRecords(), 3);
}

TEST(SnapshotAccess, RefusesSnapshotsThatAreNone) {
  const auto calibrator = unit::MakeCalibrator();
  const auto other = WithDeviations(2);
  GridSnapshot pair = other->GetSnapshot(0);
  pair.cameras.push_back(pair.cameras.front());
  EXPECT_EQ(unit::PrintedBy([&] { EXPECT_FALSE(calibrator->AddSnapshot(pair)); }),
            "ERROR : No points added. A snapshot of 1 camera(s) is needed.\n");
  EXPECT_EQ(unit::PrintedBy([&] { EXPECT_FALSE(calibrator->AddSnapshot(other->GetSnapshot(1))); }),
            "ERROR : No points added. Parts of the grid are not taken: SetPartialGrids allows them.\n");
  GridSnapshot few = other->GetSnapshot(0);
  few.cameras[0].centres.pop_back();
  EXPECT_NE(unit::PrintedBy([&] { EXPECT_FALSE(calibrator->AddSnapshot(few)); }).find("44 circles"),
            std::string::npos);
  EXPECT_EQ(calibrator->GetNumberOfRecords(), 0);
}

}  // namespace
