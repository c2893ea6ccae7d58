/// Writing files so that earlier ones stay whole: outcomes, links, rights, special files.
#include "documents/AtomicFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <thread>

#include "TemporaryFolder.h"
#include "documents/RefusedCalls.h"
#include "unit/Scopes.h"

using namespace velmora;

namespace {

namespace fs = std::filesystem;

struct stat StateOf(const std::string& path) {
  struct stat state {};
  EXPECT_EQ(stat(path.c_str(), &state), 0);
  return state;
}

mode_t RightsOf(const std::string& path) {
  return StateOf(path).st_mode & 07777;
}

class AtomicFile : public ::testing::Test {
 protected:
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder_.Path()))
      names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
  }

  support::TemporaryFolder folder_;
  const std::string path_ = folder_.File("file");
};

TEST_F(AtomicFile, HoldsTheText) {
  EXPECT_EQ(WriteFileAtomically(path_, "text"), WriteOutcome::Written);
  EXPECT_EQ(support::ReadText(path_), "text");
  EXPECT_EQ(Names(), std::vector<std::string>{"file"});
}

TEST_F(AtomicFile, MayBeEmpty) {
  support::WriteText(path_, "earlier");
  EXPECT_EQ(WriteFileAtomically(path_, ""), WriteOutcome::Written);
  EXPECT_EQ(support::ReadText(path_), "");
}

TEST_F(AtomicFile, IsNotOpenedInAMissingFolder) {
  EXPECT_EQ(WriteFileAtomically(folder_.File("missing/file"), "text"), WriteOutcome::NotOpened);
  EXPECT_TRUE(Names().empty());
}

TEST_F(AtomicFile, IsNotOpenedWithoutAName) {
  const unit::ScopedCurrentFolder current(folder_.Path());
  EXPECT_EQ(WriteFileAtomically("", "text"), WriteOutcome::NotOpened);
  EXPECT_TRUE(Names().empty());
}

TEST_F(AtomicFile, IsNotOpenedBelowAFile) {
  support::WriteText(path_, "earlier");
  EXPECT_EQ(WriteFileAtomically(path_ + "/below", "text"), WriteOutcome::NotOpened);
  EXPECT_EQ(WriteFileAtomically(path_ + "/", "text"), WriteOutcome::NotOpened);
  EXPECT_EQ(support::ReadText(path_), "earlier");
}

TEST_F(AtomicFile, TakesTheLongestNameThatAFolderAllows) {
  const std::string longest = folder_.File(std::string(255, 'n'));
  EXPECT_EQ(WriteFileAtomically(longest, "text"), WriteOutcome::Written);
  EXPECT_EQ(support::ReadText(longest), "text");
}

TEST_F(AtomicFile, IsFoundThroughARelativePath) {
  const unit::ScopedCurrentFolder current(folder_.Path());
  EXPECT_EQ(WriteFileAtomically("file", "text"), WriteOutcome::Written);
  EXPECT_EQ(support::ReadText(path_), "text");
}

TEST_F(AtomicFile, KeepsASymbolicLinkAndWritesItsTarget) {
  fs::create_directory(folder_.File("elsewhere"));
  const std::string target = folder_.File("elsewhere/target");
  support::WriteText(target, "earlier");
  fs::create_symlink("elsewhere/target", path_);
  EXPECT_EQ(WriteFileAtomically(path_, "text"), WriteOutcome::Written);
  EXPECT_TRUE(fs::is_symlink(path_));
  EXPECT_FALSE(fs::is_symlink(target));
  EXPECT_EQ(support::ReadText(target), "text");
}

TEST_F(AtomicFile, CreatesTheTargetOfALinkThatLeadsNowhereYet) {
  fs::create_symlink("target", path_);
  EXPECT_EQ(WriteFileAtomically(path_, "text"), WriteOutcome::Written);
  EXPECT_TRUE(fs::is_symlink(path_));
  EXPECT_EQ(support::ReadText(folder_.File("target")), "text");
  EXPECT_EQ(Names(), (std::vector<std::string>{"file", "target"}));
}

TEST_F(AtomicFile, IsNotOpenedThroughLinksThatLeadInACircle) {
  fs::create_symlink("other", path_);
  fs::create_symlink("file", folder_.File("other"));
  EXPECT_EQ(WriteFileAtomically(path_, "text"), WriteOutcome::NotOpened);
  EXPECT_EQ(Names(), (std::vector<std::string>{"file", "other"}));
}

TEST_F(AtomicFile, KeepsTheRightsOfAnEarlierOne) {
  for (const mode_t rights : {0600U, 0640U, 0666U, 0755U}) {
    support::WriteText(path_, "earlier");
    ASSERT_EQ(chmod(path_.c_str(), rights), 0);
    EXPECT_EQ(WriteFileAtomically(path_, "text"), WriteOutcome::Written);
    EXPECT_EQ(RightsOf(path_), rights);
    EXPECT_EQ(support::ReadText(path_), "text");
  }
}

TEST_F(AtomicFile, HasTheRightsOfAnyNewFileWhenNew) {
  support::WriteText(folder_.File("ordinary"), "");
  EXPECT_EQ(WriteFileAtomically(path_, "text"), WriteOutcome::Written);
  EXPECT_EQ(RightsOf(path_), RightsOf(folder_.File("ordinary")));
}

TEST_F(AtomicFile, ReportsADeviceThatTakesNothing) {
  EXPECT_EQ(WriteFileAtomically("/dev/full", "text"), WriteOutcome::Failed);
}

TEST_F(AtomicFile, ReportsAFileThatCanBeOpenedButNotWritten) {
  if (geteuid() != 0) GTEST_SKIP() << "only the superuser may open it";
  EXPECT_EQ(WriteFileAtomically("/proc/version", "text"), WriteOutcome::Failed);
}

TEST_F(AtomicFile, WritesIntoAPipeInsteadOfReplacingIt) {
  ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
  std::string read;
  std::thread reader([&] { read = support::ReadText(path_); });
  const WriteOutcome outcome = WriteFileAtomically(path_, "text");
  reader.join();
  EXPECT_EQ(outcome, WriteOutcome::Written);
  EXPECT_EQ(read, "text");
  EXPECT_TRUE(fs::is_fifo(path_));
}

TEST_F(AtomicFile, IsWrittenDirectlyWhereNoOtherMayTakeItsPlace) {
  // As a mount point is, and somebody else's file in a shared folder.
  for (const int error : {EBUSY, EPERM, EXDEV}) {
    support::WriteText(path_, "a longer earlier text");
    const auto inode = StateOf(path_).st_ino;
    const unit::RefusedCall refused(unit::RefusedCall::RENAME, error);
    EXPECT_EQ(WriteFileAtomically(path_, "text"), WriteOutcome::Written);
    EXPECT_EQ(support::ReadText(path_), "text");
    EXPECT_EQ(StateOf(path_).st_ino, inode);
    EXPECT_EQ(Names(), std::vector<std::string>{"file"});
  }
}

TEST_F(AtomicFile, IsWrittenWhereRightsAndOwnersCannotBeChanged) {
  // As on file systems of other systems, whose files all have the same.
  support::WriteText(path_, "earlier");
  const unit::RefusedCall owner(unit::RefusedCall::FCHOWN, EPERM);
  for (const int error : {EPERM, ENOTSUP}) {
    const unit::RefusedCall rights(unit::RefusedCall::FCHMOD, error);
    EXPECT_EQ(WriteFileAtomically(path_, "text"), WriteOutcome::Written);
    EXPECT_EQ(support::ReadText(path_), "text");
  }
}

TEST_F(AtomicFile, StaysWholeWhenItsRightsCannotBeKept) {
  support::WriteText(path_, "earlier");
  ASSERT_EQ(chmod(path_.c_str(), 0600), 0);
  const unit::RefusedCall refused(unit::RefusedCall::FCHMOD, EIO);
  EXPECT_EQ(WriteFileAtomically(path_, "text"), WriteOutcome::Failed);
  EXPECT_EQ(support::ReadText(path_), "earlier");
  EXPECT_EQ(Names(), std::vector<std::string>{"file"});
}

TEST_F(AtomicFile, KeepsTheOwnerAndTheGroupOfAnEarlierOne) {
  if (geteuid() != 0) GTEST_SKIP() << "only the superuser may give files away";
  constexpr uid_t SOMEBODY = 4711;
  constexpr gid_t GROUP = 4712;
  support::WriteText(path_, "earlier");
  ASSERT_EQ(chown(path_.c_str(), SOMEBODY, GROUP), 0);
  ASSERT_EQ(chmod(path_.c_str(), 0664), 0);
  EXPECT_EQ(WriteFileAtomically(path_, "text"), WriteOutcome::Written);
  EXPECT_EQ(StateOf(path_).st_uid, SOMEBODY);
  EXPECT_EQ(StateOf(path_).st_gid, GROUP);
  EXPECT_EQ(RightsOf(path_), 0664U);
}

TEST_F(AtomicFile, IsWrittenIntoWhatTheProcessHasOpen) {
  int ends[2] = {};
  ASSERT_EQ(pipe2(ends, O_NONBLOCK | O_CLOEXEC), 0);
  for (const char* folder : {"/dev/fd/", "/proc/self/fd/"}) {
    EXPECT_EQ(WriteFileAtomically(folder + std::to_string(ends[1]), "text"), WriteOutcome::Written);
    char read[8] = {};
    EXPECT_EQ(::read(ends[0], read, sizeof(read)), 4);
    EXPECT_STREQ(read, "text");
  }
  close(ends[0]);
  close(ends[1]);
}

TEST_F(AtomicFile, IsStillTheFileThatTheProcessHasOpen) {
  support::WriteText(path_, "earlier");
  const int descriptor = open(path_.c_str(), O_RDWR | O_APPEND);
  ASSERT_GE(descriptor, 0);
  fs::create_symlink("/dev/fd/" + std::to_string(descriptor), folder_.File("link"));
  EXPECT_EQ(WriteFileAtomically(folder_.File("link"), "text"), WriteOutcome::Written);
  EXPECT_EQ(write(descriptor, " and more", 9), 9);
  close(descriptor);
  EXPECT_EQ(support::ReadText(path_), "text and more");
  EXPECT_EQ(Names(), (std::vector<std::string>{"file", "link"}));
}

/// As a user without special rights, who owns nothing here.
class AtomicFileOfAnybody : public AtomicFile {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only the superuser can become somebody else";
    ASSERT_EQ(chmod(folder_.Path().c_str(), 0777), 0);
    support::WriteText(path_, "earlier");
  }

  static constexpr uid_t ANYBODY = 65534;

  WriteOutcome WriteAsAnybody(const std::string& text) const {
    const int result = unit::InChild([&] {
      if (setresgid(ANYBODY, ANYBODY, ANYBODY) != 0 || setresuid(ANYBODY, ANYBODY, ANYBODY) != 0) return 100;
      return static_cast<int>(WriteFileAtomically(path_, text));
    });
    EXPECT_LT(result, 100);
    return static_cast<WriteOutcome>(result);
  }
};

TEST_F(AtomicFileOfAnybody, IsNotOpenedWhenItMayOnlyBeRead) {
  ASSERT_EQ(chmod(path_.c_str(), 0444), 0);
  EXPECT_EQ(WriteAsAnybody("text"), WriteOutcome::NotOpened);
  EXPECT_EQ(support::ReadText(path_), "earlier");
  EXPECT_EQ(Names(), std::vector<std::string>{"file"});
}

TEST_F(AtomicFileOfAnybody, IsWrittenDirectlyWhereTheFolderTakesNoNewFiles) {
  ASSERT_EQ(chmod(path_.c_str(), 0666), 0);
  ASSERT_EQ(chmod(folder_.Path().c_str(), 0555), 0);
  EXPECT_EQ(WriteAsAnybody("text"), WriteOutcome::Written);
  EXPECT_EQ(support::ReadText(path_), "text");
}

TEST_F(AtomicFileOfAnybody, IsWrittenThoughItBelongsToSomebodyElse) {
  ASSERT_EQ(chmod(path_.c_str(), 0666), 0);
  EXPECT_EQ(WriteAsAnybody("text"), WriteOutcome::Written);
  EXPECT_EQ(support::ReadText(path_), "text");
  EXPECT_EQ(RightsOf(path_), 0666U);
  EXPECT_EQ(StateOf(path_).st_uid, ANYBODY);  // it may not be given away
}

TEST_F(AtomicFileOfAnybody, IsWrittenDirectlyWhereOnlyOwnersMayReplaceTheirFiles) {
  ASSERT_EQ(chmod(path_.c_str(), 0666), 0);
  ASSERT_EQ(chmod(folder_.Path().c_str(), 01777), 0);
  EXPECT_EQ(WriteAsAnybody("text"), WriteOutcome::Written);
  EXPECT_EQ(support::ReadText(path_), "text");
  EXPECT_EQ(StateOf(path_).st_uid, 0U);
  EXPECT_EQ(Names(), std::vector<std::string>{"file"});
}

}  // namespace
