/// Which causes residuals speak of, and how far each moves projections.
#include "quality/SystematicErrors.h"

#include <gtest/gtest.h>

#include <cmath>

#include "LensError.h"
#include "quality/RigSolutions.h"

using namespace velmora;

namespace {

using Cause = SystematicError::Cause;

const unit::Shape BENT = unit::BentShape({0.0, 0.0, 0.03});
const unit::Shape STRETCHED = unit::StretchedShape(0.004, 0.0);

world::Rig Alone(const world::Camera& camera) {
  world::Rig rig;
  rig.cameras.resize(1);
  static_cast<world::Camera&>(rig.cameras.front()) = camera;
  return rig;
}

Solution SolutionOf(const world::Rig& rig, const unit::Shape& shape, std::uint64_t seed, double noise) {
  return unit::Solved(unit::ObservedByRig(rig, CLASSIC_PARAMETERS, shape, 15, seed, noise));
}

std::vector<cv::Point2f> AreaOf(const Solution& solution, size_t camera) {
  unit::PointLists points;
  for (const TargetView& view : solution.views) points.push_back(view.observations[camera].image);
  return world::CoveredRegion(points);
}

std::vector<SystematicError> ErrorsOf(const Solution& solution, size_t camera, double least = 0.0) {
  return SystematicErrorsOf(solution, camera, AreaOf(solution, camera), least);
}

world::Lens SampleIntrinsics(const Intrinsics& intrinsics) {
  const auto& p = intrinsics.values;
  return world::Lens({p[FX], 0.0, p[CX], 0.0, p[FY], p[CY], 0.0, 0.0, 1.0},
                     {p.begin() + CLASSIC_PARAMETERS - 5, p.end()});
}

/// How far a coordinate of the camera's projections is off where it has data.
double TrueErrorOf(const Solution& solution, size_t camera, const world::Lens& truth) {
  return world::MeanProjectionDistance(truth, SampleIntrinsics(solution.rig.cameras[camera].intrinsics),
                                       unit::FRAME, AreaOf(solution, camera), world::Alignment::Rotated)
             .rms /
         std::sqrt(2.0);
}

TEST(SystematicErrors, NameTheBendFirstAndHowFarItMovesProjections) {
  const world::Camera camera = unit::DistortedCamera();
  for (const std::uint64_t seed : {1U, 2U, 3U}) {
    const Solution solution = SolutionOf(Alone(camera), BENT, seed, 0.01);
    const auto errors = ErrorsOf(solution, 0);
    ASSERT_FALSE(errors.empty());
    EXPECT_EQ(errors.front().cause, Cause::Bend);
    const double truth = TrueErrorOf(solution, 0, camera.lens);
    EXPECT_NEAR(errors.front().shift, truth, 0.1 * truth) << seed;
  }
}

TEST(SystematicErrors, NameProportionsFirstAndHowFarTheyMoveProjections) {
  const world::Camera camera = unit::DistortedCamera();
  for (const std::uint64_t seed : {1U, 2U, 3U}) {
    const Solution solution = SolutionOf(Alone(camera), STRETCHED, seed, 0.01);
    const auto errors = ErrorsOf(solution, 0);
    ASSERT_FALSE(errors.empty());
    EXPECT_EQ(errors.front().cause, Cause::Proportions);
    const double truth = TrueErrorOf(solution, 0, camera.lens);
    EXPECT_NEAR(errors.front().shift, truth, 0.1 * truth) << seed;
  }
}

TEST(SystematicErrors, NameTheLensFirstWhereTheModelDoesNotHoldIt) {
  const world::Camera wide = world::CameraFromFieldOfView(
      unit::FRAME, 90.0, {4.0 / 15.0, 0.0, 0.0008, -0.0006, 0.0, 3.0 / 5.0, 0.0, 0.0});
  const auto errors = ErrorsOf(SolutionOf(Alone(wide), unit::FlatShape(), 4, 0.02), 0);
  ASSERT_FALSE(errors.empty());
  EXPECT_EQ(errors.front().cause, Cause::LensTerms);
}

TEST(SystematicErrors, ComeWithWhatTakesMostOffTheResidualsFirst) {
  unit::Shape both = STRETCHED;
  for (size_t i = 0; i < both.size(); ++i) both[i].z = BENT[i].z;
  const Solution solution = SolutionOf(Alone(unit::DistortedCamera()), both, 5, 0.01);
  const auto errors = ErrorsOf(solution, 0);
  ASSERT_GE(errors.size(), 2U);
  for (size_t i = 1; i < errors.size(); ++i) {
    EXPECT_GE(errors[i - 1].effect.Excess(), errors[i].effect.Excess());
  }
}

TEST(SystematicErrors, AreNoneBelowTheLeastShift) {
  const Solution solution = SolutionOf(Alone(unit::DistortedCamera()), BENT, 1, 0.01);
  const double shift = ErrorsOf(solution, 0).front().shift;
  EXPECT_EQ(ErrorsOf(solution, 0, 0.99 * shift).front().cause, Cause::Bend);
  for (const auto& error : ErrorsOf(solution, 0, 1.01 * shift)) EXPECT_NE(error.cause, Cause::Bend);
}

TEST(SystematicErrors, AreHardlyEverFoundInNoise) {
  int found = 0;
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    const Solution one = SolutionOf(Alone(unit::DistortedCamera()), unit::FlatShape(), seed, 0.1);
    found += ErrorsOf(one, 0).empty() ? 0 : 1;
    const Solution two = SolutionOf(unit::ClassicPair(), unit::FlatShape(), seed, 0.1);
    found += ErrorsOf(two, 0).empty() ? 0 : 1;
    found += ErrorsOf(two, 1).empty() ? 0 : 1;
  }
  EXPECT_LE(found, 1);  // of sixty
}

TEST(SystematicErrors, OfEachCameraOfARigAreThoseOfItsOwnProjections) {
  world::Rig rig = unit::ClassicTriple();
  static_cast<world::Camera&>(rig.cameras[1]) =
      world::CameraFromFieldOfView(unit::FRAME, 90.0, {-0.1, 0.01, 0.0, 0.0});
  const Solution solution = SolutionOf(rig, BENT, 6, 0.01);
  for (size_t camera = 0; camera < 3; ++camera) {
    const auto errors = ErrorsOf(solution, camera);
    ASSERT_FALSE(errors.empty());
    EXPECT_EQ(errors.front().cause, Cause::Bend);
    const double truth = TrueErrorOf(solution, camera, rig.cameras[camera].lens);
    EXPECT_NEAR(errors.front().shift, truth, 0.15 * truth) << camera;
  }
}

TEST(SystematicErrors, OfKnownIntrinsicsAreNotOfTheSheet) {
  auto problem = unit::ObservedByRig(unit::ClassicPair(), CLASSIC_PARAMETERS, BENT, 10, 7, 0.01);
  problem.estimated.intrinsics = false;
  const Solution solution = unit::Solved(problem);
  ASSERT_TRUE(OmittedBend(solution).significant);
  for (size_t camera = 0; camera < 2; ++camera) {
    for (const auto& error : ErrorsOf(solution, camera)) EXPECT_EQ(error.cause, Cause::LensTerms) << camera;
  }
}

}  // namespace
