/// The guided calibration with a scripted source and screen.
#include "guided/GuidedLoop.h"

#include <gtest/gtest.h>

#include <deque>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <sstream>
#include <thread>

#include "Calibration.h"
#include "JSON.h"
#include "LensError.h"
#include "Matchers.h"
#include "Reach.h"
#include "Renderer.h"
#include "TemporaryFolder.h"
#include "Views.h"
#include "common/UncertaintyPicture.h"
#include "poses/PoseModel.h"

namespace {

const cv::Size FRAME(640, 480);

/// Hands out pictures, then none.
class PictureFeed final : public common::FrameFeed {
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
class KeyScreen final : public common::Screen {
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

  common::ExitStatus Run() {
    return guided::GuidedLoop(calibrator_, feed_, screen_, options_, out_, err_).Run();
  }
  nlohmann::json Verdict() const {
    std::ifstream file(options_.output + "_verdict.json");
    return nlohmann::json::parse(file);
  }
  /// The picture of uncertainty is what there is to say of the result, with the circles of all poses.
  void ExpectUncertaintyOfThePoses() {
    const cv::Mat picture = cv::imread(options_.output + "_uncertainty.png");
    std::vector<std::vector<cv::Point2d>> seen;
    for (const cv::Mat& frame : *pictures_) {
      cv::Mat changed = frame.clone();
      seen.emplace_back();
      Calibrator finder({4, 11}, 0.02F, Calibrator::MONOCULAR, FRAME.width, FRAME.height);
      ASSERT_TRUE(finder.DetectPoints(changed, seen.back(), false));
    }
    EXPECT_SAME_MAT(picture, common::DrawUncertainty(calibrator_.GetVerdict(), FRAME, seen));
  }
  static std::vector<cv::Point2d> CentresIn(const cv::Mat& picture) {
    Calibrator finder({4, 11}, 0.02F, Calibrator::MONOCULAR, FRAME.width, FRAME.height);
    cv::Mat changed = picture.clone();
    std::vector<cv::Point2d> centres;
    EXPECT_TRUE(finder.DetectPoints(changed, centres, false));
    return centres;
  }
  bool Printed(const std::string& words) const { return out_.str().find(words) != std::string::npos; }

  static inline const auto pictures_ = std::make_unique<std::deque<cv::Mat>>();
  static inline const auto model_ = std::make_unique<JSON>();
  support::TemporaryFolder folder_;
  Calibrator calibrator_{{4, 11}, 0.02F, Calibrator::MONOCULAR, FRAME.width, FRAME.height};
  PictureFeed feed_;
  KeyScreen screen_;
  guided::LoopOptions options_{folder_.File("poses.json"), folder_.File("camera"), FRAME, "video 'a.avi'",
                               [] { return true; }};
  std::ostringstream out_;
  std::ostringstream err_;
};

TEST_F(GuidedLoopRun, TakesWhatIsInViewBesidesThePoses) {
  calibrator_.SetFinder(Calibrator::FINDER_ROBUST);
  calibrator_.SetPartialGrids(true);
  // A picture that no pose asks for, cut by the right border.
  cv::Mat cut;
  const std::vector<cv::Point2d> centres = CentresIn(pictures_->back());
  double rightmost = 0.0;
  for (const cv::Point2d& centre : centres) rightmost = std::max(rightmost, centre.x);
  const cv::Matx23d shift(1.0, 0.0, FRAME.width - rightmost + 3.0, 0.0, 1.0, 0.0);
  cv::warpAffine(pictures_->back(), cut, shift, FRAME, cv::INTER_NEAREST, cv::BORDER_REPLICATE);
  const cv::Mat empty(FRAME, CV_8UC3, cv::Scalar::all(120));
  feed_.pictures.push_front(empty);
  feed_.pictures.push_front(cut);
  screen_.keys = {' ', ' ', ' '};  // a part, the same again, nothing
  int taken = 0;
  options_.taken = [&taken] { ++taken; };
  ASSERT_EQ(Run(), common::SUCCESS) << err_.str();
  EXPECT_TRUE(Printed("Taken besides: ")) << out_.str();
  EXPECT_TRUE(Printed("Nothing to take: hold the sheet so that most of its circles are in view.\n"))
      << out_.str();
  EXPECT_TRUE(Printed("Pose 6 of 6 reached.\n")) << out_.str();
  EXPECT_FALSE(Printed("Pose 7")) << out_.str();
  EXPECT_TRUE(Printed("7 of 7 images used\n")) << out_.str();
  EXPECT_EQ(taken, 7);
  // Among the worst views, as no camera could see it so: the border cuts it, the lens does not bend it there.
  EXPECT_TRUE(Printed(" px  by hand 1\n")) << out_.str();
  EXPECT_FALSE(Printed("pose 7")) << out_.str();
}

TEST_F(GuidedLoopRun, EndsWithTheResultFileAfterTheLastPose) {
  options_.strict = true;  // of no effect on a good result
  ASSERT_EQ(Run(), common::SUCCESS) << err_.str();
  EXPECT_EQ(screen_.shown, 6);
  EXPECT_EQ(screen_.closed, 1);
  EXPECT_TRUE(Printed("Bring the sheet to the drawn one, 6 times.")) << out_.str();
  for (int pose = 1; pose <= 6; ++pose) {
    EXPECT_TRUE(Printed("Pose " + std::to_string(pose) + " of 6 reached.\n")) << out_.str();
  }
  EXPECT_TRUE(Printed("6 of 6 images used\n")) << out_.str();
  EXPECT_TRUE(Printed("\nWritten:\n  " + options_.output + ".json\n  " + options_.output +
                      "_verdict.json\n  " + options_.output + "_uncertainty.png\n"))
      << out_.str();
  EXPECT_TRUE(Printed("\nVerdict: ")) << out_.str();
  EXPECT_EQ(err_.str(), "");
  EXPECT_EQ(Verdict().at("views"), 6);
  ExpectUncertaintyOfThePoses();
  JSON result;
  ASSERT_TRUE(result.load(options_.output + ".json"));
  EXPECT_LT(result.readDouble("error"), 0.2);
}

TEST_F(GuidedLoopRun, GivesAWorthlessResultAStatusOfItsOwnOnDemand) {
  world::Scene scene;
  scene.camera = world::CameraFromFieldOfView(FRAME, 62.0);
  scene.noise = 2.0;
  world::Renderer renderer(scene);
  std::vector<std::vector<cv::Point2d>> centres;
  feed_.pictures.clear();
  for (int i = 0; i < 6; ++i) {
    world::Appearance facing;
    facing.span = 0.45 + 0.09 * i;
    world::Pose pose;
    ASSERT_TRUE(world::PlaceGrid(scene.camera, scene.sheet, facing, 10.0, pose));
    centres.push_back(world::TrueCentres(scene.camera.lens, scene.sheet, pose));
    feed_.pictures.push_back(renderer.Render(pose, centres.size()));
  }
  poses::ModelOf(centres, FRAME).save(options_.poses);
  calibrator_.SetSolver(Calibrator::SOLVER_SPARSE);
  options_.strict = true;
  EXPECT_EQ(Run(), common::WORTHLESS) << err_.str() << out_.str();
  EXPECT_TRUE(Printed("Verdict: worthless")) << out_.str();
  EXPECT_TRUE(std::filesystem::exists(options_.output + ".json"));
}

TEST_F(GuidedLoopRun, TellsHowFarAVideoGot) {
  feed_.pictures.resize(4);
  EXPECT_EQ(Run(), common::NO_RESULT);
  EXPECT_EQ(err_.str(), "ERROR: the video ended with 4 of 6 poses reached.\n");
  EXPECT_FALSE(std::filesystem::exists(options_.output + ".json"));
}

TEST_F(GuidedLoopRun, QuitsOnQ) {
  screen_.keys = {-1, 'x', 'q'};
  EXPECT_EQ(Run(), common::NO_RESULT);
  EXPECT_TRUE(Printed("Ended with 3 of 6 poses reached.\n")) << out_.str();
}

TEST_F(GuidedLoopRun, BeginsAgainOnR) {
  const std::deque<cv::Mat> all = feed_.pictures;
  feed_.pictures.resize(2);
  feed_.pictures.insert(feed_.pictures.end(), all.begin(), all.end());
  screen_.keys = {-1, 'r'};
  ASSERT_EQ(Run(), common::SUCCESS) << err_.str() << out_.str();
  EXPECT_TRUE(Printed("Pose 2 of 6 reached.\nStarting again at the first pose.\nPose 1 of 6 reached.\n"))
      << out_.str();
  EXPECT_TRUE(Printed("6 of 6 images used\n")) << out_.str();
  ExpectUncertaintyOfThePoses();
}

TEST_F(GuidedLoopRun, NeedsPosesThatCanBeUsed) {
  options_.poses = folder_.File("missing.json");
  EXPECT_EQ(Run(), common::UNUSABLE);
  EXPECT_EQ(screen_.shown, 0);
}

TEST_F(GuidedLoopRun, ReportsASourceWithoutFrames) {
  feed_.pictures.clear();
  feed_.broken = true;
  EXPECT_EQ(Run(), common::UNUSABLE);
  EXPECT_EQ(err_.str(), "ERROR: cannot read video 'a.avi'.\n");
}

TEST_F(GuidedLoopRun, ReportsAResultThatCannotBeWritten) {
  options_.output = "/nowhere/camera";
  EXPECT_EQ(Run(), common::UNUSABLE);
  EXPECT_EQ(err_.str(), "ERROR: cannot write '/nowhere/camera.json'.\n");
}

TEST_F(GuidedLoopRun, ReportsAPictureThatCannotBeWritten) {
  const std::string picture = options_.output + "_uncertainty.png";
  std::filesystem::create_directory(picture);
  EXPECT_EQ(Run(), common::UNUSABLE);
  EXPECT_EQ(err_.str(), "ERROR: cannot write '" + picture + "'.\n");
}

TEST_F(GuidedLoopRun, ReportsTooFewPosesForAComputation) {
  JSON three = *model_;
  three.addInt("count", 3);
  three.save(options_.poses);
  EXPECT_EQ(Run(), common::NO_RESULT);
  EXPECT_EQ(err_.str(), "ERROR: the video ended with 3 of 3 poses reached.\n");
}

/// A camera before which somebody brings the sheet to wherever it is asked for, roughly.
class FollowingFeed final : public common::FrameFeed {
 public:
  FollowingFeed(Calibrator& calibrator, const world::Scene& scene)
      : calibrator_(calibrator), scene_(scene), renderer_(scene) {}

  bool Take(cv::Mat& frame, std::chrono::milliseconds) override {
    if (calibrator_.GetAssistantGoal() < 0) return false;
    const auto centres = calibrator_.ProposePose(Calibrator::MODEL_RATIONAL).centres;
    world::Pose pose = world::PoseNearest(scene_.camera, scene_.sheet, centres);
    for (int i = 0; i < 3; ++i) {
      pose.rvec[i] += random_.gaussian(0.02);
      pose.tvec[i] *= 1.0 + random_.gaussian(0.01);
    }
    frame = renderer_.Render(pose, ++frames);
    return true;
  }
  bool FailedToStart() const override { return false; }

  std::uint64_t frames = 0;

 private:
  Calibrator& calibrator_;
  const world::Scene scene_;
  world::Renderer renderer_;
  cv::RNG random_{5};
};

/// The loop with a target accuracy.
class GuidedToATarget : public GuidedLoopRun {
 protected:
  GuidedToATarget() {
    scene_.camera = world::CameraFromFieldOfView(FRAME, 62.0, {-0.2, 0.05, 0.0, 0.0, 0.0});
    scene_.noise = 20.0;
    scene_.blur = 0.7;
    calibrator_.SetSolver(Calibrator::SOLVER_SPARSE);
    calibrator_.SetDiscRadius(0.008);
  }

  common::ExitStatus RunTo(double target, int most) {
    options_.until = target;
    options_.mostPoses = most;
    options_.sourceEnded = [] { return false; };
    FollowingFeed feed(calibrator_, scene_);
    const common::ExitStatus status =
        guided::GuidedLoop(calibrator_, feed, screen_, options_, out_, err_).Run();
    frames_ = feed.frames;
    return status;
  }

  world::Scene scene_;
  std::uint64_t frames_ = 0;
};

TEST_F(GuidedToATarget, AsksForPosesUntilTheCameraIsKnownThatWell) {
  constexpr double TARGET = 0.012;
  ASSERT_EQ(RunTo(TARGET, 20), common::SUCCESS) << err_.str() << out_.str();
  const int poses = calibrator_.GetNumberOfRecords();
  RecordProperty("poses", poses);
  EXPECT_GT(poses, 6) << out_.str();
  EXPECT_LE(poses, 12) << out_.str();
  EXPECT_TRUE(Printed("until projections are known to 0.012 px, at most 20 times.")) << out_.str();
  EXPECT_TRUE(Printed("camera not known yet (goal 0.0120 px)")) << out_.str();
  EXPECT_TRUE(Printed("Pose 6 reached.\n  known to ")) << out_.str();
  EXPECT_FALSE(Printed("goal is not reached")) << out_.str();
  EXPECT_TRUE(Printed("\nVerdict: ")) << out_.str();
  EXPECT_LT(Verdict().at("deviationInImage").get<double>(), 1.3 * TARGET) << Verdict();
  const auto error = world::MeanProjectionDistance(
      scene_.camera.lens, world::LensFrom(calibrator_.GetK(), calibrator_.GetDistCoefs()), FRAME, {},
      world::Alignment::Rotated);
  EXPECT_LT(error.mean, 3.0 * TARGET) << out_.str();
}

TEST_F(GuidedToATarget, TellsWhenTheWishIsNotMetAndCalibratesAllTheSame) {
  ASSERT_EQ(RunTo(0.0001, 7), common::SUCCESS) << err_.str() << out_.str();
  EXPECT_TRUE(Printed("No more poses after 7: the goal is not reached.\n")) << out_.str();
  EXPECT_EQ(calibrator_.GetNumberOfRecords(), 7);
  EXPECT_TRUE(std::filesystem::exists(options_.output + ".json"));
}

TEST_F(GuidedToATarget, BeginsAgainOnR) {
  screen_.keys = {-1, -1, 'r'};
  ASSERT_EQ(RunTo(0.0001, 6), common::SUCCESS) << err_.str() << out_.str();
  EXPECT_TRUE(Printed("Starting again at the first pose.\nPose 1 reached.\n")) << out_.str();
  EXPECT_EQ(calibrator_.GetNumberOfRecords(), 6);
}

}  // namespace
