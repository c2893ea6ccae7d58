/// What good and worthless pairs of cameras are said to be worth.
#include "quality/PairAssessment.h"

#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <opencv2/calib3d.hpp>

#include "solver/PairViews.h"

using namespace velmora;

namespace {

using Grade = PairVerdict::Grade;
using unit::EachAlone;
using unit::Observed;
using unit::Paper;
using unit::Refined;
using unit::RigFor;
using unit::WithFixedIntrinsics;

PairVerdict AssessedWithFixedIntrinsics(const unit::PointPairs& pairs, const StereoIntrinsics& pairIntrinsics,
                                        int model) {
  const ExtrinsicsResult result = WithFixedIntrinsics(pairs, pairIntrinsics, model);
  return AssessPair({unit::Targets(pairs.left.size()), pairs.left, pairs.right, model, false, 0.0},
                    pairIntrinsics, result.R, result.T);
}

PairVerdict AssessedWithRefinedIntrinsics(const unit::PointPairs& pairs, int model) {
  const ExtrinsicsResult result = Refined(pairs, EachAlone(pairs, model), model);
  return AssessPair({unit::Targets(pairs.left.size()), pairs.left, pairs.right, model, true, 0.0},
                    result.refined, result.R, result.T);
}

bool Says(const PairVerdict& verdict, const std::string& words) {
  for (const auto& remark : verdict.remarks) {
    if (remark.reason.find(words) != std::string::npos) return true;
  }
  return false;
}

const int MODELS[] = {Calibrator::MODEL_CLASSIC, Calibrator::MODEL_RATIONAL};

TEST(PairVerdict, IsGoodForManyTiltedViews) {
  for (const int model : MODELS) {
    const world::Pair rig = RigFor(model);
    for (const std::uint64_t seed : {1U, 2U, 3U, 4U, 5U}) {
      for (const int count : {12, 20}) {
        const auto pairs = Observed(rig, count, seed, 0.1);
        for (const PairVerdict& verdict :
             {AssessedWithFixedIntrinsics(pairs, unit::TruePairIntrinsics(rig), model),
              AssessedWithFixedIntrinsics(pairs, EachAlone(pairs, model), model),
              AssessedWithRefinedIntrinsics(pairs, model)}) {
          EXPECT_EQ(verdict.grade, Grade::Good) << model << ' ' << seed << ' ' << verdict.ToJson();
          EXPECT_TRUE(verdict.remarks.empty());
          EXPECT_EQ(verdict.views, count);
        }
      }
    }
  }
}

TEST(PairVerdict, OfTheFullModelTellsThatTheRefinedIntrinsicsBelongToTheResult) {
  const world::Pair rig = RigFor(Calibrator::MODEL_FULL);
  const auto pairs = Observed(rig, 20, 1, 0.1);
  const PairVerdict verdict = AssessedWithRefinedIntrinsics(pairs, Calibrator::MODEL_FULL);
  EXPECT_EQ(verdict.grade, Grade::WithCare) << verdict.ToJson();
  EXPECT_TRUE(Says(verdict, "together with the refined lenses only"));
  EXPECT_EQ(
      AssessedWithFixedIntrinsics(pairs, EachAlone(pairs, Calibrator::MODEL_FULL), Calibrator::MODEL_FULL)
          .grade,
      Grade::Good);
}

TEST(PairVerdict, OfFewViewsIsNotGood) {
  for (const int model : MODELS) {
    const auto pairs = Observed(RigFor(model), 5, 1, 0.1);
    EXPECT_TRUE(Says(AssessedWithFixedIntrinsics(pairs, EachAlone(pairs, model), model), "few views"));
    EXPECT_NE(AssessedWithRefinedIntrinsics(pairs, model).grade, Grade::Good);
  }
}

/// Upright before the left camera, nearly so before the right one, in several places.
unit::PointPairs FrontalPairs(const world::Pair& rig) {
  std::vector<world::Pose> poses;
  for (int k = 0; k < 12; ++k) {
    world::Pose pose;
    pose.tvec = cv::Vec3d(-0.08 + 0.03 * (k % 3), -0.1 + 0.02 * (k % 4), 0.6 + 0.03 * k);
    poses.push_back(pose);
  }
  return unit::ObservedByBoth(rig, poses, 1, 0.1);
}

TEST(PairVerdict, IsWorthlessForIntrinsicsOfFrontalViews) {
  for (const int model : {Calibrator::MODEL_CLASSIC, Calibrator::MODEL_RATIONAL, Calibrator::MODEL_FULL}) {
    const auto pairs = FrontalPairs(RigFor(model));
    const PairVerdict fixed = AssessedWithFixedIntrinsics(pairs, EachAlone(pairs, model), model);
    EXPECT_EQ(fixed.grade, Grade::Worthless) << fixed.ToJson();
    const PairVerdict refined = AssessedWithRefinedIntrinsics(pairs, model);
    EXPECT_EQ(refined.grade, Grade::Worthless) << refined.ToJson();
    EXPECT_TRUE(Says(refined, "do not determine"));
  }
}

TEST(PairVerdict, OfFrontalViewsWithGoodIntrinsicsRestsOnThese) {
  const world::Pair rig = RigFor(Calibrator::MODEL_RATIONAL);
  const PairVerdict verdict = AssessedWithFixedIntrinsics(FrontalPairs(rig), unit::TruePairIntrinsics(rig),
                                                          Calibrator::MODEL_RATIONAL);
  EXPECT_EQ(verdict.grade, Grade::WithCare) << verdict.ToJson();
  EXPECT_TRUE(Says(verdict, "as good as the lenses that were given"));
  EXPECT_LT(verdict.formal.rotation, 0.1);
  EXPECT_GT(verdict.withLenses.rotation, 1.0);
}

/// The sheet is this far aside when the right camera takes its image of these views.
unit::PointPairs MovedPairs(const world::Pair& rig, const std::vector<size_t>& views, double aside) {
  auto poses = world::SampleRigViews(rig, 12, 2, Paper());
  unit::PointPairs pairs = unit::ObservedByBoth(rig, poses, 1, 0.1);
  for (const size_t view : views) poses[view].tvec[0] += aside * (view % 2 == 0 ? 1.0 : -1.0);
  const unit::PointPairs later = unit::ObservedByBoth(rig, poses, 1, 0.1);
  for (const size_t view : views) pairs.right[view] = later.right[view];
  return pairs;
}

TEST(PairVerdict, NamesTheViewThatMovedBetweenTheCameras) {
  for (const double aside : {0.002, 0.005, 0.02}) {
    for (const int model : MODELS) {
      const auto pairs = MovedPairs(RigFor(model), {4}, aside);
      for (const PairVerdict& verdict :
           {AssessedWithFixedIntrinsics(pairs, unit::TruePairIntrinsics(RigFor(model)), model),
            AssessedWithFixedIntrinsics(pairs, EachAlone(pairs, model), model),
            AssessedWithRefinedIntrinsics(pairs, model)}) {
        EXPECT_NE(verdict.grade, Grade::Good) << verdict.ToJson();
        ASSERT_EQ(verdict.disagreements.size(), 1U) << verdict.ToJson();
        EXPECT_EQ(verdict.disagreements.front().view, 4U);
        EXPECT_TRUE(Says(verdict, "do not show the sheet at the same place"));
      }
    }
  }
}

TEST(PairVerdict, IsNotGoodWhenThePicturesAreNotOfTheSameTime) {
  std::vector<size_t> all;
  for (size_t i = 0; i < 12; ++i) all.push_back(i);
  for (const int model : MODELS) {
    const auto pairs = MovedPairs(RigFor(model), all, 0.004);
    for (const PairVerdict& verdict : {AssessedWithFixedIntrinsics(pairs, EachAlone(pairs, model), model),
                                       AssessedWithRefinedIntrinsics(pairs, model)}) {
      EXPECT_NE(verdict.grade, Grade::Good) << verdict.ToJson();
      EXPECT_TRUE(Says(verdict, "views disagree more than noise explains") ||
                  Says(verdict, "do not determine") ||
                  Says(verdict, "do not show the sheet at the same place"))
          << verdict.ToJson();
    }
  }
}

/// The mean squares that standard deviations are compared with.
struct Spread {
  double rotation = 0.0;
  double baseline = 0.0;
  double direction = 0.0;

  void Add(const ExtrinsicsResult& result, const world::Pair& rig, double share) {
    cv::Vec3d rotationVector;
    cv::Rodrigues(cv::Matx33d(result.R) * rig.R.t(), rotationVector);
    const cv::Vec3d T(result.T.ptr<double>());
    const double angle = std::atan2(cv::norm(T.cross(rig.T)), T.dot(rig.T));
    rotation += share * rotationVector.dot(rotationVector) * std::pow(180.0 / CV_PI, 2);
    baseline += share * std::pow(cv::norm(T) / cv::norm(rig.T) - 1.0, 2);
    direction += share * std::pow(angle * 180.0 / CV_PI, 2);
  }
};

/// Predicted over empirical standard deviations of many computations from fresh noise.
void ExpectTrueDeviations(int model, bool refined, int runs) {
  const world::Pair rig = RigFor(model);
  const auto poses = world::SampleRigViews(rig, 12, 5, Paper());
  Spread spread;
  PairVerdict::Deviations predicted;
  const double share = 1.0 / runs;
  for (int run = 0; run < runs; ++run) {
    const auto pairs = unit::ObservedByBoth(rig, poses, static_cast<std::uint64_t>(1000 + run), 0.1);
    const StereoIntrinsics start = unit::TruePairIntrinsics(rig);
    const ExtrinsicsResult result =
        refined ? Refined(pairs, start, model) : WithFixedIntrinsics(pairs, start, model);
    spread.Add(result, rig, share);
    const PairVerdict verdict =
        AssessPair({unit::Targets(poses.size()), pairs.left, pairs.right, model, refined, 0.0},
                   refined ? result.refined : start, result.R, result.T);
    predicted.rotation += share * verdict.formal.rotation;
    predicted.baseline += share * verdict.formal.baseline;
    predicted.direction += share * verdict.formal.direction;
  }
  const auto expect = [&](const char* what, double own, double square) {
    const double ratio = own / std::sqrt(square);
    ::testing::Test::RecordProperty(
        std::string(what) + (refined ? ", refined, model " : ", held, model ") + std::to_string(model),
        std::to_string(ratio));
    EXPECT_GT(ratio, 0.85) << what << ' ' << model << ' ' << refined;
    EXPECT_LT(ratio, 1.15) << what << ' ' << model << ' ' << refined;
  };
  expect("rotation", predicted.rotation, spread.rotation);
  expect("baseline", predicted.baseline, spread.baseline);
  expect("direction", predicted.direction, spread.direction);
}

/// Hundreds of computations on one thread: a thread sanitizer has nothing to see, and takes minutes.
#if defined(__SANITIZE_THREAD__)
#define SKIP_REPETITIONS GTEST_SKIP() << "no repetitions under the thread sanitizer"
#else
#define SKIP_REPETITIONS
#endif

TEST(PairVerdict, PredictsTheErrorsOfRepeatedComputationsWithFixedIntrinsics) {
  SKIP_REPETITIONS;
  for (const int model : MODELS) ExpectTrueDeviations(model, false, 300);
}

TEST(PairVerdict, PredictsTheErrorsOfRepeatedComputationsWithRefinedIntrinsics) {
  SKIP_REPETITIONS;
  for (const int model : MODELS) ExpectTrueDeviations(model, true, 300);
}

TEST(PairVerdict, IsTheWorseOfItsOwnAndThatOfItsCameras) {
  const world::Pair rig = RigFor(Calibrator::MODEL_CLASSIC);
  const auto pairs = Observed(rig, 12, 1, 0.1);
  PairVerdict verdict =
      AssessedWithFixedIntrinsics(pairs, unit::TruePairIntrinsics(rig), Calibrator::MODEL_CLASSIC);
  CalibrationVerdict camera;
  camera.grade = Grade::Good;
  verdict.Consider(camera, "left");
  EXPECT_EQ(verdict.grade, Grade::Good);
  camera.grade = Grade::Worthless;
  verdict.Consider(camera, "right");
  EXPECT_EQ(verdict.grade, Grade::Worthless);
  EXPECT_TRUE(Says(verdict, "The right camera by itself is worthless."));
  PairVerdict refined = AssessedWithRefinedIntrinsics(pairs, Calibrator::MODEL_CLASSIC);
  refined.Consider(camera, "right");
  EXPECT_EQ(refined.grade, Grade::Good);
  PairVerdict none;
  none.Consider(camera, "left");
  EXPECT_EQ(none.grade, Grade::None);
}

TEST(PairVerdict, IsNoneWithoutAResult) {
  EXPECT_EQ(AssessPair({}, {}, {}, {}).grade, Grade::None);
  const auto calibrator = unit::StereoCalibratorWith(unit::NoisyPairs(8));
  EXPECT_EQ(calibrator->GetPairVerdict().grade, Grade::None);
  EXPECT_EQ(unit::MakeCalibrator()->GetPairVerdict().grade, Grade::None);
}

TEST(PairVerdict, KnowsNothingOfAPairThatCannotSeeTheSheet) {
  const auto model = Calibrator::MODEL_CLASSIC;
  const world::Pair rig = RigFor(model);
  const auto pairs = Observed(rig, 12, 1, 0.1);
  const PairVerdict verdict =
      AssessPair({unit::Targets(pairs.left.size()), pairs.left, pairs.right, model, false, 0.0},
                 unit::TruePairIntrinsics(rig), cv::Mat(rig.R), cv::Mat(cv::Vec3d(0.0, 0.0, -10.0)));
  EXPECT_EQ(verdict.grade, Grade::Worthless);
  EXPECT_TRUE(Says(verdict, "do not agree with this pair"));
  EXPECT_TRUE(std::isinf(verdict.formal.rotation));
  EXPECT_TRUE(std::isinf(verdict.jackknife.baseline));
  for (const PairVerdict::Camera& camera : {verdict.left, verdict.right}) {
    EXPECT_TRUE(std::isinf(camera.rms));
    EXPECT_EQ(camera.viewRms.size(), 12U);
    EXPECT_TRUE(std::isinf(camera.viewRms.front()));
    EXPECT_TRUE(std::isinf(camera.deviationInData));
    EXPECT_TRUE(camera.deviationMap.empty());
  }
  const auto text = nlohmann::json::parse(verdict.ToJson());
  EXPECT_TRUE(text["formal"]["rotation"].is_null());
  EXPECT_TRUE(text["left"]["rms"].is_null());
}

TEST(PairVerdict, ComesFromACalibratorWithEitherSolver) {
  const unit::PointPairs pairs = unit::NoisyPairs(8);
  const auto calibrator = unit::StereoCalibratorWith(pairs);
  const auto assessed = [&](int solver) {
    calibrator->SetSolver(solver);
    calibrator->ComputeCalibrationStereo(unit::LeftResult(), unit::RightResult(), Calibrator::MODEL_FULL,
                                         false);
    return calibrator->GetPairVerdict();
  };
  const PairVerdict dense = assessed(Calibrator::SOLVER_OPENCV);
  const PairVerdict sparse = assessed(Calibrator::SOLVER_SPARSE);
  EXPECT_EQ(sparse.grade, Grade::Good) << sparse.ToJson();
  EXPECT_EQ(dense.grade, sparse.grade);
  EXPECT_NEAR(dense.formal.rotation, sparse.formal.rotation, 1e-6);
  EXPECT_NEAR(dense.jackknife.baseline, sparse.jackknife.baseline, 1e-6);
  EXPECT_FALSE(sparse.lensesRefined);
  calibrator->SetRefineLenses(true);
  EXPECT_TRUE(assessed(Calibrator::SOLVER_SPARSE).lensesRefined);
  calibrator->ComputeCalibrationStereo(unit::LeftResult(), "{}", Calibrator::MODEL_FULL, false);
  calibrator->AddStereoPoints(pairs.left.front(), pairs.right.front());
  EXPECT_EQ(calibrator->GetPairVerdict().grade, Grade::None);
  calibrator->Reset();
  EXPECT_EQ(calibrator->GetPairVerdict().grade, Grade::None);
}

TEST(PairVerdict, StaysThatOfItsResultWhenOtherIntrinsicsAreReadAndRefused) {
  const auto calibrator = unit::StereoCalibratorWith(unit::NoisyPairs(8));
  calibrator->ComputeCalibrationStereo(unit::LeftResult(), unit::RightResult(), Calibrator::MODEL_FULL,
                                       false);
  const PairVerdict verdict = calibrator->GetPairVerdict();
  ASSERT_NE(verdict.grade, Grade::None);
  unit::KnownIntrinsics narrow = unit::IntrinsicsOf(unit::PairOfCameras().left);
  narrow.D = narrow.D.colRange(0, 5).clone();
  calibrator->ComputeCalibrationStereo(unit::MonocularResult(narrow), unit::RightResult(),
                                       Calibrator::MODEL_FULL, false);
  EXPECT_EQ(calibrator->GetPairVerdict().ToJson(), verdict.ToJson());
}

TEST(PairVerdict, IsAJsonTextToo) {
  const PairVerdict verdict = AssessedWithRefinedIntrinsics(
      MovedPairs(RigFor(Calibrator::MODEL_CLASSIC), {4}, 0.005), Calibrator::MODEL_CLASSIC);
  const auto text = nlohmann::json::parse(verdict.ToJson());
  EXPECT_EQ(text["grade"], verdict.ToString());
  EXPECT_EQ(text["views"], 12);
  EXPECT_EQ(text["lensesRefined"], true);
  EXPECT_EQ(text["formal"]["rotation"], verdict.formal.rotation);
  EXPECT_EQ(text["jackknife"]["baseline"], verdict.jackknife.baseline);
  EXPECT_EQ(text["withLenses"]["direction"], verdict.withLenses.direction);
  EXPECT_EQ(text["disagreements"][0]["view"], 4);
  EXPECT_EQ(text["remarks"][0]["reason"], verdict.remarks[0].reason);
}

}  // namespace
