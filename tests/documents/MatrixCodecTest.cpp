/// Elements of a matrix as a JSON array and back.
#include "documents/MatrixCodec.h"

#include <gtest/gtest.h>

#include "Matchers.h"

using namespace velmora;

namespace {

TEST(MatrixCodec, KnowsDepthsUpToDouble) {
  EXPECT_EQ(MAX_ENCODED_DEPTH, CV_64F);
}

TEST(MatrixCodec, MakesAnArrayOfBytesToo) {
  const nlohmann::json data = EncodeElements((cv::Mat_<uchar>(1, 3) << 0, 128, 255));
  EXPECT_TRUE(data.is_array());
  EXPECT_EQ(data.dump(), "[0,128,255]");
  for (const nlohmann::json& element : data) EXPECT_TRUE(element.is_number_unsigned());
}

TEST(MatrixCodec, MakesSignedNumbersOfSignedElements) {
  const nlohmann::json data = EncodeElements((cv::Mat_<short>(2, 1) << -5, 5));
  EXPECT_EQ(data.dump(), "[-5,5]");
  for (const nlohmann::json& element : data) EXPECT_FALSE(element.is_number_unsigned());
}

TEST(MatrixCodec, MakesAnEmptyArrayOfAnEmptyMatrix) {
  for (int depth = CV_8U; depth <= CV_64F; ++depth) {
    EXPECT_EQ(EncodeElements(cv::Mat(0, 0, CV_MAKETYPE(depth, 1))).dump(), "[]") << depth;
  }
}

TEST(MatrixCodec, TakesTheColumnOfAMatrixThroughItsStride) {
  const cv::Mat whole = (cv::Mat_<double>(3, 2) << 1, 2, 3, 4, 5, 6);
  EXPECT_EQ(EncodeElements(whole.col(1)).dump(), "[2.0,4.0,6.0]");
}

TEST(MatrixCodec, FillsTheMatrixFromItsFirstElement) {
  cv::Mat matrix = cv::Mat::zeros(2, 2, CV_32F);
  DecodeElements(nlohmann::json::parse("[1.5, 2.5]"), CV_32F, matrix);
  EXPECT_SAME_MAT(matrix, (cv::Mat_<float>(2, 2) << 1.5F, 2.5F, 0.0F, 0.0F));
}

TEST(MatrixCodec, NeverWritesPastTheMatrix) {
  cv::Mat guarded = (cv::Mat_<int>(1, 4) << -1, -1, 77, 77);
  cv::Mat matrix(1, 2, CV_32S, guarded.data);
  DecodeElements(nlohmann::json::parse("[1, 2, 3, 4]"), CV_32S, matrix);
  EXPECT_SAME_MAT(guarded, (cv::Mat_<int>(1, 4) << 1, 2, 77, 77));
}

TEST(MatrixCodec, LeavesAnEmptyMatrixEmpty) {
  cv::Mat matrix;
  DecodeElements(nlohmann::json::parse("[1, 2]"), CV_64F, matrix);
  EXPECT_TRUE(matrix.empty());
}

TEST(MatrixCodec, LeavesTheMatrixAloneWhenTheDataIsNoArrayOfNumbers) {
  cv::Mat matrix = (cv::Mat_<double>(1, 1) << 7.0);
  EXPECT_THROW(DecodeElements(nlohmann::json("text"), CV_64F, matrix), nlohmann::json::type_error);
  EXPECT_THROW(DecodeElements(nlohmann::json::parse("[1, null]"), CV_64F, matrix),
               nlohmann::json::type_error);
  EXPECT_SAME_MAT(matrix, (cv::Mat_<double>(1, 1) << 7.0));
}

}  // namespace
