/// Lenses whose radial curve no model here holds: that results say so, and that those of other lenses do not.
#include "quality/RadialTerms.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>
#include <utility>

#include "Calibrator.h"
#include "quality/Assessment.h"
#include "quality/OmittedEffects.h"
#include "solver/NoisyViews.h"
#include "solver/OpenCvMatrices.h"
#include "solver/Projection.h"
#include "solver/WideViews.h"
#include "unit/Collection.h"

using namespace velmora;

namespace {

using Grade = CalibrationVerdict::Grade;

constexpr int RATIONAL = Calibrator::MODEL_RATIONAL;
const cv::Point2d MIDDLE(325.3, 234.6);

/// A lens by the angle of its rays to the axis (Kannala and Brandt), with its own projection.
class AngleLens {
 public:
  /// `degrees`: across the image's diagonal.
  AngleLens(double degrees, std::array<double, 4> k) : k_(k) {
    f_ = 0.5 * std::hypot(unit::FRAME.width, unit::FRAME.height) / Curve(degrees * CV_PI / 360.0);
  }

  cv::Point2d Project(const cv::Vec3d& point) const {
    const double fromAxis = std::hypot(point[0], point[1]);
    const double radius = f_ * Curve(std::atan2(fromAxis, point[2]));
    if (fromAxis == 0.0) return MIDDLE;
    return MIDDLE + radius / fromAxis * cv::Point2d(point[0], point[1]);
  }

  /// Of length one.
  cv::Vec3d RayOf(const cv::Point2d& pixel) const {
    const cv::Point2d off = pixel - MIDDLE;
    const double radius = cv::norm(off);
    double least = 0.0;
    double most = 0.5 * CV_PI;
    for (int i = 0; i < 60; ++i) {
      const double half = 0.5 * (least + most);
      (f_ * Curve(half) < radius ? least : most) = half;
    }
    const double sine = radius > 0.0 ? std::sin(least) / radius : 0.0;
    return {off.x * sine, off.y * sine, std::cos(least)};
  }

 private:
  double Curve(double angle) const {
    const double s = angle * angle;
    return angle * (1.0 + s * (k_[0] + s * (k_[1] + s * (k_[2] + s * k_[3]))));
  }

  std::array<double, 4> k_;
  double f_ = 1.0;
};

cv::Matx33d Turned(const cv::Vec3d& rvec) {
  cv::Matx33d R;
  cv::Rodrigues(rvec, R);
  return R;
}

/// Wherever the whole grid is in the image, near and far, tilted up to 40 degrees to the line of sight.
unit::PointLists ViewsThrough(const AngleLens& lens, size_t count, std::uint64_t seed, double noise) {
  const std::vector<cv::Point3d> target = MakeObjectTemplate(unit::GRID, unit::UNIT);
  const cv::Point3d middle = 0.5 * (target.front() + target.back());
  cv::RNG random(seed + 77);
  unit::PointLists views;
  while (views.size() < count) {
    const cv::Point2d pixel(random.uniform(0.0, 640.0), random.uniform(0.0, 480.0));
    const cv::Vec3d ray = lens.RayOf(pixel);
    const cv::Vec3d across = cv::Vec3d(0.0, 0.0, 1.0).cross(ray);
    const double angle = std::atan2(cv::norm(across), ray[2]);
    const cv::Vec3d facing = cv::norm(across) > 0.0 ? across * (angle / cv::norm(across)) : cv::Vec3d();
    const cv::Vec3d tilt(random.uniform(-0.5, 0.5), random.uniform(-0.5, 0.5), 0.0);
    const cv::Matx33d R = Turned(facing) * Turned(tilt) * Turned({0.0, 0.0, random.uniform(-CV_PI, CV_PI)});
    const double distance = random.uniform(0.1, 0.5);
    std::vector<cv::Point2d> points;
    for (const cv::Point3d& point : target) {
      const cv::Point3d from = point - middle;
      const cv::Vec3d inCamera = R * cv::Vec3d(from.x, from.y, from.z) + distance * ray;
      const cv::Point2d seen = lens.Project(inCamera);
      if (!(inCamera[2] > 0.0) || !cv::Rect2d(3.0, 3.0, 634.0, 474.0).contains(seen)) break;
      points.push_back(seen + cv::Point2d(random.gaussian(noise), random.gaussian(noise)));
    }
    if (points.size() == target.size()) views.push_back(std::move(points));
  }
  return views;
}

struct Assessed {
  SparseResult result;
  CalibrationVerdict verdict;
};

Assessed Assess(const unit::PointLists& views) {
  const auto targets = unit::FlatTargets(views.size());
  SparseOptions options;
  options.robust = true;
  Assessed assessed;
  assessed.result = SolveIntrinsicsSparsely(targets, views, unit::FRAME, RATIONAL, options);
  assessed.verdict = AssessIntrinsics(targets, views, unit::FRAME, assessed.result, 0.0);
  return assessed;
}

/// The error of a coordinate of projections, root of the mean square where the views are, after the rotation
/// of the camera that makes up best for it.
double TrueErrorOf(const SparseResult& result, const AngleLens& lens, const unit::PointLists& views) {
  std::vector<cv::Point2d> pixels;
  std::vector<cv::Vec3d> rays;
  const std::vector<cv::Point2f> hull = world::CoveredRegion(views);
  for (int y = 8; y < unit::FRAME.height; y += 16) {
    for (int x = 8; x < unit::FRAME.width; x += 16) {
      if (cv::pointPolygonTest(hull, cv::Point2f(static_cast<float>(x), static_cast<float>(y)), false) <
          0.0) {
        continue;
      }
      pixels.emplace_back(x, y);
      rays.push_back(lens.RayOf(pixels.back()));
    }
  }
  const solver::Projection projection(solver::IntrinsicsOf(result));
  cv::Matx33d R = cv::Matx33d::eye();
  double squares = 0.0;
  for (int round = 0; round < 8; ++round) {
    cv::Matx33d normal = cv::Matx33d::zeros();
    cv::Vec3d slope;
    squares = 0.0;
    for (size_t i = 0; i < rays.size(); ++i) {
      const cv::Vec3d ray = R * rays[i];
      solver::Coordinate u;
      solver::Coordinate v;
      if (!projection.Differentiate(ray, u, v)) continue;
      for (const auto& [coordinate, seen] : {std::pair(u, pixels[i].x), std::pair(v, pixels[i].y)}) {
        const cv::Vec3d byRotation = ray.cross(coordinate.byPoint);
        const double off = coordinate.value - seen;
        normal += byRotation * byRotation.t();
        slope += off * byRotation;
        squares += off * off;
      }
    }
    R = Turned(-(normal.inv() * slope)) * R;
  }
  return std::sqrt(squares / (2.0 * static_cast<double>(rays.size())));
}

TEST(RadialTerms, AreWhatAPixelDoesWhenItsRayIsBent) {
  const solver::Projection projection(solver::IntrinsicsOf(SolveIntrinsicsSparsely(
      unit::FlatTargets(8), unit::NoisyViews(unit::EquidistantCamera(110.0), 8, 1), unit::FRAME, RATIONAL)));
  const double rim = 1.2;
  const cv::Vec3d ray(0.7, -0.9, 1.0);
  const double angle = std::atan(std::hypot(0.7, 0.9));
  solver::Coordinate u;
  solver::Coordinate v;
  ASSERT_TRUE(projection.Differentiate(ray, u, v));
  const auto terms = RadialTerms(rim).Derivatives(ray, u.byPoint);
  constexpr double STEP = 1e-6;
  for (size_t i = 0; i < terms.size(); ++i) {
    const double size = std::cos((2.0 * static_cast<double>(i) + 3.0) * std::acos(angle / rim));
    const auto bent = [&](double by) {
      const double longer = std::tan(angle + by * size) / std::tan(angle);
      cv::Point2d pixel;
      EXPECT_TRUE(projection.Project({ray[0] * longer, ray[1] * longer, 1.0}, pixel));
      return pixel.x;
    };
    const double expected = (bent(STEP) - bent(-STEP)) / (2.0 * STEP);
    EXPECT_NEAR(terms[i], expected, 1e-4 * std::abs(expected) + 1e-4) << i;
  }
}

TEST(RadialTerms, AreNothingOnTheAxis) {
  for (const double term : RadialTerms(1.0).Derivatives({0.0, 0.0, 1.0}, {500.0, 0.0, 0.0})) {
    EXPECT_EQ(term, 0.0);
  }
}

TEST(RadialCurve, ThatTheModelDoesNotHoldIsToldOrSmall) {
  const AngleLens lens(160.0, {-0.06, 0.03, -0.02, 0.004});
  for (std::uint64_t seed = 1; seed <= 8; ++seed) {
    const unit::PointLists views = ViewsThrough(lens, 20, seed, 0.1);
    const Assessed assessed = Assess(views);
    const double truth = TrueErrorOf(assessed.result, lens, views);
    const double told = assessed.verdict.ExpectedInData();
    if (assessed.verdict.grade == Grade::Good) {
      EXPECT_LT(truth, 3.0 * told) << seed << " " << assessed.verdict.ToJson();
    }
  }
}

TEST(RadialCurve, ThatTheModelHoldsIsNotSuspected) {
  int suspected = 0;
  for (const double degrees : {100.0, 110.0, 120.0}) {
    const world::Camera camera = unit::EquidistantCamera(degrees);
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
      const unit::PointLists views = unit::NoisyViews(camera, 20, seed);
      const auto targets = unit::FlatTargets(views.size());
      const SparseResult result = SolveIntrinsicsSparsely(targets, views, unit::FRAME, RATIONAL);
      const Solution solution =
          solver::SolutionFrom(solver::TargetOf(targets, views), result, unit::FRAME, 0.0);
      ASSERT_TRUE(HasRadialTerms(solution, 0)) << degrees;
      const OmittedEffect radial = OmittedEffectsOf(solution, 0).radial;
      ASSERT_EQ(radial.values.size(), RadialTerms::COUNT) << degrees << " " << seed;
      suspected += radial.significant ? 1 : 0;
    }
  }
  EXPECT_LE(suspected, 1);  // of sixty
}

}  // namespace
