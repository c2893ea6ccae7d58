/// What the cameras show at one moment, for a loop that does not mind whether they are one or two.
#pragma once

#include <opencv2/core.hpp>
#include <utility>
#include <vector>

#include "common/FrameFeed.h"

namespace guided {

class ImagesFeed {
 public:
  virtual ~ImagesFeed() = default;

  /// The next images, one of each camera; false, with `images` untouched, when there are none yet.
  virtual bool Take(std::vector<cv::Mat>& images) = 0;
  virtual bool FailedToStart() const = 0;
  virtual size_t Cameras() const = 0;
};

class SingleImages final : public ImagesFeed {
 public:
  explicit SingleImages(common::FrameFeed& feed) : feed_(feed) {}

  bool Take(std::vector<cv::Mat>& images) override {
    cv::Mat image;
    if (!feed_.Take(image, std::chrono::milliseconds(0))) return false;
    images = {std::move(image)};
    return true;
  }
  bool FailedToStart() const override { return feed_.FailedToStart(); }
  size_t Cameras() const override { return 1; }

 private:
  common::FrameFeed& feed_;
};

class PairImages final : public ImagesFeed {
 public:
  explicit PairImages(common::PairFeed& feed) : feed_(feed) {}

  bool Take(std::vector<cv::Mat>& images) override {
    common::FramePair pair;
    if (!feed_.Take(pair, std::chrono::milliseconds(0))) return false;
    images = {std::move(pair.left), std::move(pair.right)};
    return true;
  }
  bool FailedToStart() const override { return feed_.FailedToStart(); }
  size_t Cameras() const override { return 2; }

 private:
  common::PairFeed& feed_;
};

}  // namespace guided
