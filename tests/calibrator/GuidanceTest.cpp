/// Guidance from pose to pose, without a calibrator.
#include "calibrator/Guidance.h"

#include <gtest/gtest.h>

#include "CalibAssistant.h"
#include "TemporaryFolder.h"
#include "calibrator/Snapshots.h"
#include "unit/Collection.h"
#include "unit/Scopes.h"

using namespace velmora;

namespace {

class Guiding : public ::testing::Test {
 protected:
  /// Asks for the true centres of the first views, one after the other.
  void StartWith(size_t poses) {
    const unit::PointLists& centres = unit::Rendered().centres;
    const std::string path = folder_.File("model.json");
    unit::WriteAssistantModel(path, {centres.begin(), centres.begin() + static_cast<std::ptrdiff_t>(poses)});
    guidance_.Start(path);
  }
  Guidance::Step Assess(size_t view, size_t count) {
    return guidance_.Assess(guidance_.Current(), unit::Rendered().centres[view], [&] {
      ++asked_;
      return count;
    });
  }

  support::TemporaryFolder folder_;
  Guidance guidance_{unit::GRID, unit::FRAME};
  int asked_ = 0;
};

TEST_F(Guiding, HasNoGoalBeforeItStartsAndAfterItsEnd) {
  EXPECT_EQ(guidance_.Goal(), -1);
  EXPECT_EQ(guidance_.Current(), nullptr);
  StartWith(3);
  EXPECT_EQ(guidance_.Goal(), 3);
  guidance_.End();
  EXPECT_EQ(guidance_.Goal(), -1);
}

TEST_F(Guiding, TakesNothingElsewhere) {
  StartWith(3);
  EXPECT_EQ(Assess(1, 1), Guidance::Step::Elsewhere);
  EXPECT_EQ(asked_, 0);
}

TEST_F(Guiding, MovesOnWithEachSnapshot) {
  StartWith(3);
  EXPECT_EQ(Assess(0, 1), Guidance::Step::Taken);
  EXPECT_EQ(Assess(0, 2), Guidance::Step::Elsewhere);
  EXPECT_EQ(Assess(1, 2), Guidance::Step::Taken);
  EXPECT_EQ(asked_, 2);
}

TEST_F(Guiding, AsksForTheSamePoseAgainWhenItsSnapshotIsRefused) {
  StartWith(3);
  EXPECT_EQ(Assess(0, 0), Guidance::Step::Elsewhere);
  EXPECT_EQ(Assess(0, 1), Guidance::Step::Taken);
}

TEST_F(Guiding, IsFinishedAfterTheLastPoseAndEndsWithEnoughSnapshots) {
  StartWith(1);
  EXPECT_EQ(Assess(0, Snapshots::ENOUGH - 1), Guidance::Step::Finished);
  EXPECT_NE(guidance_.Current(), nullptr);
  EXPECT_EQ(Assess(0, Snapshots::ENOUGH), Guidance::Step::Finished);
  EXPECT_EQ(guidance_.Current(), nullptr);
}

TEST_F(Guiding, EndsAfterASinglePoseWithoutAComputation) {
  ASSERT_TRUE(guidance_.StartAt(unit::Rendered().centres[2]));
  EXPECT_EQ(guidance_.Goal(), 1);
  EXPECT_EQ(Assess(2, 1), Guidance::Step::Taken);
  EXPECT_EQ(guidance_.Current(), nullptr);
}

TEST_F(Guiding, StaysAsItIsWhenAPoseIsNone) {
  StartWith(3);
  EXPECT_NE(unit::PrintedBy([&] { EXPECT_FALSE(guidance_.StartAt({{1, 1}})); }), "");
  EXPECT_EQ(guidance_.Goal(), 3);
}

TEST_F(Guiding, LeavesAnAssistantThatWasReplacedMeanwhileAlone) {
  StartWith(1);
  const auto first = guidance_.Current();
  StartWith(2);
  const auto taken = [] { return Snapshots::ENOUGH; };
  EXPECT_EQ(guidance_.Assess(first, unit::Rendered().centres[0], taken), Guidance::Step::Finished);
  EXPECT_EQ(guidance_.Goal(), 2);
}

}  // namespace
