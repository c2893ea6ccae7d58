/// The camera, pair, stream or recording that a guided calibration is fed from.
#include "guided/LiveSource.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iostream>
#include <stdexcept>
#include <type_traits>

#include "common/ExitStatus.h"
#include "common/Messages.h"
#include "common/Sources.h"
#include "guided/ArrivalText.h"
#include "guided/Cameras.h"
#include "guided/LiveFeed.h"
#include "guided/Optics.h"
#include "guided/ReopeningCapture.h"
#include "guided/VideoDevice.h"

namespace guided {

namespace {

const cv::Mat& FirstOf(const cv::Mat& frame) {
  return frame;
}
const cv::Mat& FirstOf(const common::FramePair& pair) {
  return pair.left;
}
const cv::Mat& SecondOf(const cv::Mat& frame) {
  return frame;
}
const cv::Mat& SecondOf(const common::FramePair& pair) {
  return pair.right;
}

/// What becomes of the captures once they are open.
struct Opened {
  common::SourcePlan plan;
  std::string name;
  std::shared_ptr<SourceWatch> watch;
  std::shared_ptr<Optics> optics = std::make_shared<Optics>();
  common::Delivery delivery = common::Delivery::NewestFrame;
  std::optional<Pace> pace;
  double rate = PlayingRate(0.0);
};

/// A source of frames of that kind, with its thread.
template <typename Frame>
class Delivering final : public LiveSource {
 public:
  Delivering(const Opened& opened, typename common::BasicFrameReader<Frame>::Source source,
             const Clock& clock)
      : LiveSource(std::is_same_v<Frame, common::FramePair>, opened.name, opened.watch->Kind(), opened.rate),
        watch_(opened.watch),
        reader_(Watched<Frame>(std::move(source), watch_), opened.delivery),
        feed_(reader_, *watch_, opened.pace, clock) {}

  common::FrameFeed& Frames() override { return As<cv::Mat>(); }
  common::PairFeed& Pairs() override { return As<common::FramePair>(); }
  SourceState State() const override { return feed_.State(); }
  bool Close(std::chrono::milliseconds grace) override { return reader_.Stop(grace); }

  const Frame* AwaitFirst(const std::function<bool()>& interrupted) { return feed_.AwaitFirst(interrupted); }
  void SetFrameSize(const cv::Size& size) { size_ = size; }

 private:
  template <typename Wanted>
  common::BasicFrameFeed<Wanted>& As() {
    if constexpr (std::is_same_v<Wanted, Frame>) return feed_;
    throw std::logic_error(IsPair() ? "the source delivers pairs" : "the source delivers no pairs");
  }

  const std::shared_ptr<SourceWatch> watch_;
  common::BasicFrameReader<Frame> reader_;
  LiveFeed<Frame> feed_;
};

/// Whether the video is an address that live pictures come from.
bool IsLive(const std::string& video) {
  constexpr std::array<const char*, 6> LIVE = {"rtsp", "rtmp", "rtp", "udp", "srt", "tcp"};
  const size_t end = video.find("://");
  if (end == std::string::npos) return false;
  const std::string scheme = video.substr(0, end);
  return std::any_of(LIVE.begin(), LIVE.end(),
                     [&](const char* live) { return scheme == live || scheme == std::string(live) + "s"; });
}

SourceKind KindOf(const common::SourceSettings& settings, const common::SourcePlan& plan) {
  if (plan.videoFile) return IsLive(*settings.video) ? SourceKind::Stream : SourceKind::Recording;
  const bool camera = std::holds_alternative<int>(plan.captures.front().address);
  return camera ? SourceKind::Camera : SourceKind::Stream;
}

/// None for what comes at its own pace, which addresses without a known length may.
std::optional<Pace> PaceOf(const Arguments& arguments, SourceKind kind, common::Capture& capture) {
  if (kind != SourceKind::Recording || arguments.fast) return {};
  const bool file = arguments.source.video->find("://") == std::string::npos;
  if (!file && !(capture.Get(cv::CAP_PROP_FRAME_COUNT) > 0.0)) return {};
  return Pace(PlayingRate(capture.Get(cv::CAP_PROP_FPS)));
}

/// Cameras are asked for the size that was given, and left at their own otherwise.
common::SourcePlan PlanOf(const Arguments& arguments) {
  common::SourcePlan plan = common::PlanSources(arguments.source);
  if (arguments.sizeGiven) return plan;
  for (common::CaptureRequest& request : plan.captures) {
    auto& properties = request.properties;
    properties.erase(std::remove_if(properties.begin(), properties.end(),
                                    [](const auto& property) {
                                      return property.first == cv::CAP_PROP_FRAME_WIDTH ||
                                             property.first == cv::CAP_PROP_FRAME_HEIGHT;
                                    }),
                     properties.end());
  }
  return plan;
}

std::string NameOf(const common::SourcePlan& plan, common::Camera select) {
  const std::string& first = plan.captures.front().name;
  const std::string& last = plan.captures.back().name;
  if (plan.captures.size() == 1 || select == common::Camera::Left) return first;
  return select == common::Camera::Right ? last : first + " and " + last;
}

/// The numbers of the cameras that frames come from.
std::vector<int> CamerasOf(const common::SourcePlan& plan) {
  std::vector<int> numbers;
  for (const common::CaptureRequest& request : plan.captures) {
    if (const int* number = std::get_if<int>(&request.address)) numbers.push_back(*number);
  }
  return numbers;
}

/// Who tells the watch of cameras that are gone, and restores the focus of those that are back.
CameraCare CareOf(const Opened& opened, const std::string& devices) {
  CameraCare care;
  care.present = [devices](int camera) { return DeviceExists(devices, camera); };
  care.tellGone = [watch = opened.watch](const std::string& name, bool gone) { watch->SetGone(name, gone); };
  care.reopened = [devices, optics = opened.optics](int camera) {
    optics->Restore(camera, VideoDevice(DevicePath(devices, camera)));
  };
  return care;
}

/// Captures that come back when their cameras do. Empty, after a line on `err` (two about a camera), when one
/// does not open.
common::Captures Open(const Opened& opened, const Surroundings& around, std::ostream& err) {
  size_t begun = 0;
  const auto newCapture = [&, care = CareOf(opened, around.devices)] {
    ++begun;
    return std::make_unique<ReopeningCapture>(around.newCapture, care, around.clock);
  };
  common::Captures captures = common::OpenCaptures(opened.plan, newCapture, err);
  if (!captures.empty()) return captures;
  // The last one that was begun is the one that failed.
  const int* camera = std::get_if<int>(&opened.plan.captures.at(begun - 1).address);
  if (camera != nullptr) err << CamerasText(around.devices, *camera);
  return {};
}

/// Autofocus gets a moment to focus on what is in view, and is then switched off.
void FixOpticsOf(const Opened& opened, const Surroundings& around, std::ostream& out) {
  for (const int number : CamerasOf(opened.plan)) {
    const VideoDevice device(DevicePath(around.devices, number));
    if (device.Fault() != 0) continue;
    if (FocusesByItself(device)) around.wait(std::chrono::seconds(2));
    out << opened.optics->Fix(number, device);
  }
}

/// A line about sizes that the camera has and was not asked for.
std::string LargerOffer(const Arguments& arguments, const Opened& opened, const Surroundings& around,
                        const Arrival& arrival) {
  const std::vector<int> numbers = CamerasOf(opened.plan);
  if (arguments.sizeGiven || numbers.empty()) return "";
  const bool right = arguments.select == common::Camera::Right;
  const VideoDevice device(DevicePath(around.devices, right ? numbers.back() : numbers.front()));
  if (device.Fault() != 0) return "";
  return OfferText(LargestSize(device.Sizes()), WholeSize(arrival));
}

Arrival ArrivalOf(const Arguments& arguments, const Opened& opened, const cv::Size& size) {
  Arrival arrival;
  arrival.name = opened.name;
  arrival.kind = opened.watch->Kind();
  arrival.split = arguments.source.split;
  arrival.size = size;
  if (arguments.sizeGiven) arrival.asked = {arguments.source.width, arguments.source.height};
  return arrival;
}

/// Says why, and ends reading.
std::unique_ptr<LiveSource> Refuse(std::unique_ptr<LiveSource> source, const std::string& reason,
                                   std::ostream& err) {
  common::PrintError(err, reason);
  Finish(std::move(source), common::UNUSABLE);
  return nullptr;
}

template <typename Frame>
std::unique_ptr<LiveSource> Deliver(const Arguments& arguments, const Opened& opened,
                                    typename common::BasicFrameReader<Frame>::Source source,
                                    const Surroundings& around, std::ostream& out, std::ostream& err) {
  auto delivering = std::make_unique<Delivering<Frame>>(opened, std::move(source), around.clock);
  const Frame* const first = delivering->AwaitFirst(around.interrupted);
  if (first == nullptr) {
    if (!around.interrupted()) {
      return Refuse(std::move(delivering), NothingText(opened.name, opened.watch->Kind()), err);
    }
    Finish(std::move(delivering), common::NO_RESULT);
    return nullptr;
  }
  const Arrival arrival = ArrivalOf(arguments, opened, FirstOf(*first).size());
  const cv::Size other = SecondOf(*first).size();
  if (other != arrival.size && !IsBroughtToSize(arrival)) {
    return Refuse(std::move(delivering), UnequalText(opened.name, arrival.size, other), err);
  }
  delivering->SetFrameSize(WorkingSize(arrival));
  out << ArrivalText(arrival) << LargerOffer(arguments, opened, around, arrival) << std::flush;
  FixOpticsOf(opened, around, out);
  out << std::flush;
  return delivering;
}

}  // namespace

std::unique_ptr<LiveSource> OpenLiveSource(const Arguments& arguments, const Surroundings& around,
                                           std::ostream& out, std::ostream& err) {
  const common::SourceSettings& settings = arguments.source;
  Opened opened;
  opened.plan = PlanOf(arguments);
  const SourceKind kind = KindOf(settings, opened.plan);
  opened.name = NameOf(opened.plan, arguments.select);
  opened.watch = std::make_shared<SourceWatch>(kind, around.clock);
  common::Captures captures = Open(opened, around, err);
  if (captures.empty()) return nullptr;
  opened.delivery =
      kind == SourceKind::Recording ? common::Delivery::EveryFrame : common::Delivery::NewestFrame;
  opened.pace = PaceOf(arguments, kind, *captures.front());
  if (kind == SourceKind::Recording) opened.rate = PlayingRate(captures.front()->Get(cv::CAP_PROP_FPS));
  // The captures pass to the reader's thread, which also closes them: closing may hang as reading may.
  if (opened.plan.stereo && arguments.select == common::Camera::None) {
    auto source = common::StereoSource(captures, settings.split);
    captures.clear();
    return Deliver<common::FramePair>(arguments, opened, std::move(source), around, out, err);
  }
  auto source = common::MonocularSource(captures, settings.split, arguments.select);
  captures.clear();
  return Deliver<cv::Mat>(arguments, opened, std::move(source), around, out, err);
}

int Finish(std::unique_ptr<LiveSource> source, int status) {
  constexpr std::chrono::milliseconds GRACE{500};
  if (source->Close(GRACE)) return status;
  std::cout << std::flush;
  std::_Exit(status);
}

}  // namespace guided
