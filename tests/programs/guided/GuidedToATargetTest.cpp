/// The guided calibration that asks for poses until a camera is known well enough.
#include <gtest/gtest.h>

#include <filesystem>

#include "GuidedRuns.h"
#include "LensError.h"
#include "Reach.h"

using namespace guided_runs;  // NOLINT

namespace {

/// A camera before which somebody brings the sheet to wherever it is asked for, roughly.
class FollowingFeed final : public guided::ImagesFeed {
 public:
  FollowingFeed(const velmora::Session& session, const world::Scene& scene,
                const guided::ComputationSettings& settings)
      : session_(session), collector_(settings, 1), scene_(scene), renderer_(scene) {}

  bool Take(std::vector<cv::Mat>& images) override {
    FollowSession();
    if (frames++ % STILL == 0 || moved_) {
      moved_ = false;
      const auto centres = collector_.Propose(Calibrator::MODEL_RATIONAL).centres;
      world::Pose pose = world::PoseNearest(scene_.camera, scene_.sheet, centres);
      for (int i = 0; i < 3; ++i) {
        pose.rvec[i] += random_.gaussian(0.01);
        pose.tvec[i] *= 1.0 + random_.gaussian(0.005);
      }
      frame_ = renderer_.Render(pose, static_cast<std::uint64_t>(frames));
    }
    images = {frame_.clone()};
    return true;
  }
  bool FailedToStart() const override { return false; }
  size_t Cameras() const override { return 1; }

  int frames = 0;

 private:
  /// The poses that are asked for follow from what is kept.
  void FollowSession() {
    std::vector<velmora::StoredSnapshot> used;
    for (const auto& snapshot : session_.Snapshots()) {
      if (snapshot.IsUsed()) used.push_back(snapshot);
    }
    if (static_cast<int>(used.size()) == collector_.Count()) return;
    collector_.Clear();
    for (const auto& snapshot : used) collector_.Add(velmora::FromStored(snapshot));
    moved_ = true;
  }

  const velmora::Session& session_;
  guided::Collector collector_;
  const world::Scene scene_;
  world::Renderer renderer_;
  cv::RNG random_{5};
  cv::Mat frame_;
  bool moved_ = true;
};

/// The loop with a target accuracy.
class GuidedToATarget : public GuidedLoopRun {
 protected:
  GuidedToATarget() {
    scene_.camera = world::CameraFromFieldOfView(FRAME, 62.0, {-0.2, 0.05, 0.0, 0.0, 0.0});
    scene_.noise = 20.0;
    scene_.blur = 0.7;
    options_.computation.model = Calibrator::MODEL_RATIONAL;
  }

  common::ExitStatus RunTo(double target, int most) {
    options_.until = target;
    options_.mostPoses = most;
    options_.sourceEnded = [] { return false; };
    OpenSession();
    FollowingFeed feed(*session_, scene_, options_.computation);
    return Run(feed);
  }

  world::Scene scene_;
};

TEST_F(GuidedToATarget, AsksForPosesUntilTheCameraIsKnownThatWell) {
  constexpr double TARGET = 0.012;
  ASSERT_EQ(RunTo(TARGET, 20), common::SUCCESS) << err_.str() << out_.str();
  const size_t poses = UsedViews().size();
  RecordProperty("poses", static_cast<int>(poses));
  EXPECT_GE(poses, 6U) << out_.str();
  EXPECT_LE(poses, 14U) << out_.str();
  EXPECT_TRUE(Printed("until projections are known to 0.012 px, at most 20 times.")) << out_.str();
  EXPECT_TRUE(Printed("camera not known yet (goal 0.0120 px)")) << out_.str();
  EXPECT_TRUE(Printed("View 6 taken: pose 6.\n  known to ")) << out_.str();
  EXPECT_FALSE(Printed("goal is not reached")) << out_.str();
  EXPECT_TRUE(Printed("\nVerdict: ")) << out_.str();
  EXPECT_LT(Verdict().at("deviationInImage").get<double>(), 1.3 * TARGET) << Verdict();
  JSON result;
  ASSERT_TRUE(result.load(options_.output + ".json"));
  const auto error = world::MeanProjectionDistance(scene_.camera.lens,
                                                   world::LensFrom(Camera(), result.readMat("distCoefs")),
                                                   FRAME, {}, world::Alignment::Rotated);
  EXPECT_LT(error.mean, 3.0 * TARGET) << out_.str();
}

TEST_F(GuidedToATarget, TellsWhenTheWishIsNotMetAndCalibratesAllTheSame) {
  ASSERT_EQ(RunTo(0.0001, 7), common::SUCCESS) << err_.str() << out_.str();
  EXPECT_TRUE(Printed("No more poses after 7 views: the goal is not reached.\n")) << out_.str();
  EXPECT_EQ(UsedViews().size(), 7U);
  EXPECT_TRUE(std::filesystem::exists(options_.output + ".json"));
}

TEST_F(GuidedToATarget, BeginsAgainOnR) {
  screen_.Press('r', Once("View 2 taken"));
  ASSERT_EQ(RunTo(0.0001, 6), common::SUCCESS) << err_.str() << out_.str();
  EXPECT_TRUE(Printed("Starting again at the first pose.\nView 1 taken: pose 1.\n")) << out_.str();
  EXPECT_EQ(UsedViews().size(), 6U);
}

TEST_F(GuidedToATarget, AsksForAnotherPoseInPlaceOfOneThatIsSkipped) {
  screen_.Press('s', Once("View 2 taken"));
  screen_.Press('u', [this] { return Printed("View 2 taken") && session_->Snapshots().size() == 2; });
  ASSERT_EQ(RunTo(0.0001, 6), common::SUCCESS) << err_.str() << out_.str();
  EXPECT_EQ(UsedViews().size(), 6U);
}

}  // namespace
