/// Pairs whose intrinsics are refined with them, beside the truth and pairs with known intrinsics.
#include "solver/SparsePair.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>

#include "Calibrator.h"
#include "JSON.h"
#include "LensError.h"
#include "Matchers.h"
#include "model/LensModel.h"
#include "solver/BundleAdjustment.h"
#include "solver/OpenCvIntrinsics.h"
#include "solver/OpenCvMatrices.h"
#include "solver/PairViews.h"
#include "solver/RigStart.h"
#include "unit/Scopes.h"

using namespace velmora;

namespace {

const int MODELS[] = {Calibrator::MODEL_CLASSIC, Calibrator::MODEL_RATIONAL, Calibrator::MODEL_FULL};

using unit::EachAlone;
using unit::Observed;
using unit::Paper;
using unit::Refined;
using unit::RigFor;
using unit::Targets;
using unit::WithFixedIntrinsics;

/// Not rounded to single precision, which moves the tilt of the full model more than this is about.
std::vector<TargetView> Unrounded(const unit::PointPairs& pairs) {
  solver::Target target = solver::PairTargetOf(Targets(pairs.left.size()), pairs.left, pairs.right);
  const auto object = Paper().GridPoints();
  for (size_t i = 0; i < pairs.left.size(); ++i) {
    target.views[i].observations[0].image = pairs.left[i];
    target.views[i].observations[1].image = pairs.right[i];
    for (size_t k = 0; k < object.size(); ++k) {
      const cv::Vec3d& middle = target.middles[i];
      const cv::Point3d point = object[k] - cv::Point3d(middle[0], middle[1], middle[2]);
      for (Observation& observation : target.views[i].observations) observation.object[k] = point;
    }
  }
  return target.views;
}

world::Lens WorldLens(const Intrinsics& intrinsics) {
  const auto& p = intrinsics.values;
  return world::Lens(cv::Matx33d(p[0], 0.0, p[2], 0.0, p[1], p[3], 0.0, 0.0, 1.0), {p.begin() + 4, p.end()});
}

double FarthestProjection(const Intrinsics& estimate, const Intrinsics& truth,
                          const std::vector<cv::Point2f>& area) {
  return world::MeanProjectionDistance(WorldLens(truth), WorldLens(estimate), unit::FRAME, area).max;
}

TEST(SparsePairRefinement, IsTheTruthWithoutNoise) {
  for (const int model : MODELS) {
    const world::Pair rig = RigFor(model);
    const unit::PointPairs pairs = Observed(rig, 12, 3, 0.0);
    const StereoIntrinsics truth = unit::TruePairIntrinsics(rig);
    CalibrationProblem start = solver::StartOf(solver::KnownPair(truth, model), Unrounded(pairs));
    const Intrinsics left = start.rig.cameras[0].intrinsics;
    const Intrinsics right = start.rig.cameras[1].intrinsics;
    for (Camera& camera : start.rig.cameras) camera.imageSize = unit::FRAME;
    start.rig.cameras[0].intrinsics.values[FX] *= 1.02;
    start.rig.cameras[0].intrinsics.values[K1] += 0.03;
    start.rig.cameras[1].intrinsics.values[FY] *= 0.98;
    start.rig.cameras[1].intrinsics.values[CX] += 6.0;
    solver::BundleOptions options;
    options.parameters = LensModelOf(model).parameters;
    const Rig result = solver::SolveModel(start, options).rig;
    EXPECT_MAT_NEAR(cv::Mat(result.cameras[1].cameraFromRig.R), cv::Mat(rig.R), 1e-6);
    EXPECT_MAT_NEAR(cv::Mat(result.cameras[1].cameraFromRig.t), cv::Mat(rig.T), 1e-6);
    const Intrinsics& leftResult = result.cameras[0].intrinsics;
    const Intrinsics& rightResult = result.cameras[1].intrinsics;
    // The coefficients of the larger models may stand for each other; projections show that they do.
    const size_t count = model == Calibrator::MODEL_CLASSIC ? left.values.size() : 4;
    for (size_t i = 0; i < count; ++i) {
      const double scale = i < 4 ? 600.0 : 1.0;
      EXPECT_NEAR(leftResult.values[i], left.values[i], 1e-6 * scale) << model << ' ' << i;
      EXPECT_NEAR(rightResult.values[i], right.values[i], 1e-6 * scale) << model << ' ' << i;
    }
    EXPECT_LT(FarthestProjection(leftResult, left, world::CoveredRegion(pairs.left)), 1e-4) << model;
    EXPECT_LT(FarthestProjection(rightResult, right, world::CoveredRegion(pairs.right)), 1e-4) << model;
  }
}

struct Errors {
  std::vector<double> rotationErrors, translationErrors, left, right;

  void Add(const world::Pair& rig, const unit::PointPairs& pairs, const StereoIntrinsics& pairIntrinsics,
           const ExtrinsicsResult& result) {
    cv::Vec3d rotation;
    cv::Rodrigues(cv::Matx33d(result.R) * rig.R.t(), rotation);
    rotationErrors.push_back(cv::norm(rotation) * 180.0 / CV_PI);
    translationErrors.push_back(1000.0 * cv::norm(cv::Vec3d(result.T.ptr<double>()) - rig.T));
    const StereoIntrinsics truth = unit::TruePairIntrinsics(rig);
    const auto distance = [&](const cv::Mat& K, const cv::Mat& D, const cv::Mat& ownK, const cv::Mat& ownD,
                              const unit::PointLists& views) {
      return world::MeanProjectionDistance(K, D, ownK, ownD, unit::FRAME, world::CoveredRegion(views),
                                           world::Alignment::Rotated)
          .rms;
    };
    left.push_back(distance(truth.K, truth.D, pairIntrinsics.K, pairIntrinsics.D, pairs.left));
    right.push_back(
        distance(truth.KRight, truth.DRight, pairIntrinsics.KRight, pairIntrinsics.DRight, pairs.right));
  }
};

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

TEST(SparsePairRefinement, IsNotFurtherFromTheTruthThanWithTheIntrinsicsOfEachCameraAlone) {
  for (const int model : MODELS) {
    const world::Pair rig = RigFor(model);
    Errors fixed;
    Errors refined;
    for (std::uint64_t seed = 1; seed <= 25; ++seed) {
      const unit::PointPairs pairs = Observed(rig, 12, seed, 0.1);
      const StereoIntrinsics alone = EachAlone(pairs, model);
      fixed.Add(rig, pairs, alone, WithFixedIntrinsics(pairs, alone, model));
      const ExtrinsicsResult together = Refined(pairs, alone, model);
      refined.Add(rig, pairs, together.refined, together);
    }
    const auto compare = [&](const char* what, const std::vector<double>& before,
                             const std::vector<double>& after) {
      RecordProperty(std::string(what) + " of model " + std::to_string(model),
                     std::to_string(Median(before)) + " -> " + std::to_string(Median(after)));
      EXPECT_LE(Median(after), Median(before)) << what << " of model " << model;
    };
    // The full model's tilt can stand for a rotation of the camera: its rotation tells nothing.
    if (model != Calibrator::MODEL_FULL) {
      compare("rotation, degrees", fixed.rotationErrors, refined.rotationErrors);
      compare("translation, mm", fixed.translationErrors, refined.translationErrors);
    }
    compare("left projections, px", fixed.left, refined.left);
    compare("right projections, px", fixed.right, refined.right);
  }
}

TEST(SparsePairRefinement, IsTheMinimumThatOpenCVFindsWithTheClassicModel) {
  const unit::PointPairs pairs = Observed(RigFor(Calibrator::MODEL_CLASSIC), 8, 1, 0.1);
  const StereoIntrinsics start = EachAlone(pairs, Calibrator::MODEL_CLASSIC);
  const ExtrinsicsResult own = Refined(pairs, start, Calibrator::MODEL_CLASSIC);
  StereoIntrinsics other{start.K.clone(), start.D.colRange(0, 5).clone(), start.KRight.clone(),
                         start.DRight.colRange(0, 5).clone()};
  cv::Mat R;
  cv::Mat T;
  cv::Mat E;
  cv::Mat F;
  const double rms = cv::stereoCalibrate(Narrowed(Targets(8)), Narrowed(pairs.left), Narrowed(pairs.right),
                                         other.K, other.D, other.KRight, other.DRight, unit::FRAME, R, T, E,
                                         F, cv::CALIB_USE_INTRINSIC_GUESS, OpenCvCriteria());
  EXPECT_NEAR(own.rms, rms, 1e-9);
  EXPECT_MAT_NEAR(own.R, R, 1e-6);
  EXPECT_MAT_NEAR(own.T, T, 1e-6);
  EXPECT_MAT_NEAR(own.refined.K, other.K, 1e-3);
  EXPECT_MAT_NEAR(own.refined.DRight.colRange(0, 5), other.DRight, 1e-4);
}

TEST(SparsePairRefinement, IsTheSameForAnyNumberOfThreads) {
  const unit::PointPairs pairs = Observed(RigFor(Calibrator::MODEL_RATIONAL), 12, 1, 0.1);
  const StereoIntrinsics start = EachAlone(pairs, Calibrator::MODEL_RATIONAL);
  const ExtrinsicsResult single = Refined(pairs, start, Calibrator::MODEL_RATIONAL);
  for (const int threads : {2, 5}) {
    SparsePairOptions options;
    options.threads = threads;
    const ExtrinsicsResult several = Refined(pairs, start, Calibrator::MODEL_RATIONAL, options);
    EXPECT_EQ(several.rms, single.rms);
    EXPECT_SAME_MAT(several.R, single.R);
    EXPECT_SAME_MAT(several.T, single.T);
    EXPECT_SAME_MAT(several.refined.K, single.refined.K);
    EXPECT_SAME_MAT(several.refined.DRight, single.refined.DRight);
  }
}

TEST(SparsePairRefinement, HasTheEpipolarMatricesOfTheRefinedIntrinsics) {
  const unit::PointPairs pairs = Observed(RigFor(Calibrator::MODEL_CLASSIC), 8, 1, 0.1);
  const StereoIntrinsics start = EachAlone(pairs, Calibrator::MODEL_CLASSIC);
  const ExtrinsicsResult result = Refined(pairs, start, Calibrator::MODEL_CLASSIC);
  ASSERT_NE(result.refined.K.at<double>(0, 0), start.K.at<double>(0, 0));
  cv::Mat F = result.refined.KRight.inv().t() * result.E * result.refined.K.inv();
  F /= F.at<double>(2, 2);
  EXPECT_MAT_NEAR(result.F, F, 1e-9 * cv::norm(F));
}

TEST(SparsePairRefinement, HasSmallerErrorsThanWithFixedIntrinsics) {
  const unit::PointPairs pairs = Observed(RigFor(Calibrator::MODEL_FULL), 8, 1, 0.1);
  for (const int model : MODELS) {
    const unit::ScopedLogLevel quiet(1);
    const StereoIntrinsics start = EachAlone(pairs, model);
    EXPECT_LT(Refined(pairs, start, model).rms, WithFixedIntrinsics(pairs, start, model).rms) << model;
  }
}

TEST(SparsePairRefinement, HoldsCoefficientsThatTheRationalModelHasNotAndDropsThoseThatTheClassicOneHasNot) {
  const unit::ScopedLogLevel quiet(1);
  const world::Pair rig = RigFor(Calibrator::MODEL_FULL);
  const unit::PointPairs pairs = Observed(rig, 8, 1, 0.1);
  const StereoIntrinsics start = unit::TruePairIntrinsics(rig);
  const cv::Mat rational = Refined(pairs, start, Calibrator::MODEL_RATIONAL).refined.D;
  EXPECT_EQ(rational.size(), cv::Size(14, 1));
  EXPECT_SAME_MAT(rational.colRange(8, 14), start.D.colRange(8, 14));
  EXPECT_NE(rational.at<double>(5), start.D.at<double>(5));
  const cv::Mat classic = Refined(pairs, start, Calibrator::MODEL_CLASSIC).refined.D;
  EXPECT_EQ(classic.size(), cv::Size(14, 1));
  EXPECT_EQ(cv::countNonZero(classic.colRange(5, 14)), 0);
}

TEST(SparsePairRefinement, LeavesTheGivenIntrinsicsAlone) {
  const world::Pair rig = RigFor(Calibrator::MODEL_RATIONAL);
  const StereoIntrinsics start = unit::TruePairIntrinsics(rig);
  Refined(Observed(rig, 6, 1, 0.1), start, Calibrator::MODEL_RATIONAL);
  const StereoIntrinsics truth = unit::TruePairIntrinsics(rig);
  EXPECT_SAME_MAT(start.K, truth.K);
  EXPECT_SAME_MAT(start.D, truth.D);
  EXPECT_SAME_MAT(start.KRight, truth.KRight);
  EXPECT_SAME_MAT(start.DRight, truth.DRight);
}

/// The images of discs, seen as the centroids of their rims' projections.
unit::PointPairs Centroids(const world::Pair& rig, int count, double radius) {
  unit::PointPairs pairs;
  const auto observed = [&](const world::Camera& camera, const world::Pose& pose) {
    std::vector<cv::Point2d> centres;
    for (const cv::Point3d& point : Paper().GridPoints()) {
      std::vector<cv::Point3d> rim;
      for (int i = 0; i < 256; ++i) {
        const double angle = 2.0 * CV_PI * i / 256.0;
        rim.push_back(point + cv::Point3d(radius * std::cos(angle), radius * std::sin(angle), 0.0));
      }
      const auto outline = world::ProjectPoints(camera.lens, rim, pose);
      double area = 0.0;
      cv::Point2d moment;
      for (size_t i = 0; i < outline.size(); ++i) {
        const cv::Point2d a = outline[i] - outline[0];
        const cv::Point2d b = outline[(i + 1) % outline.size()] - outline[0];
        area += a.cross(b);
        moment += a.cross(b) * (a + b);
      }
      centres.push_back(outline[0] + moment * (1.0 / (3.0 * area)));
    }
    return centres;
  };
  for (const world::Pose& pose : world::SampleRigViews(rig, count, 4, Paper())) {
    pairs.left.push_back(observed(rig.left, pose));
    pairs.right.push_back(observed(rig.right, world::RightPose(rig, pose)));
  }
  return pairs;
}

TEST(SparsePairRefinement, IsCorrectedForTheDiscsCentroids) {
  const world::Pair rig = RigFor(Calibrator::MODEL_CLASSIC);
  const double radius = 0.4 * static_cast<double>(unit::UNIT);
  const unit::PointPairs pairs = Centroids(rig, 12, radius);
  SparsePairOptions options;
  const double before = Refined(pairs, unit::TruePairIntrinsics(rig), Calibrator::MODEL_CLASSIC, options)
                            .refined.K.at<double>(0, 0);
  options.discRadius = radius;
  const double after = Refined(pairs, unit::TruePairIntrinsics(rig), Calibrator::MODEL_CLASSIC, options)
                           .refined.K.at<double>(0, 0);
  const double truth = unit::TruePairIntrinsics(rig).K.at<double>(0, 0);
  EXPECT_GT(std::abs(before - truth), 0.02);
  EXPECT_LT(std::abs(after - truth), 0.002);
}

TEST(SparsePairRefinement, IsCorrectedForTheDiscsCentroidsWithFixedIntrinsicsToo) {
  const world::Pair rig = RigFor(Calibrator::MODEL_CLASSIC);
  const double radius = 0.4 * static_cast<double>(unit::UNIT);
  const unit::PointPairs pairs = Centroids(rig, 12, radius);
  const auto solved = [&](double corrected) {
    return SolveExtrinsicsSparsely(Targets(12), pairs.left, pairs.right, unit::TruePairIntrinsics(rig),
                                   Calibrator::MODEL_CLASSIC, {corrected, 1, {}});
  };
  EXPECT_GT(solved(0.0).rms, 0.005);
  EXPECT_LT(solved(radius).rms, 0.0005);
  EXPECT_MAT_NEAR(solved(radius).T, cv::Mat(rig.T), 1e-6);
}

TEST(SparsePairRefinement, RaisesForBadInput) {
  const world::Pair rig = RigFor(Calibrator::MODEL_RATIONAL);
  const unit::PointPairs good = Observed(rig, 6, 1, 0.1);
  const StereoIntrinsics pairIntrinsics = unit::TruePairIntrinsics(rig);
  const auto refine = [&](const unit::PointPairs& pairs, const StereoIntrinsics& start) {
    Refined(pairs, start, Calibrator::MODEL_RATIONAL);
  };
  unit::PointPairs pairs = good;
  pairs.right.back().pop_back();
  EXPECT_THROW(refine(pairs, pairIntrinsics), cv::Exception);
  pairs = good;
  pairs.right.pop_back();
  EXPECT_THROW(refine(pairs, pairIntrinsics), cv::Exception);
  pairs = good;
  pairs.left[2][7].x = std::nan("");
  EXPECT_THROW(refine(pairs, pairIntrinsics), cv::Exception);
  EXPECT_THROW(refine({}, pairIntrinsics), cv::Exception);
  StereoIntrinsics wrong = unit::TruePairIntrinsics(rig);
  wrong.K = cv::Mat::eye(2, 3, CV_64F);
  EXPECT_THROW(refine(good, wrong), cv::Exception);
  wrong = unit::TruePairIntrinsics(rig);
  wrong.DRight = cv::Mat();
  EXPECT_THROW(refine(good, wrong), cv::Exception);
}

TEST(SparsePairRefinement, StartsFromIntrinsicsOfFewCoefficientsToo) {
  const world::Pair rig = RigFor(Calibrator::MODEL_RATIONAL);
  const unit::PointPairs pairs = Observed(rig, 8, 1, 0.1);
  StereoIntrinsics few = unit::TruePairIntrinsics(rig);
  const ExtrinsicsResult expected = Refined(pairs, few, Calibrator::MODEL_RATIONAL);
  few.D = cv::Mat::zeros(1, 4, CV_64F);
  few.DRight = cv::Mat::zeros(1, 5, CV_64F);
  const ExtrinsicsResult refined = Refined(pairs, few, Calibrator::MODEL_RATIONAL);
  EXPECT_EQ(refined.refined.D.size(), cv::Size(14, 1));
  EXPECT_NEAR(refined.rms, expected.rms, 0.001 * expected.rms);
  EXPECT_MAT_NEAR(refined.T, expected.T, 1e-4);
}

TEST(SparsePairRefinement, ComesFromACalibratorThatIsAskedToRefine) {
  const auto calibrator = unit::StereoCalibratorWith(unit::NoisyPairs(8));
  const auto compute = [&] {
    return calibrator->ComputeCalibrationStereo(unit::LeftResult(), unit::RightResult(),
                                                Calibrator::MODEL_RATIONAL, false);
  };
  calibrator->SetRefineLenses(true);
  compute();  // with OpenCV's solver, which keeps the intrinsics fixed
  const StereoIntrinsics given = unit::TruePairIntrinsics(unit::PairOfCameras());
  EXPECT_SAME_MAT(calibrator->GetKLeft(), given.K);
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  const float rms = compute();
  const ExtrinsicsResult expected = Refined(unit::NoisyPairs(8), given, Calibrator::MODEL_RATIONAL);
  EXPECT_EQ(rms, static_cast<float>(expected.rms));
  EXPECT_SAME_MAT(calibrator->GetKLeft(), expected.refined.K);
  EXPECT_SAME_MAT(calibrator->GetDistCoefsLeft(), expected.refined.D);
  EXPECT_SAME_MAT(calibrator->GetKRight(), expected.refined.KRight);
  EXPECT_SAME_MAT(calibrator->GetDistCoefsRight(), expected.refined.DRight);
  EXPECT_SAME_MAT(calibrator->GetR(), expected.R);
  EXPECT_SAME_MAT(calibrator->GetFundamentalMatrix(), expected.F);
  JSON saved;
  saved.fromJson(calibrator->SaveResult(false, ""));
  EXPECT_SAME_MAT(saved.readMat("cameraMatrix2"), expected.refined.KRight);
  EXPECT_SAME_MAT(saved.readMat("distCoefs"), expected.refined.D);
  calibrator->SetRefineLenses(false);
  compute();
  EXPECT_SAME_MAT(calibrator->GetKLeft(), given.K);
  EXPECT_SAME_MAT(calibrator->GetDistCoefsRight(), given.DRight);
}

TEST(SparsePairRefinement, LeavesTheResultsAloneWhenACalibratorIsCancelled) {
  const auto calibrator = unit::StereoCalibratorWith(unit::NoisyPairs(6));
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  calibrator->SetRefineLenses(true);
  calibrator->SetProgressListener([&](int iterations, double) {
    if (iterations == 7) calibrator->CancelComputation();
  });
  EXPECT_EQ(calibrator->ComputeCalibrationStereo(unit::LeftResult(), unit::RightResult(),
                                                 Calibrator::MODEL_RATIONAL, false),
            -1.0F);
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_READY);
  EXPECT_TRUE(calibrator->GetR().empty());
}

TEST(SparsePairRefinement, KeepsAnEarlierResultWithItsIntrinsicsWhenACalibratorIsCancelled) {
  const auto calibrator = unit::StereoCalibratorWith(unit::NoisyPairs(8));
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  calibrator->SetRefineLenses(true);
  std::vector<int> numbers;
  calibrator->SetProgressListener([&](int iterations, double) { numbers.push_back(iterations); });
  const auto compute = [&] {
    return calibrator->ComputeCalibrationStereo(unit::LeftResult(), unit::RightResult(),
                                                Calibrator::MODEL_RATIONAL, false);
  };
  compute();
  for (size_t i = 0; i < numbers.size(); ++i) EXPECT_EQ(numbers[i], static_cast<int>(i) + 1);
  const cv::Mat lens = calibrator->GetKRight();
  const std::string saved = calibrator->SaveResult(false, "");
  const PairVerdict verdict = calibrator->GetPairVerdict();
  calibrator->SetProgressListener([&](int, double) { calibrator->CancelComputation(); });
  EXPECT_EQ(compute(), -1.0F);
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_COMPLETED);
  EXPECT_SAME_MAT(calibrator->GetKRight(), lens);
  EXPECT_EQ(calibrator->SaveResult(false, ""), saved);
  EXPECT_EQ(calibrator->GetPairVerdict().ToJson(), verdict.ToJson());
}

TEST(SparsePairRefinement, RaisesWhenTheCallerGivesUp) {
  const world::Pair rig = RigFor(Calibrator::MODEL_RATIONAL);
  const unit::PointPairs pairs = Observed(rig, 6, 1, 0.1);
  int all = 0;
  SparsePairOptions options;
  options.progress = [&](int, double) { return ++all > 0; };
  Refined(pairs, unit::TruePairIntrinsics(rig), Calibrator::MODEL_RATIONAL, options);
  for (const int last : {1, all - 1}) {
    int calls = 0;
    options.progress = [&](int, double) { return ++calls < last; };
    EXPECT_THROW(Refined(pairs, unit::TruePairIntrinsics(rig), Calibrator::MODEL_RATIONAL, options),
                 cv::Exception);
    EXPECT_EQ(calls, last);
  }
}

TEST(SparsePairRefinement, LeavesOutAWholeViewAndNumbersTheOthersAsTheyWereGiven) {
  const world::Pair rig = RigFor(Calibrator::MODEL_CLASSIC);
  unit::PointPairs pairs = Observed(rig, 14, 1, 0.1);
  std::reverse(pairs.left[2].begin(), pairs.left[2].end());
  for (cv::Point2d& point : pairs.right[2]) point = {point.y, 0.5 * point.x};
  pairs.right[9][5] += cv::Point2d(12.0, 7.0);
  SparsePairOptions options;
  options.robust = true;
  const ExtrinsicsResult result =
      RefinePairSparsely(Targets(pairs.left.size()), pairs.left, pairs.right, unit::TruePairIntrinsics(rig),
                         unit::FRAME, Calibrator::MODEL_CLASSIC, options);
  ASSERT_NE(result.solution, nullptr);
  const Solution& solution = *result.solution;
  EXPECT_EQ(std::count(solution.kept.begin(), solution.kept.end(), size_t{2}), 0);
  EXPECT_EQ(std::count(solution.kept.begin(), solution.kept.end(), size_t{9}), 1);
  ASSERT_EQ(solution.kept.size(), solution.views.size());
  const auto told = [&](size_t view, size_t camera, int point) {
    return std::count_if(solution.rejected.begin(), solution.rejected.end(), [&](const Rejected& item) {
      return item.view == view && item.camera == camera && item.point == point;
    });
  };
  EXPECT_EQ(told(2, 0, Rejected::WHOLE_VIEW), 1);
  EXPECT_EQ(told(2, 1, Rejected::WHOLE_VIEW), 1);
  EXPECT_EQ(told(9, 1, 5), 1);
  EXPECT_NEAR(result.rms, 0.1 * std::sqrt(2.0), 0.02);
}

}  // namespace
