/// An assistant's part in a detection, and several feeders at once.
#include "calibrator/GuidedDetection.h"

#include <gtest/gtest.h>

#include "TemporaryFolder.h"
#include "calibrator/Snapshots.h"
#include "unit/Collection.h"
#include "unit/ThreadGroup.h"

using namespace velmora;

namespace {

/// Detector, guidance and snapshots, joined as a calibrator joins them.
class Collecting : public ::testing::Test {
 protected:
  void AskFor(const unit::PointLists& poses) {
    const std::string path = folder_.File("model.json");
    unit::WriteAssistantModel(path, poses);
    guidance_.Start(path);
  }
  /// True when the last pose was taken.
  bool Show(const cv::Mat& image) {
    cv::Mat frame = image.clone();
    std::vector<cv::Point2d> points;
    GuidedDetection guide(guidance_, [this](const CameraSnapshot& detection) {
      return snapshots_.Add({detection}, Snapshots::EarlierRms::Drop);
    });
    detector_.Detect(
        frame, points, false, [] { return OverlayState(); }, guide);
    return guide.Finished();
  }

  support::TemporaryFolder folder_;
  Snapshots snapshots_{std::vector<cv::Point3d>(44), 1};
  Detector detector_{unit::GRID, unit::FRAME};
  Guidance guidance_{unit::GRID, unit::FRAME};
};

TEST_F(Collecting, DrawsAndTakesNothingWithoutAnAssistant) {
  EXPECT_FALSE(Show(unit::Rendered().images[0]));
  EXPECT_EQ(snapshots_.Count(), 0U);
  EXPECT_TRUE(detector_.HasLast());
}

TEST_F(Collecting, TakesTheDetectionThatIsAtThePose) {
  AskFor({unit::Rendered().centres[0], unit::Rendered().centres[1]});
  EXPECT_FALSE(Show(unit::Rendered().images[1]));
  EXPECT_EQ(snapshots_.Count(), 0U);
  EXPECT_FALSE(Show(unit::Rendered().images[0]));
  EXPECT_EQ(snapshots_.Count(), 1U);
  EXPECT_FALSE(detector_.HasLast());
  EXPECT_TRUE(Show(unit::Rendered().images[1]));
}

// Meant for the thread sanitizer as much as for its own checks: two feeders push frames of all poses, and
// every snapshot is of the frame that was checked, no pose is skipped, none taken twice.
TEST_F(Collecting, TakesWhatWasJudgedWithTwoFeedersAtOnce) {
  const unit::RenderedViews& rendered = unit::Rendered();
  const size_t poses = 6;
  unit::PointLists asked;
  for (size_t round = 0; round < 3; ++round) {
    asked.insert(asked.end(), rendered.centres.begin(),
                 rendered.centres.begin() + static_cast<std::ptrdiff_t>(poses));
  }
  AskFor(asked);
  std::atomic<bool> finished{false};
  unit::ThreadGroup threadGroup;
  for (size_t feeder = 0; feeder < 2; ++feeder) {
    threadGroup.Add([&, feeder] {
      // One goes through the views forwards, the other one backwards.
      for (size_t i = 0; i < 400 && !finished; ++i) {
        const size_t view = feeder == 0 ? i % poses : poses - 1 - i % poses;
        if (Show(rendered.images[view])) finished = true;
      }
    });
  }
  threadGroup.RunToTheEnd();
  ASSERT_TRUE(finished);
  const auto list = snapshots_.Current().snapshots;
  ASSERT_EQ(list->Count(), asked.size());
  for (size_t i = 0; i < asked.size(); ++i) {
    const std::vector<cv::Point2d>& taken = list->cameras[0].points[i];
    ASSERT_EQ(taken.size(), asked[i].size());
    EXPECT_LT(cv::norm(taken, asked[i], cv::NORM_INF), 1.0) << "snapshot " << i;
  }
}

}  // namespace
