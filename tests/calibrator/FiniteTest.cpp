/// Numbers and what is none.
#include "calibrator/Finite.h"

#include <gtest/gtest.h>

#include <limits>

using namespace velmora;

namespace {

constexpr double NONE = std::numeric_limits<double>::quiet_NaN();
constexpr double INFINITE = std::numeric_limits<double>::infinity();

cv::Mat With(double element) {
  cv::Mat matrix = cv::Mat::ones(5, 1, CV_64FC3);
  matrix.at<cv::Vec3d>(4)[2] = element;
  return matrix;
}

bool AreFinite(double rms, const std::vector<cv::Mat>& matrices) {
  try {
    RequireFinite(rms, matrices);
    return true;
  } catch (const cv::Exception& fault) {
    EXPECT_EQ(fault.code, cv::Error::StsNoConv);
    return false;
  }
}

TEST(Finite, AreUsualNumbersAndMatricesThatAreNotThere) {
  EXPECT_TRUE(AreFinite(0.0, {With(-1e300), cv::Mat()}));
  EXPECT_TRUE(AreFinite(0.3, {}));
}

TEST(Finite, IsNoMatrixWithOneElementThatIsNone) {
  for (const double element : {NONE, INFINITE, -INFINITE})
    EXPECT_FALSE(AreFinite(0.1, {With(1), With(element)}));
}

TEST(Finite, IsNoErrorBeyondSinglePrecision) {
  for (const double rms : {NONE, INFINITE, 1e200}) EXPECT_FALSE(AreFinite(rms, {With(1.0)}));
}

}  // namespace
