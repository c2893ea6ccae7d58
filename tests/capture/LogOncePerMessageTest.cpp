/// What counts as a new cause.
#include "capture/LogOncePerMessage.h"

#include <gtest/gtest.h>

using namespace velmora;

namespace {

TEST(LogOncePerMessage, IsNewTheFirstTimeOnly) {
  LogOncePerMessage reported;
  EXPECT_TRUE(reported.IsNew("a"));
  EXPECT_TRUE(reported.IsNew("b"));
  EXPECT_FALSE(reported.IsNew("a"));
}

TEST(LogOncePerMessage, NumbersMakeNoNewCause) {
  LogOncePerMessage reported;
  EXPECT_TRUE(reported.IsNew("frame of 640 x 480 pixels"));
  EXPECT_FALSE(reported.IsNew("frame of 1280 x 7 pixels"));
  EXPECT_TRUE(reported.IsNew("frame of x pixels"));
}

TEST(LogOncePerMessage, RemembersNoMoreThanAHundred) {
  LogOncePerMessage reported;
  std::string cause;
  for (int i = 0; i < 100; ++i) EXPECT_TRUE(reported.IsNew(cause += 'x'));
  EXPECT_FALSE(reported.IsNew(cause += 'x'));
}

}  // namespace
