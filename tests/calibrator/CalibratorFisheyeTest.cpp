/// A calibrator that computes fisheyes.
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "Calibrator.h"
#include "TemporaryFolder.h"
#include "unit/FisheyeViews.h"
#include "unit/Scopes.h"

namespace {

constexpr double DEGREES = 170.0;
constexpr double NOISE = 0.1;

std::unique_ptr<Calibrator> WithViews(const unit::PointLists& views) {
  auto calibrator = std::make_unique<Calibrator>(unit::GRID, unit::UNIT, Calibrator::MONOCULAR,
                                                 unit::FISHEYE_FRAME.width, unit::FISHEYE_FRAME.height);
  for (const auto& points : views) calibrator->AddPoints(points);
  return calibrator;
}

TEST(Fisheye, IsComputedToTheRimOfItsImage) {
  const unit::PointLists views = unit::FisheyeViews(DEGREES, 20, NOISE, 1);
  const double widest = unit::WidestAngleOf(DEGREES, views);
  ASSERT_GT(widest, 80.0);
  const auto calibrator = WithViews(views);
  const float rms = calibrator->ComputeFisheye();
  EXPECT_NEAR(rms, NOISE * std::sqrt(2.0), 0.01);
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_COMPLETED);
  const FisheyeResult fisheye = calibrator->GetFisheye();
  ASSERT_FALSE(fisheye.IsEmpty());
  EXPECT_EQ(fisheye.coefficients.size(), cv::Size(4, 1));
  EXPECT_EQ(fisheye.stdDevs.size(), cv::Size(1, 8));
  EXPECT_EQ(fisheye.imageSize, unit::FISHEYE_FRAME);
  EXPECT_EQ(static_cast<float>(fisheye.rms), rms);
  EXPECT_NEAR(fisheye.widestAngle, widest, 0.1);
  EXPECT_LT(unit::WorstFisheyeError(DEGREES, fisheye.K, fisheye.coefficients, widest), 0.3);
  EXPECT_LT(fisheye.stdDevs.at<double>(0), 1.0);
  EXPECT_GT(fisheye.stdDevs.at<double>(7), 0.0);
  EXPECT_NE(calibrator->GetVerdict().grade, CalibrationVerdict::Grade::Worthless)
      << calibrator->GetVerdict().ToJson();
}

TEST(Fisheye, HasSmallErrorsOfExactPoints) {
  for (const double degrees : {100.0, 150.0, 200.0}) {
    const auto calibrator = WithViews(unit::FisheyeViews(degrees, 15, 0.0, 3));
    EXPECT_LT(calibrator->ComputeFisheye(), 1e-3F) << degrees;
    const FisheyeResult fisheye = calibrator->GetFisheye();
    EXPECT_LT(unit::WorstFisheyeError(degrees, fisheye.K, fisheye.coefficients, 0.45 * degrees), 0.01)
        << degrees;
  }
}

TEST(Fisheye, LeavesOutWhatDisagreesWhereThatIsAsked) {
  unit::PointLists views = unit::FisheyeViews(DEGREES, 20, NOISE, 4);
  for (size_t i = 0; i < 5; ++i) views[i][3 * i] += cv::Point2d(6.0, -5.0);
  const auto calibrator = WithViews(views);
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  calibrator->SetRobust(true);
  EXPECT_NEAR(calibrator->ComputeFisheye(), NOISE * std::sqrt(2.0), 0.015);
  EXPECT_GE(calibrator->GetVerdict().leftOut.size(), 5U);
}

TEST(Fisheye, IsHandedOutByNothingThatCouldTakeItForAnotherLens) {
  const auto calibrator = WithViews(unit::FisheyeViews(DEGREES, 12, NOISE, 5));
  calibrator->ComputeFisheye();
  EXPECT_TRUE(calibrator->GetDistCoefs().empty());
  EXPECT_TRUE(calibrator->GetStdDevIntrinsics().empty());
  EXPECT_FALSE(calibrator->GetK().empty());
  EXPECT_EQ(calibrator->GetPerViewErrors().rows, 12);
  EXPECT_EQ(calibrator->GetTranslationVectors().rows, 12);
  std::string text = "?";
  EXPECT_EQ(
      unit::PrintedBy([&] { text = calibrator->SaveResult(false, ""); }),
      "ERROR : The result is a fisheye's, which this file cannot hold. SaveFisheye writes one that can.\n");
  EXPECT_EQ(text, "");
  EXPECT_EQ(nlohmann::json::parse(calibrator->GetStatus_QVX()).at("cj"), "");
}

TEST(Fisheye, HasAFileOfItsOwn) {
  const support::TemporaryFolder folder;
  const auto calibrator = WithViews(unit::FisheyeViews(DEGREES, 12, NOISE, 6));
  calibrator->ComputeFisheye();
  const std::string text = calibrator->SaveFisheye(true, folder.File("camera"));
  EXPECT_EQ(nlohmann::json::parse(support::ReadText(folder.File("camera_fisheye.json"))),
            nlohmann::json::parse(text));
  const nlohmann::json document = nlohmann::json::parse(text);
  EXPECT_EQ(document.at("lensModel"), "kannala-brandt");
  EXPECT_EQ(document.at("fisheyeCoefs").at("data").size(), 4U);
  EXPECT_FALSE(document.contains("distCoefs"));
  const FisheyeResult read = FisheyeResult::FromJson(text);
  EXPECT_EQ(cv::norm(read.coefficients, calibrator->GetFisheye().coefficients, cv::NORM_INF), 0.0);
  EXPECT_NE(unit::PrintedBy([&] {
              calibrator->SaveFisheye(true, "/nowhere/camera");
            }).find("ERROR : Cannot save file: /nowhere/camera_fisheye.json"),
            std::string::npos);
}

TEST(Fisheye, IsNoneBeforeAComputationAndAfterThatOfAnotherLens) {
  const auto views = unit::FisheyeViews(70.0, 12, NOISE, 7);
  const auto calibrator = WithViews(views);
  EXPECT_TRUE(calibrator->GetFisheye().IsEmpty());
  EXPECT_EQ(unit::PrintedBy([&] { EXPECT_EQ(calibrator->SaveFisheye(false, ""), ""); }),
            "ERROR : There is no result of a fisheye.\n");
  calibrator->ComputeFisheye();
  EXPECT_FALSE(calibrator->GetFisheye().IsEmpty());
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  calibrator->ComputeCalibration(Calibrator::MODEL_RATIONAL);
  EXPECT_TRUE(calibrator->GetFisheye().IsEmpty());
  EXPECT_EQ(calibrator->GetDistCoefs().cols, 14);
}

TEST(Fisheye, NeedsFiveSnapshotsOfOneCamera) {
  const auto few = WithViews(unit::FisheyeViews(DEGREES, 4, NOISE, 8));
  EXPECT_NE(unit::PrintedBy([&] { EXPECT_EQ(few->ComputeFisheye(), -1.0F); }).find("At least 5 pictures"),
            std::string::npos);
  Calibrator pair(unit::GRID, unit::UNIT, Calibrator::STEREO, 640, 480);
  EXPECT_EQ(pair.ComputeFisheye(), -1.0F);
  EXPECT_TRUE(pair.ProposeFisheyePose().centres.empty());
}

TEST(Fisheye, IsAskedForTheNextPoseToo) {
  const auto calibrator = WithViews(unit::FisheyeViews(DEGREES, 6, NOISE, 9));
  const PoseProposal proposal = calibrator->ProposeFisheyePose();
  ASSERT_EQ(proposal.centres.size(), 44U);
  EXPECT_FALSE(proposal.nominal);
  EXPECT_LT(proposal.deviationThen, proposal.deviation);
  for (const cv::Point2d& centre : proposal.centres)
    EXPECT_TRUE(cv::Rect2d({}, cv::Size2d(unit::FISHEYE_FRAME)).contains(centre));
  const cv::Point2d middle(640.0, 480.0);
  EXPECT_GT(cv::norm(proposal.centres[20] - middle), 100.0) << "little is known of the rim";
}

TEST(Fisheye, IsChosenWhereTheViewsAskForOne) {
  const auto wide = WithViews(unit::FisheyeViews(DEGREES, 15, NOISE, 10));
  const ModelChoice choice = wide->ChooseModel();
  EXPECT_TRUE(choice.prefersFisheye) << choice.Name();
  EXPECT_EQ(choice.Name(), "fisheye");
  const auto narrow = WithViews(unit::FisheyeViews(60.0, 15, NOISE, 11));
  const ModelChoice plane = narrow->ChooseModel();
  EXPECT_FALSE(plane.prefersFisheye);
  EXPECT_NE(plane.reasons.back().find("The fisheye model is not better than the"), std::string::npos);
  EXPECT_NE(plane.reasons.back().find("degrees off the axis"), std::string::npos) << plane.reasons.back();
}

TEST(Fisheye, IsComputedOnAThreadOfItsOwn) {
  const auto calibrator = WithViews(unit::FisheyeViews(DEGREES, 12, NOISE, 12));
  calibrator->ComputeFisheyeMultithread();
  ASSERT_TRUE(unit::Eventually([&] { return !calibrator->IsComputing(); }));
  EXPECT_FALSE(calibrator->HasFailed());
  EXPECT_FALSE(calibrator->GetFisheye().IsEmpty());
}

}  // namespace
