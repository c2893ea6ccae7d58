/// Matrices in a JSON document: the encoding, its leniencies and its limits.
#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <numeric>

#include "JSON.h"
#include "Matchers.h"
#include "unit/Scopes.h"

namespace {

const char* const ONE_CHANNEL_ERROR = "ERROR : ERROR: Only one channel matrices are supported so far.\n";

/// The member as the library sees it.
nlohmann::json Member(const JSON& document, const std::string& key) {
  return nlohmann::json::parse(document.toJson()).at(key);
}

nlohmann::json Encoded(const cv::Mat& matrix) {
  JSON document;
  document.addMat("m", matrix);
  return Member(document, "m");
}

cv::Mat ThroughText(const cv::Mat& matrix) {
  JSON written;
  written.addMat("m", matrix);
  JSON read;
  read.fromJson(written.toJson());
  return read.readMat("m");
}

cv::Mat Decoded(const std::string& member) {
  JSON document;
  document.fromJson("{\"m\": " + member + "}");
  return document.readMat("m");
}

/// Fills a matrix of bytes with 0, 1, 2 and so on, in memory order.
void NumberBytes(cv::Mat& matrix) {
  std::iota(matrix.ptr(), matrix.ptr() + matrix.total() * matrix.elemSize(), static_cast<uchar>(0));
}

/// Single-channel matrices that hold the bounds of each depth.
std::vector<cv::Mat> ExtremesOfEachDepth() {
  return {(cv::Mat_<uchar>(2, 2) << 0, 1, 254, UCHAR_MAX),
          (cv::Mat_<schar>(2, 2) << SCHAR_MIN, -1, 0, SCHAR_MAX),
          (cv::Mat_<ushort>(1, 3) << 0, 32768, USHRT_MAX),
          (cv::Mat_<short>(3, 1) << SHRT_MIN, -1, SHRT_MAX),
          (cv::Mat_<int>(1, 3) << INT_MIN, -1, INT_MAX),
          (cv::Mat_<float>(2, 3) << -FLT_MAX, FLT_MIN, 0.1F, -0.0F, FLT_EPSILON, 1.0F / 3.0F),
          (cv::Mat_<double>(2, 3) << -DBL_MAX, DBL_MIN, 0.1, -0.0, DBL_EPSILON, 1.0 / 3.0)};
}

TEST(JSONMatrix, ComesBackBitForBitForEachDepth) {
  for (const cv::Mat& matrix : ExtremesOfEachDepth()) {
    SCOPED_TRACE(matrix.depth());
    EXPECT_SAME_MAT(ThroughText(matrix), matrix);
  }
}

TEST(JSONMatrix, NamesSizeTypeAndDepthAsIntegers) {
  for (const cv::Mat& matrix : ExtremesOfEachDepth()) {
    const nlohmann::json member = Encoded(matrix);
    EXPECT_EQ(member.at("rows"), matrix.rows);
    EXPECT_EQ(member.at("cols"), matrix.cols);
    EXPECT_EQ(member.at("type"), matrix.type());
    EXPECT_EQ(member.at("depth"), matrix.depth());
    for (const char* key : {"rows", "cols", "type", "depth"}) EXPECT_TRUE(member.at(key).is_number_integer());
    EXPECT_EQ(member.size(), 5U);
  }
}

TEST(JSONMatrix, StoresElementsAsNumbersOfTheirKind) {
  for (const cv::Mat& matrix : ExtremesOfEachDepth()) {
    const bool floating = matrix.depth() >= CV_32F;
    const nlohmann::json member = Encoded(matrix);
    ASSERT_EQ(member.at("data").size(), matrix.total());
    for (const nlohmann::json& element : member.at("data")) {
      EXPECT_EQ(element.is_number_float(), floating);
      EXPECT_EQ(element.is_number_integer(), !floating);
    }
  }
}

TEST(JSONMatrix, WritesAColumnOfDoublesWithItsKeysInOrder) {
  JSON document;
  document.addMat("T", (cv::Mat_<double>(3, 1) << 1.0, -2.5, 0.125));
  EXPECT_EQ(document.toJson(),
            "{\n"
            "    \"T\": {\n"
            "        \"cols\": 1,\n"
            "        \"data\": [\n"
            "            1.0,\n"
            "            -2.5,\n"
            "            0.125\n"
            "        ],\n"
            "        \"depth\": 6,\n"
            "        \"rows\": 3,\n"
            "        \"type\": 6\n"
            "    }\n"
            "}");
  EXPECT_SAME_MAT(document.readMat("T"), (cv::Mat_<double>(3, 1) << 1.0, -2.5, 0.125));
}

TEST(JSONMatrix, WritesFloatsWithTheDigitsOfTheirDoubleValue) {
  const cv::Mat matrix = (cv::Mat_<float>(2, 2) << 0.19F, 0.1F, -7.0F, 1e-30F);
  JSON document;
  document.addMat("m", matrix);
  EXPECT_NE(document.toJson().find("0.1899999976158142"), std::string::npos);
  EXPECT_SAME_MAT(document.readMat("m"), matrix);
}

TEST(JSONMatrix, StoresElementsRowByRow) {
  EXPECT_EQ(Encoded((cv::Mat_<int>(2, 3) << 1, 2, 3, 4, 5, 6)).at("data").dump(), "[1,2,3,4,5,6]");
}

TEST(JSONMatrix, ReportsSeveralChannelsAndStoresThemAllTheSame) {
  cv::Mat image(2, 3, CV_8UC3);
  NumberBytes(image);
  JSON document;
  EXPECT_EQ(unit::PrintedBy([&] { document.addMat("image", image); }), ONE_CHANNEL_ERROR);
  const nlohmann::json member = Member(document, "image");
  EXPECT_EQ(member.at("type"), 16);
  EXPECT_EQ(member.at("depth"), 0);
  EXPECT_EQ(member.at("data").size(), 18U);
  EXPECT_SAME_MAT(document.readMat("image"), image);
}

TEST(JSONMatrix, ReportsNothingForOneChannel) {
  JSON document;
  EXPECT_EQ(unit::PrintedBy([&] {
              for (const cv::Mat& matrix : ExtremesOfEachDepth()) document.addMat("m", matrix);
            }),
            "");
}

TEST(JSONMatrix, KeepsTheReportBackAtLevelZero) {
  const unit::ScopedLogLevel silent(0);
  JSON document;
  EXPECT_EQ(unit::PrintedBy([&] { document.addMat("m", cv::Mat::zeros(1, 1, CV_8UC2)); }), "");
  EXPECT_EQ(Member(document, "m").at("type"), 8);
}

TEST(JSONMatrix, StoresARegionOfInterestThroughItsRowStride) {
  cv::Mat whole(5, 7, CV_32S);
  std::iota(whole.begin<int>(), whole.end<int>(), 0);
  const cv::Mat region = whole(cv::Rect(2, 1, 3, 2));
  ASSERT_FALSE(region.isContinuous());
  EXPECT_EQ(Encoded(region).at("data").dump(), "[9,10,11,16,17,18]");
  EXPECT_SAME_MAT(ThroughText(region), region.clone());
}

TEST(JSONMatrix, CutsTheRowsOfARegionOfSeveralChannelsShort) {
  cv::Mat whole(3, 4, CV_8UC2);
  NumberBytes(whole);
  const cv::Mat region = whole(cv::Rect(1, 1, 2, 2));
  ASSERT_FALSE(region.isContinuous());
  JSON document;
  EXPECT_EQ(unit::PrintedBy([&] { document.addMat("m", region); }), ONE_CHANNEL_ERROR);
  // Two elements a row, one channel's worth, from where the row of the region begins.
  EXPECT_EQ(Member(document, "m").at("data").dump(), "[10,11,18,19]");
}

TEST(JSONMatrix, StoresTheWholeBufferOfAContinuousView) {
  const cv::Mat whole = (cv::Mat_<int>(3, 2) << 1, 2, 3, 4, 5, 6);
  const cv::Mat view = whole.rowRange(1, 2);
  ASSERT_TRUE(view.isContinuous());
  JSON document;
  document.addMat("m", view);
  const nlohmann::json member = Member(document, "m");
  EXPECT_EQ(member.at("rows"), 1);
  EXPECT_EQ(member.at("data").dump(), "[1,2,3,4,5,6]");
  // Hence the first elements of the buffer come back, not those of the view.
  EXPECT_SAME_MAT(document.readMat("m"), whole.rowRange(0, 1).clone());
}

TEST(JSONMatrix, LeavesTheMatrixAlone) {
  const cv::Mat matrix = cv::Mat::eye(3, 3, CV_64F);
  const cv::Mat before = matrix.clone();
  Encoded(matrix);
  EXPECT_SAME_MAT(matrix, before);
  EXPECT_EQ(matrix.u->refcount, 1);
}

TEST(JSONMatrix, StoresAnEmptyMatrixWithoutElements) {
  const nlohmann::json member = Encoded(cv::Mat());
  EXPECT_EQ(member.at("rows"), 0);
  EXPECT_EQ(member.at("cols"), 0);
  EXPECT_EQ(member.at("data").dump(), "[]");
  EXPECT_TRUE(ThroughText(cv::Mat()).empty());
}

TEST(JSONMatrix, ReportsADepthThatItDoesNotKnowAndStoresNoElements) {
  const cv::Mat unknown(2, 3, CV_MAKETYPE(7, 1));
  JSON document;
  document.addInt("m", 1);
  EXPECT_EQ(unit::PrintedBy([&] { document.addMat("m", unknown); }),
            "ERROR : ERROR: '7' not supported depth.\n");
  EXPECT_EQ(Member(document, "m").dump(), R"({"cols":3,"depth":7,"rows":2,"type":7})");
}

TEST(JSONMatrix, ReportsChannelsBeforeDepth) {
  JSON document;
  EXPECT_EQ(unit::PrintedBy([&] { document.addMat("m", cv::Mat(1, 1, CV_MAKETYPE(7, 2))); }),
            std::string(ONE_CHANNEL_ERROR) + "ERROR : ERROR: '7' not supported depth.\n");
}

TEST(JSONMatrix, ReadsADepthBeyondDoubleAsAMatrixOfTheStatedSizeAndType) {
  const cv::Mat seven = Decoded(R"({"rows": 2, "cols": 3, "type": 5, "depth": 7})");
  EXPECT_EQ(seven.size(), cv::Size(3, 2));
  EXPECT_EQ(seven.type(), CV_32FC1);
  const cv::Mat more = Decoded(R"({"rows": 4, "cols": 1, "type": 16, "depth": 100, "data": "no matter"})");
  EXPECT_EQ(more.size(), cv::Size(1, 4));
  EXPECT_EQ(more.type(), CV_8UC3);
}

TEST(JSONMatrix, UsesOnlyTheLowTwelveBitsOfTheType) {
  const cv::Mat matrix = Decoded(R"({"rows": 1, "cols": 1, "type": 61446, "depth": 6, "data": [2.5]})");
  EXPECT_SAME_MAT(matrix, (cv::Mat_<double>(1, 1) << 2.5));
}

TEST(JSONMatrix, ReadsElementsAsTheDepthSaysNotTheType) {
  const cv::Mat matrix = Decoded(R"({"rows": 1, "cols": 2, "type": 6, "depth": 4, "data": [1, 2, 3, 4]})");
  const int words[] = {1, 2, 3, 4};
  cv::Mat expected(1, 2, CV_64F);
  std::memcpy(expected.data, words, sizeof(words));
  EXPECT_SAME_MAT(matrix, expected);
}

TEST(JSONMatrix, ConvertsElementsOfOtherKindsAsTheLibraryDoes) {
  EXPECT_SAME_MAT(Decoded(R"({"rows": 1, "cols": 2, "type": 6, "depth": 6, "data": [1, -2]})"),
                  (cv::Mat_<double>(1, 2) << 1.0, -2.0));
  EXPECT_SAME_MAT(Decoded(R"({"rows": 1, "cols": 2, "type": 4, "depth": 4, "data": [true, -3.9]})"),
                  (cv::Mat_<int>(1, 2) << 1, -3));
  EXPECT_SAME_MAT(Decoded(R"({"rows": 1, "cols": 2, "type": 0, "depth": 0, "data": [257, 3.9]})"),
                  (cv::Mat_<uchar>(1, 2) << 1, 3));
}

TEST(JSONMatrix, CopiesNoMoreElementsThanTheMatrixHolds) {
  EXPECT_SAME_MAT(
      Decoded(R"({"rows": 1, "cols": 2, "type": 4, "depth": 4, "data": [1, 2, 3, 4, 5, 6, 7, 8]})"),
      (cv::Mat_<int>(1, 2) << 1, 2));
}

TEST(JSONMatrix, CopiesNoMoreBytesThanTheMatrixHolds) {
  // Eight bytes for each element of data, but one for each of the matrix.
  const cv::Mat matrix =
      Decoded(R"({"rows": 1, "cols": 12, "type": 0, "depth": 6, "data": [1.5, 2.5, 3.5]})");
  const double numbers[] = {1.5, 2.5};
  cv::Mat expected(1, 12, CV_8U);
  std::memcpy(expected.data, numbers, 12);
  EXPECT_SAME_MAT(matrix, expected);
}

TEST(JSONMatrix, SetsTheFirstElementsFromDataThatIsTooShort) {
  const cv::Mat matrix = Decoded(R"({"rows": 3, "cols": 1, "type": 6, "depth": 6, "data": [1.0, 2.0]})");
  ASSERT_EQ(matrix.size(), cv::Size(1, 3));
  EXPECT_EQ(matrix.at<double>(0), 1.0);
  EXPECT_EQ(matrix.at<double>(1), 2.0);
}

TEST(JSONMatrix, ReadsAnEmptyMatrix) {
  EXPECT_TRUE(Decoded(R"({"rows": 0, "cols": 0, "type": 6, "depth": 6, "data": []})").empty());
  EXPECT_TRUE(Decoded(R"({"rows": 0, "cols": 5, "type": 6, "depth": 6, "data": [1, 2]})").empty());
}

TEST(JSONMatrix, RaisesForNegativeSizes) {
  EXPECT_THROW(Decoded(R"({"rows": -1, "cols": 3, "type": 6, "depth": 6, "data": [1]})"), cv::Exception);
  EXPECT_THROW(Decoded(R"({"rows": 3, "cols": -1, "type": 6, "depth": 6, "data": [1]})"), cv::Exception);
  EXPECT_THROW(Decoded(R"({"rows": -2147483648, "cols": -2147483648, "type": 6, "depth": 6, "data": [1]})"),
               cv::Exception);
}

TEST(JSONMatrix, RaisesForSizesThatNoMemoryHolds) {
  EXPECT_THROW(Decoded(R"({"rows": 2147483647, "cols": 2147483647, "type": 6, "depth": 6, "data": [1]})"),
               cv::Exception);
}

TEST(JSONMatrix, RaisesForMoreThanTwoGibibytesBeforeAskingForThem) {
  EXPECT_THROW(Decoded(R"({"rows": 65537, "cols": 32768, "type": 0, "depth": 0, "data": []})"),
               cv::Exception);
  EXPECT_THROW(Decoded(R"({"rows": 2147483647, "cols": 83647, "type": 13, "depth": 5, "data": []})"),
               cv::Exception);
  EXPECT_EQ(Decoded(R"({"rows": 65536, "cols": 1024, "type": 0, "depth": 0, "data": []})").rows, 65536);
}

TEST(JSONMatrix, RaisesForSizesWhoseBytesCannotBeCounted) {
  // 2^30 x 2^30 elements of 16 bytes are 2^64 bytes, which a 64-bit number takes for none at all.
  EXPECT_THROW(Decoded(R"({"rows": 1073741824, "cols": 1073741824, "type": 14, "depth": 6, "data": [1]})"),
               cv::Exception);
  EXPECT_THROW(Decoded(R"({"rows": 2147483647, "cols": 2147483647, "type": 4094, "depth": 6, "data": [1]})"),
               cv::Exception);
}

class JSONMatrixWithoutMember : public ::testing::TestWithParam<const char*> {};

TEST_P(JSONMatrixWithoutMember, RaisesTheLibrarysTypeError) {
  nlohmann::json member =
      nlohmann::json::parse(R"({"rows": 1, "cols": 1, "type": 6, "depth": 6, "data": [1.0]})");
  ASSERT_EQ(Decoded(member.dump()).at<double>(0), 1.0);
  member.erase(GetParam());
  EXPECT_THROW(Decoded(member.dump()), nlohmann::json::type_error);
}

INSTANTIATE_TEST_SUITE_P(JSONMatrix, JSONMatrixWithoutMember,
                         ::testing::Values("rows", "cols", "type", "depth", "data"));

TEST(JSONMatrix, RaisesATypeErrorForDataThatIsNoArray) {
  try {
    Decoded(R"({"rows": 1, "cols": 1, "type": 6, "depth": 6, "data": "1"})");
    FAIL() << "nothing was raised";
  } catch (const nlohmann::json::type_error& error) {
    EXPECT_NE(std::string(error.what()).find("type must be array, but is string"), std::string::npos)
        << error.what();
  }
}

TEST(JSONMatrix, TakesTheNearestNumberForRealsBeyondAnIntegerType) {
  const cv::Mat matrix =
      Decoded(R"({"rows": 1, "cols": 4, "type": 2, "depth": 2, "data": [1.9, -1e5, 1e300, -0.5]})");
  EXPECT_SAME_MAT(matrix, (cv::Mat_<ushort>(1, 4) << 1, 0, 65535, 0));
}

TEST(JSONMatrix, RaisesATypeErrorForElementsThatAreNoNumbers) {
  EXPECT_THROW(Decoded(R"({"rows": 1, "cols": 1, "type": 6, "depth": 6, "data": ["1"]})"),
               nlohmann::json::type_error);
}

TEST(JSONMatrix, RaisesATypeErrorForAMemberThatIsNoObject) {
  EXPECT_THROW(Decoded("5"), nlohmann::json::type_error);
  EXPECT_THROW(Decoded("[1]"), nlohmann::json::type_error);
}

}  // namespace
