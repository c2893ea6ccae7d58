/// Images of one camera or of two by the same words.
#include "guided/ImagesFeed.h"

#include <gtest/gtest.h>

#include <deque>

#include "Matchers.h"

namespace {

/// Hands out what it is given, and notes for how long its user would wait.
template <typename Frame>
class Scripted final : public common::BasicFrameFeed<Frame> {
 public:
  bool Take(Frame& frame, std::chrono::milliseconds patience) override {
    longest = std::max(longest, patience);
    if (frames.empty()) return false;
    frame = frames.front();
    frames.pop_front();
    return true;
  }
  bool FailedToStart() const override { return broken; }

  std::deque<Frame> frames;
  std::chrono::milliseconds longest{0};
  bool broken = false;
};

cv::Mat Grey(int level) {
  return cv::Mat(6, 8, CV_8UC3, cv::Scalar::all(level));
}

TEST(ImagesFeed, OfOneCameraHasOneImage) {
  Scripted<cv::Mat> frames;
  frames.frames = {Grey(10), Grey(20)};
  guided::SingleImages feed(frames);
  EXPECT_EQ(feed.Cameras(), 1U);
  std::vector<cv::Mat> images(2, Grey(1));
  for (const int level : {10, 20}) {
    ASSERT_TRUE(feed.Take(images));
    ASSERT_EQ(images.size(), 1U);
    EXPECT_SAME_MAT(images[0], Grey(level));
  }
  EXPECT_FALSE(feed.Take(images));
  ASSERT_EQ(images.size(), 1U) << "what was there stays";
  EXPECT_SAME_MAT(images[0], Grey(20));
  EXPECT_EQ(frames.longest.count(), 0) << "the window does not wait";
}

TEST(ImagesFeed, OfTwoCamerasHasTheLeftImageFirst) {
  Scripted<common::FramePair> pairs;
  pairs.frames = {{Grey(10), Grey(20)}};
  guided::PairImages feed(pairs);
  EXPECT_EQ(feed.Cameras(), 2U);
  std::vector<cv::Mat> images;
  ASSERT_TRUE(feed.Take(images));
  ASSERT_EQ(images.size(), 2U);
  EXPECT_SAME_MAT(images[0], Grey(10));
  EXPECT_SAME_MAT(images[1], Grey(20));
  EXPECT_FALSE(feed.Take(images));
  EXPECT_EQ(images.size(), 2U);
  EXPECT_EQ(pairs.longest.count(), 0);
}

TEST(ImagesFeed, TellsThatItsSourceIsBroken) {
  Scripted<cv::Mat> frames;
  Scripted<common::FramePair> pairs;
  const guided::SingleImages single(frames);
  const guided::PairImages pair(pairs);
  EXPECT_FALSE(single.FailedToStart());
  EXPECT_FALSE(pair.FailedToStart());
  frames.broken = pairs.broken = true;
  EXPECT_TRUE(single.FailedToStart());
  EXPECT_TRUE(pair.FailedToStart());
}

}  // namespace
