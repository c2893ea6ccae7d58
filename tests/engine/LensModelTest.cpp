/// The lens models' calibration flags and the solver's end.
#include "engine/LensModel.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <opencv2/calib3d.hpp>

#include "Calibrator.h"

namespace {

TEST(LensModel, OfRationalAsksForTheRationalModel) {
  EXPECT_EQ(FlagsOfModel(Calibrator::MODEL_RATIONAL), 16384);
  EXPECT_EQ(FlagsOfModel(20), cv::CALIB_RATIONAL_MODEL);
}

TEST(LensModel, OfFullAddsThinPrismAndTiltedSensor) {
  EXPECT_EQ(FlagsOfModel(Calibrator::MODEL_FULL), 311296);
  EXPECT_EQ(FlagsOfModel(30), cv::CALIB_RATIONAL_MODEL + cv::CALIB_THIN_PRISM_MODEL + cv::CALIB_TILTED_MODEL);
}

TEST(LensModel, OfAnyOtherValueIsClassic) {
  for (const int model : {Calibrator::MODEL_CLASSIC, 0, 15, 19, 21, 29, 31, -20, INT_MIN, INT_MAX}) {
    EXPECT_EQ(FlagsOfModel(model), 0) << model;
  }
}

TEST(LensModel, StopsAfter200IterationsOrWhenNothingChanges) {
  const cv::TermCriteria criteria = SolverCriteria();
  EXPECT_EQ(criteria.type, 3);
  EXPECT_EQ(criteria.maxCount, 200);
  EXPECT_EQ(criteria.epsilon, DBL_EPSILON);
}

}  // namespace
