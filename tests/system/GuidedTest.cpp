/// The guided calibration as its user meets it: a window, poses reached by the sheet alone, a result file.
#include <gtest/gtest.h>
#include <signal.h>

#include <cstdlib>
#include <filesystem>
#include <random>

#include "JSON.h"
#include "Truth.h"
#include "VirtualDisplay.h"
#include "velmora/Session.h"

using namespace system_test;  // NOLINT

namespace {

class GuidedProgram : public testing::Test {
 protected:
  /// A video in which the sheet goes through the shipped poses, at rest in each for a moment.
  std::string VideoOfThePoses() {
    const std::string video = folder_.File("poses.avi");
    support::Process render({VELMORA_RENDER, "--video", video, "--follow", VELMORA_POSES_JSON, "--seconds",
                             "30", "--fps", "12", "--fov", "68", "--dist=-0.25,0.07,0,0,0", "--noise", "2"});
    EXPECT_EQ(render.WaitForExit(PATIENCE), 0) << render.Errors();
    return video;
  }

  support::Process::Options OnTheDesktop() {
    support::Process::Options options;
    options.unset = {"WAYLAND_DISPLAY", "QT_QPA_PLATFORM"};
    options.environment["DISPLAY"] = virtualDisplay_.Display();
    options.folder = folder_.Path();
    return options;
  }

  std::vector<std::string> Command(const std::string& video, const std::vector<std::string>& more) {
    std::vector<std::string> words = {VELMORA_GUIDED, "--video", video,       "--hdist",
                                      "0.2",          "--fast",  "--no-sound"};
    words.insert(words.end(), more.begin(), more.end());
    return words;
  }

  static int CountOf(const std::string& text, const std::string& words) {
    int count = 0;
    for (size_t at = text.find(words); at != std::string::npos; at = text.find(words, at + 1)) ++count;
    return count;
  }

  /// How often a run is killed: VELMORA_KILLS, or a few times.
  static int Kills() {
    constexpr int FEW = 5;
    const char* const wanted = std::getenv("VELMORA_KILLS");
    return wanted == nullptr ? FEW : std::atoi(wanted);
  }

  support::TemporaryFolder folder_;
  VirtualDisplay virtualDisplay_;
};

TEST_F(GuidedProgram, CalibratesFromAVideoOfTheShippedPoses) {
  const std::string video = VideoOfThePoses();
  support::Process program(Command(video, {"--output", "camera", "--close"}), OnTheDesktop());
  EXPECT_TRUE(WaitUntil([&] {
    const std::string window = virtualDisplay_.FindWindow("Velmora");
    return (!window.empty() && virtualDisplay_.PictureOf(window).cols >= 1000) || !program.Running();
  }));
  EXPECT_TRUE(program.Running()) << "the window was never seen";
  ASSERT_EQ(program.WaitForExit(PATIENCE), 0) << program.Output() << program.Errors();
  EXPECT_NE(program.Output().find("View 12 taken: pose 12.\n"), std::string::npos) << program.Output();
  EXPECT_NE(program.Output().find("\nWritten:\n  camera.json\n  camera_verdict.json\n"), std::string::npos)
      << program.Output();

  JSON result;
  ASSERT_TRUE(result.load(folder_.File("camera.json")));
  const cv::Matx33d truth = world::LoadTruth(folder_.File("poses.truth.json")).lens.K();
  const cv::Mat K = result.readMat("cameraMatrix");
  EXPECT_LT(result.readDouble("error"), 0.2);
  EXPECT_NEAR(K.at<double>(0, 0), truth(0, 0), 0.005 * truth(0, 0));
  EXPECT_NEAR(K.at<double>(1, 1), truth(1, 1), 0.005 * truth(1, 1));
  EXPECT_NEAR(K.at<double>(0, 2), truth(0, 2), 3.0);
  EXPECT_NEAR(K.at<double>(1, 2), truth(1, 2), 3.0);
}

TEST_F(GuidedProgram, StaysAtTheEndUntilAKeyEndsIt) {
  const std::string video = VideoOfThePoses();
  support::Process program(Command(video, {"--output", "camera"}), OnTheDesktop());
  ASSERT_TRUE(program.WaitForOutput("The views are in", PATIENCE)) << program.Output() << program.Errors();
  const std::string window = virtualDisplay_.AwaitWindow("Velmora");
  EXPECT_TRUE(program.Running());
  EXPECT_TRUE(WaitUntil([&] {
    virtualDisplay_.PressKey(window, "q");
    return !program.Running();
  }));
  EXPECT_EQ(program.WaitForExit(PATIENCE), 0) << program.Errors();
}

TEST_F(GuidedProgram, TakesAViewBackByAKeyAndEndsWithItsWindow) {
  const std::string video = VideoOfThePoses();
  support::Process program({VELMORA_GUIDED, "--video", video, "--hdist", "0.2", "--no-sound"},
                           OnTheDesktop());
  const std::string window = virtualDisplay_.AwaitWindow("Velmora");
  ASSERT_TRUE(program.WaitForOutput("View 2 taken", PATIENCE)) << program.Output() << program.Errors();
  EXPECT_TRUE(WaitUntil([&] {
    virtualDisplay_.PressKey(window, "u");
    return program.Output().find(" taken back.") != std::string::npos;
  })) << program.Output();
  virtualDisplay_.CloseWindow(window);
  EXPECT_EQ(program.WaitForExit(PATIENCE), 1) << program.Errors();
  EXPECT_NE(program.Output().find("They are kept. To go on: velmora-guided --session '"), std::string::npos)
      << program.Output();
}

TEST_F(GuidedProgram, EndsInOrderWhenItIsInterrupted) {
  const std::string video = VideoOfThePoses();
  for (const auto& [signal, status] : std::vector<std::pair<int, int>>{{SIGINT, 130}, {SIGTERM, 143}}) {
    const std::string desk = "desk" + std::to_string(signal);
    support::Process program(Command(video, {"--session", desk}), OnTheDesktop());
    ASSERT_TRUE(program.WaitForOutput("View 2 taken", PATIENCE)) << program.Output() << program.Errors();
    program.Signal(signal);
    EXPECT_EQ(program.WaitForExit(PATIENCE), status) << program.Errors();
    EXPECT_NE(program.Output().find("To go on: velmora-guided --session '"), std::string::npos);
    EXPECT_EQ(static_cast<int>(velmora::Session::Open(folder_.File(desk))->Snapshots().size()),
              CountOf(program.Output(), " taken: pose "));
  }
}

TEST_F(GuidedProgram, LosesNothingThatItToldOfWheneverItIsKilled) {
  const std::string video = VideoOfThePoses();
  std::mt19937 random(7);
  for (int kills = 0; kills < Kills();) {
    std::filesystem::remove_all(folder_.File("desk"));
    for (int chain = 0; chain < 3 && kills < Kills(); ++chain, ++kills) {
      support::Process program(Command(video, {"--session", "desk", "--close"}), OnTheDesktop());
      const int told = std::uniform_int_distribution<int>(1, 11)(random);
      program.WaitForOutput("View " + std::to_string(told) + " taken", PATIENCE);
      const auto end = std::chrono::steady_clock::now() +
                       std::chrono::microseconds(std::uniform_int_distribution<int>(0, 200000)(random));
      while (std::chrono::steady_clock::now() < end) {
      }
      program.Kill();
      const auto session = velmora::Session::Open(folder_.File("desk"));
      const std::string output = program.Output();
      size_t last = 0;
      for (size_t view = 1; view <= 12; ++view) {
        if (output.find("View " + std::to_string(view) + " taken") != std::string::npos) last = view;
      }
      EXPECT_GE(session->Snapshots().size(), last) << output;
      EXPECT_LE(session->Snapshots().size(), 12U);
      for (const auto& snapshot : session->Snapshots()) EXPECT_EQ(snapshot.fault, "");
    }
    support::Process program(Command(video, {"--session", "desk", "--output", "camera", "--close"}),
                             OnTheDesktop());
    ASSERT_EQ(program.WaitForExit(PATIENCE), 0) << program.Output() << program.Errors();
    EXPECT_EQ(velmora::Session::Open(folder_.File("desk"))->Snapshots().size(), 12U) << program.Output();
    EXPECT_NE(program.Output().find("12 of 12 images used"), std::string::npos) << program.Output();
  }
}

TEST_F(GuidedProgram, IsRefusedASessionThatAnotherProgramHas) {
  const std::string video = VideoOfThePoses();
  support::Process first(Command(video, {"--session", "desk"}), OnTheDesktop());
  ASSERT_TRUE(first.WaitForOutput("View 1 taken", PATIENCE)) << first.Output() << first.Errors();
  support::Process second(Command(video, {"--session", "desk"}), OnTheDesktop());
  EXPECT_EQ(second.WaitForExit(PATIENCE), 2) << second.Output();
  EXPECT_NE(second.Errors().find(std::to_string(first.Id())), std::string::npos) << second.Errors();
}

TEST_F(GuidedProgram, SaysWhatItCannotUseInOneLine) {
  const std::string missing = folder_.File("missing.avi");
  support::Process noSource({VELMORA_GUIDED, "--video", missing}, OnTheDesktop());
  EXPECT_EQ(noSource.WaitForExit(PATIENCE), 2);
  EXPECT_NE(noSource.Errors().find("missing.avi"), std::string::npos) << noSource.Errors();

  support::Process noFolder({VELMORA_GUIDED, "--video", missing, "--output", "/nowhere/camera"},
                            OnTheDesktop());
  EXPECT_EQ(noFolder.WaitForExit(PATIENCE), 2);
  EXPECT_EQ(noFolder.Errors(), "ERROR: folder '/nowhere' does not exist.\n");
}

}  // namespace
