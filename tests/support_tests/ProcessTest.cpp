/// Tests of running programs.
#include "Process.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>

#include <cerrno>
#include <filesystem>
#include <stdexcept>

using support::Process;
using support::TemporaryFolder;

namespace {

constexpr Process::Milliseconds LONG(20000);
constexpr Process::Milliseconds SHORT(50);

std::vector<std::string> Shell(const std::string& script) {
  return {"/bin/sh", "-c", script};
}

}  // namespace

TEST(Process, TellsTheExitCode) {
  EXPECT_EQ(Process(Shell("exit 0")).WaitForExit(LONG), 0);
  EXPECT_EQ(Process(Shell("exit 7")).WaitForExit(LONG), 7);
  EXPECT_EQ(Process(Shell("kill -TERM $$")).WaitForExit(LONG), -SIGTERM);
}

TEST(Process, KeepsOutputAndErrorsApart) {
  Process process(Shell("echo out; echo err >&2"));
  ASSERT_EQ(process.WaitForExit(LONG), 0);
  EXPECT_EQ(process.Output(), "out\n");
  EXPECT_EQ(process.Errors(), "err\n");
}

TEST(Process, PassesArgumentsAsTheyAre) {
  Process process({"printf", "%s|", "a b", "$HOME", "", "*"});
  ASSERT_EQ(process.WaitForExit(LONG), 0);
  EXPECT_EQ(process.Output(), "a b|$HOME||*|");
}

TEST(Process, SetsAndUnsetsVariables) {
  ASSERT_EQ(setenv("VELMORA_TEST_KEPT", "kept", 1), 0);
  ASSERT_EQ(setenv("VELMORA_TEST_CHANGED", "old", 1), 0);
  ASSERT_EQ(setenv("VELMORA_TEST_GONE", "gone", 1), 0);
  Process::Options options;
  options.environment["VELMORA_TEST_CHANGED"] = "new";
  options.unset = {"VELMORA_TEST_GONE"};
  Process process(Shell("echo $VELMORA_TEST_KEPT $VELMORA_TEST_CHANGED ${VELMORA_TEST_GONE-none}"), options);
  ASSERT_EQ(process.WaitForExit(LONG), 0);
  EXPECT_EQ(process.Output(), "kept new none\n");
}

TEST(Process, RunsInItsFolder) {
  const TemporaryFolder folder;
  Process::Options options;
  options.folder = folder.Path();
  Process process(Shell("pwd -P"), options);
  ASSERT_EQ(process.WaitForExit(LONG), 0);
  EXPECT_EQ(process.Output(), std::filesystem::canonical(folder.Path()).string() + "\n");
}

TEST(Process, HasNothingOnItsStandardInput) {
  Process process({"cat"});
  EXPECT_EQ(process.WaitForExit(LONG), 0);
  EXPECT_EQ(process.Output(), "");
}

TEST(Process, ShowsOutputWhileItRuns) {
  Process process(Shell("echo ready; exec cat /dev/zero > /dev/null"));
  ASSERT_TRUE(process.WaitForOutput("ready", LONG));
  EXPECT_TRUE(process.Running());
  EXPECT_EQ(process.WaitForExit(SHORT), Process::STILL_RUNNING);
  process.Kill();
  EXPECT_FALSE(process.Running());
  EXPECT_EQ(process.WaitForExit(LONG), -SIGKILL);
}

TEST(Process, DoesNotWaitForOutputOfAProgramThatEnded) {
  Process process(Shell("echo something else"));
  EXPECT_FALSE(process.WaitForOutput("ready", std::chrono::hours(1)));
}

TEST(Process, DeliversSignals) {
  Process process(Shell("trap 'echo caught; exit 3' TERM; echo ready; while :; do :; done"));
  ASSERT_TRUE(process.WaitForOutput("ready", LONG));
  process.Signal(SIGTERM);
  EXPECT_EQ(process.WaitForExit(LONG), 3);
  EXPECT_EQ(process.Output(), "ready\ncaught\n");
}

TEST(Process, IsKilledWithItsDescendantsOnDestruction) {
  pid_t id = -1;
  {
    Process process(Shell("cat /dev/zero > /dev/null & echo ready; wait"));
    ASSERT_TRUE(process.WaitForOutput("ready", LONG));
    id = process.Id();
    ASSERT_EQ(kill(-id, 0), 0);
  }
  EXPECT_NE(kill(id, 0), 0);
  EXPECT_EQ(errno, ESRCH);
}

TEST(Process, SaysThatAProgramCannotBeStarted) {
  const TemporaryFolder folder;
  EXPECT_THROW(Process({folder.File("absent")}), std::runtime_error);
  EXPECT_THROW(Process(std::vector<std::string>()), std::runtime_error);
  Process::Options options;
  options.folder = folder.File("absent");
  EXPECT_THROW(Process({"cat"}, options), std::runtime_error);
}
