/// Images that several cameras took at the same time.
#pragma once

#include <string>
#include <vector>

#include "batch/ImageStream.h"
#include "batch/NameMatching.h"

namespace batch {

/// Hands out one image of each camera after the other, as ImageStream does. An image without a name stands
/// for one that a camera does not have.
class TogetherStream {
 public:
  /// Takes the expanded inputs of each camera, whose images belong together by their order.
  TogetherStream(const std::vector<std::vector<std::string>>& files, const SamplingOptions& sampling);
  /// Takes images.
  TogetherStream(const std::vector<Moment>& moments, const SamplingOptions& sampling);

  /// False as soon as a camera has no more. Raises InputError as ImageStream does.
  bool Next(std::vector<NamedImage>& inputs);

  /// The expected number of a camera's images; 0 when it is not known.
  int ExpectedCount(size_t camera) const { return streams_.at(camera).ExpectedCount(); }
  /// The expected number of moments; 0 when it is not known.
  int ExpectedCount() const { return has_.empty() ? ExpectedCount(0) : static_cast<int>(has_.size()); }

 private:
  std::vector<ImageStream> streams_;
  std::vector<std::vector<bool>> has_;  ///< of each moment, of each camera; empty: all have all
  size_t next_ = 0;
};

/// Names of images, joined by "+" where they differ; empty ones do not count.
std::string NameTogether(const std::vector<NamedImage>& inputs);

}  // namespace batch
