/// The normal equations of one observation, beside sums over its points one by one.
#include "solver/ObservationEquations.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace velmora;

namespace {

using solver::MOST_COLUMNS;

Intrinsics SampleIntrinsics(int estimated) {
  Intrinsics intrinsics;
  intrinsics.estimated = estimated;
  intrinsics.values = {500.0, 510.0, 320.0, 240.0, -0.2,  0.05,   0.001, -0.002, 0.01,
                       0.1,   -0.02, 0.003, 0.002, 0.001, -0.003, 0.0,   0.01,   -0.02};
  std::fill(intrinsics.values.begin() + estimated, intrinsics.values.end(), 0.0);
  return intrinsics;
}

const RigidTransform& SomePose() {
  static const RigidTransform pose = {RotationOf({0.2, -0.3, 0.1}), {0.01, -0.02, 0.6}};
  return pose;
}

Observation SomeView(int points, bool weighted, bool deviating = false) {
  cv::RNG random(3);
  Observation view;
  for (int i = 0; i < points; ++i) {
    view.object.emplace_back(random.uniform(-0.2, 0.2), random.uniform(-0.2, 0.2), 0.0);
    view.image.emplace_back(random.uniform(0.0, 640.0), random.uniform(0.0, 480.0));
    if (weighted) view.weights.push_back(i % 3 == 0 ? 0.0 : random.uniform(0.1, 1.0));
    if (deviating) view.deviations.push_back(random.uniform(1.2, 5.0));
  }
  return view;
}

/// One row of the Jacobian with its residual.
std::vector<double> RowOf(const solver::Coordinate& coordinate, const cv::Vec3d& turned, double observed,
                          int estimated) {
  std::vector<double> row(coordinate.byIntrinsics.begin(), coordinate.byIntrinsics.begin() + estimated);
  const cv::Vec3d byRotation = turned.cross(coordinate.byPoint);
  row.insert(row.end(), byRotation.val, byRotation.val + 3);
  row.insert(row.end(), coordinate.byPoint.val, coordinate.byPoint.val + 3);
  row.push_back(coordinate.value - observed);
  return row;
}

cv::Mat ProductsOneByOne(const Observation& view, const Intrinsics& intrinsics) {
  const int columns = intrinsics.estimated + POSE_PARAMETERS + 1;
  cv::Mat products = cv::Mat::zeros(columns, columns, CV_64F);
  for (size_t k = 0; k < view.object.size(); ++k) {
    const cv::Vec3d turned = SomePose().R * cv::Vec3d(view.object[k].x, view.object[k].y, view.object[k].z);
    solver::Coordinate u;
    solver::Coordinate v;
    EXPECT_TRUE(solver::Projection(intrinsics).Differentiate(turned + SomePose().t, u, v));
    const double own = view.weights.empty() ? 1.0 : view.weights[k];
    const double weight = view.deviations.empty() ? own : own / (view.deviations[k] * view.deviations[k]);
    for (const auto& row : {RowOf(u, turned, view.image[k].x, intrinsics.estimated),
                            RowOf(v, turned, view.image[k].y, intrinsics.estimated)}) {
      const cv::Mat matrix(row, true);
      products += weight * matrix * matrix.t();
    }
  }
  return products;
}

TEST(ObservationEquations, AreTheSumsOverPointsOneByOne) {
  for (const int estimated : {CLASSIC_PARAMETERS, RATIONAL_PARAMETERS, FULL_PARAMETERS}) {
    for (const int points : {4, 5, 44, 64, 65, 131}) {
      for (const int kind : {0, 1, 2, 3}) {
        const Observation view = SomeView(points, kind % 2 == 1, kind > 1);
        const Intrinsics intrinsics = SampleIntrinsics(estimated);
        const solver::ObservationEquations equations = solver::EquationsOf(view, intrinsics, SomePose());
        const cv::Mat expected = ProductsOneByOne(view, intrinsics);
        ASSERT_TRUE(equations.usable);
        EXPECT_EQ(equations.cost, equations.At(expected.rows - 1, expected.rows - 1));
        for (int i = 0; i < expected.rows; ++i) {
          for (int j = i; j < expected.cols; ++j) {
            const double size = std::sqrt(expected.at<double>(i, i) * expected.at<double>(j, j));
            EXPECT_NEAR(equations.At(i, j), expected.at<double>(i, j), 1e-12 * size)
                << estimated << ' ' << points << ' ' << i << ' ' << j;
          }
        }
      }
    }
  }
}

TEST(ObservationEquations, HaveTheCostThatPointsWouldHaveWhoseDeviationsWereAlike) {
  for (const int points : {5, 64, 131}) {
    for (const bool weighted : {false, true}) {
      Observation view = SomeView(points, weighted, true);
      const Intrinsics intrinsics = SampleIntrinsics(RATIONAL_PARAMETERS);
      const solver::ObservationEquations deviating = solver::EquationsOf(view, intrinsics, SomePose());
      view.deviations.clear();
      const solver::ObservationEquations alike = solver::EquationsOf(view, intrinsics, SomePose());
      EXPECT_NEAR(deviating.pixelCost, alike.cost, 1e-12 * alike.cost);
      EXPECT_LT(deviating.cost, 0.9 * alike.cost);
      EXPECT_EQ(alike.pixelCost, alike.cost);
    }
  }
}

TEST(ObservationEquations, AreNotUsableWithAPointBehindTheCamera) {
  for (const size_t behind : {0U, 43U, 44U}) {
    Observation view = SomeView(45, false);
    view.object[behind].z = -5.0;
    EXPECT_FALSE(solver::EquationsOf(view, SampleIntrinsics(FULL_PARAMETERS), SomePose()).usable);
  }
}

}  // namespace
