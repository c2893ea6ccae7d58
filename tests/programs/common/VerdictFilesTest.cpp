/// The files of a result's verdict, and whose verdict it is.
#include "common/VerdictFiles.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "JSON.h"
#include "TemporaryFolder.h"

namespace {

using Grade = CalibrationVerdict::Grade;

class VerdictFile : public ::testing::Test {
 protected:
  /// A result with its verdict.
  void Save(const std::string& name, double focalLength) const {
    WriteResult(name, focalLength);
    CalibrationVerdict verdict;
    verdict.grade = Grade::Good;
    verdict.views = 12;
    verdict.deviationMap = cv::Mat(30, 40, CV_64F, cv::Scalar(0.1));
    verdict.dataArea = {{50.0F, 50.0F}, {600.0F, 50.0F}, {600.0F, 400.0F}, {50.0F, 400.0F}};
    verdict.covariance = verdict.jackknifeCovariance = cv::Mat::eye(9, 9, CV_64F);
    common::OutputFiles files;
    ASSERT_EQ(common::SaveVerdict(verdict, {640, 480}, {}, folder_.File(name), files), "");
  }
  void WriteResult(const std::string& name, double focalLength) const {
    JSON result;
    result.addInt("sensor", 0);
    result.addDouble("error", 0.1 / 3.0);
    result.addMat("cameraMatrix",
                  cv::Mat(cv::Matx33d(focalLength, 0.0, 319.5, 0.0, focalLength, 239.5, 0.0, 0.0, 1.0)));
    result.save(folder_.File(name + ".json"));
  }
  CalibrationVerdict Beside(const std::string& name) {
    return common::VerdictBeside(folder_.File(name + ".json"), warning_);
  }

  support::TemporaryFolder folder_;
  std::string warning_ = "before";
};

TEST_F(VerdictFile, IsThatOfTheResultBesideIt) {
  Save("camera", 1000.0 / 3.0);
  EXPECT_EQ(Beside("camera").grade, Grade::Good);
  EXPECT_EQ(warning_, "");
  const auto text = nlohmann::json::parse(support::ReadText(folder_.File("camera_verdict.json")));
  EXPECT_EQ(text["result"]["error"], 0.1 / 3.0);
  EXPECT_EQ(text["result"]["cameraMatrix"][4], 1000.0 / 3.0);
}

TEST_F(VerdictFile, OfAnEarlierResultIsNotUsed) {
  Save("camera", 500.0);
  WriteResult("camera", 500.1);
  EXPECT_EQ(Beside("camera").grade, Grade::None);
  EXPECT_EQ(warning_, "Warning: '" + folder_.File("camera_verdict.json") + "' is not on the result in '" +
                          folder_.File("camera.json") +
                          "', and is not used: how sure that camera's lens is remains unknown.\n");
}

TEST_F(VerdictFile, OfAnotherCameraIsNotUsed) {
  Save("left", 500.0);
  Save("right", 510.0);
  std::filesystem::copy_file(folder_.File("left_verdict.json"), folder_.File("right_verdict.json"),
                             std::filesystem::copy_options::overwrite_existing);
  EXPECT_EQ(Beside("right").grade, Grade::None);
  EXPECT_NE(warning_, "");
  EXPECT_EQ(Beside("left").grade, Grade::Good);
  EXPECT_EQ(warning_, "");
}

TEST_F(VerdictFile, ThatDoesNotSayWhoseItIsIsBelieved) {
  Save("camera", 500.0);
  const std::string path = folder_.File("camera_verdict.json");
  auto text = nlohmann::json::parse(support::ReadText(path));
  text.erase("result");
  support::WriteText(path, text.dump());
  EXPECT_EQ(Beside("camera").grade, Grade::Good);
  EXPECT_EQ(warning_, "");
  text["result"] = "mine";
  support::WriteText(path, text.dump());
  EXPECT_EQ(Beside("camera").grade, Grade::None);
  EXPECT_NE(warning_, "");
}

TEST_F(VerdictFile, IsNoneWhereThereIsNoneThatCanBeRead) {
  WriteResult("camera", 500.0);
  EXPECT_EQ(Beside("camera").grade, Grade::None);
  EXPECT_EQ(warning_, "");
  support::WriteText(folder_.File("camera_verdict.json"), "{\"grade\": 3");
  EXPECT_EQ(Beside("camera").grade, Grade::None);
  EXPECT_EQ(warning_, "");
}

}  // namespace
