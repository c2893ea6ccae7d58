/// The table and the result file of a rig.
#include "batch/RigFile.h"

#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>

#include "TemporaryFolder.h"
#include "batch/RigReport.h"
#include "common/VerdictReport.h"

namespace {

using nlohmann::json;

/// Two cameras and three moments, of which the last was left out as a whole.
class RigFile : public ::testing::Test {
 protected:
  RigFile() {
    for (int i = 0; i < 2; ++i) {
      velmora::RigCamera camera;
      camera.imageSize = {640, 480};
      camera.K = (cv::Mat_<double>(3, 3) << 500 + i, 0, 320, 0, 501 + i, 240, 0, 0, 1);
      camera.D = cv::Mat::zeros(1, 14, CV_64F);
      camera.stdDevIntrinsics = cv::Mat(18, 1, CV_64F, cv::Scalar(0.25));
      camera.rms = 0.125;
      camera.views = 2 - i;
      result_.cameras.push_back(camera);
    }
    velmora::RigCamera& right = result_.cameras[1];
    right.R = {0, -1, 0, 1, 0, 0, 0, 0, 1};
    right.T = {-0.5, 0.25, 0};
    right.rotationDeviation = {0.01, 0.02, 0.03};
    right.translationDeviation = {0.001, 0.002, 0.003};
    result_.rms = 0.5;
    result_.views = {{{0.1, 0.2, 0.3}, {1, 2, 3}, {0.1, 0.2}, true},
                     {{0.4, 0.5, 0.6}, {4, 5, 6}, {0.3, -1.0}, true},
                     {{}, {}, {-1.0, -1.0}, false}};
    result_.leftOut = {{2, 0, -1, 7.5, "disagrees with the other views"}, {0, 1, 12, 1.5, "is off"}};
    result_.verdict.grade = CalibrationVerdict::Grade::WithCare;
    result_.verdict.remarks = {{"There are few views that camera 1 shares with others.", "Take ten."}};
    result_.verdict.formal = {{0.1, 0.01, 0.2}};
    result_.verdict.jackknife = {{0.3, std::numeric_limits<double>::quiet_NaN(), 0.4}};
    result_.verdict.disagreements = {{1, 6.5}};
    result_.verdict.sheetBend = 0.0005;
    result_.verdict.cameras.resize(2);
  }

  velmora::RigResult result_;
  const common::RigNames names_{{"left", "right"}, {{"0.png", "0.png"}, {"1.png", ""}, {"2.png", ""}}};
};

TEST_F(RigFile, HoldsTheCameras) {
  const json file = json::parse(batch::RigJson(result_, names_, "rational"));
  EXPECT_EQ(file["model"], "rational");
  EXPECT_EQ(file["rms"], 0.5);
  ASSERT_EQ(file["cameras"].size(), 2U);
  const json& right = file["cameras"][1];
  EXPECT_EQ(right["name"], "right");
  EXPECT_EQ(right["imageSize"], json({{"width", 640}, {"height", 480}}));
  EXPECT_EQ(right["K"], json({{501.0, 0.0, 320.0}, {0.0, 502.0, 240.0}, {0.0, 0.0, 1.0}}));
  EXPECT_EQ(right["D"], json(std::vector<double>(14, 0.0)));
  EXPECT_EQ(right["stdDevIntrinsics"], json(std::vector<double>(18, 0.25)));
  EXPECT_EQ(right["rms"], 0.125);
  EXPECT_EQ(right["views"], 1);
  const json& pose = right["camera_from_rig"];
  EXPECT_EQ(pose["R"], json({{0.0, -1.0, 0.0}, {1.0, 0.0, 0.0}, {0.0, 0.0, 1.0}}));
  EXPECT_EQ(pose["T"], json({-0.5, 0.25, 0.0}));
  EXPECT_EQ(pose["rotationDeviation"], json({0.01, 0.02, 0.03}));
  EXPECT_EQ(pose["translationDeviation"], json({0.001, 0.002, 0.003}));
}

TEST_F(RigFile, HoldsTheViewsWithNullForWhatWasNotSeen) {
  const json file = json::parse(batch::RigJson(result_, names_, ""));
  EXPECT_TRUE(file["model"].is_null());
  ASSERT_EQ(file["views"].size(), 3U);
  EXPECT_EQ(file["views"][0]["images"], json({"0.png", "0.png"}));
  EXPECT_EQ(file["views"][0]["rig_from_target"],
            json({{"rvec", {0.1, 0.2, 0.3}}, {"tvec", {1.0, 2.0, 3.0}}}));
  EXPECT_EQ(file["views"][1]["images"], json({"1.png", nullptr}));
  EXPECT_EQ(file["views"][1]["rms"], json({0.3, nullptr}));
  EXPECT_TRUE(file["views"][2]["rig_from_target"].is_null());
  EXPECT_EQ(file["left_out"][0], json({{"view", 2},
                                       {"camera", "left"},
                                       {"image", "2.png"},
                                       {"point", -1},
                                       {"residual", 7.5},
                                       {"reason", "disagrees with the other views"}}));
  EXPECT_EQ(file["left_out"][1]["image"], "0.png");
  EXPECT_EQ(file["left_out"][1]["point"], 12);
}

TEST_F(RigFile, HoldsTheVerdictWithNames) {
  const json verdict = json::parse(batch::RigJson(result_, names_, "full"))["verdict"];
  EXPECT_EQ(verdict["grade"], "usable with care");
  EXPECT_EQ(verdict["remarks"],
            json::array({{{"reason", "There are few views that camera 'right' shares with others."},
                          {"advice", "Take ten."}}}));
  EXPECT_EQ(verdict["formal"], json::array({{{"rotation", 0.1}, {"baseline", 0.01}, {"direction", 0.2}}}));
  EXPECT_TRUE(verdict["jackknife"][0]["baseline"].is_null());
  EXPECT_EQ(verdict["disagreements"], json::array({{{"view", 1}, {"factor", 6.5}}}));
  EXPECT_EQ(verdict["sheetBend"], 0.0005);
  ASSERT_EQ(verdict["cameras"].size(), 2U);
  EXPECT_EQ(verdict["cameras"][0]["grade"], "no result");
  EXPECT_FALSE(verdict["cameras"][0].contains("leftOut"));
}

TEST_F(RigFile, IsWrittenWhateverBytesNamesHave) {
  const support::TemporaryFolder folder;
  const common::RigNames strange{{"left", "ri\xFFght"}, names_.images};
  const std::string path = folder.File("a_rig.json");
  EXPECT_TRUE(batch::SaveRig(batch::RigJson(result_, strange, ""), path));
  EXPECT_EQ(json::parse(support::ReadText(path))["cameras"][1]["name"], "ri\xEF\xBF\xBDght");
  EXPECT_FALSE(batch::SaveRig("{}", folder.File("none/a_rig.json")));
}

TEST_F(RigFile, TheTableTellsHowEachCameraStandsToTheFirst) {
  const std::string table =
      batch::RigTable(result_, names_, {{"9.png", "camera 'left': cannot be decoded"}}, "rational");
  EXPECT_EQ(table.rfind("3 of 5 images used; 1 disagrees\n"
                        "  1 not used, camera 'left': cannot be decoded:\n    9.png\n"
                        "  1 found but in disagreement with the others:\n    left/2.png\n",
                        0),
            0U)
      << table;
  EXPECT_NE(table.find("Rig: 2 cameras, rational model\nRMS reprojection error: 0.500000 px\n"),
            std::string::npos);
  const size_t right = table.find("\nCamera right: 640 x 480, 1 view, RMS 0.125000 px\n");
  ASSERT_NE(right, std::string::npos) << table;
  EXPECT_EQ(table.substr(0, right).find("rotation"), std::string::npos);
  for (const char* row : {"  fx                       501.000          0.250\n",
                          "  rotation z, deg          90.0000         0.0300\n",
                          "  translation x, m       -0.500000       0.001000\n"}) {
    EXPECT_NE(table.find(row, right), std::string::npos) << row << table;
  }
  EXPECT_NE(batch::RigTable(result_, names_, {}, "").find("2 cameras, intrinsics given\n"),
            std::string::npos);
}

TEST_F(RigFile, TheVerdictIsToldOfTheRigAndOfEachCamera) {
  const std::string text = common::VerdictTable(result_, names_);
  for (const char* part :
       {"Verdict: usable with care\n  There are few views that camera 'right' shares with "
        "others.\n    Take ten.\n  right to left, from the noise: rotation to 0.100 degrees",
        "  Not at the same place in all images: 1.png (6.5 times the noise)\n",
        "  Left out: left/2.png, disagrees with the other views (7.50 px)\n",
        "  Ignored: circle 12 of right/0.png, 1.50 px from where the others put it\n",
        "\nCamera right\nVerdict: no result\n"}) {
    EXPECT_NE(text.find(part), std::string::npos) << part << "\n" << text;
  }
}

}  // namespace
