/// The headless tool as a user runs it.
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <opencv2/imgcodecs.hpp>

#include "CalibAssistant.h"
#include "JSON.h"
#include "LensError.h"
#include "Process.h"
#include "Renderer.h"
#include "TemporaryFolder.h"
#include "Truth.h"
#include "Views.h"

namespace {

namespace fs = std::filesystem;
using support::Process;
using Words = std::vector<std::string>;
constexpr std::chrono::minutes LONG_ENOUGH{3};

const std::vector<double> DISTORTION = {-0.28, 0.09, 0.001, -0.0005, 0.0};

/// Twelve images, rendered once for all tests.
class BatchProgram : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    folder_ = new support::TemporaryFolder;
    scene_.camera = world::CameraFromFieldOfView({640, 480}, 60.0, DISTORTION);
    scene_.noise = 2.0;
    scene_.blur = 0.5;
    world::Renderer renderer(scene_);
    fs::create_directory(Views());
    int number = 0;
    for (const world::Pose& pose : world::SpreadViews(scene_.camera, 12)) {
      char name[32] = "";
      std::snprintf(name, sizeof(name), "/view_%02d.png", number);
      cv::imwrite(Views() + name, renderer.Render(pose, static_cast<std::uint64_t>(number++)));
    }
    cv::imwrite(folder_->File("empty.png"), renderer.RenderEmpty());
  }
  static void TearDownTestSuite() {
    delete folder_;
    folder_ = nullptr;
  }

  static std::string Views() { return folder_->File("views"); }

  static Words Joined(Words a, const Words& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
  }

  static int Run(Process& tool) { return tool.WaitForExit(LONG_ENOUGH); }

  static support::TemporaryFolder* folder_;
  static world::Scene scene_;
};

support::TemporaryFolder* BatchProgram::folder_ = nullptr;
world::Scene BatchProgram::scene_;

TEST_F(BatchProgram, AFolderOfViewsBecomesAnAccurateResultFile) {
  Process tool(
      {VELMORA_BATCH, Views(), "--hdist", "0.2", "--model", "classic", "--output", folder_->File("camera")});
  ASSERT_EQ(Run(tool), 0) << tool.Errors();
  EXPECT_NE(tool.Output().find("12 of 12 images used"), std::string::npos) << tool.Output();
  JSON result;
  ASSERT_TRUE(result.load(folder_->File("camera.json")));
  EXPECT_LT(result.readDouble("error"), 0.2);
  const cv::Mat K = result.readMat("cameraMatrix");
  const double fx = scene_.camera.lens.K()(0, 0);
  EXPECT_NEAR(K.at<double>(0, 0), fx, 0.003 * fx);
  const auto distance = world::MeanProjectionDistance(
      scene_.camera.lens, world::LensFrom(K, result.readMat("distCoefs")), scene_.camera.size);
  EXPECT_LT(distance.mean, 0.5);
}

TEST_F(BatchProgram, TheModelIsChosenWithReasonsWhenThatIsAskedFor) {
  Process tool(
      {VELMORA_BATCH, Views(), "--hdist", "0.2", "--model", "auto", "--output", folder_->File("auto")});
  ASSERT_EQ(Run(tool), 0) << tool.Errors();
  // The rendered lens has the coefficients of the classic model.
  EXPECT_NE(tool.Output().find("Model: classic"), std::string::npos) << tool.Output();
  EXPECT_NE(tool.Output().find("The rational model is not better"), std::string::npos) << tool.Output();
  EXPECT_NE(tool.Output().find("The full model is not better"), std::string::npos) << tool.Output();
  JSON result;
  ASSERT_TRUE(result.load(folder_->File("auto.json")));
  EXPECT_EQ(result.readMat("distCoefs").cols, 5);
}

TEST_F(BatchProgram, TheVerdictIsPrintedAndWrittenBesideTheResult) {
  Process tool(
      {VELMORA_BATCH, Views(), "--hdist", "0.2", "--model", "classic", "--output", folder_->File("judged")});
  ASSERT_EQ(Run(tool), 0) << tool.Errors();
  JSON verdict;
  ASSERT_TRUE(verdict.load(folder_->File("judged_verdict.json")));
  EXPECT_EQ(verdict.readInt("views"), 12);
  EXPECT_GT(verdict.readDouble("deviationInData"), 0.0);
  EXPECT_LT(verdict.readDouble("focalDeviation"), 0.01);
  EXPECT_NE(tool.Output().find("Verdict: " + verdict.readString("grade")), std::string::npos)
      << tool.Output();
  EXPECT_EQ(tool.Output().find("worthless"), std::string::npos) << tool.Output();
  EXPECT_FALSE(cv::imread(folder_->File("judged_uncertainty.png")).empty());
}

TEST_F(BatchProgram, NamesTheFileThatItCouldNotWriteBeforeItLooksAtPictures) {
  for (const std::string file : {"full.json", "full_verdict.json", "full_uncertainty.png"}) {
    const support::TemporaryFolder folder;
    fs::create_directory(folder.File(file));
    Process tool({VELMORA_BATCH, Views(), "--output", folder.File("full")});
    EXPECT_EQ(Run(tool), 2);
    EXPECT_EQ(tool.Errors(), "ERROR: '" + folder.File(file) + "' is a folder.\n");
    EXPECT_EQ(tool.Output(), "");
  }
}

TEST_F(BatchProgram, ProgressGoesToStandardErrorALineAPicture) {
  Process tool({VELMORA_BATCH, Views(), folder_->File("empty.png"), "--model", "classic", "--output",
                folder_->File("progress")});
  ASSERT_EQ(Run(tool), 0) << tool.Errors();
  EXPECT_NE(tool.Errors().find("1/13 view_00.png: grid found\n"), std::string::npos) << tool.Errors();
  EXPECT_NE(tool.Errors().find("13/13 empty.png: no grid found: nothing like the grid in sight\n"),
            std::string::npos)
      << tool.Errors();
  EXPECT_NE(
      tool.Output().find("  1 not used, no grid found: nothing like the grid in sight:\n    empty.png\n"),
      std::string::npos)
      << tool.Output();
}

TEST_F(BatchProgram, ViewsBeyondTheMaximumAreSetAside) {
  Process tool(
      {VELMORA_BATCH, Views(), "--max-views", "8", "--model", "classic", "--output", folder_->File("few")});
  ASSERT_EQ(Run(tool), 0) << tool.Errors();
  EXPECT_NE(tool.Output().find("8 of 12 images used\n  4 found but not needed (--max-views 8):\n"),
            std::string::npos)
      << tool.Output();
}

TEST_F(BatchProgram, TooFewViewsEndWithStatusOneAndLeaveAnEarlierResultAlone) {
  support::WriteText(folder_->File("kept.json"), "earlier");
  Process tool({VELMORA_BATCH, folder_->File("empty.png"), Views() + "/view_00.png", "--output",
                folder_->File("kept")});
  EXPECT_EQ(Run(tool), 1);
  EXPECT_NE(
      tool.Errors().find("ERROR: too few views: the grid was found in 1 image, at least 5 are needed.\n"),
      std::string::npos)
      << tool.Errors();
  EXPECT_EQ(support::ReadText(folder_->File("kept.json")), "earlier");
}

TEST_F(BatchProgram, APictureOfAnotherSizeIsRejectedByName) {
  cv::imwrite(folder_->File("other.png"), cv::Mat(480, 600, CV_8UC3, cv::Scalar::all(90)));
  Process tool({VELMORA_BATCH, Views(), folder_->File("other.png"), "--model", "classic", "--output",
                folder_->File("sizes")});
  ASSERT_EQ(Run(tool), 0) << tool.Errors();
  EXPECT_NE(tool.Output().find("of another size than the first (640 x 480):\n    other.png"),
            std::string::npos)
      << tool.Output();
}

TEST_F(BatchProgram, UnusableInputAndOutputEndWithStatusTwoAndOneLine) {
  support::WriteText(folder_->File("notes.txt"), "neither a picture nor a video");
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
      {{"nowhere"}, "ERROR: 'nowhere' does not exist.\n"},
      {{folder_->File("notes.txt")},
       "ERROR: '" + folder_->File("notes.txt") + "' is neither an image nor a video that can be read.\n"},
      {{Views(), "--output", "/nowhere/camera"}, "ERROR: folder '/nowhere' does not exist.\n"},
      {{Views(), "--output", "/proc/camera"}, ""}};
  for (const auto& [words, message] : cases) {
    std::vector<std::string> command = {VELMORA_BATCH};
    command.insert(command.end(), words.begin(), words.end());
    Process::Options options;
    options.folder = folder_->Path();
    Process tool(command, options);
    EXPECT_EQ(Run(tool), 2) << tool.Output();
    if (message.empty()) {
      EXPECT_NE(tool.Errors().find("/proc/camera.json"), std::string::npos) << tool.Errors();
    } else {
      EXPECT_EQ(tool.Errors(), message);
    }
    EXPECT_EQ(tool.Output(), "") << "nothing to report";
  }
}

TEST_F(BatchProgram, AVideoIsCalibratedAndComparedWithItsTruth) {
  const std::string video = folder_->File("grid.avi");
  Process render({VELMORA_RENDER, "--video", video, "--seconds", "6", "--fps", "10", "--size", "640x480",
                  "--fov", "70", "--dist=-0.3,0.1,0,0,0", "--noise", "2", "--seed", "3"});
  ASSERT_EQ(Run(render), 0) << render.Errors();
  Process tool({VELMORA_BATCH, video, "--hdist", "0.2", "--model", "classic", "--max-views", "15", "--output",
                folder_->File("video")});
  ASSERT_EQ(Run(tool), 0) << tool.Errors();
  Process compare({VELMORA_COMPARE, folder_->File("video.json"), folder_->File("grid.truth.json")});
  ASSERT_EQ(Run(compare), 0) << compare.Errors();
  JSON result;
  ASSERT_TRUE(result.load(folder_->File("video.json")));
  const world::Truth truth = world::LoadTruth(folder_->File("grid.truth.json"));
  const double fx = truth.lens.K()(0, 0);
  EXPECT_NEAR(result.readMat("cameraMatrix").at<double>(0, 0), fx, 0.005 * fx);
  EXPECT_NE(compare.Output().find("fx"), std::string::npos);
}

TEST_F(BatchProgram, TheShapeOfASheetIsMeasuredOnceAndUsedAgain) {
  Process::Options options;
  options.folder = folder_->Path();
  const Words command = {VELMORA_BATCH, Views(), "--model", "classic"};
  Process measuring(Joined(command, {"--sheet-shape", "bent", "--output", "first"}), options);
  ASSERT_EQ(Run(measuring), 0) << measuring.Errors();
  Process later(Joined(command, {"--sheet-shape", "first_verdict.json", "--output", "second"}), options);
  ASSERT_EQ(Run(later), 0) << later.Errors();
  const auto sheetOf = [](const std::string& name) {
    return nlohmann::json::parse(support::ReadText(folder_->File(name))).at("sheet");
  };
  EXPECT_EQ(sheetOf("first_verdict.json").at("model"), "bent");
  EXPECT_EQ(sheetOf("second_verdict.json").at("model"), "known");
  for (size_t k = 0; k < 44; ++k) {
    for (size_t i = 0; i < 3; ++i) {
      EXPECT_NEAR(sheetOf("second_verdict.json").at("points").at(k).at(i).get<double>(),
                  sheetOf("first_verdict.json").at("points").at(k).at(i).get<double>(), 1e-9);
    }
  }
  JSON first;
  JSON second;
  ASSERT_TRUE(first.load(folder_->File("first.json")));
  ASSERT_TRUE(second.load(folder_->File("second.json")));
  EXPECT_NEAR(first.readDouble("error"), second.readDouble("error"), 0.001);
}

TEST_F(BatchProgram, TheShapeOfAnotherSheetIsRefused) {
  Process::Options options;
  options.folder = folder_->Path();
  const auto complaint = [&](const Words& words) {
    Process tool(Joined({VELMORA_BATCH, Views()}, words), options);
    EXPECT_EQ(Run(tool), 2);
    return tool.Errors();
  };
  EXPECT_EQ(complaint({"--sheet-shape", "round"})
                .find("ERROR: --sheet-shape: 'round' is not one of auto, bent, "
                      "flat, free, nor a file"),
            0U);
  support::WriteText(folder_->File("flat.json"), "{}");
  EXPECT_NE(complaint({"--sheet-shape", "flat.json"})
                .find("'flat.json' is no verdict on a calibration that measured the shape of its sheet"),
            std::string::npos);
  Process measuring({VELMORA_BATCH, Views(), "--sheet-shape", "bent", "--output", "bent"}, options);
  ASSERT_EQ(Run(measuring), 0) << measuring.Errors();
  EXPECT_NE(complaint({"--sheet-shape", "bent_verdict.json", "--hdist", "0.5"})
                .find("'bent_verdict.json' has the shape of another sheet, or of one with another --hdist"),
            std::string::npos);
  EXPECT_NE(complaint({"--sheet-shape", "bent_verdict.json", "--solver", "opencv"})
                .find("OpenCV's solver knows no shape but a flat one"),
            std::string::npos);
}

TEST_F(BatchProgram, PicturesBecomeAModelOfTheAssistant) {
  Process::Options options;
  options.folder = folder_->Path();
  Process tool({VELMORA_BATCH, Views(), folder_->File("empty.png"), "--record-model", "poses.json"}, options);
  ASSERT_EQ(Run(tool), 0) << tool.Errors();
  EXPECT_EQ(tool.Output(),
            "12 of 13 images used\n  1 not used, no grid found: nothing like the grid in sight:\n   "
            " empty.png\n"
            "\nPose model of 12 poses\n\nWritten:\n  poses.json\n");
  CalibAssistant assistant(640, 480, 4, 11);
  ASSERT_TRUE(assistant.LoadModel(folder_->File("poses.json")));
  EXPECT_EQ(assistant.GetGoal(), 12);
  EXPECT_FALSE(fs::exists(folder_->File("model_tmp.json")));
  // The first pose is that of the first image.
  EXPECT_TRUE(assistant.CheckValidity(
      world::TrueCentres(scene_.camera.lens, world::Sheet(), world::SpreadViews(scene_.camera, 1).front())));
  EXPECT_LT(assistant.GetScore(), 5.0F);
}

TEST_F(BatchProgram, NoModelIsLeftBehindWithoutAPose) {
  Process::Options options;
  options.folder = folder_->Path();
  Process tool({VELMORA_BATCH, folder_->File("empty.png"), "--record-model", "none.json"}, options);
  EXPECT_EQ(Run(tool), 1);
  EXPECT_NE(tool.Errors().find("ERROR: no pose: the grid was found in none of the images.\n"),
            std::string::npos);
  EXPECT_FALSE(fs::exists(folder_->File("none.json")));
  EXPECT_FALSE(fs::exists(folder_->File("model_tmp.json")));
  Process refused({VELMORA_BATCH, Views(), "--record-model", "/nowhere/poses.json"}, options);
  EXPECT_EQ(Run(refused), 2);
  EXPECT_EQ(refused.Errors(), "ERROR: folder '/nowhere' does not exist.\n");
}

}  // namespace
