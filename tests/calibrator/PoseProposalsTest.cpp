/// Proposals of poses from lists of snapshots.
#include "calibrator/PoseProposals.h"

#include <gtest/gtest.h>

#include "model/LensModel.h"
#include "model/TargetGeometry.h"
#include "unit/Collection.h"

using namespace velmora;

namespace {

SnapshotList ListOf(const unit::PointLists& views) {
  SnapshotList list;
  list.cameras.resize(1);
  list.target.assign(views.size(), MakeObjectTemplate(unit::GRID, unit::UNIT));
  list.cameras[0].points = views;
  list.cameras[0].frames.resize(views.size());
  list.cameras[0].weights.resize(views.size());
  return list;
}

ProposalSettings Settings(int finder = FINDER_ROBUST) {
  ProposalSettings settings;
  settings.target = MakeObjectTemplate(unit::GRID, unit::UNIT);
  settings.imageSize = unit::FRAME;
  settings.model = MODEL_CLASSIC;
  settings.finder = finder;
  return settings;
}

void ExpectInTheImage(const PoseProposal& proposal) {
  ASSERT_EQ(proposal.centres.size(), 44U);
  for (const cv::Point2d& centre : proposal.centres) {
    EXPECT_TRUE(cv::Rect2d(0, 0, unit::FRAME.width, unit::FRAME.height).contains(centre)) << centre;
  }
}

TEST(PoseProposals, NeedNoSnapshot) {
  ExpectInTheImage(ProposePose(ListOf({}), Settings()));
}

TEST(PoseProposals, PromiseLessUncertaintyThanThereIs) {
  const PoseProposal proposal = ProposePose(ListOf(unit::NoisyViews(6)), Settings());
  ExpectInTheImage(proposal);
  EXPECT_GT(proposal.deviation, 0.0);
  EXPECT_LT(proposal.deviationThen, proposal.deviation);
}

TEST(PoseProposals, AreTheSameForTheSameSnapshots) {
  const SnapshotList list = ListOf(unit::NoisyViews(5));
  EXPECT_EQ(ProposePose(list, Settings()).centres, ProposePose(list, Settings()).centres);
}

// OpenCV's search passes over discs of more than 5000 pixels: 37 pixels of radius, neighbours five radii
// apart.
TEST(PoseProposals, KeepDiscsSmallForTheStandardSearch) {
  const PoseProposal proposal = ProposePose(ListOf(unit::NoisyViews(6)), Settings(FINDER_STANDARD));
  for (size_t i = 0; i + 1 < 4; ++i) {
    EXPECT_LE(cv::norm(proposal.centres[i + 1] - proposal.centres[i]), 5.0 * 37.0);
  }
}

}  // namespace
