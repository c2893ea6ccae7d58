/// Lines that can be read.
#include "assistant/GuideLine.h"

#include <gtest/gtest.h>

using namespace velmora;

namespace {

constexpr double REACH = 20.0;

std::array<GuideDifference, 6> Differences(double left, double closer, bool closerLeadsOut = false) {
  return {GuideDifference{GuideHint::Left, left, false}, {GuideHint::Up, 0.0, false},
          {GuideHint::Closer, closer, closerLeadsOut},   {GuideHint::Clockwise, 0.0, false},
          {GuideHint::LeftEdgeAway, 0.0, false},         {GuideHint::TopEdgeAway, 0.0, false}};
}

class Line : public ::testing::Test {
 protected:
  GuideHint At(double time, double left, double closer) {
    return line_.ChooseMove(Differences(left, closer), 0.0, REACH, time);
  }
  GuideLine line_;
};

TEST_F(Line, NamesTheLargest) {
  EXPECT_EQ(At(0.0, 50.0, 60.0), GuideHint::Closer);
}

TEST_F(Line, StaysWhileTwoAreAlike) {
  EXPECT_EQ(At(0.0, 50.0, 60.0), GuideHint::Closer);
  for (int frame = 1; frame < 300; ++frame)
    EXPECT_EQ(At(frame / 30.0, frame % 2 == 0 ? 45.0 : 65.0, 55.0), GuideHint::Closer) << frame;
}

TEST_F(Line, StaysUntilItWasObeyed) {
  EXPECT_EQ(At(0.0, 20.0, 60.0), GuideHint::Closer);
  EXPECT_EQ(At(0.5, 20.0, 18.0), GuideHint::Closer);
  EXPECT_EQ(At(0.6, 20.0, 5.0), GuideHint::Left);
}

TEST_F(Line, ChangesForWhatIsMuchLargerOnceItWasRead) {
  EXPECT_EQ(At(0.0, 20.0, 30.0), GuideHint::Closer);
  EXPECT_EQ(At(0.1, 90.0, 30.0), GuideHint::Closer);
  EXPECT_EQ(At(0.5, 90.0, 30.0), GuideHint::Left);
}

TEST_F(Line, ChangesForWhatIsLargerForLong) {
  EXPECT_EQ(At(0.0, 20.0, 30.0), GuideHint::Closer);
  EXPECT_EQ(At(0.5, 45.0, 30.0), GuideHint::Closer);
  EXPECT_EQ(At(1.4, 45.0, 30.0), GuideHint::Closer);
  EXPECT_EQ(At(1.6, 45.0, 30.0), GuideHint::Left);
}

TEST_F(Line, PutsOffWhatLeadsOutOfThePicture) {
  EXPECT_EQ(line_.ChooseMove(Differences(30.0, 60.0, true), 0.0, REACH, 0.0), GuideHint::Left);
  line_.Forget();
  EXPECT_EQ(line_.ChooseMove(Differences(10.0, 60.0, true), 0.0, REACH, 0.0), GuideHint::Closer);
}

TEST_F(Line, PutsOffWhatHasJustLedOutOfThePicture) {
  line_.LeftThePicture(GuideHint::Farther, 0.0);
  EXPECT_EQ(At(1.0, 30.0, 60.0), GuideHint::Left);
  line_.Forget();
  line_.LeftThePicture(GuideHint::Farther, 0.0);
  EXPECT_EQ(At(6.0, 30.0, 60.0), GuideHint::Closer);
}

TEST_F(Line, DoesNotWaverAboutAHalfTurn) {
  const auto at = [this](double turn) { return line_.ChooseMove(Differences(9.0, 300.0), turn, REACH, 0.0); };
  EXPECT_EQ(at(2.0), GuideHint::Closer);
  EXPECT_EQ(at(3.1), GuideHint::TurnRound);
  EXPECT_EQ(at(-3.1), GuideHint::TurnRound);
  EXPECT_EQ(at(2.0), GuideHint::TurnRound);
  EXPECT_EQ(at(1.7), GuideHint::Closer);
}

TEST_F(Line, AwaitsWhatWavers) {
  EXPECT_EQ(line_.Await(GuideHint::ShowGrid, 0.0), GuideHint::ShowGrid);
  for (int frame = 1; frame < 60; ++frame)
    EXPECT_EQ(line_.Await(frame % 2 == 0 ? GuideHint::ShowGrid : GuideHint::PartHidden, frame / 30.0),
              GuideHint::ShowGrid);
  EXPECT_EQ(line_.Await(GuideHint::PartHidden, 2.0), GuideHint::ShowGrid);
  EXPECT_EQ(line_.Await(GuideHint::PartHidden, 2.31), GuideHint::PartHidden);
}

TEST(Hints, AreTheirOwnMirrorsTwice) {
  for (int number = 0; number <= static_cast<int>(GuideHint::Skip); ++number) {
    const auto hint = static_cast<GuideHint>(number);
    EXPECT_EQ(Mirrored(Mirrored(hint)), hint);
    EXPECT_LE(Guide::Words(hint).size(), 42U);
    EXPECT_EQ(Guide::Words(hint).empty(), hint == GuideHint::None);
  }
  EXPECT_EQ(Mirrored(GuideHint::Left), GuideHint::Right);
  EXPECT_EQ(Mirrored(GuideHint::Up), GuideHint::Up);
}

}  // namespace
