/// The table of lens models.
#include "model/LensModel.h"

#include <gtest/gtest.h>

#include <climits>
#include <opencv2/calib3d.hpp>

using namespace velmora;

namespace {

using velmora::LensModelName;
using velmora::LensModelOf;

TEST(LensModel, OfRationalAsksForTheRationalModel) {
  EXPECT_EQ(LensModelOf(velmora::MODEL_RATIONAL).flags, 16384);
  EXPECT_EQ(LensModelOf(20).flags, cv::CALIB_RATIONAL_MODEL);
}

TEST(LensModel, OfFullAddsThinPrismAndTiltedSensor) {
  EXPECT_EQ(LensModelOf(velmora::MODEL_FULL).flags, 311296);
  EXPECT_EQ(LensModelOf(30).flags,
            cv::CALIB_RATIONAL_MODEL + cv::CALIB_THIN_PRISM_MODEL + cv::CALIB_TILTED_MODEL);
}

TEST(LensModel, OfAnyOtherNumberIsClassic) {
  for (const int number : {velmora::MODEL_CLASSIC, 0, 15, 19, 21, 29, 31, -20, INT_MIN, INT_MAX}) {
    EXPECT_EQ(LensModelOf(number).flags, 0) << number;
    EXPECT_EQ(LensModelOf(number).parameters, 9) << number;
  }
}

TEST(LensModel, HasANameOnlyWhereTheNumberIsItsOwn) {
  EXPECT_STREQ(LensModelName(10), "classic");
  EXPECT_STREQ(LensModelName(20), "rational");
  EXPECT_STREQ(LensModelName(30), "full");
  EXPECT_STREQ(LensModelName(0), "none");
}

TEST(LensModel, HasMoreParametersTheLargerItIs) {
  const auto& models = velmora::LensModels();
  for (size_t i = 1; i < models.size(); ++i) EXPECT_GT(models[i].parameters, models[i - 1].parameters);
  EXPECT_EQ(models.back().parameters, velmora::FULL_PARAMETERS);
}

}  // namespace
