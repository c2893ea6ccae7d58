/// Decisions and their history, beside a model that keeps a copy of everything for each step.
#include "session/Decisions.h"

#include <gtest/gtest.h>

#include <random>
#include <stdexcept>

using namespace velmora;

namespace {

/// Lists of all decisions, one for each moment since the beginning.
class Model {
 public:
  using Lists = std::map<int, std::pair<bool, bool>>;  ///< excluded, removed

  Model() : moments_(1) {}

  const Lists& Now() const { return moments_[now_]; }
  void Become(Lists next) {
    if (next == Now()) return;
    moments_.resize(now_ + 1);
    moments_.push_back(std::move(next));
    ++now_;
  }
  /// What was not there yet stays as removed.
  bool Back() {
    if (now_ == 0) return false;
    const Lists later = moments_[now_--];
    for (const auto& [number, ignored] : later) moments_[now_].try_emplace(number, false, true);
    return true;
  }
  bool Forth() {
    if (now_ + 1 == moments_.size()) return false;
    ++now_;
    return true;
  }

 private:
  std::vector<Lists> moments_;
  size_t now_ = 0;
};

std::vector<int> NumbersOf(const Model::Lists& lists, bool std::pair<bool, bool>::*flag) {
  std::vector<int> numbers;
  for (const auto& [number, state] : lists) {
    if (state.*flag) numbers.push_back(number);
  }
  return numbers;
}

void ExpectSame(const Decisions& decisions, const Model& model) {
  using State = std::pair<bool, bool>;
  ASSERT_EQ(decisions.Excluded(), NumbersOf(model.Now(), &State::first));
  ASSERT_EQ(decisions.Removed(), NumbersOf(model.Now(), &State::second));
  for (const auto& [number, state] : model.Now()) {
    const SnapshotDecision expected = state.second  ? SnapshotDecision::Removed
                                      : state.first ? SnapshotDecision::Excluded
                                                    : SnapshotDecision::Used;
    ASSERT_EQ(decisions.Of(number), expected) << number;
  }
}

/// One operation on one or several snapshots that is allowed, on both.
class RandomUser {
 public:
  explicit RandomUser(unsigned seed) : random_(seed) {}

  void Act(Decisions& decisions, Model& model) {
    const int what = Number(9);
    if (what < 2 || model.Now().empty()) {
      Model::Lists next = model.Now();
      next[++last_] = {false, false};
      model.Become(next);
      decisions.Add(last_);
    } else if (what < 6) {
      Decide(what, decisions, model);
    } else if (what < 8) {
      const bool possible = decisions.CanUndo();
      ASSERT_EQ(decisions.Undo().has_value(), possible);
      ASSERT_EQ(model.Back(), possible);
    } else {
      ASSERT_EQ(decisions.Redo().has_value(), model.Forth());
    }
  }

 private:
  int Number(int below) { return std::uniform_int_distribution<int>(0, below - 1)(random_); }

  void Decide(int what, Decisions& decisions, Model& model) {
    Model::Lists next = model.Now();
    std::vector<int> numbers;
    for (int i = Number(3); i >= 0; --i) {
      const int number = std::next(next.begin(), Number(static_cast<int>(next.size())))->first;
      if (what < 4 && next[number].second) continue;  // refused, see below
      numbers.push_back(number);
      (what < 4 ? next[number].first : next[number].second) = what % 2 == 0;
    }
    if (what == 2) decisions.Exclude(numbers);
    if (what == 3) decisions.Include(numbers);
    if (what == 4) decisions.Remove(numbers);
    if (what == 5) decisions.BringBack(numbers);
    model.Become(next);
  }

  std::mt19937 random_;
  int last_ = 0;
};

TEST(Decisions, EqualAModelOfListsOverThousandsOfRandomOperations) {
  for (unsigned seed = 1; seed <= 5; ++seed) {
    Decisions decisions;
    Model model;
    RandomUser user(seed);
    for (int i = 0; i < 1000; ++i) {
      user.Act(decisions, model);
      ExpectSame(decisions, model);
      if (::testing::Test::HasFatalFailure()) FAIL() << "operation " << i << " of seed " << seed;
    }
    while (decisions.Undo()) ASSERT_TRUE(model.Back());
    ExpectSame(decisions, model);
    EXPECT_FALSE(model.Back()) << "everything since the beginning is undone";
  }
}

TEST(Decisions, TellWhatWasUndoneAndDoneAgain) {
  Decisions decisions;
  decisions.Add(1);
  decisions.Add(2);
  decisions.Exclude({2, 1, 2});
  const auto undone = decisions.Undo();
  ASSERT_TRUE(undone);
  EXPECT_EQ(undone->kind, SessionStep::Kind::Exclude);
  EXPECT_EQ(undone->numbers, (std::vector<int>{1, 2}));
  EXPECT_EQ(decisions.Undo()->kind, SessionStep::Kind::Add);
  EXPECT_EQ(decisions.Of(2), SnapshotDecision::Removed);
  EXPECT_EQ(decisions.Redo()->numbers, std::vector<int>{2});
  EXPECT_EQ(decisions.Of(2), SnapshotDecision::Used);
}

TEST(Decisions, ThatChangeNothingAreNoStep) {
  Decisions decisions({1, 2}, {1}, {});
  EXPECT_FALSE(decisions.Exclude({1}));
  EXPECT_FALSE(decisions.BringBack({1, 2}));
  EXPECT_FALSE(decisions.Remove({}));
  EXPECT_FALSE(decisions.CanUndo());
}

TEST(Decisions, EndWhatCouldBeDoneAgain) {
  Decisions decisions({1, 2}, {}, {});
  decisions.Exclude({1});
  decisions.Undo();
  EXPECT_TRUE(decisions.CanRedo());
  decisions.Remove({2});
  EXPECT_FALSE(decisions.CanRedo());
}

TEST(Decisions, BringBackAnExcludedSnapshotAsExcluded) {
  Decisions decisions({7}, {7}, {});
  decisions.Remove({7});
  EXPECT_EQ(decisions.Of(7), SnapshotDecision::Removed);
  decisions.BringBack({7});
  EXPECT_EQ(decisions.Of(7), SnapshotDecision::Excluded);
}

TEST(Decisions, OnWhatIsNotThereOrRemovedAreRefusedAsAWhole) {
  Decisions decisions({1, 2}, {}, {2});
  EXPECT_THROW(decisions.Exclude({1, 3}), std::invalid_argument);
  EXPECT_THROW(decisions.Exclude({1, 2}), std::invalid_argument);
  EXPECT_THROW(decisions.Include({2}), std::invalid_argument);
  EXPECT_THROW(decisions.Remove({1, 9}), std::invalid_argument);
  EXPECT_EQ(decisions.Of(1), SnapshotDecision::Used);
  EXPECT_FALSE(decisions.CanUndo());
}

TEST(Decisions, ForgetWhatIsPurgedAndAllThatWasDone) {
  Decisions decisions({1, 2}, {}, {});
  decisions.Remove({2});
  decisions.Purge({2});
  EXPECT_TRUE(decisions.Removed().empty());
  EXPECT_FALSE(decisions.CanUndo());
  EXPECT_THROW(decisions.BringBack({2}), std::invalid_argument);
}

TEST(Decisions, OnSnapshotsThatAreGoneAreForgotten) {
  const Decisions decisions({2}, {1, 2}, {3});
  EXPECT_EQ(decisions.Excluded(), std::vector<int>{2});
  EXPECT_TRUE(decisions.Removed().empty());
}

}  // namespace
