/// The capture of the video library as a source of frames.
#include "capture/FrameSource.h"

#include <opencv2/videoio.hpp>

namespace velmora {

namespace {

class VideoSource final : public FrameSource {
 public:
  bool Open(int device) override { return capture_.open(device); }
  bool Open(const std::string& address, int backEnd) override { return capture_.open(address, backEnd); }
  bool IsOpened() const override { return capture_.isOpened(); }
  void Set(int property, double value) override { capture_.set(property, value); }
  double Get(int property) const override { return capture_.get(property); }
  bool Grab() override { return capture_.grab(); }
  bool Retrieve(cv::Mat& frame) override { return capture_.retrieve(frame, 0); }
  void Release() override { capture_.release(); }

 private:
  cv::VideoCapture capture_;
};

}  // namespace

std::unique_ptr<FrameSource> NewVideoSource() {
  return std::make_unique<VideoSource>();
}

}  // namespace velmora
