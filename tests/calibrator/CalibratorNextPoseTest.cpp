/// A calibrator's proposals, and the assistant that asks for one.
#include <gtest/gtest.h>

#include <cmath>
#include <future>

#include "Calibrator.h"
#include "Reach.h"
#include "Renderer.h"
#include "model/TargetGeometry.h"
#include "unit/Collection.h"
#include "unit/Scopes.h"

using namespace velmora;

namespace {

PoseProposal ProposalWith(int views) {
  return unit::CalibratorWith(unit::NoisyViews(views))->ProposePose(Calibrator::MODEL_RATIONAL);
}

TEST(ProposedPose, IsThereFromTheFirstSnapshotOn) {
  for (const int views : {0, 1, 2}) {
    const PoseProposal proposal = ProposalWith(views);
    EXPECT_EQ(proposal.centres.size(), 44U);
    EXPECT_TRUE(proposal.nominal);
  }
  const PoseProposal proposal = ProposalWith(6);
  EXPECT_EQ(proposal.centres.size(), 44U);
  EXPECT_FALSE(proposal.nominal);
  EXPECT_GT(proposal.deviationThen, 0.0);
  EXPECT_LT(proposal.deviationThen, proposal.deviation);
  EXPECT_LT(proposal.deviation, 3.0);
}

TEST(ProposedPose, BelongsToTheCentres) {
  const auto calibrator = unit::CalibratorWith(unit::NoisyViews(8));
  const PoseProposal proposal = calibrator->ProposePose(Calibrator::MODEL_CLASSIC);
  const auto centres =
      world::ProjectPoints(unit::DistortedCamera().lens, MakeObjectTemplate(unit::GRID, unit::UNIT),
                           {proposal.rvec, proposal.tvec});
  // The camera of the views is not quite the true one.
  EXPECT_LT(cv::norm(centres, proposal.centres, cv::NORM_INF), 5.0);
}

TEST(ProposedPose, ChangesNothingAndIsTheSameEachTime) {
  const auto calibrator = unit::CompletedCalibrator();
  const cv::Mat K = calibrator->GetK().clone();
  const PoseProposal first = calibrator->ProposePose(Calibrator::MODEL_RATIONAL);
  const PoseProposal second = calibrator->ProposePose(Calibrator::MODEL_RATIONAL);
  EXPECT_EQ(first.centres, second.centres);
  EXPECT_EQ(first.deviation, second.deviation);
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_COMPLETED);
  EXPECT_EQ(cv::norm(K, calibrator->GetK()), 0.0);
  EXPECT_EQ(calibrator->GetNumberOfRecords(), 6);
}

TEST(ProposedPose, IsNotThereInAStereoCalibrator) {
  const unit::ScopedLogLevel quiet(0);
  const auto calibrator = unit::MakeCalibrator(Calibrator::STEREO);
  EXPECT_TRUE(calibrator->ProposePose(Calibrator::MODEL_CLASSIC).centres.empty());
  EXPECT_FALSE(calibrator->AskForPose(ProposalWith(0).centres));
}

TEST(ProposedPose, MayBeAskedForWhileSnapshotsAreAdded) {
  const auto calibrator = unit::CalibratorWith(unit::NoisyViews(3));
  const auto more = unit::NoisyViews(9);
  auto adding = std::async(std::launch::async, [&] {
    for (const auto& view : more) calibrator->AddPoints(view);
  });
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(calibrator->ProposePose(Calibrator::MODEL_CLASSIC).centres.size(), 44U);
  }
  adding.get();
}

TEST(AssistantForOnePose, TakesOneSnapshotAndEndsWithoutAComputation) {
  const auto calibrator = unit::CalibratorWith(unit::NoisyViews(6));
  const PoseProposal proposal = calibrator->ProposePose(Calibrator::MODEL_RATIONAL);
  ASSERT_TRUE(calibrator->AskForPose(proposal.centres));
  EXPECT_EQ(calibrator->GetAssistantGoal(), 1);

  const auto& rendered = unit::Rendered();
  world::Renderer renderer(rendered.scene);
  cv::Mat elsewhere = unit::ImageWithGrid();
  std::vector<cv::Point2d> points;
  calibrator->DetectPoints(elsewhere, points, true);
  EXPECT_EQ(calibrator->GetNumberOfRecords(), 6);
  cv::Mat there =
      renderer.Render(world::PoseNearest(rendered.scene.camera, rendered.scene.sheet, proposal.centres));
  calibrator->DetectPoints(there, points, true);
  EXPECT_EQ(calibrator->GetNumberOfRecords(), 7);
  EXPECT_EQ(calibrator->GetAssistantGoal(), -1);
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_READY);
  EXPECT_TRUE(calibrator->GetK().empty());
}

TEST(AssistantForOnePose, RefusesWhatIsNoPicture) {
  const auto calibrator = unit::MakeCalibrator();
  EXPECT_EQ(unit::PrintedBy([&] { EXPECT_FALSE(calibrator->AskForPose({})); }),
            "ERROR : Cannot ask for that pose: 'centres' is not a list of 44 points\n");
  const unit::ScopedLogLevel quiet(0);
  EXPECT_FALSE(calibrator->AskForPose(std::vector<cv::Point2d>(44, {3.0, 4.0})));
  EXPECT_FALSE(calibrator->AskForPose(std::vector<cv::Point2d>(44, {std::nan(""), 4.0})));
  EXPECT_EQ(calibrator->GetAssistantGoal(), -1);
  Calibrator other({5, 7}, unit::UNIT, Calibrator::MONOCULAR, 640, 480);
  const PoseProposal proposal = other.ProposePose(Calibrator::MODEL_CLASSIC);
  EXPECT_EQ(proposal.centres.size(), 35U);
  EXPECT_FALSE(other.AskForPose(proposal.centres));
}

}  // namespace
