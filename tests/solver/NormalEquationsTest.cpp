/// The normal equations of rigs beside central differences of their residuals.
#include "solver/NormalEquations.h"

#include <gtest/gtest.h>

#include <Eigen/LU>
#include <cmath>

#include "solver/DenseProblem.h"

using namespace velmora;

namespace {

using Index = Eigen::Index;

Intrinsics IntrinsicsOf(int estimated, double sign) {
  Intrinsics intrinsics;
  intrinsics.estimated = estimated;
  intrinsics.values = {500.0 + 9.0 * sign, 510.0, 320.0, 240.0, -0.2 * sign, 0.05,   0.001, -0.002, 0.01,
                       0.1 * sign,         -0.02, 0.003, 0.002, 0.001,       -0.003, 0.0,   0.01,   -0.02};
  std::fill(intrinsics.values.begin() + estimated, intrinsics.values.end(), 0.0);
  return intrinsics;
}

/// Cameras of all lens models that stand beside and above each other.
Rig SomeRig(size_t count) {
  const int models[] = {CLASSIC_PARAMETERS, FULL_PARAMETERS, RATIONAL_PARAMETERS, CLASSIC_PARAMETERS};
  Rig rig;
  for (size_t i = 0; i < count; ++i) {
    const auto k = static_cast<double>(i);
    Camera camera;
    camera.intrinsics = IntrinsicsOf(models[i], i % 2 == 0 ? 1.0 : -1.0);
    if (i > 0) {
      camera.cameraFromRig = {RotationOf({0.02 * k, 0.14 * k, -0.03}), {-0.11 * k, 0.02 * k, -0.006}};
    }
    rig.cameras.push_back(camera);
  }
  return rig;
}

Observation SomeObservation(cv::RNG& random, bool weighted) {
  Observation observation;
  for (int i = 0; i < 12; ++i) {
    observation.object.emplace_back(random.uniform(-0.2, 0.2), random.uniform(-0.2, 0.2), 0.0);
    observation.image.emplace_back(random.uniform(0.0, 640.0), random.uniform(0.0, 480.0));
    if (weighted) observation.weights.push_back(i % 3 == 0 ? 0.0 : random.uniform(0.1, 1.0));
  }
  return observation;
}

/// A view for each subset of the cameras that is not empty.
CalibrationProblem SomeProblem(size_t cameras, const Estimated& estimated) {
  cv::RNG random(5);
  CalibrationProblem problem{SomeRig(cameras), {}, estimated, {}};
  for (size_t subset = 1; subset < size_t{1} << cameras; ++subset) {
    TargetView view;
    view.rigFromTarget = {RotationOf({random.uniform(-0.3, 0.3), -0.3, 0.1}), {0.03, -0.02, 0.7}};
    for (size_t i = 0; i < cameras; ++i) {
      const bool sees = (subset >> i & 1U) != 0;
      view.observations.push_back(sees ? SomeObservation(random, i == 1) : Observation{});
    }
    problem.views.push_back(std::move(view));
  }
  return problem;
}

const std::vector<Estimated>& AllKinds() {
  static const std::vector<Estimated> kinds = {{true, true}, {false, true}, {true, false}, {false, false}};
  return kinds;
}

std::vector<ViewEquations> EquationsOf(const CalibrationProblem& problem) {
  const Layout layout = LayoutOf(problem.rig, problem.estimated);
  std::vector<ViewEquations> equations;
  for (const TargetView& view : problem.views) {
    equations.push_back(solver::EquationsOf(view, view.rigFromTarget, problem.rig, layout));
  }
  return equations;
}

/// The whole normal matrix and the gradient beside it.
struct Whole {
  Eigen::MatrixXd matrix;
  Eigen::VectorXd gradient;
};

Whole Assembled(const std::vector<ViewEquations>& equations, Index shared) {
  const Index columns = shared + POSE_PARAMETERS * static_cast<Index>(equations.size());
  Whole whole{Eigen::MatrixXd::Zero(columns, columns), Eigen::VectorXd::Zero(columns)};
  for (size_t view = 0; view < equations.size(); ++view) {
    std::vector<Index> at(equations[view].columns.begin(), equations[view].columns.end());
    for (Index k = 0; k < POSE_PARAMETERS; ++k) {
      at.push_back(shared + POSE_PARAMETERS * static_cast<Index>(view) + k);
    }
    const Eigen::MatrixXd products = equations[view].products.selfadjointView<Eigen::Lower>();
    for (size_t i = 0; i < at.size(); ++i) {
      whole.gradient(at[i]) += equations[view].gradient(static_cast<Index>(i));
      for (size_t j = 0; j < at.size(); ++j) {
        whole.matrix(at[i], at[j]) += products(static_cast<Index>(i), static_cast<Index>(j));
      }
    }
  }
  return whole;
}

/// How far two matrices are apart, in units of the scale of each of their parameters.
double Distance(const Eigen::MatrixXd& a, const Eigen::MatrixXd& b, const Eigen::VectorXd& diagonal) {
  if (a.size() == 0) return 0.0;
  const Eigen::VectorXd scale = diagonal.array().rsqrt();
  return (scale.asDiagonal() * (a - b) * scale.asDiagonal()).cwiseAbs().maxCoeff();
}

class NormalEquations : public ::testing::TestWithParam<size_t> {};

TEST_P(NormalEquations, AreThoseOfCentralDifferences) {
  for (const Estimated& estimated : AllKinds()) {
    const CalibrationProblem problem = SomeProblem(GetParam(), estimated);
    const auto equations = EquationsOf(problem);
    for (const ViewEquations& view : equations) ASSERT_TRUE(view.usable);
    const Index shared = LayoutOf(problem.rig, problem.estimated).shared;
    const Whole whole = Assembled(equations, shared);
    const Eigen::MatrixXd jacobian = unit::DenseJacobian(problem);
    const Eigen::VectorXd residuals = unit::DenseResiduals(problem);
    const Eigen::MatrixXd expected = jacobian.transpose() * jacobian;
    ASSERT_EQ(whole.matrix.rows(), expected.rows());
    EXPECT_LT(Distance(whole.matrix, expected, expected.diagonal()), 1e-7);
    const Eigen::VectorXd gradient = jacobian.transpose() * residuals;
    const Eigen::ArrayXd sizes = expected.diagonal().array().sqrt() * residuals.norm();
    EXPECT_LT(((whole.gradient - gradient).array() / sizes).abs().maxCoeff(), 1e-7);
  }
}

TEST_P(NormalEquations, HaveTheCostOfEachCamera) {
  const CalibrationProblem problem = SomeProblem(GetParam(), {});
  const auto equations = EquationsOf(problem);
  double cost = 0.0;
  for (size_t i = 0; i < equations.size(); ++i) {
    double ofView = 0.0;
    ASSERT_EQ(equations[i].pixelCosts.size(), GetParam());
    for (size_t camera = 0; camera < GetParam(); ++camera) {
      CalibrationProblem one = problem;
      one.views = {problem.views[i]};
      for (size_t k = 0; k < GetParam(); ++k) {
        if (k != camera) one.views[0].observations[k] = {};
      }
      const double expected = unit::DenseResiduals(one).squaredNorm();
      EXPECT_NEAR(equations[i].pixelCosts[camera], expected, 1e-12 * expected);
      ofView += equations[i].pixelCosts[camera];
    }
    EXPECT_NEAR(equations[i].cost, ofView, 1e-12 * ofView);
    cost += equations[i].cost;
  }
  EXPECT_NEAR(cost, unit::DenseResiduals(problem).squaredNorm(), 1e-12 * cost);
}

TEST_P(NormalEquations, AreReducedToTheSchurComplement) {
  constexpr double DAMPING = 0.3;
  for (const Estimated& estimated : {Estimated{true, true}, Estimated{false, true}, Estimated{true, false}}) {
    const CalibrationProblem problem = SomeProblem(GetParam(), estimated);
    const auto equations = EquationsOf(problem);
    const Layout layout = LayoutOf(problem.rig, problem.estimated);
    if (layout.shared == 0) continue;
    std::vector<Prior> priors(GetParam());
    for (Prior& prior : priors) {
      prior.pulls.fill(7.0);
      prior.smoothness = 1e-3;
      prior.angle = 0.4;
    }
    const solver::PriorTerms terms = solver::PriorTermsOf(priors, problem.rig, layout);
    Whole whole = Assembled(equations, layout.shared);
    const Index poses = whole.gradient.size() - layout.shared;
    whole.matrix.diagonal().tail(poses) *= 1.0 + DAMPING;
    const Eigen::MatrixXd coupling = whole.matrix.topRightCorner(layout.shared, poses);
    const Eigen::MatrixXd inverse = unit::DenseInverse(whole.matrix.bottomRightCorner(poses, poses));
    Eigen::MatrixXd expected = whole.matrix.topLeftCorner(layout.shared, layout.shared);
    expected += terms.matrix - coupling * inverse * coupling.transpose();
    const Eigen::VectorXd gradient =
        whole.gradient.head(layout.shared) + terms.gradient - coupling * inverse * whole.gradient.tail(poses);
    for (const int threads : {1, 3}) {
      const solver::ReducedSystem system = solver::SystemOf(equations, terms, DAMPING, threads);
      ASSERT_TRUE(system.solvable);
      EXPECT_LT(Distance(system.matrix, expected, whole.matrix.diagonal().head(layout.shared)), 1e-11);
      EXPECT_EQ(system.matrix, system.matrix.transpose());
      const Eigen::ArrayXd sizes = whole.matrix.diagonal().head(layout.shared).array().sqrt() * 1e4;
      EXPECT_LT(((system.gradient - gradient).array() / sizes).abs().maxCoeff(), 1e-10);
    }
  }
}

TEST_P(NormalEquations, GiveTheSameStepReduced) {
  constexpr double DAMPING = 0.3;
  const CalibrationProblem problem = SomeProblem(GetParam(), {});
  const auto equations = EquationsOf(problem);
  const Layout layout = LayoutOf(problem.rig, problem.estimated);
  Whole whole = Assembled(equations, layout.shared);
  const Eigen::VectorXd diagonal = whole.matrix.diagonal();
  whole.matrix.diagonal() *= 1.0 + DAMPING;
  const Eigen::VectorXd expected = -unit::DenseInverse(whole.matrix) * whole.gradient;
  solver::ReducedSystem system =
      solver::SystemOf(equations, solver::PriorTermsOf({}, problem.rig, layout), DAMPING, 1);
  ASSERT_TRUE(system.solvable);
  system.matrix.diagonal() += DAMPING * diagonal.head(layout.shared);
  const Eigen::VectorXd shared = -unit::DenseInverse(system.matrix) * system.gradient;
  const Eigen::ArrayXd sizes = diagonal.array().rsqrt() * 1e3;
  EXPECT_LT(((shared - expected.head(layout.shared)).array() / sizes.head(layout.shared)).abs().maxCoeff(),
            1e-9);
  for (size_t i = 0; i < equations.size(); ++i) {
    solver::PoseStep pose;
    Eigen::VectorXd own;
    solver::TakeOwn(equations[i], shared, own);
    ASSERT_TRUE(solver::PoseStepFor(equations[i], DAMPING, own, pose));
    const Index at = layout.shared + POSE_PARAMETERS * static_cast<Index>(i);
    const Eigen::ArrayXd off = (pose - expected.segment<POSE_PARAMETERS>(at)).array();
    EXPECT_LT((off / sizes.segment<POSE_PARAMETERS>(at)).abs().maxCoeff(), 1e-9) << i;
  }
}

TEST_P(NormalEquations, AreTheSameInMemoryOfAnyOthers) {
  const CalibrationProblem problem = SomeProblem(GetParam(), {});
  const Layout layout = LayoutOf(problem.rig, problem.estimated);
  const auto fresh = EquationsOf(problem);
  ViewEquations used;
  const auto take = [&](const RigidTransform& pose, size_t i) {
    solver::TakeEquations(problem.views[i], pose, problem.rig, layout, used);
  };
  for (size_t before = 0; before < fresh.size(); ++before) {
    for (size_t i = 0; i < fresh.size(); ++i) {
      take(problem.views[before].rigFromTarget, before);
      take(problem.views[i].rigFromTarget, i);
      EXPECT_TRUE(used.usable);
      EXPECT_EQ(used.columns, fresh[i].columns);
      EXPECT_EQ(used.pixelCosts, fresh[i].pixelCosts);
      EXPECT_EQ(used.cost, fresh[i].cost);
      EXPECT_EQ(used.gradient, fresh[i].gradient);
      EXPECT_EQ(used.products, fresh[i].products);
    }
  }
  RigidTransform behind = problem.views.back().rigFromTarget;
  behind.t[2] = -0.1;
  take(behind, fresh.size() - 1);
  EXPECT_FALSE(used.usable);
  EXPECT_EQ(used.cost, 0.0);
}

TEST_P(NormalEquations, OfAViewLeaveWhatTheEliminationOfItsPoseLeaves) {
  const auto equations = EquationsOf(SomeProblem(GetParam(), {}));
  for (const ViewEquations& view : equations) {
    const solver::ReducedView reduced = solver::Reduce(view, 0.0);
    ASSERT_TRUE(reduced.solvable);
    const Index own = view.Own();
    const solver::Coupling coupling = solver::CouplingOf(view);
    const Eigen::MatrixXd spread = coupling.transpose() * unit::DenseInverse(solver::PoseBlockOf(view));
    const Eigen::MatrixXd block = view.products.topLeftCorner(own, own).selfadjointView<Eigen::Lower>();
    const Eigen::MatrixXd found = reduced.matrix.selfadjointView<Eigen::Lower>();
    EXPECT_LT(Distance(found, block - spread * coupling, block.diagonal()), 1e-11);
    const Eigen::VectorXd gradient = view.gradient.head(own) - spread * solver::PoseGradientOf(view);
    const Eigen::ArrayXd sizes = block.diagonal().array().sqrt() * 1e4;
    EXPECT_LT(((reduced.gradient - gradient).array() / sizes).abs().maxCoeff(), 1e-10);
  }
}

INSTANTIATE_TEST_SUITE_P(Cameras, NormalEquations, ::testing::Values(1U, 2U, 4U));

TEST(NormalEquationsOfRigs, HaveColumnsOfTheCamerasThatSawTheView) {
  const CalibrationProblem problem = SomeProblem(4, {});
  const Layout layout = LayoutOf(problem.rig, problem.estimated);
  const auto equations = EquationsOf(problem);
  EXPECT_EQ(equations[0].Own(), CLASSIC_PARAMETERS);  // the first camera alone
  EXPECT_EQ(equations[1].Own(), FULL_PARAMETERS + POSE_PARAMETERS);
  EXPECT_EQ(equations[1].columns.front(), layout.cameras[1].intrinsics);
  EXPECT_EQ(equations[1].columns.back(), layout.cameras[1].pose + POSE_PARAMETERS - 1);
  EXPECT_EQ(equations.back().Own(), layout.shared);
  for (const ViewEquations& view : equations) {
    EXPECT_TRUE(std::is_sorted(view.columns.begin(), view.columns.end()));
  }
}

TEST(NormalEquationsOfRigs, AreNotUsableWithAPointBehindAnyCamera) {
  const CalibrationProblem problem = SomeProblem(4, {});
  const Layout layout = LayoutOf(problem.rig, problem.estimated);
  const TargetView& view = problem.views.back();
  EXPECT_TRUE(solver::EquationsOf(view, view.rigFromTarget, problem.rig, layout).usable);
  for (size_t i = 1; i < 4; ++i) {
    Rig rig = problem.rig;
    rig.cameras[i].cameraFromRig.t[2] = -2.0;
    EXPECT_FALSE(solver::EquationsOf(view, view.rigFromTarget, rig, layout).usable);
    // A camera that did not see the view may have it behind itself.
    TargetView without = view;
    without.observations[i] = {};
    EXPECT_TRUE(solver::EquationsOf(without, view.rigFromTarget, rig, layout).usable);
  }
  RigidTransform behind = view.rigFromTarget;
  behind.t[2] = -0.1;
  EXPECT_FALSE(solver::EquationsOf(view, behind, problem.rig, layout).usable);
}

TEST(NormalEquationsOfRigs, AreNotSolvableWhereOneViewDeterminesNoPose) {
  CalibrationProblem problem = SomeProblem(2, {});
  const Layout layout = LayoutOf(problem.rig, problem.estimated);
  const solver::PriorTerms none = solver::PriorTermsOf({}, problem.rig, layout);
  EXPECT_TRUE(solver::SystemOf(EquationsOf(problem), none, 0.0, 1).solvable);
  problem.views[1].observations[1].weights.assign(12, 0.0);
  EXPECT_FALSE(solver::Reduce(EquationsOf(problem)[1], 0.0).solvable);
  EXPECT_FALSE(solver::SystemOf(EquationsOf(problem), none, 0.0, 1).solvable);
}

TEST(PriorTerms, AreThoseOfWhatIsEstimated) {
  const Rig rig = SomeRig(2);
  std::vector<Prior> priors(2);
  priors[1].pulls[K4] = 3.0;
  const solver::PriorTerms terms = solver::PriorTermsOf(priors, rig, LayoutOf(rig, {}));
  const double value = rig.cameras[1].intrinsics.values[K4];
  EXPECT_EQ(terms.matrix(CLASSIC_PARAMETERS + K4, CLASSIC_PARAMETERS + K4), 3.0);
  EXPECT_EQ(terms.matrix.sum(), 3.0);
  EXPECT_DOUBLE_EQ(terms.gradient(CLASSIC_PARAMETERS + K4), 3.0 * value);
  EXPECT_DOUBLE_EQ(terms.gradient.sum(), 3.0 * value);
  EXPECT_DOUBLE_EQ(terms.cost, 3.0 * value * value);
  EXPECT_EQ(solver::PriorTermsOf(priors, rig, LayoutOf(rig, {false, true})).cost, 0.0);
}

TEST(PriorTerms, OfASmoothCurveHaveTheSlopeOfTheirCost) {
  Rig rig = SomeRig(2);
  Intrinsics& intrinsics = rig.cameras[1].intrinsics;
  intrinsics.estimated = RATIONAL_PARAMETERS;
  std::vector<Prior> priors(2);
  priors[1].smoothness = 3.0;
  priors[1].angle = 1.1;
  const Layout layout = LayoutOf(rig, {});
  const solver::PriorTerms terms = solver::PriorTermsOf(priors, rig, layout);
  EXPECT_GT(terms.cost, 0.0);
  EXPECT_EQ(terms.matrix, terms.matrix.transpose());
  for (int k = 0; k < layout.cameras[1].count; ++k) {
    constexpr double STEP = 1e-6;
    double& value = intrinsics.values[static_cast<size_t>(k)];
    value += STEP;
    const double after = solver::PriorTermsOf(priors, rig, layout).cost;
    value -= 2.0 * STEP;
    const double before = solver::PriorTermsOf(priors, rig, layout).cost;
    value += STEP;
    const double slope = terms.gradient(layout.cameras[1].intrinsics + k);
    EXPECT_NEAR((after - before) / (4.0 * STEP), slope, 1e-5 * terms.gradient.cwiseAbs().maxCoeff()) << k;
  }
}

}  // namespace
