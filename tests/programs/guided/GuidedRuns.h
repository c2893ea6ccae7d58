/// What tests of the guided calibration share: a scripted source, a scripted screen, six poses.
#pragma once

#include <gtest/gtest.h>

#include <deque>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <thread>

#include "Calibration.h"
#include "JSON.h"
#include "Renderer.h"
#include "TemporaryFolder.h"
#include "Views.h"
#include "guided/GuidedLoop.h"
#include "guided/SessionChoice.h"
#include "poses/PoseModel.h"

namespace guided_runs {

inline const cv::Size FRAME(640, 480);
inline const cv::Size GRID(4, 11);
/// More than a sheet must be still for, at 30 frames a second.
constexpr int STILL = 14;

/// Hands out pictures, then none.
class PictureFeed final : public guided::ImagesFeed {
 public:
  bool Take(std::vector<cv::Mat>& images) override {
    ++turns;
    if (pictures.empty()) return false;
    images = {pictures.front().clone()};
    pictures.pop_front();
    return true;
  }
  bool FailedToStart() const override { return broken; }
  size_t Cameras() const override { return 1; }

  /// The picture, for long enough.
  void Hold(const cv::Mat& picture) { pictures.insert(pictures.end(), STILL, picture); }

  std::deque<cv::Mat> pictures;
  bool broken = false;
  int turns = 0;  ///< how often it was asked
};

/// Presses each key once its condition holds, one a wait, in their order.
class KeyScreen final : public common::Screen {
 public:
  void Show(const std::string& window, const cv::Mat& picture) override {
    EXPECT_EQ(window, "Velmora");
    last = picture.clone();
  }
  int WaitKey(int) override {
    EXPECT_LT(std::chrono::steady_clock::now(), deadline_) << "it does not come to an end";
    if (std::chrono::steady_clock::now() > deadline_) return 'q';
    std::this_thread::yield();
    if (keys_.empty() || !keys_.front().first()) return -1;
    const int key = keys_.front().second;
    keys_.pop_front();
    return key;
  }
  void Close(const std::string&) override { ++closed; }
  bool WasClosed(const std::string&) override { return shut && shut(); }

  void Press(int key, std::function<bool()> when) { keys_.emplace_back(std::move(when), key); }

  cv::Mat last;
  int closed = 0;
  std::function<bool()> shut;  ///< when its user closes the window

 private:
  std::deque<std::pair<std::function<bool()>, int>> keys_;
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
    options_.poses = folder_.File("poses.json");
    options_.output = folder_.File("camera");
    options_.source = "video 'a.avi'";
    options_.computation = {common::EngineOptions(), GRID, 0.02F, FRAME, Calibrator::MODEL_CLASSIC};
    options_.clock = [frame = 0]() mutable { return frame++ / 30.0; };
    options_.sourceEnded = [this] { return feed_.pictures.empty(); };
    options_.endsByItself = true;
    options_.taken = [this] { ++tones_; };
    model_->save(options_.poses);
    for (const cv::Mat& picture : *pictures_) feed_.Hold(picture);
    arguments_.output = options_.output;
  }

  common::ExitStatus Run() { return Run(feed_); }
  common::ExitStatus Run(guided::ImagesFeed& feed) {
    if (!session_) OpenSession();
    return guided::GuidedLoop(*session_, feed, screen_, options_, out_, err_).Run();
  }
  void OpenSession() {
    session_ = nullptr;
    session_ = guided::ChooseSession(
        arguments_, guided::SettingsOf(arguments_, options_.source, FRAME, feed_.Cameras()), out_);
  }
  /// As a program does that is started once more.
  void StartAgain() {
    session_ = nullptr;
    arguments_.session = folder_.File("camera.velmora");
    options_.clock = [frame = 0]() mutable { return frame++ / 30.0; };
    out_.str("");
  }
  nlohmann::json Verdict() const {
    std::ifstream file(options_.output + "_verdict.json");
    return nlohmann::json::parse(file);
  }
  cv::Mat Camera() const {
    JSON result;
    result.load(options_.output + ".json");
    return result.readMat("cameraMatrix");
  }
  std::vector<std::string> UsedViews() const {
    std::vector<std::string> names;
    for (const auto& snapshot : session_->Snapshots()) {
      if (snapshot.IsUsed()) names.push_back(snapshot.name);
    }
    return names;
  }
  bool Printed(const std::string& words) const { return out_.str().find(words) != std::string::npos; }
  std::function<bool()> Once(const std::string& words) {
    return [this, words] { return Printed(words); };
  }

  static inline const auto pictures_ = std::make_unique<std::deque<cv::Mat>>();
  static inline const auto model_ = std::make_unique<JSON>();
  support::TemporaryFolder folder_;
  guided::Arguments arguments_;
  std::unique_ptr<velmora::Session> session_;
  PictureFeed feed_;
  KeyScreen screen_;
  guided::LoopOptions options_;
  int tones_ = 0;
  std::ostringstream out_;
  std::ostringstream err_;
};

}  // namespace guided_runs
