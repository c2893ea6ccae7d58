/// Where the reader takes its frames from: a camera, a file, a stream or a pipeline.
#pragma once

#include <memory>
#include <opencv2/core.hpp>
#include <string>

namespace velmora {

/// What the reader needs of a capture of the video library; properties are the library's. Any function may
/// raise an exception of that library. One thread at a time may use a source.
class FrameSource {
 public:
  virtual ~FrameSource() = default;

  virtual bool Open(int device) = 0;
  /// A path, URL or pipeline; `backEnd` is one of the library's numbers (cv::CAP_ANY lets it choose).
  virtual bool Open(const std::string& address, int backEnd) = 0;
  virtual bool IsOpened() const = 0;
  virtual void Set(int property, double value) = 0;
  virtual double Get(int property) const = 0;
  virtual bool Grab() = 0;
  /// Decodes what was grabbed last.
  virtual bool Retrieve(cv::Mat& frame) = 0;
  virtual void Release() = 0;
};

/// A source that is the library's own capture.
std::unique_ptr<FrameSource> NewVideoSource();

}  // namespace velmora
