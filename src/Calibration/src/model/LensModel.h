/// The lens models: what each is called, what it estimates, and what it asks of OpenCV.
#pragma once

#include <array>

namespace velmora {

/// The numbers by which programs name the models. Class Calibrator publishes the same ones.
constexpr int MODEL_CLASSIC = 10;
constexpr int MODEL_RATIONAL = 20;
constexpr int MODEL_FULL = 30;

/// How many parameters of the intrinsics each model estimates.
constexpr int CLASSIC_PARAMETERS = 9;
constexpr int RATIONAL_PARAMETERS = 12;
constexpr int FULL_PARAMETERS = 18;
constexpr int FISHEYE_PARAMETERS = 8;

struct LensModel {
  int number;
  const char* name;
  int parameters;  ///< the first ones of fx, fy, cx, cy, k1, k2, p1, p2, k3, k4, k5, k6, s1, s2, s3, s4,
                   ///< tauX, tauY
  int flags;       ///< of OpenCV's calibration
};

/// From the smallest to the largest.
const std::array<LensModel, 3>& LensModels();

/// The model of that number; the classic one for any other number.
const LensModel& LensModelOf(int number);

/// Its name; "none" for a number that is no model's.
const char* LensModelName(int number);

}  // namespace velmora
