/// Pictures that several cameras took at the same time.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "batch/NameMatching.h"
#include "batch/Pictures.h"

namespace batch {

/// Hands out one picture of each camera after the other. A picture without a name stands for one that a
/// camera does not have.
class TogetherStream {
 public:
  /// Takes the expanded inputs of each camera, whose pictures belong together by their order.
  TogetherStream(const std::vector<std::vector<std::string>>& files, const SamplingOptions& sampling);
  /// Takes images.
  TogetherStream(const std::vector<Moment>& moments, const SamplingOptions& sampling);

  /// False as soon as a camera has no more. Raises InputError as PictureStream does.
  bool Next(std::vector<Picture>& pictures);

  /// Of a camera, as far as is known; 0 when it is not.
  int ExpectedCount(size_t camera) const { return streams_.at(camera).ExpectedCount(); }
  /// Of the moments.
  int ExpectedCount() const { return has_.empty() ? ExpectedCount(0) : static_cast<int>(has_.size()); }
  /// Of all cameras.
  int OrientationsIgnored() const;

 private:
  std::vector<PictureStream> streams_;
  std::vector<std::vector<bool>> has_;  ///< of each moment, of each camera; empty: all have all
  size_t next_ = 0;
};

/// Names of pictures, joined by "+" where they differ; empty ones do not count.
std::string NameTogether(const std::vector<Picture>& pictures);

/// Calls `take` for the picture of each camera that has one, for all at the same time. What it returned of
/// each.
std::vector<std::string> TakeTogether(std::vector<Picture>& pictures,
                                      const std::function<std::string(size_t camera, Picture&)>& take);

}  // namespace batch
