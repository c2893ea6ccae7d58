/// Comparisons of matrices for tests.
#pragma once

#include <gtest/gtest.h>

#include <opencv2/core.hpp>

namespace support {

/// Same size, type and, element by element, the same bits. Use as EXPECT_TRUE(SameMat(a, b)).
::testing::AssertionResult SameMat(const cv::Mat& actual, const cv::Mat& expected);

/// Same size and type, and no element further away than `tolerance`. NaN is near nothing.
::testing::AssertionResult MatNear(const cv::Mat& actual, const cv::Mat& expected, double tolerance);

}  // namespace support

/// Expects the same size, type and bits.
#define EXPECT_SAME_MAT(actual, expected) EXPECT_TRUE(::support::SameMat((actual), (expected)))
/// Expects the same size and type, and all elements within the tolerance.
#define EXPECT_MAT_NEAR(actual, expected, tolerance) \
  EXPECT_TRUE(::support::MatNear((actual), (expected), (tolerance)))
