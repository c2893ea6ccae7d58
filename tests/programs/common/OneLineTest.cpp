/// Texts of exceptions on one line.
#include "common/OneLine.h"

#include <gtest/gtest.h>

TEST(OneLine, LineEndsAndRunsOfBlanksBecomeOneBlank) {
  EXPECT_EQ(common::OneLine(" first:\n> second\t 'third'\n in function 'f'\n"),
            "first: > second 'third' in function 'f'");
}

TEST(OneLine, PlainTextStaysAsItIs) {
  EXPECT_EQ(common::OneLine("std::bad_alloc"), "std::bad_alloc");
  EXPECT_EQ(common::OneLine(""), "");
}
