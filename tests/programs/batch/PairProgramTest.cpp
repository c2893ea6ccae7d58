/// The headless tool on a pair of cameras, as a user runs it.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "JSON.h"
#include "Process.h"
#include "Rig.h"
#include "RigRenderer.h"
#include "TemporaryFolder.h"

namespace {

namespace fs = std::filesystem;
using support::Process;
constexpr std::chrono::minutes LONG_ENOUGH{4};

/// Twelve pairs, rendered once for all tests, as separate images and side by side.
class PairProgram : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    folder_ = new support::TemporaryFolder;
    for (const char* name : {"left", "right", "both"}) fs::create_directory(folder_->File(name));
    world::Scene scene;
    scene.noise = 2.0;
    world::RigRenderer renderer(rig_, scene);
    std::uint64_t number = 0;
    for (const world::Pose& pose : world::RigViews(rig_, 12)) {
      const std::vector<cv::Mat> pair = renderer.Render(pose, number);
      const std::string name = "/" + std::to_string(100 + number++) + ".png";
      cv::imwrite(folder_->File("left") + name, pair[0]);
      cv::imwrite(folder_->File("right") + name, pair[1]);
      cv::imwrite(folder_->File("both") + name, world::SideBySide(pair));
    }
  }
  static void TearDownTestSuite() {
    delete folder_;
    folder_ = nullptr;
  }

  static void ExpectStereoResult(const std::string& path) {
    JSON result;
    ASSERT_TRUE(result.load(path));
    EXPECT_EQ(result.readInt("sensor"), 1);
    EXPECT_NEAR(cv::norm(result.readMat("T")), cv::norm(rig_.T), 0.005 * cv::norm(rig_.T));
    cv::Vec3d rotation;
    cv::Rodrigues(cv::Matx33d(result.readMat("R")) * rig_.R.t(), rotation);
    EXPECT_LT(cv::norm(rotation) * 180.0 / CV_PI, 0.1);
  }

  static nlohmann::json VerdictIn(const std::string& name) {
    std::ifstream file(folder_->File(name));
    return nlohmann::json::parse(file, nullptr, false);
  }

  /// Of each of the twelve pairs an RMS beside the noise's, and an image that is coloured where the sheet
  /// was.
  static void ExpectCameras(const std::string& name) {
    const nlohmann::json verdict = VerdictIn(name + "_verdict.json");
    ASSERT_FALSE(verdict.is_discarded());
    for (const char* side : {"left", "right"}) {
      const nlohmann::json& camera = verdict[side];
      ASSERT_EQ(camera["viewRms"].size(), 12U) << side;
      double squares = 0.0;
      for (const double rms : camera["viewRms"]) squares += rms * rms / 12.0;
      EXPECT_NEAR(std::sqrt(squares), camera["rms"].get<double>(), 0.1 * std::sqrt(squares)) << side;
      EXPECT_LT(camera["rms"], 0.1);
      EXPECT_LT(camera["deviationInData"], 0.1);
      EXPECT_GT(camera["deviationInData"], 0.0);
      const cv::Mat image = cv::imread(folder_->File(name) + "_uncertainty_" + side + ".png");
      ASSERT_FALSE(image.empty()) << side;
      EXPECT_GT(Saturation(image), 50.0) << side;
    }
  }

  /// In the middle of the image: grey stands for nothing known.
  static double Saturation(const cv::Mat& image) {
    const cv::Mat middle = image(cv::Rect(image.cols / 3, image.rows / 3, 60, 60));
    cv::Mat hsv;
    cv::cvtColor(middle, hsv, cv::COLOR_BGR2HSV);
    return cv::mean(hsv)[1];
  }

  static support::TemporaryFolder* folder_;
  static const world::Pair rig_;
};

support::TemporaryFolder* PairProgram::folder_ = nullptr;
const world::Pair PairProgram::rig_ =
    world::SideBySidePair({640, 480}, 60.0, 0.08, 2.0, {-0.1, 0.02, 0, 0, 0}, {-0.08, 0.01, 0, 0, 0});

TEST_F(PairProgram, TwoFoldersBecomeThreeResultFiles) {
  Process tool({VELMORA_BATCH, folder_->File("left"), "--right", folder_->File("right"), "--hdist", "0.2",
                "--output", folder_->File("pair")});
  ASSERT_EQ(tool.WaitForExit(LONG_ENOUGH), 0) << tool.Errors();
  EXPECT_NE(tool.Output().find("Baseline:                0.0"), std::string::npos) << tool.Output();
  ExpectStereoResult(folder_->File("pair.json"));
  EXPECT_NE(tool.Output().find("\n  When views are left out: rotation to 0."), std::string::npos)
      << tool.Output();
  EXPECT_EQ(VerdictIn("pair_verdict.json")["grade"], "good") << tool.Output();
  EXPECT_EQ(VerdictIn("pair_left_verdict.json")["grade"], "good");
  EXPECT_EQ(VerdictIn("pair_right_verdict.json")["views"], 12);
  for (const char* camera : {"pair_left.json", "pair_right.json"}) {
    JSON result;
    ASSERT_TRUE(result.load(folder_->File(camera)));
    EXPECT_EQ(result.readInt("sensor"), 0);
    EXPECT_EQ(result.readMat("distCoefs").cols, 14);
  }
  for (const char* image : {"pair_left_uncertainty.png", "pair_right_uncertainty.png"}) {
    EXPECT_FALSE(cv::imread(folder_->File(image)).empty()) << image;
  }
  ExpectCameras("pair");
  const std::string pair = tool.Output().substr(tool.Output().find("== pair"));
  EXPECT_NE(pair.find("\nRMS of left and right:   0.0"), std::string::npos) << pair;
  EXPECT_NE(pair.find("\nWorst views, left and right:\n    0.0"), std::string::npos) << pair;
  const std::string path = folder_->File("pair");
  EXPECT_NE(pair.find("\n  " + path + "_verdict.json\n  " + path + "_uncertainty_left.png\n  " + path +
                      "_uncertainty_right.png\n"),
            std::string::npos)
      << pair;
}

TEST_F(PairProgram, NamesThePairWhosePicturesAreNotOfTheSameTime) {
  for (const char* side : {"wrongleft", "wrongright"}) fs::create_directory(folder_->File(side));
  for (int i = 0; i < 12; ++i) {
    const std::string name = "/" + std::to_string(100 + i) + ".png";
    fs::copy(folder_->File("left") + name, folder_->File("wrongleft") + name);
    // An image that the right camera took before and after.
    const int other = i == 3 ? 4 : i;
    fs::copy(folder_->File("right") + "/" + std::to_string(100 + other) + ".png",
             folder_->File("wrongright") + name);
  }
  Process tool({VELMORA_BATCH, folder_->File("wrongleft"), "--right", folder_->File("wrongright"), "--hdist",
                "0.2", "--output", folder_->File("wrong")});
  ASSERT_EQ(tool.WaitForExit(LONG_ENOUGH), 0) << tool.Errors();
  const std::string pair = tool.Output().substr(tool.Output().find("== pair"));
  EXPECT_NE(pair.find("\n11 of 12 pairs used; 1 disagrees\n"), std::string::npos) << pair;
  EXPECT_NE(pair.find(" picture of 103.png, disagrees with the other views ("), std::string::npos) << pair;
  EXPECT_NE(pair.find("\nMean epipolar distance:  0.0"), std::string::npos) << pair;
  const nlohmann::json verdict = VerdictIn("wrong_verdict.json");
  EXPECT_EQ(verdict["leftOut"][0]["view"], 3);
  const std::string side = verdict["leftOut"][0]["camera"];
  for (size_t i = 0; i < 12; ++i) EXPECT_EQ(verdict[side]["viewRms"][i].is_null(), i == 3) << verdict;
  const size_t worst = pair.find("\nWorst views, left and right:\n");
  ASSERT_NE(worst, std::string::npos) << pair;
  EXPECT_EQ(pair.substr(worst, pair.find("\nVerdict:") - worst).find("103.png"), std::string::npos) << pair;
  ExpectStereoResult(folder_->File("wrong.json"));
}

TEST_F(PairProgram, RefinesTheLensesWithThePairWhenAskedTo) {
  Process tool({VELMORA_BATCH, folder_->File("both"), "--split", "vertical", "--hdist", "0.2", "--output",
                folder_->File("refined"), "--refine-lenses"});
  ASSERT_EQ(tool.WaitForExit(LONG_ENOUGH), 0) << tool.Errors();
  EXPECT_NE(tool.Output().find("Refined left  lens:      fx "), std::string::npos) << tool.Output();
  EXPECT_NE(tool.Output().find("Refined right lens:      fx "), std::string::npos) << tool.Output();
  ExpectStereoResult(folder_->File("refined.json"));
  JSON pair;
  JSON alone;
  ASSERT_TRUE(pair.load(folder_->File("refined.json")));
  ASSERT_TRUE(alone.load(folder_->File("refined_left.json")));
  EXPECT_EQ(pair.readMat("distCoefs").size(), cv::Size(14, 1));
  const double refined = pair.readMat("cameraMatrix").at<double>(0, 0);
  EXPECT_NE(refined, alone.readMat("cameraMatrix").at<double>(0, 0));
  EXPECT_NEAR(refined, rig_.left.lens.K()(0, 0), 0.002 * refined);
  ExpectCameras("refined");
}

TEST_F(PairProgram, WithResultFilesOnlyThePairIsComputed) {
  Process both({VELMORA_BATCH, folder_->File("both"), "--split", "vertical", "--hdist", "0.2", "--output",
                folder_->File("first")});
  ASSERT_EQ(both.WaitForExit(LONG_ENOUGH), 0) << both.Errors();
  ExpectStereoResult(folder_->File("first.json"));
  Process pair({VELMORA_BATCH, folder_->File("both"), "--split", "vertical", "--hdist", "0.2", "--calib_left",
                folder_->File("first_left.json"), "--calib_right", folder_->File("first_right.json"),
                "--output", folder_->File("second")});
  ASSERT_EQ(pair.WaitForExit(LONG_ENOUGH), 0) << pair.Errors();
  EXPECT_FALSE(fs::exists(folder_->File("second_left.json")));
  EXPECT_EQ(support::ReadText(folder_->File("first.json")), support::ReadText(folder_->File("second.json")));
  ExpectCameras("second");
}

TEST_F(PairProgram, UnequalNumbersOfPicturesAreRefused) {
  Process tool({VELMORA_BATCH, folder_->File("left"), "--right", folder_->File("right") + "/100.png",
                "--output", folder_->File("unequal")});
  EXPECT_EQ(tool.WaitForExit(LONG_ENOUGH), 2);
  EXPECT_EQ(tool.Errors(), "ERROR: the left camera has 12 images, the right one 1.\n");
}

TEST_F(PairProgram, AResultFileThatIsNoneIsNamed) {
  support::WriteText(folder_->File("broken.json"), "{ not JSON");
  Process tool({VELMORA_BATCH, folder_->File("both"), "--split", "vertical", "--calib_left",
                folder_->File("broken.json"), "--calib_right", folder_->File("missing.json"), "--output",
                folder_->File("none")});
  EXPECT_EQ(tool.WaitForExit(LONG_ENOUGH), 2);
  EXPECT_NE(tool.Output().find("ERROR : Cannot open file: " + folder_->File("broken.json")),
            std::string::npos);
  EXPECT_FALSE(fs::exists(folder_->File("none.json")));
}

TEST_F(PairProgram, AResultFileWithMatricesOfOtherSizesIsRefused) {
  struct Wrong {
    cv::Mat K, D;
    std::string fault;
  };
  const cv::Mat K = cv::Mat::eye(3, 3, CV_64F);
  const cv::Mat D = cv::Mat::zeros(1, 14, CV_64F);
  const std::string good = folder_->File("shaped.json");
  JSON camera;
  camera.addMat("cameraMatrix", K);
  camera.addMat("distCoefs", D);
  ASSERT_TRUE(camera.save(good));
  const std::string bad = folder_->File("small.json");
  for (const Wrong& wrong : {Wrong{K.rowRange(0, 2).clone(), D, "cameraMatrix is 2 x 3, not 3 x 3"},
                             Wrong{K, D.t(), "distCoefs is 14 x 1, not 1 x 14"},
                             Wrong{K, cv::Mat::zeros(1, 15, CV_64F), "distCoefs is 1 x 15, not 1 x 14"}}) {
    JSON small;
    small.addMat("cameraMatrix", wrong.K);
    small.addMat("distCoefs", wrong.D);
    ASSERT_TRUE(small.save(bad));
    Process tool({VELMORA_BATCH, folder_->File("both"), "--split", "vertical", "--calib_left", good,
                  "--calib_right", bad, "--output", folder_->File("none")});
    EXPECT_EQ(tool.WaitForExit(LONG_ENOUGH), 2);
    EXPECT_EQ(tool.Errors(), "ERROR: '" + bad + "' is no result of a camera: its " + wrong.fault + ".\n");
    EXPECT_FALSE(fs::exists(folder_->File("none.json")));
  }
}

TEST_F(PairProgram, APairWithTheGridInOneImageOnlyIsRejectedForThatSide) {
  cv::Mat half = cv::imread(folder_->File("both") + "/100.png");
  half.colRange(0, 640).setTo(cv::Scalar::all(120));
  cv::imwrite(folder_->File("half.png"), half);
  Process tool(
      {VELMORA_BATCH, folder_->File("half.png"), "--split", "vertical", "--output", folder_->File("half")});
  EXPECT_EQ(tool.WaitForExit(LONG_ENOUGH), 1);
  EXPECT_NE(
      tool.Output().find("  1 not used, left: no grid found: too few circles in sight:\n    half.png\n"),
      std::string::npos)
      << tool.Output();
}

}  // namespace
