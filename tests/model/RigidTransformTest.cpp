/// Rotations with translations.
#include "model/RigidTransform.h"

#include <gtest/gtest.h>

#include <opencv2/calib3d.hpp>

using namespace velmora;

namespace {

RigidTransform A() {
  return {RotationOf({0.3, -1.2, 2.0}), {0.1, -0.2, 0.3}};
}

RigidTransform B() {
  return {RotationOf({-0.7, 0.2, 0.4}), {-1.0, 0.5, 2.0}};
}

TEST(RigidTransform, IsTheIdentityUnlessToldOtherwise) {
  EXPECT_EQ(RigidTransform() * cv::Point3d(1.0, 2.0, 3.0), cv::Vec3d(1.0, 2.0, 3.0));
}

TEST(RigidTransform, OfAProductIsTheRightOneFirst) {
  const cv::Point3d point(0.4, -0.3, 1.5);
  const cv::Vec3d inner = B() * point;
  EXPECT_LT(cv::norm((A() * B()) * point - A() * cv::Point3d(inner)), 1e-14);
}

TEST(RigidTransform, IsUndoneByItsInverse) {
  for (const RigidTransform& none : {A() * Inverse(A()), Inverse(A()) * A()}) {
    EXPECT_LT(cv::norm(none.R - cv::Matx33d::eye(), cv::NORM_INF), 1e-15);
    EXPECT_LT(cv::norm(none.t), 1e-15);
  }
}

TEST(RigidTransform, AfterAStepIsTurnedAboutTheAxesOfTheFrameThatItLeadsTo) {
  const double rotationStep[POSE_PARAMETERS] = {0.0, 0.0, 0.5 * CV_PI, 0.0, 0.0, 0.0};
  const RigidTransform turned = Retract(A(), rotationStep);
  const cv::Vec3d axis = A().R * cv::Vec3d(1.0, 0.0, 0.0);
  EXPECT_LT(cv::norm(turned.R * cv::Vec3d(1.0, 0.0, 0.0) - cv::Vec3d(-axis[1], axis[0], axis[2])), 1e-15);
  EXPECT_EQ(turned.t, A().t);
}

TEST(RigidTransform, AfterAStepIsShiftedInTheFrameThatItLeadsTo) {
  const double translationStep[POSE_PARAMETERS] = {0.0, 0.0, 0.0, 1.0, -2.0, 3.0};
  const RigidTransform shifted = Retract(A(), translationStep);
  EXPECT_LT(cv::norm(shifted.t - A().t - cv::Vec3d(1.0, -2.0, 3.0)), 1e-15);
  EXPECT_EQ(shifted.R, A().R);
}

TEST(RotationOf, IsThatOfARotationVector) {
  for (const cv::Vec3d& rotation : {cv::Vec3d(0, 0, 0), cv::Vec3d(1e-6, -2e-6, 3e-7), cv::Vec3d(9e-5, 0, 0),
                                    cv::Vec3d(2e-4, 1e-4, 0), cv::Vec3d(0.3, -1.2, 2.0)}) {
    cv::Matx33d expected;
    cv::Rodrigues(rotation, expected);
    EXPECT_LT(cv::norm(RotationOf(rotation) - expected, cv::NORM_INF), 1e-15);
  }
}

}  // namespace
