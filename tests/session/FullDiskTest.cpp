/// Disks that refuse: full ones, limits, folders that can only be read. Nothing that was there is lost.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "session/DiskSteps.h"
#include "session/SessionScenes.h"
#include "unit/Scopes.h"

using namespace velmora;
using unit::Raised;

namespace {

namespace fs = std::filesystem;

constexpr int CANNOT_MOUNT = 77;

class RefusingDisk : public unit::SessionTest {
 protected:
  std::string StoringFails(const std::string& reason) const {
    return "Cannot store the snapshot in \"" + InSession("snapshots") + "\": " + reason + ".";
  }
  std::string RefusalOfAdding(int seed) {
    return Raised<std::runtime_error>([&] { Add(seed); });
  }
  static int Result() { return ::testing::Test::HasFailure() ? 1 : 0; }
};

TEST_F(RefusingDisk, AtAnyStepOfAddingLeavesWhatWasThere) {
  Add(1);
  const auto before = session_->Snapshots();
  int step = 1;
  for (;; ++step) {
    const auto full = unit::DiskSteps::FailAt(step, ENOSPC);
    const std::string refusal = RefusalOfAdding(2);
    if (!full.Came()) break;
    EXPECT_EQ(refusal, StoringFails("the disk is full")) << step;
    EXPECT_TRUE(unit::Same(session_->Snapshots(), before)) << step;
    EXPECT_EQ(unit::NamesIn(InSession("snapshots")), std::vector<std::string>{"000001"}) << step;
  }
  EXPECT_EQ(step, 6) << "image, document, folder, its name, and that of the folder above it";
  EXPECT_EQ(session_->Snapshots().size(), 2U);
  Reopen();
  EXPECT_EQ(session_->Snapshots().size(), 2U);
}

TEST_F(RefusingDisk, AtAnyStepOfDecidingLeavesTheDecision) {
  Add(1);
  session_->Exclude({1});
  for (int step = 1; step <= 2; ++step) {
    const auto full = unit::DiskSteps::FailAt(step, EIO);
    const std::string refusal = "Cannot store the decision in \"" + path_ + "\": the disk reports an error.";
    EXPECT_EQ(Raised<std::runtime_error>([&] { session_->Include({1}); }), refusal);
    EXPECT_TRUE(full.Came());
    EXPECT_EQ(DecisionOn(1), SnapshotDecision::Excluded);
  }
  {
    const auto full = unit::DiskSteps::FailAt(1, ENOSPC);
    EXPECT_THROW(session_->Undo(), std::runtime_error);
  }
  EXPECT_EQ(DecisionOn(1), SnapshotDecision::Excluded);
  EXPECT_EQ(session_->Undo()->kind, SessionStep::Kind::Exclude) << "what could not be undone still can";
  EXPECT_EQ(DecisionOn(1), SnapshotDecision::Used);
  EXPECT_FALSE(fs::exists(InSession(".new-decisions.json")));
}

TEST_F(RefusingDisk, ThatDoesNotLetGoOfASnapshotKeepsItRemoved) {
  Add(1);
  Add(2);
  session_->Remove({1, 2});
  {
    const auto broken = unit::DiskSteps::FailAt(1, EIO);
    EXPECT_THROW(session_->Purge(), std::runtime_error);
  }
  EXPECT_EQ(session_->Snapshots().size(), 2U);
  EXPECT_EQ(DecisionOn(1), SnapshotDecision::Removed);
  EXPECT_EQ(session_->Purge(), 2);
}

TEST_F(RefusingDisk, WithALimitOfSizesRefusesASnapshotAndTakesTheNext) {
  Add(1);
  EXPECT_EQ(unit::InChild([this] {
              signal(SIGXFSZ, SIG_IGN);
              rlimit limit{};
              getrlimit(RLIMIT_FSIZE, &limit);
              const rlimit small{1500, limit.rlim_max};
              setrlimit(RLIMIT_FSIZE, &small);
              EXPECT_EQ(RefusalOfAdding(2), StoringFails("a file would become larger than is allowed"));
              setrlimit(RLIMIT_FSIZE, &limit);
              EXPECT_EQ(unit::NamesIn(InSession("snapshots")), std::vector<std::string>{"000001"});
              EXPECT_EQ(RefusalOfAdding(3), "");
              return Result();
            }),
            0);
  Reopen();
  EXPECT_TRUE(unit::Holds(*session_, 1, unit::SnapshotOfSeed(1, settings_)));
  EXPECT_TRUE(unit::Holds(*session_, 3, unit::SnapshotOfSeed(3, settings_)));
}

/// What is done on a disk of 200 kB; seen by this process alone.
int OnASmallDisk(const std::string& folder, const SessionSettings& settings) {
  if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
      mount("velmora", folder.c_str(), "tmpfs", 0, "size=200k") != 0) {
    return CANNOT_MOUNT;
  }
  support::WriteText(folder + "/other", std::string(20000, 'x'));
  const std::string path = folder + "/desk.velmora";
  auto session = Session::Create(path, settings);
  EXPECT_EQ(session->DiskWarning(2), "");
  EXPECT_NE(session->DiskWarning(1000).find("Only 0 MB are free on the session's disk"), std::string::npos);
  int stored = 0;
  std::string refusal;
  for (; refusal.empty() && stored < 1000; ++stored) {
    refusal = Raised<std::runtime_error>([&] { session->Add(unit::SnapshotOfSeed(stored + 1, settings)); });
  }
  --stored;
  EXPECT_EQ(refusal, "Cannot store the snapshot in \"" + path + "/snapshots\": the disk is full.");
  EXPECT_GT(stored, 3);
  EXPECT_EQ(session->Snapshots().size(), static_cast<size_t>(stored));
  { std::ofstream(folder + "/rest") << std::string(200000, 'x'); }
  EXPECT_EQ(session->BytesFree(), 0U);
  EXPECT_NE(session->DiskWarning(1), "");
  EXPECT_THROW(session->Exclude({1}), std::runtime_error);
  EXPECT_THROW(Session::Create(folder + "/other.velmora", settings), std::runtime_error);
  session.reset();
  session = Session::Open(path);
  for (int number = 1; number <= stored; ++number) {
    EXPECT_TRUE(unit::Holds(*session, number, unit::SnapshotOfSeed(number, settings)));
  }
  fs::remove(folder + "/other");
  session->Remove({1, 2});
  EXPECT_EQ(session->Purge(), 2);
  EXPECT_GT(session->Add(unit::SnapshotOfSeed(1, settings)), stored);
  return ::testing::Test::HasFailure() ? 1 : 0;
}

TEST_F(RefusingDisk, ThatIsReallyFullKeepsWhatItHas) {
  const std::string folder = folder_.File("small");
  fs::create_directory(folder);
  const int result = unit::InChild([&] {
    try {
      return OnASmallDisk(folder, settings_);
    } catch (const std::exception& failure) {
      ADD_FAILURE() << failure.what();
      return 1;
    }
  });
  if (result == CANNOT_MOUNT) GTEST_SKIP() << "only the superuser can mount a small disk";
  EXPECT_EQ(result, 0);
}

TEST_F(RefusingDisk, WhereAFileTookTheFoldersPlaceSaysSo) {
  Add(1);
  fs::rename(InSession("snapshots"), InSession("kept"));
  support::WriteText(InSession("snapshots"), "a file");
  EXPECT_EQ(RefusalOfAdding(2), StoringFails("a part of its path is no folder"));
  EXPECT_EQ(session_->Snapshots().size(), 1U);
  fs::remove(InSession("snapshots"));
  EXPECT_EQ(RefusalOfAdding(2), "") << "a folder that is missing is made";
  EXPECT_TRUE(unit::Holds(*session_, 3, unit::SnapshotOfSeed(2, settings_)));
}

TEST_F(RefusingDisk, ThatCanOnlyBeReadIsReadByAUserWithoutRights) {
  Add(1);
  session_->Exclude({1});
  session_.reset();
  const int result = unit::InChild([this] {
    constexpr uid_t ANYBODY = 65534;
    chmod(folder_.Path().c_str(), 0755);
    for (const char* name : {"", "/snapshots", "/snapshots/000001"}) chmod((path_ + name).c_str(), 0555);
    if (geteuid() == 0 &&
        (setresgid(ANYBODY, ANYBODY, ANYBODY) != 0 || setresuid(ANYBODY, ANYBODY, ANYBODY) != 0)) {
      return 100;
    }
    Reopen();
    EXPECT_TRUE(unit::Holds(*session_, 1, unit::SnapshotOfSeed(1, settings_)));
    EXPECT_EQ(DecisionOn(1), SnapshotDecision::Excluded);
    EXPECT_EQ(RefusalOfAdding(2), StoringFails("permission is denied"));
    EXPECT_THROW(session_->Include({1}), std::runtime_error);
    EXPECT_EQ(DecisionOn(1), SnapshotDecision::Excluded);
    EXPECT_EQ(session_->Snapshots().size(), 1U);
    return Result();
  });
  for (const char* name : {"", "/snapshots", "/snapshots/000001"}) chmod((path_ + name).c_str(), 0755);
  EXPECT_EQ(result, 0);
}

}  // namespace
