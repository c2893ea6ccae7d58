/// Programs that are asked to end by a signal.
#include "common/Interruption.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

using common::Interruption;

namespace {

/// How a child process ends: its exit status, or the number of a signal, negative.
int EndOf(const std::function<int()>& body) {
  const pid_t child = fork();
  if (child == 0) _exit(body());
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

TEST(Interruption, IsNotRequestedWithoutASignal) {
  const Interruption interruption;
  EXPECT_FALSE(interruption.Requested());
  EXPECT_EQ(interruption.ExitStatus(), 0);
}

TEST(Interruption, IsRequestedByControlCAndTellsTheStatus) {
  const Interruption interruption;
  raise(SIGINT);
  EXPECT_TRUE(interruption.Requested());
  EXPECT_EQ(interruption.ExitStatus(), 130);
}

TEST(Interruption, IsRequestedByATerminationAndTellsTheStatus) {
  const Interruption interruption;
  raise(SIGTERM);
  EXPECT_TRUE(interruption.Requested());
  EXPECT_EQ(interruption.ExitStatus(), 143);
}

TEST(Interruption, BeginsAnewWithoutARequest) {
  {
    const Interruption first;
    raise(SIGINT);
  }
  const Interruption second;
  EXPECT_FALSE(second.Requested());
  raise(SIGINT);
  EXPECT_TRUE(second.Requested());
}

TEST(Interruption, LeavesTheSecondSignalToEndTheProcessAtOnce) {
  for (const int first : {SIGINT, SIGTERM}) {
    for (const int second : {SIGINT, SIGTERM}) {
      EXPECT_EQ(EndOf([&] {
                  const Interruption interruption;
                  raise(first);
                  raise(second);
                  return 7;
                }),
                -second);
    }
  }
}

TEST(Interruption, GivesTheFormerHandlersBack) {
  EXPECT_EQ(EndOf([] {
              signal(SIGINT, [](int) { _exit(3); });
              {
                const Interruption interruption;
                raise(SIGINT);
              }
              raise(SIGINT);
              return 7;
            }),
            3);
}

TEST(Interruption, LeavesIgnoredSignalsIgnored) {
  EXPECT_EQ(EndOf([] {
              signal(SIGINT, SIG_IGN);
              const Interruption interruption;
              raise(SIGINT);
              raise(SIGINT);
              return interruption.Requested() ? 1 : 0;
            }),
            0);
}

}  // namespace
