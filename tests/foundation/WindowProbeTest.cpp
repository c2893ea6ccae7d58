/// What is made of a child process that tries the window library, whatever becomes of it.
#include "foundation/WindowProbe.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

#include <cerrno>

#include "TemporaryFolder.h"
#include "unit/Scopes.h"

using namespace velmora;

namespace {

constexpr std::chrono::seconds PATIENCE{60};

class Probe : public testing::Test {
 protected:
  /// The answer of a program that consists of these commands.
  ProbeAnswer AnswerOf(const std::string& commands, std::chrono::milliseconds patience = PATIENCE) {
    const std::string path = folder_.File("probe");
    support::WriteText(path, "#!/bin/sh\n" + commands + "\n");
    chmod(path.c_str(), 0755);
    return AskWindowProbe(path, patience);
  }

  support::TemporaryFolder folder_;
};

TEST_F(Probe, IsBuiltWhereItIsLookedFor) {
  EXPECT_NE(FindWindowProbe(), "");
}

TEST_F(Probe, WorksOnAPlatformWithoutADisplay) {
  const unit::ScopedNoDisplay none;
  const unit::ScopedVariable offscreen("QT_QPA_PLATFORM", "offscreen");
  EXPECT_EQ(AskWindowProbe(FindWindowProbe(), PATIENCE), ProbeAnswer::Works);
}

TEST_F(Probe, FailsWithoutADisplay) {
  const unit::ScopedNoDisplay none;
  EXPECT_EQ(AskWindowProbe(FindWindowProbe(), PATIENCE), ProbeAnswer::Fails);
}

TEST_F(Probe, ThatIsAbortedOrGivesUpFails) {
  EXPECT_EQ(AnswerOf("printf r; kill -ABRT $$"), ProbeAnswer::Fails);
  EXPECT_EQ(AnswerOf("printf r; exit 0"), ProbeAnswer::Fails);
}

TEST_F(Probe, ThatSaysSoWorksHoweverItEnds) {
  EXPECT_EQ(AnswerOf("printf rw; kill -SEGV $$"), ProbeAnswer::Works);
}

TEST_F(Probe, ThatDoesNotRunIsUnknown) {
  EXPECT_EQ(AskWindowProbe("", PATIENCE), ProbeAnswer::Unknown);
  EXPECT_EQ(AskWindowProbe(folder_.File("missing"), PATIENCE), ProbeAnswer::Unknown);
  EXPECT_EQ(AnswerOf("exit 127"), ProbeAnswer::Unknown) << "as when one of its libraries is missing";
}

TEST_F(Probe, ThatHangsIsEnded) {
  const std::string number = folder_.File("number");
  EXPECT_EQ(AnswerOf("echo $$ > " + number + "; printf r; exec tail -f /dev/null", std::chrono::seconds(2)),
            ProbeAnswer::Silent);
  const int child = std::stoi(support::ReadText(number));
  EXPECT_EQ(kill(child, 0), -1);
  EXPECT_EQ(errno, ESRCH);
}

TEST_F(Probe, IsUnderstoodInAProcessThatLeavesItsChildrenToTheSystem) {
  struct sigaction ignored {};
  struct sigaction earlier {};
  ignored.sa_handler = SIG_IGN;
  sigaction(SIGCHLD, &ignored, &earlier);
  EXPECT_EQ(AnswerOf("printf rw"), ProbeAnswer::Works);
  EXPECT_EQ(AnswerOf("printf r"), ProbeAnswer::Fails);
  sigaction(SIGCHLD, &earlier, nullptr);
}

}  // namespace
