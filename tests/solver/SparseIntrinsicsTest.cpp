/// The sparse solver's intrinsics beside OpenCV's and the truth.
#include "solver/SparseIntrinsics.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "Calibrator.h"
#include "LensError.h"
#include "Matchers.h"
#include "Views.h"
#include "model/TargetGeometry.h"
#include "solver/NoisyViews.h"
#include "solver/OpenCvMatrices.h"
#include "solver/WeakPrior.h"
#include "solver/WideViews.h"
#include "unit/Collection.h"

using namespace velmora;

namespace {

std::vector<std::vector<cv::Point3d>> Targets(size_t count) {
  return std::vector<std::vector<cv::Point3d>>(count, MakeObjectTemplate(unit::GRID, unit::UNIT));
}

IntrinsicsResult Sparse(const unit::PointLists& views, int model, const SparseOptions& options = {}) {
  return SolveIntrinsicsSparsely(Targets(views.size()), views, unit::FRAME, model, options);
}

IntrinsicsResult Dense(const unit::PointLists& views, int model) {
  return SolveIntrinsics(Targets(views.size()), views, unit::FRAME, model);
}

unit::PointLists RandomViews(int count, std::uint64_t seed) {
  return unit::NoisyViews(unit::DistortedCamera(), count, seed);
}

double DistanceInHull(const world::Lens& a, const world::Lens& b, const unit::PointLists& views) {
  return world::MeanProjectionDistance(a, b, unit::FRAME, world::CoveredRegion(views),
                                       world::Alignment::Rotated)
      .mean;
}

double ErrorInHull(const IntrinsicsResult& result, const unit::PointLists& views) {
  return DistanceInHull(unit::DistortedCamera().lens, world::LensFrom(result.K, result.D), views);
}

void ExpectSameBits(const IntrinsicsResult& a, const IntrinsicsResult& b) {
  EXPECT_EQ(a.rms, b.rms);
  EXPECT_SAME_MAT(a.K, b.K);
  EXPECT_SAME_MAT(a.D, b.D);
  EXPECT_SAME_MAT(a.rvecs, b.rvecs);
  EXPECT_SAME_MAT(a.tvecs, b.tvecs);
  EXPECT_SAME_MAT(a.stdDevIntrinsics, b.stdDevIntrinsics);
  EXPECT_SAME_MAT(a.stdDevExtrinsics, b.stdDevExtrinsics);
  EXPECT_SAME_MAT(a.perViewErrors, b.perViewErrors);
}

void ExpectSameShape(const cv::Mat& a, const cv::Mat& b, const char* name) {
  EXPECT_EQ(a.size(), b.size()) << name;
  EXPECT_EQ(a.type(), b.type()) << name;
}

TEST(SparseIntrinsics, OfTheClassicModelAreTheSameMinimum) {
  for (const std::uint64_t seed : {1U, 2U, 3U, 4U, 5U, 6U}) {
    const auto views = RandomViews(7, seed);
    const IntrinsicsResult sparse = Sparse(views, Calibrator::MODEL_CLASSIC);
    const IntrinsicsResult dense = Dense(views, Calibrator::MODEL_CLASSIC);
    EXPECT_NEAR(sparse.rms, dense.rms, 1e-9);
    EXPECT_MAT_NEAR(sparse.K, dense.K, 1e-3);
    EXPECT_MAT_NEAR(sparse.rvecs, dense.rvecs, 1e-6);
    EXPECT_MAT_NEAR(sparse.tvecs, dense.tvecs, 1e-6);
    EXPECT_MAT_NEAR(sparse.perViewErrors, dense.perViewErrors, 1e-6);
    EXPECT_LT(world::MeanProjectionDistance(dense.K, dense.D, sparse.K, sparse.D, unit::FRAME).max, 1e-4);
  }
}

TEST(SparseIntrinsics, DeviateAsOpenCVSaysButForTheDegreesOfFreedom) {
  const auto views = RandomViews(7, 1);
  const IntrinsicsResult sparse = Sparse(views, Calibrator::MODEL_CLASSIC);
  const IntrinsicsResult dense = Dense(views, Calibrator::MODEL_CLASSIC);
  // OpenCV counts each point once, although both of its coordinates are measured.
  const double points = 7.0 * 44.0;
  const double unknowns = 9.0 + 6.0 * 7.0;
  const double factor = std::sqrt((points - unknowns) / (2.0 * points - unknowns));
  for (int i = 0; i < 9; ++i) {
    const double expected = factor * dense.stdDevIntrinsics.at<double>(i);
    EXPECT_NEAR(sparse.stdDevIntrinsics.at<double>(i), expected, 1e-4 * expected) << i;
  }
  for (int i = 0; i < dense.stdDevExtrinsics.rows; ++i) {
    const double expected = factor * dense.stdDevExtrinsics.at<double>(i);
    EXPECT_NEAR(sparse.stdDevExtrinsics.at<double>(i), expected, 1e-4 * expected) << i;
  }
}

TEST(SparseIntrinsics, HaveTheFormOfTheDefaultSolvers) {
  const auto views = RandomViews(6, 3);
  for (const int model : {Calibrator::MODEL_CLASSIC, Calibrator::MODEL_RATIONAL}) {
    const IntrinsicsResult sparse = Sparse(views, model);
    const IntrinsicsResult dense = Dense(views, model);
    ExpectSameShape(sparse.K, dense.K, "K");
    ExpectSameShape(sparse.D, dense.D, "D");
    ExpectSameShape(sparse.rvecs, dense.rvecs, "rvecs");
    ExpectSameShape(sparse.tvecs, dense.tvecs, "tvecs");
    ExpectSameShape(sparse.stdDevIntrinsics, dense.stdDevIntrinsics, "stdDevIntrinsics");
    ExpectSameShape(sparse.stdDevExtrinsics, dense.stdDevExtrinsics, "stdDevExtrinsics");
    ExpectSameShape(sparse.perViewErrors, dense.perViewErrors, "perViewErrors");
  }
  const IntrinsicsResult full = Sparse(views, Calibrator::MODEL_FULL);
  EXPECT_EQ(full.D.size(), cv::Size(14, 1));
  EXPECT_EQ(cv::countNonZero(full.D), 14);
  EXPECT_EQ(cv::countNonZero(full.stdDevIntrinsics), 18);
}

bool HasPoles(const IntrinsicsResult& result) {
  return !solver::IsFreeOfPoles(solver::IntrinsicsOf(result), unit::FRAME);
}

TEST(SparseIntrinsics, OfTheLargerModelsAreNearerToTheTruthThanTheDefaultSolvers) {
  for (const int model : {Calibrator::MODEL_RATIONAL, Calibrator::MODEL_FULL}) {
    double logarithms = 0.0;
    for (const std::uint64_t seed : {1U, 2U, 3U, 4U, 5U}) {
      const auto views = RandomViews(10, seed);
      const IntrinsicsResult sparse = Sparse(views, model);
      const IntrinsicsResult dense = Dense(views, model);
      // A pole within the image buys the default solver some of its RMS: it bends a narrow ring to the noise.
      EXPECT_LT(sparse.rms, (HasPoles(dense) ? 1.02 : 1.006) * dense.rms) << model << " " << seed;
      logarithms += std::log(ErrorInHull(sparse, views) / ErrorInHull(dense, views));
    }
    EXPECT_LT(logarithms, 0.0) << model;
  }
}

TEST(SparseIntrinsics, OfTheLargerModelsAreNearTheTruthAndHaveNoPoles) {
  for (const int model : {Calibrator::MODEL_RATIONAL, Calibrator::MODEL_FULL}) {
    for (const std::uint64_t seed : {7U, 8U}) {
      const auto views = RandomViews(20, seed);
      const IntrinsicsResult result = Sparse(views, model);
      EXPECT_LT(ErrorInHull(result, views), 0.3);
      EXPECT_FALSE(HasPoles(result));
      EXPECT_LT(cv::norm(result.D, cv::NORM_INF), 20.0) << result.D;
    }
  }
}

/// Of the rational model, from 20 views of a fisheye: over the whole image, corners
/// without data included.
double ErrorInImage(const world::Camera& camera, std::uint64_t seed) {
  const unit::PointLists views = unit::NoisyViews(camera, 20, seed);
  const IntrinsicsResult result = Sparse(views, MODEL_RATIONAL);
  const unit::PointLists image = {{{0.0, 0.0}, {639.0, 0.0}, {639.0, 479.0}, {0.0, 479.0}}};
  return world::MeanProjectionDistance(camera.lens, world::LensFrom(result.K, result.D), unit::FRAME,
                                       world::CoveredRegion(image), world::Alignment::Rotated)
      .rms;
}

TEST(SparseIntrinsics, OfFisheyesAreRightOutsideTheDataToo) {
  const struct {
    double degrees;
    double most;
  } LENSES[] = {{110.0, 0.3}, {120.0, 0.4}};
  for (const auto& lens : LENSES) {
    std::vector<double> errors;
    for (std::uint64_t seed = 1; seed <= 7; ++seed) {
      errors.push_back(ErrorInImage(unit::EquidistantCamera(lens.degrees), seed));
    }
    std::sort(errors.begin(), errors.end());
    EXPECT_LT(errors[errors.size() / 2], lens.most) << lens.degrees;
    EXPECT_LT(errors.back(), 3.0 * lens.most) << lens.degrees;
  }
}

TEST(SparseIntrinsics, AreTheSameForAnyNumberOfThreads) {
  const auto views = RandomViews(11, 5);
  for (const int model : {Calibrator::MODEL_CLASSIC, Calibrator::MODEL_FULL}) {
    SparseOptions options;
    options.threads = 1;
    const IntrinsicsResult single = Sparse(views, model, options);
    for (const int threads : {2, 3, 16}) {
      options.threads = threads;
      ExpectSameBits(Sparse(views, model, options), single);
    }
  }
}

TEST(SparseIntrinsics, AreExactForExactViews) {
  const world::Camera camera = unit::DistortedCamera();
  const world::Sheet sheet(unit::GRID, static_cast<double>(unit::UNIT));
  unit::PointLists views;
  for (const world::Pose& pose : world::SpreadViews(camera, 8, sheet)) {
    views.push_back(world::TrueCentres(camera.lens, sheet, pose));
  }
  const IntrinsicsResult result = Sparse(views, Calibrator::MODEL_CLASSIC);
  EXPECT_LT(result.rms, 1e-4);  // single precision is left
  EXPECT_NEAR(result.K.at<double>(0, 0), camera.lens.K()(0, 0), 1e-3);
}

TEST(SparseIntrinsics, TellOfTheirProgress) {
  std::vector<double> told;
  SparseOptions options;
  options.progress = [&](int, double rms) {
    told.push_back(rms);
    return true;
  };
  const IntrinsicsResult result = Sparse(RandomViews(6, 2), Calibrator::MODEL_CLASSIC, options);
  ASSERT_GE(told.size(), 3U);
  EXPECT_GT(told.front(), told.back());
  EXPECT_EQ(told.back(), result.rms);
}

TEST(SparseIntrinsics, RaiseWhenTheCallerGivesUp) {
  int calls = 0;
  SparseOptions options;
  options.progress = [&](int, double) { return ++calls < 2; };
  EXPECT_THROW(Sparse(RandomViews(6, 2), Calibrator::MODEL_FULL, options), cv::Exception);
  EXPECT_EQ(calls, 2);
}

TEST(SparseIntrinsics, RaiseWhenTheListsDoNotMatch) {
  auto views = RandomViews(5, 1);
  views.back().pop_back();
  EXPECT_THROW(Sparse(views, Calibrator::MODEL_CLASSIC), cv::Exception);
  EXPECT_THROW(Sparse({}, Calibrator::MODEL_CLASSIC), cv::Exception);
}

}  // namespace
