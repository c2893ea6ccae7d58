/// The normal equations of a pair of cameras beside central differences of its residuals.
#include "solver/PairEquations.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace velmora;

namespace {

using solver::POSE_PARAMETERS;

solver::Lens LensOf(int free, double sign) {
  solver::Lens lens;
  lens.free = free;
  lens.values = {500.0 + 9.0 * sign, 510.0, 320.0, 240.0, -0.2 * sign, 0.05,   0.001, -0.002, 0.01,
                 0.1 * sign,         -0.02, 0.003, 0.002, 0.001,       -0.003, 0.0,   0.01,   -0.02};
  std::fill(lens.values.begin() + free, lens.values.end(), 0.0);
  return lens;
}

solver::PairEstimate SomePair(int leftFree, int rightFree) {
  solver::PairEstimate estimate;
  estimate.left = LensOf(leftFree, 1.0);
  estimate.right = LensOf(rightFree, -1.0);
  estimate.relative = {solver::TurnOf({0.02, 0.14, -0.03}), {-0.11, 0.004, -0.006}};
  estimate.poses = {{solver::TurnOf({0.2, -0.3, 0.1}), {0.03, -0.02, 0.6}}};
  return estimate;
}

solver::View SomeView(std::uint64_t seed) {
  cv::RNG random(seed);
  cv::RNG places(7);
  solver::View view;
  for (int i = 0; i < 15; ++i) {
    view.object.emplace_back(places.uniform(-0.2, 0.2), places.uniform(-0.2, 0.2), 0.0);
    view.image.emplace_back(random.uniform(0.0, 640.0), random.uniform(0.0, 480.0));
  }
  return view;
}

/// The estimate after a step of the parameter with that column.
solver::PairEstimate Stepped(solver::PairEstimate estimate, int column, double step) {
  const solver::PairLayout layout = solver::LayoutOf(estimate);
  double pose[POSE_PARAMETERS] = {};
  if (column < layout.left) {
    estimate.left.values[static_cast<size_t>(column)] += step;
  } else if (column < layout.Lenses()) {
    estimate.right.values[static_cast<size_t>(column - layout.left)] += step;
  } else if (column < layout.Shared()) {
    pose[column - layout.Lenses()] = step;
    estimate.relative = solver::Moved(estimate.relative, pose);
  } else {
    pose[column - layout.Shared()] = step;
    estimate.poses[0] = solver::Moved(estimate.poses[0], pose);
  }
  return estimate;
}

void Append(const solver::View& view, const solver::Lens& lens, const solver::Pose& pose,
            std::vector<double>& residuals) {
  const solver::Projection projection(lens);
  for (size_t k = 0; k < view.object.size(); ++k) {
    const cv::Point3d& at = view.object[k];
    cv::Point2d pixel;
    EXPECT_TRUE(projection.Project(pose.R * cv::Vec3d(at.x, at.y, at.z) + pose.t, pixel));
    residuals.push_back(pixel.x - view.image[k].x);
    residuals.push_back(pixel.y - view.image[k].y);
  }
}

cv::Mat Residuals(const solver::View& left, const solver::View& right, const solver::PairEstimate& estimate) {
  std::vector<double> residuals;
  Append(left, estimate.left, estimate.poses[0], residuals);
  Append(right, estimate.right, solver::BeforeRight(estimate.relative, estimate.poses[0]), residuals);
  return cv::Mat(residuals, true);
}

/// Central differences, and the residuals as the last column.
cv::Mat NumericJacobian(const solver::View& left, const solver::View& right,
                        const solver::PairEstimate& estimate) {
  const int columns = solver::LayoutOf(estimate).Columns();
  const cv::Mat residuals = Residuals(left, right, estimate);
  cv::Mat jacobian(residuals.rows, columns, CV_64F);
  for (int column = 0; column + 1 < columns; ++column) {
    // Focal lengths and principal points are hundreds of pixels, all the rest is about one.
    const int own =
        column < solver::LayoutOf(estimate).left ? column : column - solver::LayoutOf(estimate).left;
    const double step = own < 4 && column < solver::LayoutOf(estimate).Lenses() ? 1e-3 : 1e-6;
    const cv::Mat difference = Residuals(left, right, Stepped(estimate, column, step)) -
                               Residuals(left, right, Stepped(estimate, column, -step));
    jacobian.col(column) = difference * (0.5 / step);
  }
  residuals.copyTo(jacobian.col(columns - 1));
  return jacobian;
}

TEST(PairEquations, AreThoseOfCentralDifferences) {
  for (const int left : {solver::CLASSIC_PARAMETERS, solver::RATIONAL_PARAMETERS, solver::FULL_PARAMETERS}) {
    for (const int right : {solver::CLASSIC_PARAMETERS, solver::FULL_PARAMETERS}) {
      const solver::PairEstimate estimate = SomePair(left, right);
      const solver::View first = SomeView(1);
      const solver::View second = SomeView(2);
      const auto equations = solver::PairEquationsOf(first, second, estimate, 0);
      ASSERT_TRUE(equations.usable);
      const cv::Mat jacobian = NumericJacobian(first, second, estimate);
      const cv::Mat expected = jacobian.t() * jacobian;
      ASSERT_EQ(expected.rows, equations.layout.Columns());
      EXPECT_DOUBLE_EQ(equations.squares, equations.At(expected.rows - 1, expected.rows - 1));
      for (int i = 0; i < expected.rows; ++i) {
        for (int j = i; j < expected.cols; ++j) {
          const double size = std::sqrt(expected.at<double>(i, i) * expected.at<double>(j, j));
          EXPECT_NEAR(equations.At(i, j), expected.at<double>(i, j), 1e-7 * size)
              << left << ' ' << right << ' ' << i << ' ' << j;
        }
      }
    }
  }
}

TEST(PairEquations, AreNotUsableWithAPointBehindEitherCamera) {
  solver::PairEstimate estimate = SomePair(solver::CLASSIC_PARAMETERS, solver::CLASSIC_PARAMETERS);
  EXPECT_TRUE(solver::PairEquationsOf(SomeView(1), SomeView(2), estimate, 0).usable);
  estimate.relative.t[2] = -2.0;
  EXPECT_FALSE(solver::PairEquationsOf(SomeView(1), SomeView(2), estimate, 0).usable);
  estimate.relative.t[2] = 0.0;
  estimate.poses[0].t[2] = -0.1;
  EXPECT_FALSE(solver::PairEquationsOf(SomeView(1), SomeView(2), estimate, 0).usable);
}

/// The step of everything that the whole normal matrix gives.
cv::Mat DenseStep(const solver::PairViewEquations& equations, int first, double damping) {
  const int last = equations.layout.Columns() - 1;
  cv::Mat matrix(last - first, last - first, CV_64F);
  cv::Mat gradient(last - first, 1, CV_64F);
  for (int i = first; i < last; ++i) {
    for (int j = i; j < last; ++j) {
      matrix.at<double>(i - first, j - first) = matrix.at<double>(j - first, i - first) =
          equations.At(i, j) * (i == j ? 1.0 + damping : 1.0);
    }
    gradient.at<double>(i - first) = -equations.Gradient(i);
  }
  cv::Mat step;
  cv::solve(matrix, gradient, step, cv::DECOMP_CHOLESKY);
  return step;
}

TEST(PairEquations, GiveTheSameStepReduced) {
  const solver::PairEstimate estimate = SomePair(solver::CLASSIC_PARAMETERS, solver::CLASSIC_PARAMETERS);
  const auto equations = solver::PairEquationsOf(SomeView(1), SomeView(2), estimate, 0);
  constexpr double DAMPING = 0.3;
  for (const int first : {0, equations.layout.Lenses()}) {
    const cv::Mat expected = DenseStep(equations, first, DAMPING);
    const int shared = equations.layout.Shared() - first;
    solver::ReducedPairView reduced = solver::Reduce(equations, first, DAMPING);
    ASSERT_TRUE(reduced.solvable);
    solver::PairStep step{};
    for (int i = 0; i < shared; ++i) {
      const auto k = static_cast<size_t>(i);
      reduced.matrix[k * solver::MOST_PAIR_PARAMETERS + k] += DAMPING * equations.At(first + i, first + i);
      step[k] = -reduced.gradient[k];
    }
    solver::PairSystem system;
    ASSERT_TRUE(system.Decompose(reduced.matrix, shared));
    system.Solve(step);
    const solver::PoseStep pose = solver::PoseStepFor(equations, first, DAMPING, step);
    for (int i = 0; i < expected.rows; ++i) {
      const double own = i < shared ? step[static_cast<size_t>(i)] : pose[static_cast<size_t>(i - shared)];
      EXPECT_NEAR(own, expected.at<double>(i), 1e-8 * std::abs(expected.at<double>(i)) + 1e-10) << i;
    }
  }
}

}  // namespace
