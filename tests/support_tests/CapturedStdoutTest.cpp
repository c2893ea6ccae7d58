/// Tests of capturing standard output.
#include "CapturedStdout.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <string>

using support::CapturedStdout;

TEST(CapturedStdout, HoldsEverythingPrintedInOrder) {
  std::string text;
  {
    const CapturedStdout captured;
    std::printf("one %d\n", 1);
    std::fflush(stdout);
    std::cout << "two\n" << std::flush;
    ASSERT_EQ(write(STDOUT_FILENO, "three\n", 6), 6);
    std::printf("not flushed");
    text = captured.Text();
  }
  EXPECT_EQ(text, "one 1\ntwo\nthree\nnot flushed");
}

TEST(CapturedStdout, GrowsWhileItLives) {
  const CapturedStdout captured;
  EXPECT_EQ(captured.Text(), "");
  std::cout << "first";
  EXPECT_EQ(captured.Text(), "first");
  std::printf(" second");
  EXPECT_EQ(captured.Text(), "first second");
}

TEST(CapturedStdout, GivesStandardOutputBack) {
  const CapturedStdout outer;
  std::cout << "before ";
  {
    const CapturedStdout inner;
    std::cout << "within";
    EXPECT_EQ(inner.Text(), "within");
  }
  std::printf("after");
  EXPECT_EQ(outer.Text(), "before after");
}
