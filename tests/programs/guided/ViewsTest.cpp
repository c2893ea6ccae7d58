/// Views in the engine, on the disk and in the guide, which agree after every step.
#include "guided/Views.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "GuidedViews.h"
#include "Matchers.h"
#include "session/DiskSteps.h"

namespace {

using guided::Collector;
using guided::Views;
using guided_test::GuidedViews;
using velmora::Guide;
using velmora::Session;

TEST_F(GuidedViews, KeepsWhatWasSearchedEverywhere) {
  EXPECT_FALSE(views_->CanTakeBack());
  EXPECT_EQ(KeepTarget(), "");
  ExpectAgreement();
  EXPECT_EQ(guide_.Reached(), std::vector<int>{1});
  EXPECT_EQ(guide_.TargetNumber(), 2);
  EXPECT_TRUE(views_->CanTakeBack());
  EXPECT_SAME_MAT(session_->LoadImage(1, 0), unit::Rendered().images[0]);
  EXPECT_EQ(Keep(9, false), "");
  ExpectAgreement();
  EXPECT_EQ(guide_.Reached(), std::vector<int>{1}) << "by hand";
}

TEST_F(GuidedViews, HaveTheNamesOfTheirPosesOrAreCountedByHand) {
  EXPECT_EQ(KeepTarget(), "");
  EXPECT_EQ(Keep(8, false), "");
  guide_.Skip();
  EXPECT_EQ(KeepTarget(), "");
  EXPECT_EQ(Keep(9, false), "");
  EXPECT_EQ(Names(), (Words{"pose 1", "by hand 1", "pose 3", "by hand 2"}));
  views_->TakeBack();
  EXPECT_EQ(Keep(10, false), "");
  EXPECT_EQ(Names(), (Words{"pose 1", "by hand 1", "pose 3", "by hand 2"}));
  StartAgain();
  EXPECT_EQ(Keep(11, false), "");
  EXPECT_EQ(Names().back(), "by hand 3");
}

TEST_F(GuidedViews, OfPosesThatAreChosenOneAtATimeAreCounted) {
  const auto& centres = unit::Rendered().centres;
  for (size_t i = 0; i < 3; ++i) {
    guide_.SetTarget(centres[i]);
    EXPECT_EQ(Keep(i, true), "");
  }
  EXPECT_EQ(Names(), (Words{"pose 1", "pose 2", "pose 3"}));
  ExpectAgreement();
}

TEST_F(GuidedViews, AreNotKeptWithoutAGrid) {
  collector_->Search({unit::ImageWithoutGrid()});
  EXPECT_EQ(views_->Keep(true), "Not taken: most of the circles must be in view.");
  ExpectAgreement();
  EXPECT_EQ(guide_.TargetNumber(), 1);
  EXPECT_EQ(Keep(0, true), "");
  EXPECT_NE(views_->Keep(false), "") << "the same search again";
  ExpectAgreement();
  EXPECT_EQ(views_->Count(), 1U);
}

TEST_F(GuidedViews, AreTakenBackOneAfterTheOther) {
  for (int i = 0; i < 3; ++i) EXPECT_EQ(KeepTarget(), "");
  EXPECT_EQ(Keep(9, false), "");
  EXPECT_EQ(views_->TakeBack(), "View 4 taken back");
  ExpectAgreement();
  EXPECT_EQ(guide_.Reached(), (std::vector<int>{1, 2, 3}));
  EXPECT_EQ(views_->TakeBack(), "View 3 taken back");
  ExpectAgreement();
  EXPECT_EQ(guide_.Reached(), (std::vector<int>{1, 2}));
  EXPECT_EQ(guide_.TargetNumber(), 3) << "asked for again";
  EXPECT_EQ(views_->TakeBack(), "View 2 taken back");
  EXPECT_EQ(views_->TakeBack(), "View 1 taken back");
  EXPECT_EQ(views_->Count(), 0U);
  EXPECT_FALSE(views_->CanTakeBack());
  EXPECT_EQ(views_->TakeBack(), "There is no view to take back");
  ExpectAgreement();
}

TEST_F(GuidedViews, OfAnEarlierTimeAreTakenBackOneAfterTheOtherToo) {
  for (int i = 0; i < 3; ++i) EXPECT_EQ(KeepTarget(), "");
  StartAgain();
  EXPECT_EQ(KeepTarget(), "");
  for (int view = 4; view > 0; --view) {
    EXPECT_TRUE(views_->CanTakeBack());
    EXPECT_EQ(views_->TakeBack(), "View " + std::to_string(view) + " taken back");
    ExpectAgreement();
    EXPECT_EQ(views_->Count(), static_cast<size_t>(view) - 1);
    EXPECT_EQ(guide_.TargetNumber(), view);
  }
  EXPECT_FALSE(views_->CanTakeBack());
  EXPECT_EQ(views_->TakeBack(), "There is no view to take back");
}

TEST_F(GuidedViews, OfAnEarlierTimeThatWereTakenBackStaySoWhenLaterOnesAre) {
  for (int i = 0; i < 3; ++i) EXPECT_EQ(KeepTarget(), "");
  StartAgain();
  EXPECT_EQ(views_->TakeBack(), "View 3 taken back");
  EXPECT_EQ(Keep(9, false), "");
  EXPECT_EQ(views_->TakeBack(), "View 3 taken back");
  EXPECT_EQ(Names(), (Words{"pose 1", "pose 2"}));
  EXPECT_EQ(views_->TakeBack(), "View 2 taken back");
  EXPECT_EQ(Names(), Words{"pose 1"});
  ExpectAgreement();
}

TEST_F(GuidedViews, AreSetAsideToBeginAgainAndComeBack) {
  for (int i = 0; i < 3; ++i) EXPECT_EQ(KeepTarget(), "");
  EXPECT_EQ(Keep(9, false), "");
  EXPECT_EQ(views_->BeginAgain(), "");
  ExpectAgreement();
  EXPECT_EQ(views_->Count(), 0U);
  EXPECT_EQ(guide_.TargetNumber(), 1);
  EXPECT_TRUE(guide_.Reached().empty());
  EXPECT_TRUE(views_->CanTakeBack());
  EXPECT_EQ(views_->TakeBack(), "As it was before: 4 views");
  ExpectAgreement();
  EXPECT_EQ(Names(), (Words{"pose 1", "pose 2", "pose 3", "by hand 1"}));
  EXPECT_EQ(guide_.Reached(), (std::vector<int>{1, 2, 3}));
  EXPECT_EQ(views_->TakeBack(), "View 4 taken back");
}

TEST_F(GuidedViews, BeginAgainWithoutViewsAsWell) {
  EXPECT_EQ(views_->BeginAgain(), "");
  EXPECT_FALSE(views_->CanTakeBack());
  ExpectAgreement();
}

TEST_F(GuidedViews, AreTakenUpWithTheTargetsThatTheyReached) {
  EXPECT_EQ(KeepTarget(), "");
  guide_.Skip();
  EXPECT_EQ(KeepTarget(), "");
  EXPECT_EQ(Keep(9, false), "");
  const Words before = Names();
  StartAgain();
  ExpectAgreement();
  EXPECT_EQ(Names(), before);
  EXPECT_EQ(guide_.Reached(), (std::vector<int>{1, 3}));
  EXPECT_EQ(guide_.TargetNumber(), 2);
  views_->Resume();  // again
  ExpectAgreement();
  EXPECT_EQ(guide_.Reached(), (std::vector<int>{1, 3}));
}

TEST_F(GuidedViews, ThatAreSetAsideElsewhereAreNotTakenUp) {
  for (int i = 0; i < 3; ++i) EXPECT_EQ(KeepTarget(), "");
  session_->Exclude({2});
  StartAgain();
  ExpectAgreement();
  EXPECT_EQ(Names(), (Words{"pose 1", "pose 3"}));
  EXPECT_EQ(guide_.TargetNumber(), 2);
}

TEST_F(GuidedViews, AreNowhereWhenTheDiskRefuses) {
  EXPECT_EQ(KeepTarget(), "");
  for (int step = 1; step < 4; ++step) {
    const auto full = unit::DiskSteps::FailAt(step, ENOSPC);
    EXPECT_EQ(KeepTarget(),
              "Not taken. Cannot store the snapshot in \"" + path_ + "/snapshots\": the disk is full.");
    EXPECT_TRUE(full.Came()) << step;
    ExpectAgreement();
    EXPECT_EQ(views_->Count(), 1U);
    EXPECT_EQ(guide_.TargetNumber(), 2);
  }
  EXPECT_EQ(KeepTarget(), "") << "with room again";
  ExpectAgreement();
  StartAgain();
  EXPECT_EQ(Names(), (Words{"pose 1", "pose 2"}));
}

TEST_F(GuidedViews, StayWhenTheDiskRefusesToTakeThemBack) {
  for (int i = 0; i < 2; ++i) EXPECT_EQ(KeepTarget(), "");
  const std::string refusal = "Cannot store the decision in \"" + path_ + "\": the disk is full";
  const auto refuse = [&](const std::string& done, const std::string& expected) {
    EXPECT_EQ(done, expected);
    ExpectAgreement();
    EXPECT_EQ(Names(), (Words{"pose 1", "pose 2"}));
    EXPECT_EQ(guide_.Reached(), (std::vector<int>{1, 2}));
  };
  {
    const auto full = unit::DiskSteps::FailAt(1, ENOSPC);
    refuse(views_->TakeBack(), "Not taken back. " + refusal);
  }
  {
    const auto full = unit::DiskSteps::FailAt(1, ENOSPC);
    refuse(views_->BeginAgain(), "Not begun again. " + refusal + ".");
  }
  StartAgain();
  {
    const auto full = unit::DiskSteps::FailAt(1, ENOSPC);
    refuse(views_->TakeBack(), "Not taken back. " + refusal);
  }
  EXPECT_EQ(views_->TakeBack(), "View 2 taken back") << "with room again";
  ExpectAgreement();
}

TEST(GuidedPairViews, AreKeptWithBothImages) {
  const support::TemporaryFolder folder;
  velmora::SessionSettings settings;
  settings.grid = unit::GRID;
  settings.unit = static_cast<double>(unit::UNIT);
  settings.imageSizes = {unit::FRAME, unit::FRAME};
  const auto session = Session::Create(folder.File("rig.velmora"), settings);
  Collector collector(guided_test::SettingsOfImages(), 2);
  Guide guide({unit::GRID, unit::FRAME, 2});
  const unit::ImagePair pair = unit::PairWithGrid();
  guide.SetTargets({pair.leftCentres, unit::PairWithGrid(1).leftCentres});
  Views views(collector, *session, guide);
  collector.Search({pair.left, pair.right});
  EXPECT_EQ(views.Keep(true), "");
  EXPECT_SAME_MAT(session->LoadImage(1, 0), pair.left);
  EXPECT_SAME_MAT(session->LoadImage(1, 1), pair.right);
  Collector other(guided_test::SettingsOfImages(), 2);
  Views resumed(other, *session, guide);
  resumed.Resume();
  ASSERT_EQ(resumed.Count(), 1U);
  EXPECT_EQ(guide.Reached(), std::vector<int>{1});
  EXPECT_EQ(resumed.All()[0].snapshot.cameras.at(1).centres, views.All()[0].snapshot.cameras.at(1).centres);
}

TEST(GuidedPairViews, OfOneCameraAloneAreNotTakenUp) {
  const support::TemporaryFolder folder;
  velmora::SessionSettings settings;
  settings.grid = unit::GRID;
  settings.unit = static_cast<double>(unit::UNIT);
  settings.imageSizes = {unit::FRAME, unit::FRAME};
  const auto session = Session::Create(folder.File("rig.velmora"), settings);
  const auto pairs = unit::NoisyPairs(2);
  velmora::SessionSnapshot alone;
  alone.observations = {{pairs.left[0]}, {}};
  velmora::SessionSnapshot both;
  both.observations = {{pairs.left[1]}, {pairs.right[1]}};
  both.name = "both";
  session->Add(alone);
  session->Add(both);
  Collector collector(guided_test::SettingsOfPoints(), 2);
  Guide guide({unit::GRID, unit::FRAME, 2});
  Views views(collector, *session, guide);
  views.Resume();
  ASSERT_EQ(views.Count(), 1U);
  EXPECT_EQ(views.All()[0].name, "both");
  EXPECT_EQ(views.All()[0].number, 2);
  EXPECT_EQ(collector.Count(), 1);
}

}  // namespace
