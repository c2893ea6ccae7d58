/// Reading the intrinsics of a pair.
#include "calibrator/IntrinsicsDocuments.h"

#include <gtest/gtest.h>

#include <fstream>

#include "TemporaryFolder.h"
#include "unit/Scopes.h"
#include "unit/StereoCollection.h"

using namespace velmora;

namespace {

TEST(IntrinsicsDocuments, AreReadFromTextsAndFiles) {
  const support::TemporaryFolder folder;
  std::ofstream(folder.File("left.json")) << unit::LeftResult();
  std::ofstream(folder.File("right.json")) << unit::RightResult();
  StereoIntrinsics texts;
  StereoIntrinsics files;
  ASSERT_TRUE(ReadIntrinsics(unit::LeftResult(), unit::RightResult(), false, texts));
  ASSERT_TRUE(ReadIntrinsics(folder.File("left.json"), folder.File("right.json"), true, files));
  EXPECT_EQ(cv::norm(texts.K, files.K, cv::NORM_INF), 0.0);
  EXPECT_EQ(cv::norm(texts.DRight, files.DRight, cv::NORM_INF), 0.0);
  EXPECT_GT(cv::norm(texts.K, texts.KRight, cv::NORM_INF), 0.0);
}

TEST(IntrinsicsDocuments, AreNamedWhenTheyCannotBeRead) {
  StereoIntrinsics read;
  const auto told = [&](const std::string& left, const std::string& right, bool areFiles) {
    return unit::PrintedBy([&] { EXPECT_FALSE(ReadIntrinsics(left, right, areFiles, read)); });
  };
  EXPECT_EQ(told(unit::LeftResult(), "{}", false), "ERROR : Cannot open file: {}\n");
  EXPECT_EQ(told("{", unit::RightResult(), false), "ERROR : Cannot open file: {\n");
  EXPECT_EQ(told("/nowhere.json", "/none.json", true), "ERROR : Cannot open file: /nowhere.json\n");
}

TEST(IntrinsicsDocuments, AreRationalFromFourteenCoefficientsOn) {
  EXPECT_TRUE(IsRational(cv::Mat::zeros(1, 14, CV_64F), "left.json"));
  EXPECT_EQ(
      unit::PrintedBy([] { EXPECT_FALSE(IsRational(cv::Mat::zeros(1, 5, CV_64F), "left.json")); }),
      "ERROR : ERROR: The calibration model of 'left.json' is not rational. Stereo calibration cannot be "
      "processed.\n");
}

}  // namespace
