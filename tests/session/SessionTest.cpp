/// Sessions as programs use them: add, decide, undo, open again.
#include "velmora/Session.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <climits>
#include <filesystem>
#include <random>
#include <set>
#include <stdexcept>

#include "session/SessionScenes.h"
#include "unit/Scopes.h"
#include "unit/ThreadGroup.h"

using namespace velmora;
using unit::Raised;

namespace {

namespace fs = std::filesystem;

class StoredSession : public unit::SessionTest {};

TEST_F(StoredSession, HoldsWhatWasAddedBitByBitWhenItIsOpenedAgain) {
  for (int seed = 1; seed <= 4; ++seed) EXPECT_EQ(Add(seed), seed);
  Reopen();
  ASSERT_EQ(session_->Snapshots().size(), 4U);
  for (int seed = 1; seed <= 4; ++seed) {
    EXPECT_TRUE(unit::Holds(*session_, seed, unit::SnapshotOfSeed(seed, settings_)));
  }
}

TEST(StoredSessions, HoldOneTwoOrThreeCameras) {
  const support::TemporaryFolder folder;
  for (size_t cameras = 1; cameras <= 3; ++cameras) {
    const SessionSettings settings = unit::SettingsOfCameras(cameras);
    const std::string path = folder.File(std::to_string(cameras) + ".velmora");
    Session::Create(path, settings)->Add(unit::SnapshotOfSeed(3, settings));
    EXPECT_TRUE(unit::Holds(*Session::Open(path, settings), 1, unit::SnapshotOfSeed(3, settings)));
  }
}

TEST_F(StoredSession, KeepsItsSettings) {
  Reopen();
  const SessionSettings& settings = session_->Settings();
  EXPECT_EQ(settings.grid, settings_.grid);
  EXPECT_EQ(settings.unit, settings_.unit);
  EXPECT_EQ(settings.imageSizes, settings_.imageSizes);
  EXPECT_EQ(settings.lensModel, settings_.lensModel);
  EXPECT_EQ(settings.finder, settings_.finder);
  EXPECT_EQ(settings.solver, settings_.solver);
  EXPECT_EQ(settings.discRadius, settings_.discRadius);
  EXPECT_EQ(settings.sheetShape, settings_.sheetShape);
  EXPECT_EQ(settings.fineCentres, settings_.fineCentres);
  EXPECT_EQ(settings.source, settings_.source);
  EXPECT_EQ(settings.keepsImages, settings_.keepsImages);
}

TEST_F(StoredSession, WithoutImagesHoldsWhatWasObserved) {
  SessionSettings settings = settings_;
  settings.keepsImages = false;
  const std::string path = folder_.File("small.velmora");
  SessionSnapshot snapshot = unit::SnapshotOfSeed(1, settings);
  Session::Create(path, settings)->Add(snapshot);
  EXPECT_EQ(unit::NamesIn(path + "/snapshots/000001"), std::vector<std::string>{"snapshot.json"});
  snapshot.images.clear();
  const auto session = Session::Open(path);
  EXPECT_TRUE(unit::Holds(*session, 1, snapshot));
  EXPECT_THROW(session->LoadImage(1, 0), std::invalid_argument);
  EXPECT_EQ(session->Snapshot(1).origins, snapshot.origins) << "an image is known again all the same";
}

TEST_F(StoredSession, TakesTheMomentOfAddingWhereNoneIsGiven) {
  SessionSnapshot snapshot = unit::SnapshotOfSeed(1, settings_);
  snapshot.takenAt.clear();
  session_->Add(snapshot);
  EXPECT_EQ(unit::WithDigitsHidden(session_->Snapshot(1).takenAt), "9999-99-99T99:99:99.999Z");
}

TEST_F(StoredSession, KeepsDecisionsWhenItIsOpenedAgain) {
  for (int seed = 1; seed <= 4; ++seed) Add(seed);
  session_->Exclude({2, 3});
  session_->Remove({3, 4});
  session_->Include({2});
  session_->Exclude({1});
  const auto before = session_->Snapshots();
  Reopen();
  EXPECT_TRUE(unit::Same(session_->Snapshots(), before));
  EXPECT_FALSE(session_->CanUndo()) << "what was done earlier is no part of this session's history";
  EXPECT_EQ(DecisionOn(1), SnapshotDecision::Excluded);
  EXPECT_TRUE(session_->Snapshot(2).IsUsed());
  EXPECT_EQ(DecisionOn(3), SnapshotDecision::Removed);
  session_->BringBack({3});
  EXPECT_EQ(DecisionOn(3), SnapshotDecision::Excluded);
}

TEST_F(StoredSession, IsOnTheDiskAsItIsInMemoryAfterRandomOperations) {
  std::mt19937 random(7);
  const auto below = [&random](int end) { return std::uniform_int_distribution<int>(0, end - 1)(random); };
  int count = 0;
  for (int i = 0; i < 120; ++i) {
    const int what = below(8);
    if (what < 2 || count == 0) {
      count = Add(i);
      continue;
    }
    const int number = 1 + below(count);
    if (what == 2 && DecisionOn(number) != SnapshotDecision::Removed) session_->Exclude({number});
    if (what == 3 && DecisionOn(number) != SnapshotDecision::Removed) session_->Include({number});
    if (what == 4) session_->Remove({number});
    if (what == 5) session_->BringBack({number});
    if (what == 6) session_->Undo();
    if (what == 7) session_->Redo();
  }
  const auto before = session_->Snapshots();
  Reopen();
  EXPECT_TRUE(unit::Same(session_->Snapshots(), before));
}

TEST_F(StoredSession, UndoesAndRedoesAddingWithoutLosingFiles) {
  Add(1);
  Add(2);
  EXPECT_EQ(session_->Undo()->kind, SessionStep::Kind::Add);
  EXPECT_EQ(DecisionOn(2), SnapshotDecision::Removed);
  EXPECT_EQ(Add(3), 3) << "numbers are never used again";
  EXPECT_FALSE(session_->Redo());
  session_->BringBack({2});
  EXPECT_TRUE(unit::Holds(*session_, 2, unit::SnapshotOfSeed(2, settings_)));
}

TEST_F(StoredSession, PurgesWhatIsRemovedAndNothingElse) {
  for (int seed = 1; seed <= 3; ++seed) Add(seed);
  session_->Exclude({1});
  session_->Remove({2, 3});
  const std::uint64_t before = session_->BytesTaken();
  EXPECT_EQ(session_->Purge(), 2);
  EXPECT_LT(session_->BytesTaken(), before);
  EXPECT_EQ(unit::NamesIn(InSession("snapshots")), std::vector<std::string>{"000001"});
  EXPECT_FALSE(session_->CanUndo());
  EXPECT_THROW(session_->Snapshot(2), std::invalid_argument);
  EXPECT_EQ(session_->Purge(), 0);
  Reopen();
  EXPECT_EQ(session_->Snapshots().size(), 1U);
  EXPECT_EQ(DecisionOn(1), SnapshotDecision::Excluded);
  EXPECT_EQ(Add(4), 4) << "not the number of one that was purged";
  EXPECT_EQ(DecisionOn(4), SnapshotDecision::Used);
}

TEST_F(StoredSession, RefusesSnapshotsThatAreNoneOfItAndStoresNothing) {
  SessionSnapshot few = unit::SnapshotOfSeed(1, settings_);
  few.observations[0].centres.pop_back();
  EXPECT_EQ(Raised<std::invalid_argument>([&] { session_->Add(few); }),
            "There are 11 centres of camera 0, where the grid has 12.");
  EXPECT_TRUE(session_->Snapshots().empty());
  EXPECT_TRUE(unit::NamesIn(InSession("snapshots")).empty());
  EXPECT_FALSE(session_->CanUndo());
}

TEST_F(StoredSession, NamesASnapshotOrImageThatIsNotThere) {
  Add(1);
  EXPECT_EQ(Raised<std::invalid_argument>([&] { session_->Snapshot(5); }), "There is no snapshot 5.");
  EXPECT_EQ(Raised<std::invalid_argument>([&] { session_->Exclude({1, 6}); }), "There is no snapshot 6.");
  for (const int camera : {-1, 1}) {
    EXPECT_EQ(Raised<std::invalid_argument>([&] { session_->LoadImage(1, camera); }),
              "Snapshot 1 has no image of camera " + std::to_string(camera) + ".");
  }
  EXPECT_EQ(DecisionOn(1), SnapshotDecision::Used);
}

TEST_F(StoredSession, GivesPathsForFurtherFilesButNotItsOwn) {
  EXPECT_EQ(session_->PathFor("desk_verdict.json"), InSession("desk_verdict.json"));
  for (const char* name :
       {"", ".", "..", ".new-x", "a/b", "session.json", "decisions.json", "lock", "snapshots"}) {
    EXPECT_THROW(session_->PathFor(name), std::invalid_argument) << name;
  }
}

TEST_F(StoredSession, StaysWhereItIsWhenTheProcessGoesElsewhere) {
  session_.reset();
  const unit::ScopedCurrentFolder here(folder_.Path());
  session_ = Session::Open("./desk.velmora/");
  EXPECT_EQ(session_->Folder(), fs::canonical(path_).string());
  fs::create_directory(folder_.File("elsewhere"));
  const unit::ScopedCurrentFolder there(folder_.File("elsewhere"));
  EXPECT_EQ(Add(1), 1);
  EXPECT_TRUE(unit::Holds(*session_, 1, unit::SnapshotOfSeed(1, settings_)));
}

TEST_F(StoredSession, CountsWhatItTakesAndWarnsOfADiskThatIsNearlyFull) {
  const std::uint64_t empty = session_->BytesTaken();
  Add(1);
  std::uint64_t files = 0;
  for (const auto& entry : fs::directory_iterator(InSession("snapshots/000001"))) files += entry.file_size();
  EXPECT_EQ(session_->BytesTaken(), empty + files);
  EXPECT_GT(session_->BytesFree(), 0U);
  const std::uint64_t fitting = session_->BytesFree() / files;
  EXPECT_EQ(session_->DiskWarning(1).empty(), fitting >= 1);
  if (fitting < INT_MAX) {
    EXPECT_NE(session_->DiskWarning(INT_MAX).find("free on the session's disk"), std::string::npos);
  }
}

TEST(SessionNames, EndInVelmoraOnce) {
  EXPECT_EQ(Session::FolderOf("desk"), "desk.velmora");
  EXPECT_EQ(Session::FolderOf("a/desk.velmora"), "a/desk.velmora");
  EXPECT_EQ(Session::FolderOf("desk.2"), "desk.2.velmora");
}

TEST(SessionNames, GoOnWithTheNextFreeNumber) {
  const support::TemporaryFolder folder;
  EXPECT_EQ(Session::FreeFolder(folder.File("desk")), folder.File("desk.velmora"));
  fs::create_directory(folder.File("desk.velmora"));
  support::WriteText(folder.File("desk-2.velmora"), "a file");
  fs::create_symlink("nowhere", folder.File("desk-3.velmora"));
  EXPECT_EQ(Session::FreeFolder(folder.File("desk")), folder.File("desk-4.velmora"));
  EXPECT_EQ(Session::FreeFolder(folder.File("desk.velmora")), folder.File("desk-4.velmora"));
}

TEST_F(StoredSession, TakesSnapshotsAndDecisionsOfSeveralThreads) {
  constexpr int THREADS = 4;
  constexpr int EACH = 5;
  unit::ThreadGroup threads;
  for (int thread = 0; thread < THREADS; ++thread) {
    threads.Add([this, thread] {
      for (int i = 0; i < EACH; ++i) {
        const int seed = thread * EACH + i;
        const int number = Add(seed);
        EXPECT_TRUE(unit::Holds(*session_, number, unit::SnapshotOfSeed(seed, settings_)));
        if (i % 2 == 0) session_->Exclude({number});
      }
    });
  }
  threads.Add([this] {
    for (int i = 0; i < 50; ++i) session_->Snapshots();
  });
  threads.RunToTheEnd();
  const auto before = session_->Snapshots();
  ASSERT_EQ(before.size(), static_cast<size_t>(THREADS * EACH));
  std::set<std::string> names;
  for (const StoredSnapshot& snapshot : before) names.insert(snapshot.name);
  EXPECT_EQ(names.size(), before.size());
  Reopen();
  EXPECT_TRUE(unit::Same(session_->Snapshots(), before));
}

}  // namespace
