/// Opens the planned captures and turns them into a source of frames.
#include "common/Captures.h"

#include <opencv2/videoio.hpp>

#include "common/Halves.h"
#include "common/LibraryNoise.h"
#include "common/Messages.h"

namespace common {

namespace {

class LibraryCapture final : public Capture {
 public:
  bool Open(const CaptureRequest& request) override {
    const MutedStandardError muted;
    try {
      if (const auto* index = std::get_if<int>(&request.address)) {
        return capture_.open(*index, request.backend);
      }
      return capture_.open(std::get<std::string>(request.address), request.backend);
    } catch (const cv::Exception&) {
      return false;
    }
  }

  void Set(int property, double value) override { capture_.set(property, value); }
  double Get(int property) override { return capture_.get(property); }
  bool Read(cv::Mat& frame) override { return capture_.read(frame); }
  bool Skip() override { return capture_.grab(); }

 private:
  cv::VideoCapture capture_;
};

}  // namespace

std::unique_ptr<Capture> NewVideoCapture() {
  return std::make_unique<LibraryCapture>();
}

Captures OpenCaptures(const SourcePlan& plan, const std::function<std::unique_ptr<Capture>()>& newCapture,
                      std::ostream& err) {
  if (plan.captures.empty()) {
    PrintError(err, "no video source given. Please use '--help' for more information.");
    return {};
  }
  Captures captures;
  for (const CaptureRequest& request : plan.captures) {
    captures.push_back(newCapture());
    if (!captures.back()->Open(request)) {
      PrintError(err, "cannot open " + request.name + ".");
      return {};
    }
  }
  for (std::size_t i = 0; i < captures.size(); ++i) {
    for (const auto& [property, value] : plan.captures[i].properties) captures[i]->Set(property, value);
  }
  return captures;
}

FrameReader::Source MonocularSource(const Captures& captures, Split split, Camera camera) {
  if (split == Split::None) {
    const auto used = camera == Camera::Right ? captures.back() : captures.front();
    return [captures, used](cv::Mat& frame) { return used->Read(frame); };
  }
  return [captures, split, camera](cv::Mat& frame) {
    cv::Mat whole;
    if (!captures.front()->Read(whole)) return false;
    frame = HalfOf(whole, split, camera);
    return true;
  };
}

PairReader::Source StereoSource(const Captures& captures, Split split) {
  if (split == Split::None) {
    return [captures](FramePair& pair) {
      // Both are read, whatever becomes of the first, so that the two stay in step.
      const bool left = captures.front()->Read(pair.left);
      return captures.back()->Read(pair.right) && left;
    };
  }
  return [captures, split](FramePair& pair) {
    cv::Mat whole;
    if (!captures.front()->Read(whole)) return false;
    pair.left = HalfOf(whole, split, Camera::Left);
    pair.right = HalfOf(whole, split, Camera::Right);
    return true;
  };
}

}  // namespace common
