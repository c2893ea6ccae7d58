/// Processes that end by kill -9 while they store something: what a function returned for is there, nothing
/// is half there.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <random>
#include <stdexcept>

#include "session/DiskSteps.h"
#include "session/SessionScenes.h"
#include "unit/Scopes.h"

using namespace velmora;

namespace {

namespace fs = std::filesystem;

class KilledProcess : public unit::SessionTest {
 protected:
  void SetUp() override { session_.reset(); }

  /// Whether the action came to that step of the disk, at which the child was killed.
  template <typename Action>
  static bool KilledAt(int step, const Action& action) {
    const int result = unit::InChild([&] {
      const auto end = unit::DiskSteps::KillAt(step);
      action();
      return 0;
    });
    EXPECT_TRUE(result == 0 || result == -SIGKILL) << result;
    return result == -SIGKILL;
  }

  /// All that is stored is whole and is the snapshot of the seed that its name tells.
  void ExpectAllWhole() {
    for (const StoredSnapshot& snapshot : session_->Snapshots()) {
      EXPECT_TRUE(unit::Holds(*session_, snapshot.number, SnapshotNamed(snapshot.name)));
    }
    for (const std::string& name : unit::NamesIn(InSession("snapshots")))
      EXPECT_NE(name.front(), '.') << name;
  }

  SessionSnapshot SnapshotNamed(const std::string& name) const {
    return unit::SnapshotOfSeed(std::stoi(name.substr(std::string("view").size())), settings_);
  }
};

/// A child that adds snapshots, seed after seed, and tells each number that Add returned.
class AddingProcess {
 public:
  AddingProcess(const std::string& session, const SessionSettings& settings) {
    int ends[2];
    if (pipe(ends) != 0) throw std::runtime_error("no pipe");
    id_ = fork();
    if (id_ == 0) {
      const auto open = Session::Open(session);
      for (int seed = 1; seed < 1000; ++seed) {
        const int number = open->Add(unit::SnapshotOfSeed(seed, settings));
        if (write(ends[1], &number, sizeof number) != sizeof number) break;
      }
      _exit(1);
    }
    close(ends[1]);
    told_ = ends[0];
  }
  ~AddingProcess() {
    Kill();
    close(told_);
  }
  AddingProcess(const AddingProcess&) = delete;
  AddingProcess& operator=(const AddingProcess&) = delete;

  /// The next number that was told; 0 when there are no more.
  int Next() const {
    int number = 0;
    return read(told_, &number, sizeof number) == sizeof number ? number : 0;
  }
  void Kill() {
    if (id_ <= 0) return;
    kill(id_, SIGKILL);
    waitpid(id_, nullptr, 0);
    id_ = 0;
  }

 private:
  pid_t id_ = 0;
  int told_ = -1;
};

TEST_F(KilledProcess, AtAnyMomentOfAddingLosesNothingThatWasAdded) {
  std::mt19937 random(3);
  size_t before = 0;
  for (int round = 0; round < 40; ++round) {
    std::vector<int> added;
    AddingProcess child(path_, settings_);
    for (int wanted = 1 + round % 4; wanted > 0; --wanted) added.push_back(child.Next());
    // Somewhere in the middle of the next one.
    const auto end = std::chrono::steady_clock::now() +
                     std::chrono::microseconds(std::uniform_int_distribution<int>(0, 4000)(random));
    while (std::chrono::steady_clock::now() < end) {
    }
    child.Kill();
    for (int number = child.Next(); number != 0; number = child.Next()) added.push_back(number);
    ASSERT_GT(added.front(), 0);
    Reopen();
    for (const int number : added) EXPECT_TRUE(session_->Snapshot(number).IsUsed()) << number;
    // What was in its place already may have been added without a word of it.
    const size_t now = session_->Snapshots().size();
    EXPECT_GE(now, before + added.size());
    EXPECT_LE(now, before + added.size() + 1);
    before = now;
    ExpectAllWhole();
    session_.reset();
  }
}

TEST_F(KilledProcess, AtEachStepOfAddingLeavesAWholeSnapshotOrNone) {
  Reopen();
  Add(1);
  session_.reset();
  int step = 1;
  size_t complete = 0;
  while (KilledAt(step, [this] { Session::Open(path_)->Add(unit::SnapshotOfSeed(2, settings_)); })) {
    Reopen();
    ExpectAllWhole();
    const size_t count = session_->Snapshots().size() - 1;
    EXPECT_GE(count, complete);
    EXPECT_LE(count, complete + 1);
    complete = count;
    session_.reset();
    ++step;
  }
  EXPECT_EQ(step, 6);
  EXPECT_EQ(complete, 1U) << "killed at the last step it was in its place";
}

TEST_F(KilledProcess, AtEachStepOfDecidingLeavesTheEarlierDecisionOrTheNew) {
  Reopen();
  Add(1);
  Add(2);
  session_->Exclude({2});
  session_.reset();
  int step = 1;
  for (; KilledAt(step, [this] { Session::Open(path_)->Remove({1}); }); ++step) {
    Reopen();
    EXPECT_TRUE(session_->Warnings().empty());
    EXPECT_EQ(DecisionOn(1), step < 3 ? SnapshotDecision::Used : SnapshotDecision::Removed) << step;
    EXPECT_EQ(DecisionOn(2), SnapshotDecision::Excluded);
    EXPECT_FALSE(fs::exists(InSession(".new-decisions.json")));
    session_->BringBack({1});
    session_.reset();
  }
  EXPECT_EQ(step, 4) << "content, name, folder";
}

TEST_F(KilledProcess, AtEachStepOfCreatingLeavesAWholeSessionOrNone) {
  const std::string other = folder_.File("other.velmora");
  int step = 1;
  for (; KilledAt(step, [&] { Session::Create(other, settings_); }); ++step) {
    if (fs::exists(other)) {
      EXPECT_NO_THROW(Session::Open(other, settings_)->Add(unit::SnapshotOfSeed(1, settings_))) << step;
      fs::remove_all(other);
    }
  }
  EXPECT_EQ(step, 5) << "settings, folder, its name, and that of the folder above it";
  EXPECT_EQ(unit::NamesIn(folder_.Path()), (std::vector<std::string>{"desk.velmora", "other.velmora"}))
      << "what was left behind beside it is swept away";
}

TEST_F(KilledProcess, AtEachStepOfPurgingBringsNothingHalfBack) {
  for (int step = 1; step < 20; ++step) {
    const std::string path = folder_.File(std::to_string(step) + ".velmora");
    auto session = Session::Create(path, settings_);
    for (int seed = 1; seed <= 3; ++seed) session->Add(unit::SnapshotOfSeed(seed, settings_));
    session->Remove({2, 3});
    session.reset();
    const bool killed = KilledAt(step, [&] { Session::Open(path)->Purge(); });
    session = Session::Open(path);
    for (const StoredSnapshot& snapshot : session->Snapshots()) {
      EXPECT_EQ(snapshot.fault, "");
      EXPECT_EQ(snapshot.IsUsed(), snapshot.number == 1);
    }
    EXPECT_EQ(session->Add(unit::SnapshotOfSeed(4, settings_)), 4);
    EXPECT_TRUE(session->Snapshot(4).IsUsed());
    if (killed) continue;
    EXPECT_EQ(session->Snapshots().size(), 2U);
    EXPECT_EQ(step, 8) << "two steps for each snapshot, three for the decisions";
    return;
  }
  FAIL() << "it never came to an end";
}

}  // namespace
