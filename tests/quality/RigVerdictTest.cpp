/// The words of a rig's verdict.
#include "velmora/RigVerdict.h"

#include <gtest/gtest.h>

#include "PairVerdict.h"
#include "Verdict.h"

using namespace velmora;

namespace {

TEST(RigVerdict, HasTheWordsOfACamerasAndOfAPairs) {
  using Grade = CalibrationVerdict::Grade;
  for (const Grade grade : {Grade::None, Grade::Good, Grade::WithCare, Grade::Worthless}) {
    CalibrationVerdict camera;
    PairVerdict pair;
    RigVerdict rig;
    camera.grade = pair.grade = rig.grade = grade;
    EXPECT_EQ(rig.ToString(), camera.ToString());
    EXPECT_EQ(rig.ToString(), pair.ToString());
  }
}

TEST(RigVerdict, IsNoResultBeforeThereIsOne) {
  EXPECT_EQ(RigVerdict().ToString(), "no result");
}

}  // namespace
