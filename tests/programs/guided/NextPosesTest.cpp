/// Poses that are asked for until a camera is known well enough.
#include "guided/NextPoses.h"

#include <gtest/gtest.h>

#include <optional>

namespace {

using guided::NextPoses;
using State = NextPoses::State;

/// Proposes what a test says.
class Proposals {
 public:
  PoseProposal next;
  int asked = 0;

  NextPoses To(double target, int most) {
    return NextPoses([this] { return ++asked, next; }, target, most);
  }
};

PoseProposal Proposal(double deviation, bool nominal = false) {
  PoseProposal proposal;
  proposal.centres.assign(44, {1.0, 2.0});
  proposal.deviation = deviation;
  proposal.nominal = nominal;
  return proposal;
}

TEST(NextPoses, AreAskedForUntilTheCameraIsKnownWellEnough) {
  Proposals proposals;
  NextPoses next = proposals.To(0.05, 20);
  proposals.next = Proposal(0.051);
  EXPECT_EQ(next.Ask(9), State::Asked);
  EXPECT_EQ(next.Pose(), proposals.next.centres);
  proposals.next = Proposal(0.05);
  EXPECT_EQ(next.Ask(10), State::Known);
  EXPECT_EQ(proposals.asked, 2);
}

TEST(NextPoses, AreAtLeastSixHoweverWellTheCameraSeemsToBeKnown) {
  Proposals proposals;
  NextPoses next = proposals.To(0.05, 20);
  proposals.next = Proposal(0.001);
  for (int taken = 0; taken < 6; ++taken) EXPECT_EQ(next.Ask(taken), State::Asked) << taken;
  EXPECT_EQ(next.Ask(6), State::Known);
}

TEST(NextPoses, OfACameraThatIsNotKnownAreAskedForWhateverItsNumbersAre) {
  Proposals proposals;
  NextPoses next = proposals.To(0.05, 20);
  proposals.next = Proposal(0.001, true);
  EXPECT_EQ(next.Ask(10), State::Asked);
  EXPECT_EQ(next.Precision(), "camera not known yet (goal 0.0500 px)");
}

TEST(NextPoses, EndWhenNoMoreMayBeTaken) {
  Proposals proposals;
  NextPoses next = proposals.To(0.05, 7);
  proposals.next = Proposal(0.2);
  EXPECT_EQ(next.Ask(6), State::Asked);
  EXPECT_EQ(next.Ask(7), State::GivenUp);
  EXPECT_EQ(next.Ask(8), State::GivenUp);
  proposals.next = Proposal(0.04);
  EXPECT_EQ(next.Ask(7), State::Known) << "known with the last one";
}

TEST(NextPoses, EndWhenThereIsNoneToPropose) {
  Proposals proposals;
  NextPoses next = proposals.To(0.05, 20);
  proposals.next = Proposal(0.2);
  proposals.next.centres.clear();
  EXPECT_EQ(next.Ask(6), State::GivenUp);
  EXPECT_TRUE(next.Pose().empty());
}

TEST(NextPoses, SayHowWellTheCameraIsKnown) {
  Proposals proposals;
  NextPoses next = proposals.To(0.3, 20);
  proposals.next = Proposal(0.4567);
  next.Ask(6);
  EXPECT_EQ(next.Precision(), "known to 0.46 px (goal 0.30 px)");
  proposals.next = Proposal(0.04567);
  next.Ask(7);
  EXPECT_EQ(next.Precision(), "known to 0.0457 px (goal 0.30 px)");
}

}  // namespace
