/// The guided calibration of a pair, with a scripted source and screen.
#include <gtest/gtest.h>

#include <deque>
#include <filesystem>
#include <sstream>
#include <thread>

#include "Calibration.h"
#include "JSON.h"
#include "Renderer.h"
#include "Rig.h"
#include "TemporaryFolder.h"
#include "Views.h"
#include "guided/GuidedLoop.h"
#include "guided/SessionChoice.h"
#include "poses/PoseModel.h"

namespace {

const cv::Size FRAME(640, 480);
constexpr int STILL = 14;

class PairFeed final : public guided::ImagesFeed {
 public:
  bool Take(std::vector<cv::Mat>& images) override {
    if (pairs.empty()) return false;
    images = {pairs.front().first.clone(), pairs.front().second.clone()};
    pairs.pop_front();
    return true;
  }
  bool FailedToStart() const override { return false; }
  size_t Cameras() const override { return 2; }

  void Hold(const cv::Mat& left, const cv::Mat& right) { pairs.insert(pairs.end(), STILL, {left, right}); }

  std::deque<std::pair<cv::Mat, cv::Mat>> pairs;
};

class QuietScreen final : public common::Screen {
 public:
  void Show(const std::string&, const cv::Mat& picture) override { last = picture.clone(); }
  int WaitKey(int) override {
    std::this_thread::yield();
    const bool over = std::chrono::steady_clock::now() > deadline_;
    EXPECT_FALSE(over) << "it does not come to an end";
    return over ? 'q' : -1;
  }
  void Close(const std::string&) override {}

  cv::Mat last;

 private:
  const std::chrono::steady_clock::time_point deadline_ =
      std::chrono::steady_clock::now() + std::chrono::minutes(2);
};

class GuidedPair : public ::testing::Test {
 protected:
  GuidedPair() {
    Calibration::SetLogLevel(0);
    world::Scene left;
    left.camera = pair_.left;
    left.noise = 2.0;
    world::Scene right = left;
    right.camera = pair_.right;
    world::Renderer renderLeft(left);
    world::Renderer renderRight(right);
    std::vector<std::vector<cv::Point2d>> centres;
    for (const world::Pose& pose : world::RigViews(pair_, 8)) {
      centres.push_back(world::TrueCentres(pair_.left.lens, left.sheet, pose));
      feed_.Hold(renderLeft.Render(pose, centres.size()),
                 renderRight.Render(world::RightPose(pair_, pose), 100 + centres.size()));
    }
    options_.poses = folder_.File("poses.json");
    poses::ModelOf(centres, FRAME).save(options_.poses);
    options_.output = folder_.File("stereo");
    options_.source = "a pair";
    options_.computation = {common::EngineOptions(), cv::Size(4, 11), 0.02F, FRAME, common::MODEL_AUTO};
    options_.clock = [frame = 0]() mutable { return frame++ / 30.0; };
    options_.sourceEnded = [this] { return feed_.pairs.empty(); };
    options_.endsByItself = true;
    arguments_.output = options_.output;
  }
  ~GuidedPair() override { Calibration::SetLogLevel(4); }

  common::ExitStatus Run() {
    session_ =
        guided::ChooseSession(arguments_, guided::SettingsOf(arguments_, options_.source, FRAME, 2), out_);
    return guided::GuidedLoop(*session_, feed_, screen_, options_, out_, err_).Run();
  }

  const world::Pair pair_ =
      world::SideBySidePair(FRAME, 62.0, 0.1, 4.0, {-0.2, 0.05, 0.0, 0.0, 0.0}, {-0.21, 0.06, 0.0, 0.0, 0.0});
  support::TemporaryFolder folder_;
  guided::Arguments arguments_;
  std::unique_ptr<velmora::Session> session_;
  PairFeed feed_;
  QuietScreen screen_;
  guided::LoopOptions options_;
  std::ostringstream out_;
  std::ostringstream err_;
};

TEST_F(GuidedPair, EndsWithBothCamerasAndHowTheyStand) {
  ASSERT_EQ(Run(), common::SUCCESS) << err_.str() << out_.str();
  EXPECT_NE(out_.str().find("View 8 taken: pose 8.\n"), std::string::npos) << out_.str();
  EXPECT_NE(out_.str().find("== pair\n"), std::string::npos) << out_.str();
  for (const char* name : {"stereo.json", "stereo_left.json", "stereo_right.json", "stereo_verdict.json"})
    EXPECT_TRUE(std::filesystem::exists(folder_.File(name))) << name;
  ASSERT_EQ(session_->Snapshots().size(), 8U);
  EXPECT_EQ(session_->Snapshot(1).observations.size(), 2U);
  EXPECT_EQ(session_->LoadImage(1, 1).size(), FRAME);
  JSON result;
  ASSERT_TRUE(result.load(folder_.File("stereo.json")));
  EXPECT_NEAR(cv::norm(result.readMat("T")), cv::norm(pair_.T), 0.0005);
}

TEST_F(GuidedPair, TakesNoViewThatTheRightCameraDoesNotSee) {
  for (auto& [left, right] : feed_.pairs) right.setTo(cv::Scalar::all(120));
  EXPECT_EQ(Run(), common::NO_RESULT);
  EXPECT_NE(out_.str().find("Ended with 0 views."), std::string::npos) << out_.str();
  EXPECT_TRUE(session_->Snapshots().empty());
}

}  // namespace
