/// Views after many steps of any kind: the engine, the disk and the guide agree with lists of them.
#include <gtest/gtest.h>

#include <random>
#include <set>

#include "GuidedViews.h"

namespace {

using guided_test::GuidedViews;

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

}  // namespace
