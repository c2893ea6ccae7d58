/// What the log says of what was left out.
#include "calibrator/RejectionLog.h"

#include <gtest/gtest.h>

#include "unit/Scopes.h"

using namespace velmora;

namespace {

Rejected RejectedOf(size_t camera, size_t view, int point) {
  Rejected item;
  item.camera = camera;
  item.view = view;
  item.point = point;
  item.residual = 2.346;
  item.reason = "far from where it should be";
  return item;
}

TEST(RejectionLog, NamesViewsAndPointsOfOneCamera) {
  EXPECT_EQ(unit::PrintedBy([] {
              LogRejected({RejectedOf(0, 3, Rejected::WHOLE_VIEW), RejectedOf(0, 4, 17)});
            }),
            "WARN  : View 3 is left out: far from where it should be (2.35 px).\n"
            "WARN  : Point 17 of view 4 is left out: far from where it should be (2.35 px).\n");
}

TEST(RejectionLog, NamesTheImageOfAPair) {
  EXPECT_EQ(
      unit::PrintedBy([] {
        LogRejectedOfPair({RejectedOf(0, 3, Rejected::WHOLE_VIEW), RejectedOf(1, 4, 17)});
      }),
      "WARN  : The left image of view 3 is left out: far from where it should be (2.35 px).\n"
      "WARN  : Point 17 of the right image of view 4 is left out: far from where it should be (2.35 px).\n");
}

TEST(RejectionLog, IsSilentWhenNothingWasLeftOut) {
  EXPECT_EQ(unit::PrintedBy([] { LogRejected({}); }), "");
}

}  // namespace
