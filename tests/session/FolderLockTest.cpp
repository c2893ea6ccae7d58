/// One program at a time has a session: locks of living processes, of dead ones, of this one.
#include "session/FolderLock.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <stdexcept>

#include "session/SessionScenes.h"
#include "unit/Scopes.h"

using namespace velmora;
using unit::Raised;

namespace {

/// A child process that has the session open until it is killed.
class OtherProgram {
 public:
  explicit OtherProgram(const std::string& session) {
    int ends[2];
    if (pipe(ends) != 0) throw std::runtime_error("no pipe");
    id_ = fork();
    if (id_ == 0) {
      const auto open = Session::Open(session);
      const ssize_t told = write(ends[1], "o", 1);
      while (told == 1) pause();
      _exit(1);
    }
    close(ends[1]);
    char letter = 0;
    isOpen_ = read(ends[0], &letter, 1) == 1;
    close(ends[0]);
  }
  ~OtherProgram() { Kill(); }
  OtherProgram(const OtherProgram&) = delete;
  OtherProgram& operator=(const OtherProgram&) = delete;

  bool IsOpen() const { return isOpen_; }
  pid_t Id() const { return id_; }
  void Kill() {
    if (id_ <= 0) return;
    kill(id_, SIGKILL);
    waitpid(id_, nullptr, 0);
    id_ = 0;
  }

 private:
  pid_t id_ = 0;
  bool isOpen_ = false;
};

class LockedSession : public unit::SessionTest {
 protected:
  std::string Refusal() {
    return Raised<std::runtime_error>([this] { Session::Open(path_); });
  }
  std::string InUseBy(pid_t process) const {
    return "The session \"" + path_ + "\" is in use by process " + std::to_string(process) + ".";
  }
};

TEST_F(LockedSession, IsRefusedWithTheNumberOfTheProcessThatHasIt) {
  session_.reset();
  OtherProgram other(path_);
  ASSERT_TRUE(other.IsOpen());
  EXPECT_EQ(Refusal(), InUseBy(other.Id()));
  EXPECT_EQ(unit::InChild([&] { return Refusal() == InUseBy(other.Id()) ? 0 : 1; }), 0);
}

TEST_F(LockedSession, IsTakenOverFromAProcessThatWasKilled) {
  session_.reset();
  OtherProgram other(path_);
  ASSERT_TRUE(other.IsOpen());
  const std::string number = std::to_string(other.Id()) + "\n";
  other.Kill();
  EXPECT_EQ(support::ReadText(InSession("lock")), number) << "the dead process left its lock file";
  EXPECT_EQ(Refusal(), "");
  Reopen();
  EXPECT_EQ(Add(1), 1);
  EXPECT_EQ(support::ReadText(InSession("lock")), std::to_string(getpid()) + "\n");
}

TEST_F(LockedSession, IsRefusedToTheSameProcessToo) {
  EXPECT_EQ(Refusal(), InUseBy(getpid()));
  session_.reset();
  EXPECT_EQ(Refusal(), "");
}

TEST_F(LockedSession, StaysLockedWhenAChildThatWasForkedOffEnds) {
  EXPECT_EQ(unit::InChild([this] {
              session_.reset();
              return 0;
            }),
            0);
  EXPECT_EQ(Refusal(), InUseBy(getpid()));
}

TEST_F(LockedSession, IsFreeWhenCreatingAnotherOneFailed) {
  EXPECT_THROW(Session::Create(path_, settings_), std::runtime_error);
  EXPECT_EQ(Refusal(), InUseBy(getpid())) << "the lock of the one that is there holds on";
  EXPECT_EQ(Add(1), 1);
}

TEST_F(LockedSession, WithALockFileOfNonsenseOpens) {
  session_.reset();
  for (const char* text : {"", "no number", "-5", "99999999999999999999"}) {
    support::WriteText(InSession("lock"), text);
    EXPECT_EQ(Refusal(), "") << text;
  }
  std::filesystem::remove(InSession("lock"));
  EXPECT_EQ(Refusal(), "");
}

TEST(FolderLock, MovesWithItsObject) {
  const support::TemporaryFolder folder;
  const std::string path = folder.File("lock");
  auto first = std::make_unique<FolderLock>(path, "It");
  const FolderLock second(std::move(*first));
  first.reset();
  EXPECT_EQ(Raised<std::runtime_error>([&] { FolderLock(path, "It"); }),
            "It is in use by process " + std::to_string(getpid()) + ".");
}

TEST(FolderLock, CannotBeAFolder) {
  const support::TemporaryFolder folder;
  EXPECT_NE(Raised<std::runtime_error>([&] { FolderLock(folder.Path(), "it"); }).find("Cannot lock it: "),
            std::string::npos);
}

}  // namespace
