/// What the residuals of several cameras tell of the sheet that they saw together.
#include <gtest/gtest.h>

#include <Eigen/Cholesky>
#include <cmath>

#include "LensError.h"
#include "quality/OmittedEffects.h"
#include "quality/RigSolutions.h"
#include "solver/Covariance.h"
#include "solver/LevenbergMarquardt.h"

using namespace velmora;

namespace {

constexpr double SHARP = 0.01;  // pixels
constexpr double NOISE = 0.1;

enum class Fixed { Nothing, Intrinsics };

Solution SolutionOf(const world::Rig& rig, const unit::Shape& shape, Fixed fixed, std::uint64_t seed,
                    double noise = SHARP, int parameters = CLASSIC_PARAMETERS) {
  auto problem = unit::ObservedByRig(rig, parameters, shape, 12, seed, noise);
  problem.estimated.intrinsics = fixed == Fixed::Nothing;
  return unit::Solved(problem);
}

TEST(OmittedBendOfARig, IsMeasured) {
  const cv::Vec3d truth(0.05, -0.03, -0.08);
  for (const world::Rig& rig : {unit::ClassicPair(), unit::ClassicTriple()}) {
    for (const Fixed fixed : {Fixed::Nothing, Fixed::Intrinsics}) {
      const Solution solution = SolutionOf(rig, unit::BentShape(truth), fixed, 1);
      const OmittedEffect bend = OmittedBend(solution);
      ASSERT_TRUE(bend.significant);
      ASSERT_EQ(bend.values.size(), 3);
      for (int i = 0; i < 3; ++i) EXPECT_NEAR(bend.values(i), truth[i], 0.003) << i;
      EXPECT_GT(bend.Excess(), OmittedProportions(solution).Excess());
    }
  }
}

/// Highest minus lowest above the plane that fits the points best.
double DepthOf(const unit::Shape& shape) {
  const int count = static_cast<int>(shape.size());
  cv::Mat plane(count, 3, CV_64F);
  cv::Mat depths(count, 1, CV_64F);
  for (int i = 0; i < count; ++i) {
    const cv::Point3d& point = shape[static_cast<size_t>(i)];
    plane.at<cv::Vec3d>(i) = {point.x, point.y, 1.0};
    depths.at<double>(i) = point.z;
  }
  cv::Mat best;
  cv::solve(plane, depths, best, cv::DECOMP_SVD);
  double lowest = 0.0;
  double highest = 0.0;
  cv::minMaxLoc(depths - plane * best, &lowest, &highest);
  return highest - lowest;
}

TEST(OmittedBendOfARig, HasTheDepthOfTheSheet) {
  for (const cv::Vec3d& truth : {cv::Vec3d(0.0, 0.0, 0.02), cv::Vec3d(-0.03, 0.01, 0.005)}) {
    const unit::Shape shape = unit::BentShape(truth);
    const OmittedEffect bend = OmittedBend(SolutionOf(unit::ClassicPair(), shape, Fixed::Nothing, 2, 0.001));
    EXPECT_NEAR(DepthOfBend(bend, unit::FlatShape()), DepthOf(shape), 0.01 * DepthOf(shape));
  }
}

TEST(OmittedProportionsOfARig, AreMeasured) {
  for (const world::Rig& rig : {unit::ClassicPair(), unit::ClassicTriple()}) {
    for (const Fixed fixed : {Fixed::Nothing, Fixed::Intrinsics}) {
      const Solution solution = SolutionOf(rig, unit::StretchedShape(0.005, 0.002), fixed, 4);
      const OmittedEffect proportions = OmittedProportions(solution);
      ASSERT_TRUE(proportions.significant);
      ASSERT_EQ(proportions.values.size(), 2);
      EXPECT_NEAR(proportions.values(0), 0.005, 0.0002);
      EXPECT_NEAR(proportions.values(1), 0.002, 0.0002);
      EXPECT_GT(proportions.Excess(), OmittedBend(solution).Excess());
    }
  }
}

/// The change of the shared parameters, in the order of the layout, from one rig to another.
Eigen::VectorXd Between(const Rig& from, const Rig& to, const Estimated& estimated) {
  const Layout layout = LayoutOf(from, estimated);
  Eigen::VectorXd change = Eigen::VectorXd::Zero(layout.shared);
  for (size_t camera = 0; camera < from.cameras.size(); ++camera) {
    const Layout::Block& block = layout.cameras[camera];
    const Camera& a = from.cameras[camera];
    const Camera& b = to.cameras[camera];
    for (int i = 0; i < block.count; ++i) {
      const auto k = static_cast<size_t>(i);
      change(block.intrinsics + i) = b.intrinsics.values[k] - a.intrinsics.values[k];
    }
    if (block.pose == Layout::FIXED) continue;
    // So small that sines are angles.
    const cv::Matx33d R = b.cameraFromRig.R * a.cameraFromRig.R.t();
    const cv::Vec3d rotation = 0.5 * cv::Vec3d(R(2, 1) - R(1, 2), R(0, 2) - R(2, 0), R(1, 0) - R(0, 1));
    const cv::Vec3d translation = b.cameraFromRig.t - a.cameraFromRig.t;
    for (int i = 0; i < 3; ++i) {
      change(block.pose + i) = rotation[i];
      change(block.pose + 3 + i) = translation[i];
    }
  }
  return change;
}

/// The solution of the same views with the sheet's shape known.
Solution WithKnownShape(const Solution& solution, const unit::Shape& shape) {
  std::vector<TargetView> views = solution.views;
  for (TargetView& view : views) {
    for (Observation& observed : view.observations) {
      if (!observed.IsEmpty()) observed.object = shape;
    }
  }
  solver::BundleOptions options;
  options.parameters = solution.rig.cameras.front().intrinsics.estimated;
  return solver::SolveAgain(solution, views, options);
}

/// A change in the standard deviations of all shared parameters together.
double SizeOf(const Eigen::VectorXd& change, const Eigen::MatrixXd& covariance) {
  return std::sqrt(change.dot(covariance.ldlt().solve(change)));
}

unit::Shape BentBy(const OmittedEffect& bend) {
  return unit::BentShape({bend.values(0), bend.values(1), bend.values(2)});
}

unit::Shape StretchedBy(const OmittedEffect& proportions) {
  return unit::StretchedShape(proportions.values(0), proportions.values(1));
}

/// The effect's shift is what computing again with the shape that it measured changes, to first order.
void ExpectShift(const Solution& solution, const OmittedEffect& effect, const unit::Shape& shape,
                 double tolerance = 0.03) {
  const Solution known = WithKnownShape(solution, shape);
  ASSERT_LT(known.cost, solution.cost);
  const Eigen::VectorXd change = Between(solution.rig, known.rig, solution.estimated);
  ASSERT_EQ(effect.shift.size(), change.size());
  const Eigen::MatrixXd covariance = solver::SharedCovariance(known);
  ASSERT_GT(SizeOf(change, covariance), 10.0);
  EXPECT_LT(SizeOf(effect.shift - change, covariance), tolerance * SizeOf(change, covariance))
      << "shift " << effect.shift.transpose() << "\nchange " << change.transpose();
}

TEST(OmittedEffectsOfARig, ShiftSharedParametersAsTheKnownShapeDoes) {
  const unit::Shape bent = unit::BentShape({0.002, 0.0, -0.004});
  const unit::Shape stretched = unit::StretchedShape(0.0002, -0.0001);
  for (const world::Rig& rig : {unit::ClassicPair(), unit::ClassicTriple()}) {
    for (const Fixed fixed : {Fixed::Nothing, Fixed::Intrinsics}) {
      SCOPED_TRACE(std::to_string(rig.cameras.size()) + " cameras");
      const Solution ofBent = SolutionOf(rig, bent, fixed, 5, 0.0002);
      const OmittedEffect bend = OmittedBend(ofBent);
      ExpectShift(ofBent, bend, BentBy(bend));
      const Solution ofStretched = SolutionOf(rig, stretched, fixed, 6, 0.0002);
      const OmittedEffect proportions = OmittedProportions(ofStretched);
      ExpectShift(ofStretched, proportions, StretchedBy(proportions));
    }
  }
}

TEST(OmittedEffectsOfARig, ShiftTheRationalModelsParametersAsTheKnownShapeDoes) {
  const unit::Shape bent = unit::BentShape({0.003, 0.0, -0.006});
  const world::Rig rig = unit::RigFor(Calibrator::MODEL_RATIONAL);
  const Solution solution = SolutionOf(rig, bent, Fixed::Nothing, 5, 0.01, RATIONAL_PARAMETERS);
  const OmittedEffect bend = OmittedBend(solution);
  // Along the valley of the coefficients residuals curve the cost about as much as derivatives do,
  // and so does the smooth curve.
  ExpectShift(solution, bend, BentBy(bend), 0.12);
}

TEST(OmittedEffectsOfARig, AreTheSameBesideTheMinimum) {
  const Solution solution =
      SolutionOf(unit::ClassicPair(), unit::BentShape({0.0, 0.0, 0.05}), Fixed::Nothing, 7);
  CalibrationProblem beside{solution.rig, solution.views, solution.estimated, solution.priors};
  beside.rig.cameras[0].intrinsics.values[FX] += 0.5;
  beside.rig.cameras[1].intrinsics.values[CY] -= 0.5;
  beside.rig.cameras[1].cameraFromRig.t[0] += 0.0001;
  const OmittedEffect bend = OmittedBend(solver::EvaluatedAt(beside));
  const OmittedEffect expected = OmittedBend(solution);
  EXPECT_TRUE(bend.values.isApprox(expected.values, 0.02))
      << bend.values.transpose() << " beside " << expected.values.transpose();
}

TEST(OmittedEffectsOfARig, CountOnlyWhatEachCameraSaw) {
  const unit::Shape bent = unit::BentShape({0.01, 0.0, -0.02});
  auto problem = unit::ObservedByRig(unit::ClassicTriple(), CLASSIC_PARAMETERS, bent, 15, 7, 0.001);
  for (size_t i = 0; i < 12; ++i) problem.views[i].observations[i % 3] = {};
  problem.views[0].observations[1] = {};
  const Solution solution = unit::Solved(problem);
  const OmittedEffect bend = OmittedBend(solution);
  EXPECT_NEAR(bend.values(0), 0.01, 0.0005);
  EXPECT_NEAR(bend.values(2), -0.02, 0.0005);
  ExpectShift(solution, bend, BentBy(bend));
}

TEST(OmittedEffectsOfARig, DoNotCountPointsThatWereRejected) {
  auto problem = unit::ObservedByRig(unit::ClassicPair(), CLASSIC_PARAMETERS,
                                     unit::BentShape({0.0, 0.02, 0.05}), 12, 8, SHARP);
  auto weightless = problem;
  for (size_t i = 0; i < problem.views.size(); ++i) {
    Observation& observed = weightless.views[i].observations[i % 2];
    observed.weights.assign(observed.object.size(), 1.0);
    observed.weights[i] = 0.0;
    observed.image[i] += cv::Point2d(50.0, -30.0);
    Observation& shorter = problem.views[i].observations[i % 2];
    shorter.object.erase(shorter.object.begin() + static_cast<std::ptrdiff_t>(i));
    shorter.image.erase(shorter.image.begin() + static_cast<std::ptrdiff_t>(i));
  }
  const OmittedEffect bend = OmittedBend(unit::Solved(weightless));
  const OmittedEffect expected = OmittedBend(unit::Solved(problem));
  EXPECT_TRUE(bend.values.isApprox(expected.values, 1e-6));
  EXPECT_NEAR(bend.costReduction, expected.costReduction, 1e-5 * expected.costReduction);
}

TEST(OmittedEffectsOfARig, TakeOffAsMuchOfNoiseAsTheirNumberOfParameters) {
  constexpr int RUNS = 60;
  for (const Fixed fixed : {Fixed::Nothing, Fixed::Intrinsics}) {
    double bend = 0.0;
    double proportions = 0.0;
    for (std::uint64_t seed = 1; seed <= RUNS; ++seed) {
      const Solution solution = SolutionOf(unit::ClassicPair(), unit::FlatShape(), fixed, seed, NOISE);
      const OmittedEffect ofBend = OmittedBend(solution);
      const OmittedEffect ofProportions = OmittedProportions(solution);
      EXPECT_FALSE(ofBend.significant) << seed;
      EXPECT_FALSE(ofProportions.significant) << seed;
      EXPECT_FALSE(OmittedLensTerms(solution, 0).significant) << seed;
      EXPECT_FALSE(OmittedLensTerms(solution, 1).significant) << seed;
      bend += ofBend.costReduction / RUNS;
      proportions += ofProportions.costReduction / RUNS;
    }
    // Means of chi-squared numbers, their own standard deviations 0.32 and 0.26.
    EXPECT_NEAR(bend, 3.0, 1.0);
    EXPECT_NEAR(proportions, 2.0, 0.8);
  }
}

/// The error of the camera's projections, after the best rotation, when its parameters are changed by
/// `shift`.
double ErrorOf(const Camera& camera, const Eigen::VectorXd& shift, const world::Lens& truth) {
  std::vector<double> values(camera.intrinsics.values.begin(), camera.intrinsics.values.end());
  for (int i = 0; i < shift.size(); ++i) values[static_cast<size_t>(i)] += shift(i);
  const cv::Matx33d K(values[FX], 0.0, values[CX], 0.0, values[FY], values[CY], 0.0, 0.0, 1.0);
  const world::Lens estimate(K, {values.begin() + 4, values.end()});
  const std::vector<cv::Point2f> middle = {{120, 90}, {520, 90}, {520, 390}, {120, 390}};
  return world::MeanProjectionDistance(truth, estimate, camera.imageSize, middle, world::Alignment::Rotated)
      .rms;
}

TEST(OmittedLensTermsOfARig, AreOfTheCameraThatTheModelDoesNotHold) {
  for (const size_t odd : {0U, 1U}) {
    const std::vector<double> classic = {-0.1, 0.01, 0.0, 0.0};
    const std::vector<double> rational = {0.9, 0.12, 0.0005, -0.0004, 0.002, 1.25, 0.42, 0.03};
    const world::Rig rig = world::SideBySidePair(unit::FRAME, 95.0, 0.03, 0.0, odd == 0 ? rational : classic,
                                                 odd == 1 ? rational : classic);
    const Solution solution = SolutionOf(rig, unit::FlatShape(), Fixed::Nothing, 9);
    const OmittedEffect terms = OmittedLensTerms(solution, odd);
    const OmittedEffect others = OmittedLensTerms(solution, 1 - odd);
    EXPECT_TRUE(terms.significant) << odd;
    EXPECT_GT(terms.Excess(), 3.0 * others.Excess()) << odd;
    ASSERT_EQ(terms.shift.size(), FULL_PARAMETERS);
    const Camera& camera = solution.rig.cameras[odd];
    const double error = ErrorOf(camera, Eigen::VectorXd::Zero(FULL_PARAMETERS), rig.cameras[odd].lens);
    EXPECT_LT(ErrorOf(camera, terms.shift, rig.cameras[odd].lens), 0.3 * error) << odd;
  }
}

TEST(OmittedLensTermsOfARig, OfKnownIntrinsicsLeaveTheseAsTheyAre) {
  const Solution solution = SolutionOf(unit::ClassicPair(), unit::FlatShape(), Fixed::Intrinsics, 10, NOISE);
  const OmittedEffect terms = OmittedLensTerms(solution, 1);
  ASSERT_EQ(terms.shift.size(), FULL_PARAMETERS);
  EXPECT_TRUE(terms.shift.head(CLASSIC_PARAMETERS).isZero());
  EXPECT_EQ(terms.shift.tail(FULL_PARAMETERS - CLASSIC_PARAMETERS), terms.values);
}

TEST(OmittedEffectsOfARig, AreMeasuredBeforeCamerasOfWhichEverythingIsKnown) {
  const auto problem = unit::ObservedByRig(unit::ClassicPair(), CLASSIC_PARAMETERS,
                                           unit::BentShape({0.0, 0.0, 0.03}), 6, 11, SHARP);
  const OmittedEffect bend = OmittedBend(solver::SolvePoses(problem.rig, problem.views));
  ASSERT_EQ(bend.values.size(), 3);
  EXPECT_NEAR(bend.values(2), 0.03, 0.003);
  EXPECT_EQ(bend.shift.size(), 0);
}

}  // namespace
