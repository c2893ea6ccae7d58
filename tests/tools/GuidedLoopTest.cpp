/// The guided calibration with a scripted source and screen.
#include "guided/GuidedLoop.h"

#include <gtest/gtest.h>

#include <deque>
#include <filesystem>
#include <sstream>
#include <thread>

#include "Calibration.h"
#include "JSON.h"
#include "Reach.h"
#include "Renderer.h"
#include "TemporaryFolder.h"
#include "Views.h"
#include "poses/PoseModel.h"

namespace {

const cv::Size FRAME(640, 480);

/// Hands out pictures, then none.
class PictureFeed final : public app::FrameFeed {
 public:
  bool Take(cv::Mat& frame, std::chrono::milliseconds) override {
    if (pictures.empty()) return false;
    frame = pictures.front().clone();
    pictures.pop_front();
    return true;
  }
  bool FailedToStart() const override { return broken; }

  std::deque<cv::Mat> pictures;
  bool broken = false;
};

/// Presses the scripted keys, one a wait; afterwards none, and q when patience ends.
class KeyScreen final : public app::Screen {
 public:
  void Show(const std::string& window, const cv::Mat&) override {
    EXPECT_EQ(window, "Velmora");
    ++shown;
  }
  int WaitKey(int) override {
    if (std::chrono::steady_clock::now() > deadline_) return 'q';
    std::this_thread::yield();
    if (keys.empty()) return -1;
    const int key = keys.front();
    keys.pop_front();
    return key;
  }
  void Close(const std::string&) override { ++closed; }

  std::deque<int> keys;
  int shown = 0;
  int closed = 0;

 private:
  const std::chrono::steady_clock::time_point deadline_ =
      std::chrono::steady_clock::now() + std::chrono::minutes(2);
};

/// Six poses, and pictures of the sheet in them.
class GuidedLoopRun : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    world::Scene scene;
    scene.camera = world::CameraFromFieldOfView(FRAME, 62.0, {-0.2, 0.05, 0.0, 0.0, 0.0});
    scene.noise = 2.0;
    world::Renderer renderer(scene);
    std::vector<std::vector<cv::Point2d>> centres;
    for (const world::Pose& pose : world::SpreadViews(scene.camera, 6)) {
      centres.push_back(world::TrueCentres(scene.camera.lens, scene.sheet, pose));
      pictures_->push_back(renderer.Render(pose, centres.size()));
    }
    Calibration::SetLogLevel(0);
    *model_ = poses::ModelOf(centres, FRAME);
  }
  static void TearDownTestSuite() { Calibration::SetLogLevel(4); }

  GuidedLoopRun() {
    model_->save(options_.poses);
    feed_.pictures = *pictures_;
  }

  guided::ExitStatus Run() {
    return guided::GuidedLoop(calibrator_, feed_, screen_, options_, out_, err_).Run();
  }
  bool Printed(const std::string& words) const { return out_.str().find(words) != std::string::npos; }

  static inline const auto pictures_ = std::make_unique<std::deque<cv::Mat>>();
  static inline const auto model_ = std::make_unique<JSON>();
  support::TemporaryFolder folder_;
  Calibrator calibrator_{{4, 11}, 0.02F, Calibrator::MONOCULAR, FRAME.width, FRAME.height};
  PictureFeed feed_;
  KeyScreen screen_;
  guided::LoopOptions options_{folder_.File("poses.json"), folder_.File("camera"), FRAME,
                               [] { return true; }};
  std::ostringstream out_;
  std::ostringstream err_;
};

TEST_F(GuidedLoopRun, EndsWithTheResultFileAfterTheLastPose) {
  ASSERT_EQ(Run(), guided::CALIBRATED) << err_.str();
  EXPECT_EQ(screen_.shown, 6);
  EXPECT_EQ(screen_.closed, 1);
  EXPECT_TRUE(Printed("Bring the sheet to the drawn one, 6 times.")) << out_.str();
  for (int pose = 1; pose <= 6; ++pose) {
    EXPECT_TRUE(Printed("Pose " + std::to_string(pose) + " of 6 reached.\n")) << out_.str();
  }
  EXPECT_TRUE(Printed("Views: 6 used of 6 pictures")) << out_.str();
  EXPECT_TRUE(Printed("\nResult file: " + options_.output + ".json\n")) << out_.str();
  EXPECT_EQ(err_.str(), "");
  JSON result;
  ASSERT_TRUE(result.load(options_.output + ".json"));
  EXPECT_LT(result.readDouble("error"), 0.2);
}

TEST_F(GuidedLoopRun, TellsHowFarAVideoGot) {
  feed_.pictures.resize(4);
  EXPECT_EQ(Run(), guided::ENDED_BEFORE);
  EXPECT_EQ(err_.str(), "The video ended with 4 of 6 poses reached.\n");
  EXPECT_FALSE(std::filesystem::exists(options_.output + ".json"));
}

TEST_F(GuidedLoopRun, QuitsOnQ) {
  screen_.keys = {-1, 'x', 'q'};
  EXPECT_EQ(Run(), guided::ENDED_BEFORE);
  EXPECT_TRUE(Printed("Ended with 3 of 6 poses reached.\n")) << out_.str();
}

TEST_F(GuidedLoopRun, BeginsAgainOnR) {
  const std::deque<cv::Mat> all = feed_.pictures;
  feed_.pictures.resize(2);
  feed_.pictures.insert(feed_.pictures.end(), all.begin(), all.end());
  screen_.keys = {-1, 'r'};
  ASSERT_EQ(Run(), guided::CALIBRATED) << err_.str() << out_.str();
  EXPECT_TRUE(Printed("Pose 2 of 6 reached.\nFrom the first pose again.\nPose 1 of 6 reached.\n"))
      << out_.str();
  EXPECT_TRUE(Printed("Views: 6 used of 6 pictures")) << out_.str();
}

TEST_F(GuidedLoopRun, NeedsPosesThatCanBeUsed) {
  options_.poses = folder_.File("missing.json");
  EXPECT_EQ(Run(), guided::UNUSABLE);
  EXPECT_EQ(screen_.shown, 0);
}

TEST_F(GuidedLoopRun, ReportsASourceWithoutFrames) {
  feed_.pictures.clear();
  feed_.broken = true;
  EXPECT_EQ(Run(), guided::UNUSABLE);
  EXPECT_EQ(err_.str(), "ERROR: the source delivers no frame.\n");
}

TEST_F(GuidedLoopRun, ReportsAResultThatCannotBeWritten) {
  options_.output = "/nowhere/camera";
  EXPECT_EQ(Run(), guided::UNUSABLE);
  EXPECT_EQ(err_.str(), "ERROR: cannot write '/nowhere/camera.json'.\n");
}

TEST_F(GuidedLoopRun, ReportsTooFewPosesForAComputation) {
  JSON three = *model_;
  three.addInt("count", 3);
  three.save(options_.poses);
  EXPECT_EQ(Run(), guided::ENDED_BEFORE);
  EXPECT_EQ(err_.str(), "The video ended with 3 of 3 poses reached.\n");
}

}  // namespace
