/// Texts of exceptions as one line.
#include "foundation/OneLine.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>

using namespace velmora;

namespace {

TEST(OneLine, IsATextOfOneLineItself) {
  EXPECT_EQ(OneLine("two  blanks\tand a tab"), "two  blanks\tand a tab");
  EXPECT_EQ(OneLine(""), "");
}

TEST(OneLine, HasOneBlankForEachBreakAndNoneAtItsEnds) {
  EXPECT_EQ(OneLine("a\n"), "a");
  EXPECT_EQ(OneLine("\n  a \r\n\n > b\n"), "a > b");
  EXPECT_EQ(OneLine(" \n\t\r\n"), "");
}

TEST(OneLine, HoldsTheWordsOfALibrarysAssertion) {
  try {
    CV_Assert_N(1 + 1 == 2, 1 + 1 == 3);
    FAIL() << "nothing was raised";
  } catch (const cv::Exception& fault) {
    const std::string line = OneLine(fault.what());
    EXPECT_EQ(line.find('\n'), std::string::npos) << line;
    EXPECT_NE(line.find("1 + 1 == 3"), std::string::npos) << line;
  }
}

}  // namespace
