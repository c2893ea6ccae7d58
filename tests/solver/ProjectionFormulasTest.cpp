/// The formulas of the projection: the pixels of the lens model written down plainly, and derivatives like
/// its differences, for one point and for several at once.
#include "solver/ProjectionFormulas.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "solver/SimdPack.h"

using namespace velmora;

namespace {

using solver::CoordinateOf;
using solver::LANES;
using solver::Projection;
using solver::ProjectionFormulas;
using solver::SimdPack;

/// Differences of long numbers have the digits that derivatives are compared by.
using Real = long double;
using Values = std::array<Real, FULL_PARAMETERS>;
using Pixel = std::array<Real, 2>;

/// A ray (x, y, 1) turned about the x axis, then about the y axis, as the sensor is, and where it meets the
/// sensor, looked at straight.
Pixel OnTiltedSensor(Real tauX, Real tauY, Real x, Real y) {
  const Real turnedY = std::cos(tauX) * y + std::sin(tauX);
  const Real deep = std::cos(tauX) - std::sin(tauX) * y;
  const Real atX = std::cos(tauY) * x - std::sin(tauY) * deep;
  const Real atZ = std::sin(tauY) * x + std::cos(tauY) * deep;
  const Real towards[] = {-std::sin(tauY) * std::cos(tauX), std::sin(tauX), std::cos(tauY) * std::cos(tauX)};
  return {(towards[2] * atX - towards[0] * atZ) / atZ, (towards[2] * turnedY - towards[1] * atZ) / atZ};
}

/// The pixel of a point in the camera's frame.
Pixel Truth(const Values& p, Real X, Real Y, Real Z) {
  const Real x = X / Z;
  const Real y = Y / Z;
  const Real r2 = x * x + y * y;
  const Real r4 = r2 * r2;
  const Real r6 = r4 * r2;
  const Real radial = (1 + p[K1] * r2 + p[K2] * r4 + p[K3] * r6) / (1 + p[K4] * r2 + p[K5] * r4 + p[K6] * r6);
  const Real bentX = x * radial + 2 * p[P1] * x * y + p[P2] * (r2 + 2 * x * x) + p[S1] * r2 + p[S2] * r4;
  const Real bentY = y * radial + p[P1] * (r2 + 2 * y * y) + 2 * p[P2] * x * y + p[S3] * r2 + p[S4] * r4;
  const Pixel at = OnTiltedSensor(p[TAU_X], p[TAU_Y], bentX, bentY);
  return {p[FX] * at[0] + p[CX], p[FY] * at[1] + p[CY]};
}

/// The difference quotient over `step` to both sides.
template <typename Function>
Pixel Slope(const Function& function, Real step) {
  const Pixel more = function(step);
  const Pixel less = function(-step);
  return {(more[0] - less[0]) / (2 * step), (more[1] - less[1]) / (2 * step)};
}

Intrinsics LensWith(int free) {
  const std::array<double, FULL_PARAMETERS> all = {530.0,  505.0,   322.5,  235.25, -0.23, 0.07,
                                                   0.0011, -0.0007, -0.009, 0.12,   -0.04, 0.013,
                                                   0.004,  -0.003,  0.002,  0.0025, 0.04,  -0.03};
  Intrinsics intrinsics;
  intrinsics.estimated = free;
  std::copy(all.begin(), all.begin() + free, intrinsics.values.begin());
  return intrinsics;
}

Values LongOf(const Intrinsics& intrinsics) {
  Values values{};
  std::copy(intrinsics.values.begin(), intrinsics.values.end(), values.begin());
  return values;
}

/// In the middle, on both axes, and far into all four corners.
const std::vector<cv::Vec3d>& Points() {
  static const std::vector<cv::Vec3d> points = {{0.0, 0.0, 0.5},   {0.2, 0.0, 0.4},    {0.0, -0.15, 0.3},
                                                {0.3, 0.2, 0.5},   {-0.25, 0.21, 0.4}, {-0.3, -0.2, 0.45},
                                                {0.4, -0.25, 0.6}, {0.02, 0.03, 2.0}};
  return points;
}

struct Derived {
  CoordinateOf<double> u, v;
};

Derived DerivedAt(const Projection& projection, const cv::Vec3d& point) {
  const double nearness = 1.0 / point[2];
  Derived derived;
  ProjectionFormulas<double>(projection.Numbers())
      .Differentiate(point[0] * nearness, point[1] * nearness, nearness, derived.u, derived.v);
  return derived;
}

double Rounded(Real value) {
  return static_cast<double>(value);
}

class ProjectionFormulasOf : public ::testing::TestWithParam<int> {
 protected:
  const Intrinsics intrinsics_ = LensWith(GetParam());
  const Projection projection_{intrinsics_};
};

TEST_P(ProjectionFormulasOf, GiveThePixelsOfTheLensModel) {
  const ProjectionFormulas<double> formulas(projection_.Numbers());
  for (const cv::Vec3d& point : Points()) {
    const Pixel truth = Truth(LongOf(intrinsics_), point[0], point[1], point[2]);
    double u = 0.0;
    double v = 0.0;
    formulas.Project(point[0] / point[2], point[1] / point[2], u, v);
    EXPECT_NEAR(u, Rounded(truth[0]), 1e-10) << point;
    EXPECT_NEAR(v, Rounded(truth[1]), 1e-10) << point;
    const Derived derived = DerivedAt(projection_, point);
    EXPECT_NEAR(derived.u.value, Rounded(truth[0]), 1e-10) << point;
    EXPECT_NEAR(derived.v.value, Rounded(truth[1]), 1e-10) << point;
  }
}

TEST_P(ProjectionFormulasOf, HaveTheDerivativesByTheLensThatDifferencesShow) {
  for (const cv::Vec3d& point : Points()) {
    const Derived derived = DerivedAt(projection_, point);
    for (size_t i = 0; i < static_cast<size_t>(GetParam()); ++i) {
      const auto changed = [&](Real change) {
        Values values = LongOf(intrinsics_);
        values[i] += change;
        return Truth(values, point[0], point[1], point[2]);
      };
      const Pixel slope = Slope(changed, 1e-5L);
      EXPECT_NEAR(derived.u.byIntrinsics[i], Rounded(slope[0]), 1e-6) << "parameter " << i << ' ' << point;
      EXPECT_NEAR(derived.v.byIntrinsics[i], Rounded(slope[1]), 1e-6) << "parameter " << i << ' ' << point;
    }
  }
}

TEST_P(ProjectionFormulasOf, HaveTheDerivativesByThePointThatDifferencesShow) {
  for (const cv::Vec3d& point : Points()) {
    const Derived derived = DerivedAt(projection_, point);
    for (size_t axis = 0; axis < 3; ++axis) {
      const auto moved = [&](Real change) {
        std::array<Real, 3> at = {point[0], point[1], point[2]};
        at[axis] += change;
        return Truth(LongOf(intrinsics_), at[0], at[1], at[2]);
      };
      const Pixel slope = Slope(moved, 1e-6L);
      EXPECT_NEAR(derived.u.byPoint[axis], Rounded(slope[0]), 1e-6) << "axis " << axis << ' ' << point;
      EXPECT_NEAR(derived.v.byPoint[axis], Rounded(slope[1]), 1e-6) << "axis " << axis << ' ' << point;
    }
  }
}

TEST_P(ProjectionFormulasOf, GiveEachOfSeveralPointsWhatItHasAlone) {
  const ProjectionFormulas<SimdPack> formulas(projection_.Numbers());
  for (size_t first = 0; first < Points().size(); ++first) {
    const auto at = [&](size_t lane) { return Points()[(first + 3 * lane) % Points().size()]; };
    SimdPack x{};
    SimdPack y{};
    SimdPack nearness{};
    for (size_t lane = 0; lane < LANES; ++lane) {
      nearness[lane] = 1.0 / at(lane)[2];
      x[lane] = at(lane)[0] * nearness[lane];
      y[lane] = at(lane)[1] * nearness[lane];
    }
    CoordinateOf<SimdPack> u;
    CoordinateOf<SimdPack> v;
    SimdPack pixelX{};
    SimdPack pixelY{};
    formulas.Differentiate(x, y, nearness, u, v);
    formulas.Project(x, y, pixelX, pixelY);
    for (size_t lane = 0; lane < LANES; ++lane) {
      const Derived alone = DerivedAt(projection_, at(lane));
      EXPECT_DOUBLE_EQ(u.value[lane], alone.u.value);
      EXPECT_DOUBLE_EQ(v.value[lane], alone.v.value);
      EXPECT_DOUBLE_EQ(pixelX[lane], alone.u.value);
      EXPECT_DOUBLE_EQ(pixelY[lane], alone.v.value);
      for (size_t i = 0; i < static_cast<size_t>(GetParam()); ++i) {
        EXPECT_DOUBLE_EQ(u.byIntrinsics[i][lane], alone.u.byIntrinsics[i]) << "parameter " << i;
        EXPECT_DOUBLE_EQ(v.byIntrinsics[i][lane], alone.v.byIntrinsics[i]) << "parameter " << i;
      }
      for (size_t axis = 0; axis < 3; ++axis) {
        EXPECT_DOUBLE_EQ(u.byPoint[axis][lane], alone.u.byPoint[axis]) << "axis " << axis;
        EXPECT_DOUBLE_EQ(v.byPoint[axis][lane], alone.v.byPoint[axis]) << "axis " << axis;
      }
    }
  }
}

TEST_P(ProjectionFormulasOf, LeaveDerivativesByWhatIsNotFreeAsTheyAre) {
  constexpr double UNTOUCHED = 7.5;
  Derived derived;
  derived.u.byIntrinsics.fill(UNTOUCHED);
  derived.v.byIntrinsics.fill(UNTOUCHED);
  ProjectionFormulas<double>(projection_.Numbers()).Differentiate(0.3, 0.2, 2.0, derived.u, derived.v);
  for (size_t i = 0; i < FULL_PARAMETERS; ++i) {
    const bool free = i < static_cast<size_t>(GetParam());
    EXPECT_EQ(derived.u.byIntrinsics[i] != UNTOUCHED, free) << "parameter " << i;
    EXPECT_EQ(derived.v.byIntrinsics[i] != UNTOUCHED, free) << "parameter " << i;
  }
}

INSTANTIATE_TEST_SUITE_P(Models, ProjectionFormulasOf,
                         ::testing::Values(CLASSIC_PARAMETERS, RATIONAL_PARAMETERS, FULL_PARAMETERS));

/// Coefficients that are known and not estimated bend rays all the same.
TEST(ProjectionFormulas, ReckonWithCoefficientsThatAreNotFree) {
  Intrinsics intrinsics = LensWith(FULL_PARAMETERS);
  intrinsics.estimated = CLASSIC_PARAMETERS;
  const Projection projection(intrinsics);
  for (const cv::Vec3d& point : Points()) {
    const Derived derived = DerivedAt(projection, point);
    const Pixel truth = Truth(LongOf(intrinsics), point[0], point[1], point[2]);
    EXPECT_NEAR(derived.u.value, Rounded(truth[0]), 1e-10) << point;
    EXPECT_NEAR(derived.v.value, Rounded(truth[1]), 1e-10) << point;
    const auto moved = [&](Real change) {
      return Truth(LongOf(intrinsics), point[0] + change, point[1], point[2]);
    };
    const Pixel slope = Slope(moved, 1e-6L);
    EXPECT_NEAR(derived.u.byPoint[0], Rounded(slope[0]), 1e-6) << point;
    EXPECT_NEAR(derived.v.byPoint[0], Rounded(slope[1]), 1e-6) << point;
  }
}

}  // namespace
