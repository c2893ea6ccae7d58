/// What bent sheets and bad prints do to pairs, in words.
#include "quality/SheetEffect.h"

#include <gtest/gtest.h>

#include <string>

#include "quality/RigSolutions.h"

namespace {

using namespace velmora;

SheetEffect EffectOf(const unit::Shape& shape, double noise = 0.05) {
  return EffectOfSheet(
      unit::Solved(unit::ObservedByRig(unit::ClassicPair(), CLASSIC_PARAMETERS, shape, 12, 3, noise)));
}

TEST(SheetEffect, IsNoneOfAFlatSheet) {
  const SheetEffect effect = EffectOf(unit::FlatShape());
  EXPECT_EQ(effect.reason, "");
  EXPECT_EQ(effect.bend, 0.0);
}

TEST(SheetEffect, OfABendTellsItsDepthAndHowFarItMovesTheCameras) {
  const SheetEffect effect = EffectOf(unit::BentShape({0.0, 0.0, 0.4}));
  EXPECT_GT(effect.bend, 0.001);
  EXPECT_EQ(effect.reason.rfind("The sheet is bent by about ", 0), 0U) << effect.reason;
  EXPECT_NE(effect.reason.find(" mm: rotations are off by about "), std::string::npos) << effect.reason;
  EXPECT_EQ(effect.advice, "Mount the sheet on a flat, stiff board.");
}

TEST(SheetEffect, OfABendThatHardlyMovesACameraIsNotWorthAWord) {
  EXPECT_EQ(EffectOf(unit::BentShape({0.0, 0.0, 0.004}), 0.002).reason, "");
}

TEST(SheetEffect, OfAPrintOutOfProportionTellsByHowMuch) {
  const SheetEffect effect = EffectOf(unit::StretchedShape(0.02, 0.0));
  const std::string words = "The print is out of proportion by ";
  ASSERT_EQ(effect.reason.rfind(words, 0), 0U) << effect.reason;
  EXPECT_NEAR(std::stod(effect.reason.substr(words.size())), 2.0, 0.1);
  EXPECT_EQ(effect.bend, 0.0);
}

}  // namespace
