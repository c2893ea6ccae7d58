/// Detection, drawing and the last detection, without a calibrator.
#include "calibrator/Detector.h"

#include <gtest/gtest.h>

#include <atomic>
#include <opencv2/imgproc.hpp>
#include <thread>

#include "unit/Collection.h"
#include "unit/Scopes.h"
#include "unit/StereoCollection.h"

using namespace velmora;

namespace {

/// Does what a test tells it, and keeps what it was told.
class ScriptedGuide : public DetectionGuide {
 public:
  bool Draw(cv::Mat& frame) override {
    frame.at<cv::Vec3b>(0, 0) = {1, 2, 3};
    return drawsAll;
  }
  bool Take(const CameraSnapshot& detection) override {
    told.push_back(detection.points);
    return take();
  }

  bool drawsAll = false;
  std::function<bool()> take = [] { return false; };
  unit::PointLists told;
};

class Detecting : public ::testing::Test {
 protected:
  bool Detect(cv::Mat& frame, bool draw = false) {
    return detector_.Detect(
        frame, points_, draw, [this] { return overlay_; }, guide_);
  }
  bool Show(size_t view, bool draw = false) {
    frame_ = unit::Rendered().images[view].clone();
    return Detect(frame_, draw);
  }
  /// Searches a part, too, and draws.
  bool Seen(cv::Mat& frame) {
    CameraSnapshot seen;
    return detector_.DetectPartial(frame, seen, true, [this] { return overlay_; });
  }
  std::vector<cv::Point2d> Last() {
    std::vector<cv::Point2d> points;
    detector_.WithLast([&](const std::vector<CameraSnapshot>& last) {
      points = last.front().points;
      return false;
    });
    return points;
  }

  Detector detector_{unit::GRID, unit::FRAME};
  ScriptedGuide guide_;
  OverlayState overlay_;
  std::vector<cv::Point2d> points_;
  cv::Mat frame_;
};

TEST_F(Detecting, FindsTheCentresAndRemembersThem) {
  ASSERT_TRUE(Show(0));
  EXPECT_EQ(points_.size(), 44U);
  EXPECT_EQ(Last(), points_);
  EXPECT_TRUE(detector_.HasLast());
}

TEST_F(Detecting, ForgetsThemWithAFrameThatHasNone) {
  ASSERT_TRUE(Show(0));
  frame_ = unit::ImageWithoutGrid();
  EXPECT_FALSE(Detect(frame_));
  EXPECT_FALSE(detector_.HasLast());
}

TEST_F(Detecting, ForgetsThemWhenTheyAreUsedUp) {
  ASSERT_TRUE(Show(0));
  EXPECT_TRUE(detector_.WithLast([](const std::vector<CameraSnapshot>&) { return true; }));
  EXPECT_FALSE(detector_.HasLast());
  // The frame stays, for centres that a caller brings.
  detector_.WithLast([](const std::vector<CameraSnapshot>& last) {
    EXPECT_EQ(last.front().frame.size(), unit::FRAME);
    return false;
  });
}

TEST_F(Detecting, RemembersAnImageToMeasureInWhenThatIsAskedFor) {
  const auto image = [&] {
    GridImage of;
    detector_.WithLast([&](const std::vector<CameraSnapshot>& last) {
      of = last.front().image;
      return false;
    });
    return of;
  };
  EXPECT_FALSE(detector_.Fine());
  detector_.Finder().Set(FINDER_ROBUST);
  ASSERT_TRUE(Show(0));
  EXPECT_TRUE(image().grey.empty()) << "it was not asked for";
  detector_.SetFine(true);
  for (const bool grey : {false, true}) {
    guide_.drawsAll = !grey;
    frame_ = unit::Rendered().images[0].clone();
    cv::Mat expected;
    cv::cvtColor(frame_, expected, cv::COLOR_BGR2GRAY);
    if (grey) frame_ = expected.clone();
    ASSERT_TRUE(grey ? Seen(frame_) : Detect(frame_, true));
    EXPECT_EQ(cv::norm(image().grey, expected, cv::NORM_INF), 0.0) << "nothing is drawn on it";
    EXPECT_EQ(image().radii.size(), 44U);
  }
  detector_.WithLast([](const std::vector<CameraSnapshot>&) { return true; });
  EXPECT_TRUE(image().grey.empty()) << "it was used up";
  detector_.Finder().Set(FINDER_STANDARD);
  ASSERT_TRUE(Show(0));
  EXPECT_TRUE(image().grey.empty()) << "that search knows no radii";
}

TEST_F(Detecting, DrawsWhatTheGuideDrawsAndNothingElseUnasked) {
  ASSERT_TRUE(Show(0));
  const cv::Mat difference = frame_ != unit::Rendered().images[0];
  EXPECT_LE(cv::countNonZero(difference.reshape(1)), 3);
  EXPECT_EQ(frame_.at<cv::Vec3b>(0, 0), cv::Vec3b(1, 2, 3));
}

TEST_F(Detecting, DrawsCornersAndOverlayWhenAskedByEither) {
  for (const bool byGuide : {false, true}) {
    guide_.drawsAll = byGuide;
    ASSERT_TRUE(Show(0, !byGuide));
    const cv::Mat difference = frame_ != unit::Rendered().images[0];
    EXPECT_GT(cv::countNonZero(difference.reshape(1)), 1000) << byGuide;
  }
}

TEST_F(Detecting, TellsTheGuideOfFindsOnly) {
  frame_ = unit::ImageWithoutGrid();
  EXPECT_FALSE(Detect(frame_));
  EXPECT_TRUE(guide_.told.empty());
  ASSERT_TRUE(Show(0));
  EXPECT_EQ(guide_.told, unit::PointLists{points_});
}

TEST_F(Detecting, HasNoLastDetectionWhenTheGuideTookIt) {
  guide_.take = [] { return true; };
  ASSERT_TRUE(Show(0));
  EXPECT_FALSE(detector_.HasLast());
}

// What is checked is what becomes the snapshot: no other frame comes between.
TEST_F(Detecting, LetsNoOtherFrameInWhileTheGuideDecides) {
  std::atomic<int> deciding{0};
  std::atomic<int> together{0};
  const auto decide = [&] {
    if (++deciding > 1) ++together;
    // Room for the other thread, which shows frames all the time.
    for (int i = 0; i < 200; ++i) std::this_thread::yield();
    --deciding;
    return false;
  };
  const auto show = [&](size_t image) {
    ScriptedGuide guide;
    guide.take = decide;
    for (int i = 0; i < 12; ++i) {
      cv::Mat frame = unit::Rendered().images[image].clone();
      std::vector<cv::Point2d> points;
      EXPECT_TRUE(detector_.Detect(
          frame, points, false, [] { return OverlayState(); }, guide));
    }
  };
  std::thread other(show, size_t{1});
  show(0);
  other.join();
  EXPECT_EQ(together, 0);
}

TEST_F(Detecting, MirrorsTheFrameAndNeverThePoints) {
  ASSERT_TRUE(Show(0));
  const std::vector<cv::Point2d> plain = points_;
  detector_.SetFlip(true);
  ASSERT_TRUE(Show(0));
  EXPECT_EQ(points_, plain);
  EXPECT_EQ(frame_.at<cv::Vec3b>(0, frame_.cols - 1), cv::Vec3b(1, 2, 3));
}

TEST_F(Detecting, SaysWhatItCannotProcess) {
  EXPECT_EQ(detector_.FaultOf(cv::Mat()), "");
  EXPECT_EQ(detector_.FaultOf(unit::ImageWithGrid()), "");
  EXPECT_EQ(detector_.FaultOf(cv::Mat(4, 4, CV_16UC1)),
            "Cannot process a frame of OpenCV type 2: 8 bits and 1, 3 or 4 channels are needed.");
  cv::Mat sixteenBits(480, 640, CV_16UC1, cv::Scalar(0));
  EXPECT_EQ(unit::PrintedBy([&] { EXPECT_FALSE(Detect(sixteenBits)); }),
            "ERROR : Cannot process a frame of OpenCV type 2: 8 bits and 1, 3 or 4 channels are needed.\n");
}

class DetectingPairs : public Detecting {
 protected:
  bool refuses_ = false;
  std::function<bool()> Refuses() {
    return [this] { return refuses_; };
  }
  bool DetectPair(cv::Mat& left, cv::Mat& right) {
    std::vector<cv::Point2d> rightPoints;
    return detector_.DetectPair(
        left, right, points_, rightPoints, false, [this] { return overlay_; }, Refuses());
  }
};

TEST_F(DetectingPairs, RememberBoth) {
  unit::ImagePair pair = unit::PairWithGrid();
  ASSERT_TRUE(DetectPair(pair.left, pair.right));
  detector_.WithLast([](const std::vector<CameraSnapshot>& last) {
    EXPECT_EQ(last[0].points.size(), 44U);
    EXPECT_EQ(last[1].points.size(), 44U);
    return false;
  });
}

TEST_F(DetectingPairs, DoNothingWhenRefused) {
  unit::ImagePair pair = unit::PairWithGrid();
  refuses_ = true;
  EXPECT_FALSE(DetectPair(pair.left, pair.right));
  EXPECT_FALSE(detector_.HasLast());
}

TEST_F(DetectingPairs, CollectWhatIsAddedAndDrawItThen) {
  unit::ImagePair pair = unit::PairWithGrid();
  const cv::Mat before = pair.left.clone();
  const auto collect = [&](bool adds) {
    return detector_.CollectPair(pair.left, pair.right, true, Refuses(),
                                 [&](const std::vector<CameraSnapshot>& found) {
                                   EXPECT_EQ(found[1].points.size(), 44U);
                                   return adds;
                                 });
  };
  EXPECT_FALSE(collect(false));
  EXPECT_EQ(cv::norm(before, pair.left, cv::NORM_INF), 0.0);
  EXPECT_TRUE(collect(true));
  EXPECT_GT(cv::norm(before, pair.left, cv::NORM_INF), 0.0);
  EXPECT_FALSE(detector_.HasLast());
}

}  // namespace
