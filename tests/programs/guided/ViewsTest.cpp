/// Views in the engine, on the disk and in the guide, which agree after every step.
#include "guided/Views.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <random>
#include <set>

#include "GuidedScenes.h"
#include "Matchers.h"
#include "TemporaryFolder.h"
#include "session/DiskSteps.h"

namespace {

using guided::Collector;
using guided::NamedSnapshot;
using guided::Views;
using velmora::Guide;
using velmora::Session;

/// A session of rendered views; those of the first eight images are the guide's targets.
class GuidedViews : public ::testing::Test {
 protected:
  static constexpr size_t TARGETS = 8;

  GuidedViews() {
    const auto& centres = unit::Rendered().centres;
    guide_.SetTargets({centres.begin(), centres.begin() + TARGETS});
    velmora::SessionSettings settings;
    settings.grid = unit::GRID;
    settings.unit = static_cast<double>(unit::UNIT);
    settings.imageSizes = {unit::FRAME};
    session_ = Session::Create(path_, settings);
    Begin();
  }

  /// As a program does that is started on the session.
  void Begin() {
    collector_ = std::make_unique<Collector>(guided_test::SettingsOfImages(), 1);
    views_ = std::make_unique<Views>(*collector_, *session_, guide_);
  }
  void StartAgain() {
    views_.reset();
    session_.reset();
    session_ = Session::Open(path_);
    Begin();
    views_->Resume();
  }

  std::string Keep(size_t image, bool reachesTarget) {
    collector_->Search({unit::Rendered().images.at(image)});
    return views_->Keep(reachesTarget);
  }
  /// At the target to reach now.
  std::string KeepTarget() { return Keep(static_cast<size_t>(guide_.TargetNumber()) - 1, true); }

  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const NamedSnapshot& view : views_->All()) names.push_back(view.name);
    return names;
  }
  using Words = std::vector<std::string>;

  /// The four of them hold the same views.
  void ExpectAgreement() {
    std::vector<velmora::StoredSnapshot> used;
    for (const auto& stored : session_->Snapshots()) {
      if (stored.IsUsed()) used.push_back(stored);
    }
    const auto& all = views_->All();
    ASSERT_EQ(all.size(), used.size());
    EXPECT_EQ(views_->Count(), used.size());
    EXPECT_EQ(collector_->Count(), static_cast<int>(used.size()));
    EXPECT_EQ(guide_.Views(), static_cast<int>(used.size()));
    for (size_t i = 0; i < used.size(); ++i) {
      EXPECT_EQ(all[i].number, used[i].number);
      EXPECT_EQ(all[i].name, used[i].name);
      EXPECT_EQ(all[i].snapshot.cameras.at(0).centres, used[i].observations.at(0).centres);
      EXPECT_EQ(all[i].snapshot.cameras.at(0).deviations, used[i].observations.at(0).deviations);
      EXPECT_TRUE(all[i].snapshot.cameras.at(0).frame.empty()) << "images are on the disk";
    }
    if (used.empty()) return;
    EXPECT_EQ(collector_->Last().cameras.at(0).centres, all.back().snapshot.cameras.at(0).centres);
  }

  support::TemporaryFolder folder_;
  const std::string path_ = folder_.File("desk.velmora");
  Guide guide_{{unit::GRID, unit::FRAME}};
  std::unique_ptr<Session> session_;
  std::unique_ptr<Collector> collector_;
  std::unique_ptr<Views> views_;
};

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

/// What the views should be: lists of them, and the earlier lists.
class ListModel {
 public:
  struct View {
    size_t image;
    std::string name;
    int target;  ///< that it reached; 0: none
    bool operator==(const View& other) const { return image == other.image && name == other.name; }
  };

  explicit ListModel(int targets) : targets_(targets) {}

  const std::vector<View>& Now() const { return now_; }
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const View& view : now_) names.push_back(view.name);
    return names;
  }
  std::vector<int> Reached() const {
    std::set<int> reached;
    for (const View& view : now_) reached.insert(view.target);
    reached.erase(0);
    return {reached.begin(), reached.end()};
  }
  bool CanTakeBack() const { return !now_.empty() || !before_.empty(); }

  void Keep(size_t image, int target) {
    before_.push_back(now_);
    int number = target;
    if (target == 0) {
      number = 1;
      for (const View& view : now_) number += view.name.compare(0, 2, "by") == 0 ? 1 : 0;
    }
    now_.push_back({image, (target > 0 ? "pose " : "by hand ") + std::to_string(number), target});
  }
  void TakeBack() {
    if (before_.empty()) {
      if (!now_.empty()) now_.pop_back();
      Match();
      return;
    }
    const std::vector<View> then = before_.back();
    before_.pop_back();
    const bool addedOne = now_.size() == then.size() + 1;
    if (addedOne) {
      now_.pop_back();
    } else {
      now_ = then;
      Match();
    }
  }
  void BeginAgain() {
    if (!now_.empty()) before_.push_back(now_);
    now_.clear();
  }
  void Resume() { Match(); }
  void StartAgain() {
    before_.clear();
    Match();
  }

 private:
  /// Each view that is at a target counts for it, the first one of each.
  void Match() {
    std::set<int> reached;
    for (View& view : now_) {
      const int target = static_cast<int>(view.image) + 1;
      view.target = target <= targets_ && reached.insert(target).second ? target : 0;
    }
  }

  const int targets_;
  std::vector<View> now_;
  std::vector<std::vector<View>> before_;
};

TEST_F(GuidedViews, AgreeWithListsAfterTwoHundredStepsOfAnyKind) {
  ListModel model(TARGETS);
  std::mt19937 random(11);
  const auto below = [&random](unsigned count) { return static_cast<size_t>(random() % count); };
  for (int step = 0; step < 200; ++step) {
    const size_t what = below(20);
    SCOPED_TRACE(testing::Message() << "step " << step << " of kind " << what);
    if (what < 7 && guide_.TargetNumber() > 0) {
      const int target = guide_.TargetNumber();
      ASSERT_EQ(KeepTarget(), "");
      model.Keep(static_cast<size_t>(target) - 1, target);
    } else if (what < 11) {
      const size_t image = below(12);
      ASSERT_EQ(Keep(image, false), "");
      model.Keep(image, 0);
    } else if (what < 17) {
      EXPECT_EQ(views_->CanTakeBack(), model.CanTakeBack());
      views_->TakeBack();
      model.TakeBack();
    } else if (what == 17) {
      ASSERT_EQ(views_->BeginAgain(), "");
      model.BeginAgain();
    } else if (what == 18) {
      views_->Resume();
      model.Resume();
    } else {
      StartAgain();
      model.StartAgain();
    }
    ExpectAgreement();
    ASSERT_EQ(Names(), model.Names());
    ASSERT_EQ(guide_.Reached(), model.Reached());
    ASSERT_FALSE(HasFailure());
  }
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
