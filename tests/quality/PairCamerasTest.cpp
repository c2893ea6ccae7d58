/// What the verdict on a pair says of each camera: errors of views as OpenCV's projection has them, what was
/// left out, and how sure projections are beside what each camera knows alone.
#include "quality/PairCameras.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>

#include "quality/Assessment.h"
#include "quality/PairAssessment.h"
#include "quality/ProjectionUncertainty.h"
#include "solver/PairViews.h"

using namespace velmora;

namespace {

using unit::EachAlone;
using unit::Observed;
using unit::RigFor;

const int MODELS[] = {Calibrator::MODEL_CLASSIC, Calibrator::MODEL_RATIONAL, Calibrator::MODEL_FULL};

/// A pair as a calibrator has it assessed.
struct Assessed {
  ExtrinsicsResult result;
  StereoIntrinsics pairIntrinsics;
  PairVerdict verdict;
};

Assessed AssessedWithFixedIntrinsics(const unit::PointPairs& pairs, const StereoIntrinsics& pairIntrinsics,
                                     int model, const SparsePairOptions& options = {},
                                     const cv::Size& imageSize = unit::FRAME) {
  const auto targets = unit::Targets(pairs.left.size());
  Assessed assessed;
  assessed.pairIntrinsics = pairIntrinsics;
  assessed.result = SolveExtrinsicsSparsely(targets, pairs.left, pairs.right, pairIntrinsics, model, options);
  assessed.verdict = AssessPair({targets, pairs.left, pairs.right, model, false, options.discRadius,
                                 assessed.result.solution, imageSize},
                                pairIntrinsics, assessed.result.R, assessed.result.T);
  return assessed;
}

Assessed AssessedWithRefinedIntrinsics(const unit::PointPairs& pairs, const StereoIntrinsics& start,
                                       int model, const SparsePairOptions& options = {}) {
  const auto targets = unit::Targets(pairs.left.size());
  Assessed assessed;
  assessed.result = unit::Refined(pairs, start, model, options);
  assessed.pairIntrinsics = assessed.result.refined;
  assessed.verdict = AssessPair({targets, pairs.left, pairs.right, model, true, options.discRadius,
                                 assessed.result.solution, unit::FRAME},
                                assessed.pairIntrinsics, assessed.result.R, assessed.result.T);
  return assessed;
}

/// By OpenCV's projection: the distances of what a camera saw from where it should have.
double RmsByOpenCv(const Assessed& assessed, const TargetView& view, size_t camera) {
  const Observation& observed = view.observations[camera];
  const RigidTransform rightFromLeft = {cv::Matx33d(assessed.result.R),
                                        cv::Vec3d(assessed.result.T.ptr<double>())};
  const RigidTransform pose = camera == 0 ? view.rigFromTarget : rightFromLeft * view.rigFromTarget;
  cv::Vec3d rvec;
  cv::Rodrigues(pose.R, rvec);
  std::vector<cv::Point2d> expected;
  cv::projectPoints(observed.object, rvec, pose.t,
                    camera == 0 ? assessed.pairIntrinsics.K : assessed.pairIntrinsics.KRight,
                    camera == 0 ? assessed.pairIntrinsics.D : assessed.pairIntrinsics.DRight, expected);
  double squares = 0.0;
  double count = 0.0;
  for (size_t i = 0; i < expected.size(); ++i) {
    const cv::Point2d off = expected[i] - observed.image[i];
    squares += observed.Weight(i) * off.dot(off);
    count += observed.Weight(i);
  }
  return std::sqrt(squares / count);
}

void ExpectErrorsOfOpenCv(const Assessed& assessed) {
  const Solution& solution = *assessed.result.solution;
  size_t camera = 0;
  for (const PairVerdict::Camera& side : {assessed.verdict.left, assessed.verdict.right}) {
    double squares = 0.0;
    ASSERT_EQ(side.viewRms.size(), solution.views.size());
    for (size_t i = 0; i < solution.views.size(); ++i) {
      const double expected = RmsByOpenCv(assessed, solution.views[i], camera);
      EXPECT_NEAR(side.viewRms[i], expected, 1e-7) << "camera " << camera << ", view " << i;
      squares += expected * expected;
    }
    EXPECT_NEAR(side.rms, std::sqrt(squares / static_cast<double>(solution.views.size())), 1e-7);
    EXPECT_GT(side.rms, 0.1);
    ++camera;
  }
}

TEST(PairCameras, HaveTheErrorsOfTheirViewsByOpenCv) {
  for (const int model : MODELS) {
    const auto pairs = Observed(RigFor(model), 10, 3, 0.1);
    ExpectErrorsOfOpenCv(AssessedWithFixedIntrinsics(pairs, unit::TruePairIntrinsics(RigFor(model)), model));
    ExpectErrorsOfOpenCv(AssessedWithRefinedIntrinsics(pairs, EachAlone(pairs, model), model));
  }
}

TEST(PairCameras, TellWhichOfThemSeesWorse) {
  const int model = Calibrator::MODEL_CLASSIC;
  auto pairs = Observed(RigFor(model), 10, 3, 0.1);
  const auto worse = Observed(RigFor(model), 10, 3, 0.4);
  pairs.right = worse.right;
  const PairVerdict verdict =
      AssessedWithFixedIntrinsics(pairs, unit::TruePairIntrinsics(RigFor(model)), model).verdict;
  EXPECT_GT(verdict.right.rms, 2.0 * verdict.left.rms);
  EXPECT_NEAR(verdict.right.rms, 0.4 * std::sqrt(2.0), 0.06);
}

TEST(PairCameras, MarkTheImageThatWasLeftOutAndKeepTheOtherOne) {
  const int model = Calibrator::MODEL_RATIONAL;
  auto pairs = Observed(RigFor(model), 12, 2, 0.1);
  std::reverse(pairs.right[4].begin(), pairs.right[4].end());
  pairs.left[7][20] += cv::Point2d(9.0, -7.0);
  SparsePairOptions robust;
  robust.robust = true;
  for (const Assessed& assessed :
       {AssessedWithFixedIntrinsics(pairs, unit::TruePairIntrinsics(RigFor(model)), model, robust),
        AssessedWithRefinedIntrinsics(pairs, unit::TruePairIntrinsics(RigFor(model)), model, robust)}) {
    const PairVerdict& verdict = assessed.verdict;
    ASSERT_EQ(verdict.left.viewRms.size(), 12U);
    ASSERT_EQ(verdict.right.viewRms.size(), 12U);
    for (const PairVerdict::LeftOut& left : verdict.leftOut) {
      const PairVerdict::Camera& camera = left.right ? verdict.right : verdict.left;
      EXPECT_EQ(camera.viewRms[left.view] < 0.0, left.point < 0) << verdict.ToJson();
    }
    const auto marked = [](const PairVerdict::Camera& camera) {
      return std::count(camera.viewRms.begin(), camera.viewRms.end(), -1.0);
    };
    EXPECT_EQ(marked(verdict.left), 0) << verdict.ToJson();
    EXPECT_EQ(marked(verdict.right), 1) << verdict.ToJson();
    EXPECT_EQ(verdict.right.viewRms[4], -1.0);
    // Points and images that were left out do not count.
    for (const PairVerdict::Camera& camera : {verdict.left, verdict.right}) {
      EXPECT_LT(camera.rms, 0.2);
      for (const double rms : camera.viewRms) EXPECT_LT(rms, 0.25);
    }
  }
}

TEST(PairCameras, AreAtLeastAsSureAsTheirOwnViewsMakeThem) {
  for (const int model : MODELS) {
    const auto pairs = Observed(RigFor(model), 12, 5, 0.1);
    const auto targets = unit::Targets(pairs.left.size());
    const auto alone = [&](const unit::PointLists& views) {
      return AssessIntrinsics(targets, views, unit::FRAME,
                              SolveIntrinsicsSparsely(targets, views, unit::FRAME, model));
    };
    const CalibrationVerdict left = alone(pairs.left);
    const CalibrationVerdict right = alone(pairs.right);
    for (const Assessed& assessed : {AssessedWithFixedIntrinsics(pairs, EachAlone(pairs, model), model),
                                     AssessedWithRefinedIntrinsics(pairs, EachAlone(pairs, model), model)}) {
      const auto expect = [&](const PairVerdict::Camera& camera, const CalibrationVerdict& by) {
        // The noise is estimated anew, and is what differs upwards.
        EXPECT_LT(camera.deviationInData, 1.1 * by.deviationInData) << model;
        EXPECT_GT(camera.deviationInData, 0.4 * by.deviationInData) << model;
        // Where nothing was seen, larger models depend on how strongly their coefficients are held.
        if (model == Calibrator::MODEL_CLASSIC) {
          EXPECT_LT(camera.deviationInImage, 1.1 * by.deviationInImage);
          EXPECT_GT(camera.deviationInImage, 0.4 * by.deviationInImage);
        }
        EXPECT_DOUBLE_EQ(camera.coverage, by.coverage);
        EXPECT_EQ(camera.dataArea, by.dataArea);
      };
      expect(assessed.verdict.left, left);
      expect(assessed.verdict.right, right);
    }
  }
}

TEST(PairCameras, HaveTheMapsOfTheSolutionsJudge) {
  const int model = Calibrator::MODEL_RATIONAL;
  const auto pairs = Observed(RigFor(model), 12, 5, 0.1);
  const Assessed assessed = AssessedWithRefinedIntrinsics(pairs, EachAlone(pairs, model), model);
  size_t camera = 0;
  for (const PairVerdict::Camera& side : {assessed.verdict.left, assessed.verdict.right}) {
    const CalibrationVerdict expected =
        AssessCamera(*assessed.result.solution, camera++, [] { return std::string(); });
    ASSERT_EQ(side.deviationMap.size(),
              cv::Size(ProjectionUncertainty::COLUMNS, ProjectionUncertainty::ROWS));
    ASSERT_EQ(side.deviationMap.size(), expected.deviationMap.size());
    EXPECT_EQ(cv::norm(side.deviationMap, expected.deviationMap, cv::NORM_INF), 0.0);
    EXPECT_EQ(side.deviationInData, expected.deviationInData);
    EXPECT_EQ(side.deviationInImage, expected.deviationInImage);
  }
}

TEST(PairCameras, SayNothingOfProjectionsInImagesOfUnknownSize) {
  const int model = Calibrator::MODEL_CLASSIC;
  const PairVerdict verdict =
      AssessedWithFixedIntrinsics(Observed(RigFor(model), 8, 1, 0.1), unit::TruePairIntrinsics(RigFor(model)),
                                  model, {}, {})
          .verdict;
  for (const PairVerdict::Camera& camera : {verdict.left, verdict.right}) {
    EXPECT_TRUE(camera.deviationMap.empty());
    EXPECT_TRUE(std::isinf(camera.deviationInData));
    EXPECT_EQ(camera.coverage, 0.0);
    EXPECT_EQ(camera.viewRms.size(), 8U);
  }
}

}  // namespace
