/// The terms that a sheet's shape is made of.
#include "solver/SheetShape.h"

#include <gtest/gtest.h>

#include <Eigen/QR>
#include <cmath>

#include "model/TargetGeometry.h"
#include "unit/Collection.h"

using namespace velmora;

namespace {

using Eigen::Index;

std::vector<cv::Point3d> Target() {
  return MakeObjectTemplate(unit::GRID, unit::UNIT);
}

const SheetLevel LEVELS[] = {SheetLevel::Proportions, SheetLevel::Bent, SheetLevel::BentProportions,
                             SheetLevel::FreePoints, SheetLevel::FreePointsProportions};

TEST(SheetTerms, AreAsManyAsTheLevelIsFree) {
  EXPECT_EQ(solver::TermsOf(Target(), SheetLevel::Flat).Count(), 0);
  EXPECT_EQ(solver::TermsOf(Target(), SheetLevel::Proportions).Count(), 2);
  EXPECT_EQ(solver::TermsOf(Target(), SheetLevel::Bent).Count(), 3);
  EXPECT_EQ(solver::TermsOf(Target(), SheetLevel::BentProportions).Count(), 5);
  // Three coordinates of each of 44 points, less what moves, turns and scales all of them.
  EXPECT_EQ(solver::TermsOf(Target(), SheetLevel::FreePoints).Count(), 3 * 44 - 3 - 4);
  EXPECT_EQ(solver::TermsOf(Target(), SheetLevel::FreePointsProportions).Count(), 3 * 44 - 3 - 4);
}

/// What small moves, turns and another size of the target do to its points.
Eigen::MatrixXd Gauges() {
  const std::vector<cv::Point3d> target = Target();
  Eigen::MatrixXd gauges = Eigen::MatrixXd::Zero(3 * 44, 7);
  for (Index i = 0; i < 44; ++i) {
    const cv::Point3d& p = target[static_cast<size_t>(i)];
    gauges.block<3, 3>(3 * i, 0).setIdentity();
    gauges.block<3, 1>(3 * i, 3) << 0.0, 0.0, p.y;
    gauges.block<3, 1>(3 * i, 4) << 0.0, 0.0, -p.x;
    gauges.block<3, 1>(3 * i, 5) << -p.y, p.x, 0.0;
    gauges.block<3, 1>(3 * i, 6) << p.x, p.y, 0.0;
  }
  return gauges;
}

TEST(SheetTerms, AreNothingThatThePoseOrTheSizeWouldDo) {
  const Eigen::MatrixXd gauges = Gauges();
  for (const SheetLevel level : LEVELS) {
    const SheetTerms terms = solver::TermsOf(Target(), level);
    EXPECT_LT((gauges.transpose() * terms.columns).cwiseAbs().maxCoeff(), 1e-12);
    EXPECT_EQ(terms.columns.colPivHouseholderQr().rank(), terms.Count());
  }
}

TEST(SheetTerms, HoldABendAndProportions) {
  std::vector<cv::Point3d> shape = Target();
  double middle = 0.0;
  for (const cv::Point3d& p : shape) middle += p.y / 44.0;
  for (cv::Point3d& p : shape) {
    p.z = 3.0 * std::pow(p.y - middle, 2) - 1.0 * p.x * p.y;
    p.y *= 1.01;
    p.x += 0.002 * p.y;
  }
  const std::vector<cv::Point3d> target = Target();
  Eigen::VectorXd moved(3 * 44);
  for (Index i = 0; i < 44; ++i) {
    const cv::Point3d d = shape[static_cast<size_t>(i)] - target[static_cast<size_t>(i)];
    moved.segment<3>(3 * i) << d.x, d.y, d.z;
  }
  const SheetTerms terms = solver::TermsOf(target, SheetLevel::BentProportions);
  Eigen::MatrixXd all(3 * 44, terms.Count() + 7);
  all << terms.columns, Gauges();
  const Eigen::VectorXd fit = all.colPivHouseholderQr().solve(moved);
  EXPECT_LT((all * fit - moved).norm(), 1e-9);
}

TEST(SheetTerms, OfFreePointsHoldEveryShape) {
  cv::RNG random(3);
  Eigen::VectorXd moved(3 * 44);
  for (Index i = 0; i < moved.size(); ++i) moved(i) = random.gaussian(0.001);
  const SheetTerms terms = solver::TermsOf(Target(), SheetLevel::FreePointsProportions);
  Eigen::MatrixXd all(3 * 44, terms.Count() + 7);
  all << terms.columns, Gauges();
  EXPECT_LT((all * all.colPivHouseholderQr().solve(moved) - moved).norm(), 1e-9);
}

/// The deviation of a point's height that is known beforehand.
double HeightDeviation(const SheetTerms& terms, Index point) {
  return terms.columns.row(3 * point + 2).transpose().cwiseProduct(terms.deviations).norm();
}

TEST(SheetTerms, OfFreePointsAreKnownToBeSmallAndSmooth) {
  const SheetTerms terms = solver::TermsOf(Target(), SheetLevel::FreePoints);
  const double half = 0.1;
  for (Index i = 0; i < 44; ++i) {
    EXPECT_LT(HeightDeviation(terms, i), 0.021 * half);
    EXPECT_GT(HeightDeviation(terms, i), 0.001 * half);
    for (Index axis = 0; axis < 2; ++axis) {
      const double place = terms.columns.row(3 * i + axis).transpose().cwiseProduct(terms.deviations).norm();
      EXPECT_LT(place, 0.0006 * half);
    }
  }
  // Neighbours are at about the same height.
  const Eigen::VectorXd apart =
      (terms.columns.row(2) - terms.columns.row(5)).transpose().cwiseProduct(terms.deviations);
  EXPECT_LT(apart.norm(), 0.7 * HeightDeviation(terms, 0));
}

TEST(SheetTerms, PutPointsInPlace) {
  const std::vector<cv::Point3d> target = Target();
  const SheetTerms terms = solver::OwnBendOf(target);
  ASSERT_EQ(terms.Count(), 3);
  const auto shaped = Moved(target, MovesOf(terms, Eigen::Vector3d(0.0, 0.0, 0.001)));
  double least = 1.0;
  double most = -1.0;
  for (size_t i = 0; i < target.size(); ++i) {
    EXPECT_EQ(shaped[i].x, target[i].x);
    EXPECT_EQ(shaped[i].y, target[i].y);
    least = std::min(least, shaped[i].z);
    most = std::max(most, shaped[i].z);
  }
  // About a millimetre at the ends of the longer side: the plane that fits is not quite level.
  EXPECT_NEAR(most - least, 0.001, 5e-5);
  EXPECT_EQ(Moved(target, MovesOf(solver::TermsOf(target, SheetLevel::Flat), {})), target);
}

}  // namespace
