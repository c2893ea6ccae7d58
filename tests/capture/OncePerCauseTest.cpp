/// What counts as a new cause.
#include "capture/OncePerCause.h"

#include <gtest/gtest.h>

using namespace velmora;

namespace {

TEST(OncePerCause, IsNewTheFirstTimeOnly) {
  OncePerCause reported;
  EXPECT_TRUE(reported.IsNew("a"));
  EXPECT_TRUE(reported.IsNew("b"));
  EXPECT_FALSE(reported.IsNew("a"));
}

TEST(OncePerCause, NumbersMakeNoNewCause) {
  OncePerCause reported;
  EXPECT_TRUE(reported.IsNew("frame of 640 x 480 pixels"));
  EXPECT_FALSE(reported.IsNew("frame of 1280 x 7 pixels"));
  EXPECT_TRUE(reported.IsNew("frame of x pixels"));
}

TEST(OncePerCause, RemembersNoMoreThanAHundred) {
  OncePerCause reported;
  std::string cause;
  for (int i = 0; i < 100; ++i) EXPECT_TRUE(reported.IsNew(cause += 'x'));
  EXPECT_FALSE(reported.IsNew(cause += 'x'));
}

}  // namespace
