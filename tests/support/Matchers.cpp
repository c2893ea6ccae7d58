/// Compares matrices and says where they differ.
#include "Matchers.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <sstream>

namespace support {

namespace {

::testing::AssertionResult SameShape(const cv::Mat& actual, const cv::Mat& expected) {
  if (actual.dims > 2 || expected.dims > 2)
    return ::testing::AssertionFailure() << "more than two dimensions";
  if (actual.size() != expected.size() || actual.type() != expected.type()) {
    return ::testing::AssertionFailure() << actual.size() << " of type " << actual.type() << " instead of "
                                         << expected.size() << " of type " << expected.type();
  }
  return ::testing::AssertionSuccess();
}

/// One element as text.
std::string ElementText(const cv::Mat& matrix, int row, int column) {
  std::ostringstream text;
  text << matrix(cv::Rect(column, row, 1, 1));
  return text.str();
}

::testing::AssertionResult Difference(const cv::Mat& actual, const cv::Mat& expected, int row, int column) {
  return ::testing::AssertionFailure()
         << "row " << row << ", column " << column << ": " << ElementText(actual, row, column)
         << " instead of " << ElementText(expected, row, column);
}

}  // namespace

::testing::AssertionResult SameMat(const cv::Mat& actual, const cv::Mat& expected) {
  const ::testing::AssertionResult shape = SameShape(actual, expected);
  if (!shape) return shape;
  const std::size_t size = actual.elemSize();
  for (int row = 0; row < actual.rows; ++row) {
    const uchar* a = actual.ptr(row);
    const uchar* e = expected.ptr(row);
    for (int column = 0; column < actual.cols; ++column, a += size, e += size) {
      if (std::memcmp(a, e, size) != 0) return Difference(actual, expected, row, column);
    }
  }
  return ::testing::AssertionSuccess();
}

::testing::AssertionResult MatNear(const cv::Mat& actual, const cv::Mat& expected, double tolerance) {
  const ::testing::AssertionResult shape = SameShape(actual, expected);
  if (!shape) return shape;
  cv::Mat a;
  cv::Mat e;
  actual.convertTo(a, CV_64F);
  expected.convertTo(e, CV_64F);
  for (int row = 0; row < a.rows; ++row) {
    for (int k = 0; k < a.cols * a.channels(); ++k) {
      const double difference = std::abs(a.ptr<double>(row)[k] - e.ptr<double>(row)[k]);
      if (!(difference <= tolerance)) return Difference(actual, expected, row, k / a.channels());
    }
  }
  return ::testing::AssertionSuccess();
}

}  // namespace support
