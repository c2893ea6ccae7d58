/// What a long run reports of its progress.
#include "batch/Progress.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

namespace {

using batch::Progress;

class ProgressLines : public ::testing::Test {
 protected:
  Progress On(int columns) {
    return Progress({out_, columns, [this] { return now_; }});
  }
  void Pass(int seconds) { now_ += std::chrono::seconds(seconds); }
  std::string Text() const { return out_.str(); }
  long Lines() const {
    const std::string text = Text();
    return std::count(text.begin(), text.end(), '\n');
  }

  std::ostringstream out_;
  Progress::Clock::time_point now_{};
};

TEST_F(ProgressLines, AreOneAPictureWhereThereAreFew) {
  Progress progress = On(0);
  for (int i = 1; i <= 3; ++i) progress.Step(i, 3, "a.png: grid found");
  progress.Finish();
  EXPECT_EQ(Text(), "1/3 a.png: grid found\n2/3 a.png: grid found\n3/3 a.png: grid found\n");
}

TEST_F(ProgressLines, AreTwentyOfThousandsOfPicturesWithShareRateAndTimeLeft) {
  Progress progress = On(0);
  for (int i = 1; i <= 2000; ++i) {
    if (i % 100 == 0) Pass(5);
    progress.Step(i, 2000, "v.avi#" + std::to_string(i));
  }
  EXPECT_EQ(Lines(), 20);
  EXPECT_EQ(Text().substr(0, Text().find('\n')), "100/2000 (5 %, 20/s, 1 min 35 s left) v.avi#100");
  EXPECT_NE(Text().find("\n1000/2000 (50 %, 20/s, 50 s left) v.avi#1000\n"), std::string::npos) << Text();
  EXPECT_NE(Text().find("\n2000/2000 (100 %, 20/s) v.avi#2000\n"), std::string::npos) << Text();
}

TEST_F(ProgressLines, BecomeSparseWhereTheEndIsUnknown) {
  Progress progress = On(0);
  for (int i = 1; i <= 1000; ++i) progress.Step(i, 0, "frame");
  EXPECT_EQ(Lines(), 100 + 9);
}

TEST_F(ProgressLines, AreOneThatIsDrawnAgainOnATerminal) {
  Progress progress = On(60);
  Pass(10);
  progress.Step(1, 4, "first.png: grid found, and far more words than fit");
  EXPECT_EQ(Text().substr(0, 52), "\r[#####               ] 25 %, 1/4, 0.10/s, 30 s left");
  EXPECT_EQ(Text().size(), 60U) << "a return and one column less than there are";
  progress.Step(4, 4, "x");
  EXPECT_EQ(Text().substr(60, 45), "\r[####################] 100 %, 4/4, 0.40/s  x");
  EXPECT_EQ(Text().size(), 120U) << "what stood there is covered";
  EXPECT_EQ(Lines(), 0);
  progress.Finish();
  EXPECT_EQ(Text().back(), '\n');
}

TEST_F(ProgressLines, TellTheRateOnATerminalWhereTheEndIsUnknown) {
  Progress progress = On(60);
  progress.Step(1, 0, "early");
  EXPECT_EQ(Text().substr(0, 9), "\r1  early");
  Pass(4);
  progress.Step(10, 0, "frame");
  EXPECT_EQ(Text().substr(60, 18), "\r10, 2.5/s  frame ");
}

TEST_F(ProgressLines, DoNotCutLettersInTwo) {
  for (int columns = 10; columns < 20; ++columns) {
    out_.str("");
    Progress progress = On(columns);
    progress.Step(1, 0, "\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4");
    const std::string text = Text();
    const size_t end = text.find_last_not_of(' ');
    EXPECT_TRUE(text[end] == '\xA4' || static_cast<unsigned char>(text[end]) < 0x80U) << columns;
  }
}

}  // namespace
