/// By how much a lens is said to have moved.
#include "quality/LensMove.h"

#include <gtest/gtest.h>

#include <Eigen/Dense>
#include <cmath>
#include <opencv2/core.hpp>

using namespace velmora;

namespace {

Intrinsics Lens() {
  Intrinsics lens;
  lens.values = {500.0, 510.0, 320.0, 240.0};
  return lens;
}

/// Views that know each parameter by itself within the deviations.
LensScore ScoreFor(const Eigen::VectorXd& truth, const Eigen::VectorXd& deviations) {
  LensScore score;
  score.information = deviations.cwiseAbs2().cwiseInverse().asDiagonal();
  score.slope = score.information * truth;
  score.variance = 0.01;
  score.freedom = 400.0;
  return score;
}

Eigen::VectorXd Deviations() {
  Eigen::VectorXd deviations = Eigen::VectorXd::Constant(CLASSIC_PARAMETERS, 1e-4);
  deviations.head(4) << 0.1, 0.1, 0.2, 0.2;
  return deviations;
}

TEST(LensMove, IsWhatTheViewsTell) {
  const MoveColumns columns = MoveColumns::Of(Lens(), 0.6);
  Eigen::VectorXd move = Eigen::VectorXd::Zero(MoveColumns::COUNT);
  move(MoveColumns::FOCAL) = 0.005;
  move(MoveColumns::CENTRE_Y) = -3.0;
  const Eigen::VectorXd parameters = columns.columns * move;
  EXPECT_NEAR(parameters(FX), 2.5, 1e-12);
  EXPECT_NEAR(parameters(FY), 2.55, 1e-12);
  const Eigen::MatrixXd sure = Eigen::MatrixXd::Identity(CLASSIC_PARAMETERS, CLASSIC_PARAMETERS) * 1e-12;
  const LensMove found = MoveOf(ScoreFor(parameters, Deviations()), columns, sure);
  EXPECT_NEAR(found.move(MoveColumns::FOCAL), 0.005, 1e-5);
  EXPECT_NEAR(found.move(MoveColumns::CENTRE_Y), -3.0, 0.01);
  EXPECT_NEAR(std::sqrt(found.covariance(MoveColumns::CENTRE_Y, MoveColumns::CENTRE_Y)), 0.2, 0.001);
  EXPECT_GT(found.evidence, 10.0);
  EXPECT_NEAR((found.parameters - parameters).norm(), 0.0, 0.02);
}

TEST(LensMove, IsNoEvidenceWhereTheResultItselfWasNotSure) {
  const MoveColumns columns = MoveColumns::Of(Lens(), 0.6);
  Eigen::VectorXd parameters = Eigen::VectorXd::Zero(CLASSIC_PARAMETERS);
  parameters(CX) = 3.0;
  Eigen::MatrixXd unsure = Eigen::MatrixXd::Identity(CLASSIC_PARAMETERS, CLASSIC_PARAMETERS) * 1e-12;
  const LensScore score = ScoreFor(parameters, Deviations());
  EXPECT_GT(MoveOf(score, columns, unsure).evidence, 1.0);
  unsure(CX, CX) = 9.0;
  EXPECT_LT(MoveOf(score, columns, unsure).evidence, 1.0);
}

TEST(LensMove, IsAsUnknownAsBeforeWhereTheViewsTellNothing) {
  const MoveColumns columns = MoveColumns::Of(Lens(), 0.6);
  LensScore score;
  score.information = Eigen::MatrixXd::Zero(CLASSIC_PARAMETERS, CLASSIC_PARAMETERS);
  score.slope = Eigen::VectorXd::Zero(CLASSIC_PARAMETERS);
  score.freedom = 400.0;
  const LensMove found = MoveOf(score, columns, {});
  EXPECT_EQ(found.move.norm(), 0.0);
  EXPECT_EQ(found.evidence, 0.0);
  for (Eigen::Index i = 0; i < MoveColumns::COUNT; ++i)
    EXPECT_NEAR(std::sqrt(found.covariance(i, i)), columns.deviations(i), 1e-12);
}

/// Noise alone, drawn as the views and the result have it.
TEST(LensMove, IsNotMadeOfNoise) {
  const MoveColumns columns = MoveColumns::Of(Lens(), 0.6);
  const Eigen::VectorXd deviations = Deviations();
  const Eigen::MatrixXd uncertainty = (0.5 * deviations).cwiseAbs2().asDiagonal();
  cv::RNG random(1);
  constexpr int TIMES = 20000;
  int beyond = 0;
  int half = 0;
  for (int i = 0; i < TIMES; ++i) {
    Eigen::VectorXd error(CLASSIC_PARAMETERS);
    for (Eigen::Index k = 0; k < error.size(); ++k)
      error(k) = random.gaussian(std::sqrt(1.25) * deviations(k));
    const double evidence = MoveOf(ScoreFor(error, deviations), columns, uncertainty).evidence;
    beyond += evidence > 1.0 ? 1 : 0;
    half += evidence > 0.4 ? 1 : 0;
  }
  EXPECT_LE(beyond, 2);
  EXPECT_GT(half, 20) << "the limit is not out of reach";
}

TEST(LensMove, IsLessSureWhereTheViewsDisagree) {
  const MoveColumns columns = MoveColumns::Of(Lens(), 0.6);
  Eigen::VectorXd parameters = Eigen::VectorXd::Zero(CLASSIC_PARAMETERS);
  parameters(CX) = 3.0;
  LensScore score = ScoreFor(parameters, Deviations());
  const Eigen::MatrixXd sure = Eigen::MatrixXd::Identity(CLASSIC_PARAMETERS, CLASSIC_PARAMETERS) * 1e-12;
  const double evidence = MoveOf(score, columns, sure).evidence;
  // Five views that agree to within noise, and five that do not, of which the sum is the same.
  for (const double disagreement : {0.0, 4.0}) {
    score.parts.assign(5, Eigen::VectorXd::Zero(CLASSIC_PARAMETERS));
    for (size_t i = 0; i < 4; ++i) score.parts[i](CX) = (i % 2 == 0 ? 1.0 : -1.0) * disagreement / 0.2;
    if (disagreement == 0.0) {
      EXPECT_EQ(ScatterOf(score, columns), 1.0);
      EXPECT_EQ(MoveOf(score, columns, sure).evidence, evidence);
    } else {
      EXPECT_GT(ScatterOf(score, columns), 10.0);
      EXPECT_LT(MoveOf(score, columns, sure).evidence, 0.1 * evidence);
    }
  }
  score.parts.resize(2);
  EXPECT_EQ(ScatterOf(score, columns), 1.0) << "two views tell nothing of a scatter";
}

}  // namespace
