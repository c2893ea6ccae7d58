/// A Video4Linux capture device that plays motion JPEG images from a folder.
#include "FakeDevice.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "Controls.h"

namespace fake_camera {

namespace {

constexpr std::size_t BUFFER_SIZE = 4U << 20U;
/// How often a silent device looks whether it is to speak again. Its user waits the longer the longer this
/// is.
constexpr std::chrono::milliseconds SILENCE{1200};

std::vector<std::string> SortedNames(const std::string& folder, bool folders) {
  std::vector<std::string> names;
  std::error_code ignored;
  for (const auto& entry : std::filesystem::directory_iterator(folder, ignored)) {
    if (entry.is_directory() == folders) names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace

FakeDevice::FakeDevice(std::string folder, int descriptor)
    : folder_(std::move(folder)), descriptor_(descriptor) {
  v4l2_format format{};
  SetFormat(format);
}

bool FakeDevice::Exists(const std::string& folder) {
  return std::filesystem::is_directory(folder) && !FakeDevice(folder, -1).Behaves("gone");
}

bool FakeDevice::MayBeOpened(const std::string& folder) {
  return !FakeDevice(folder, -1).Behaves("forbidden");
}

bool FakeDevice::Behaves(const char* word) const {
  std::ifstream file(folder_ + "/behaviour");
  return std::find(std::istream_iterator<std::string>(file), std::istream_iterator<std::string>(), word) !=
         std::istream_iterator<std::string>();
}

std::vector<std::string> FakeDevice::Sizes() const {
  return SortedNames(folder_, true);
}

void FakeDevice::SetFormat(v4l2_format& format) {
  const std::string asked =
      std::to_string(format.fmt.pix.width) + "x" + std::to_string(format.fmt.pix.height);
  const auto sizes = Sizes();
  if (sizes.empty()) return;
  const bool honoured = std::find(sizes.begin(), sizes.end(), asked) != sizes.end();
  std::sscanf((honoured ? asked : sizes.back()).c_str(), "%ux%u", &width_, &height_);
  FillFormat(format);
}

void FakeDevice::FillFormat(v4l2_format& format) const {
  format.fmt.pix.width = width_;
  format.fmt.pix.height = height_;
  format.fmt.pix.pixelformat = V4L2_PIX_FMT_MJPEG;
  format.fmt.pix.field = V4L2_FIELD_NONE;
  format.fmt.pix.sizeimage = BUFFER_SIZE;
}

int FakeDevice::Describe(v4l2_capability& capability) const {
  capability = {};
  std::ifstream file(folder_ + "/card");
  std::string name;
  if (!std::getline(file, name)) name = "Fake camera";
  std::strcpy(reinterpret_cast<char*>(capability.driver), "fake");
  // As the system does: a name that fills the place to its end has no zero there.
  std::memcpy(capability.card, name.data(), std::min(name.size(), sizeof(capability.card)));
  capability.capabilities = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
  if (!Behaves("metadata")) return 0;
  // Those of the whole camera, and of the device alone.
  capability.capabilities |= V4L2_CAP_META_CAPTURE | V4L2_CAP_DEVICE_CAPS;
  capability.device_caps = V4L2_CAP_META_CAPTURE | V4L2_CAP_STREAMING;
  return 0;
}

int FakeDevice::ListSize(v4l2_frmsizeenum& size) const {
  const auto sizes = Sizes();
  if (size.pixel_format != V4L2_PIX_FMT_MJPEG || size.index >= sizes.size()) return EINVAL;
  size.type = V4L2_FRMSIZE_TYPE_DISCRETE;
  std::sscanf(sizes[size.index].c_str(), "%ux%u", &size.discrete.width, &size.discrete.height);
  return 0;
}

int FakeDevice::ListRate(v4l2_frmivalenum& rate) {
  constexpr std::array<unsigned, 3> RATES = {15, 30, 10};
  if (rate.index >= RATES.size()) return EINVAL;
  rate.type = V4L2_FRMIVAL_TYPE_DISCRETE;
  rate.discrete = {1, RATES[rate.index]};
  return 0;
}

int FakeDevice::Control(unsigned long request, void* argument) {
  if (Behaves("gone")) return ENODEV;
  switch (request) {
    case VIDIOC_QUERYCAP:
      return Describe(*static_cast<v4l2_capability*>(argument));
    case VIDIOC_ENUM_FRAMESIZES:
      return ListSize(*static_cast<v4l2_frmsizeenum*>(argument));
    case VIDIOC_ENUM_FRAMEINTERVALS:
      return ListRate(*static_cast<v4l2_frmivalenum*>(argument));
    case VIDIOC_QUERYCTRL:
      return Controls(folder_).Describe(*static_cast<v4l2_queryctrl*>(argument));
    case VIDIOC_G_CTRL:
      return Controls(folder_).Get(*static_cast<v4l2_control*>(argument));
    case VIDIOC_S_CTRL:
      return Controls(folder_).Set(*static_cast<v4l2_control*>(argument));
    case VIDIOC_ENUM_FMT: {
      auto& description = *static_cast<v4l2_fmtdesc*>(argument);
      description.pixelformat = V4L2_PIX_FMT_MJPEG;
      return description.index == 0 ? 0 : EINVAL;
    }
    case VIDIOC_ENUMINPUT:
      return static_cast<v4l2_input*>(argument)->index == 0 ? 0 : EINVAL;
    case VIDIOC_G_INPUT:
      *static_cast<int*>(argument) = 0;
      return 0;
    case VIDIOC_S_INPUT:
      return 0;
    case VIDIOC_G_FMT:
      FillFormat(*static_cast<v4l2_format*>(argument));
      return 0;
    case VIDIOC_S_FMT:
      SetFormat(*static_cast<v4l2_format*>(argument));
      return 0;
    case VIDIOC_S_PARM: {
      const auto& wanted = static_cast<v4l2_streamparm*>(argument)->parm.capture.timeperframe;
      if (wanted.numerator > 0 && wanted.denominator >= wanted.numerator) {
        rate_ = wanted.denominator / wanted.numerator;
      }
      static_cast<v4l2_streamparm*>(argument)->parm.capture.timeperframe = {1, rate_};
      return 0;
    }
    case VIDIOC_G_PARM:
      static_cast<v4l2_streamparm*>(argument)->parm.capture.capability = V4L2_CAP_TIMEPERFRAME;
      static_cast<v4l2_streamparm*>(argument)->parm.capture.timeperframe = {1, rate_};
      return 0;
    case VIDIOC_REQBUFS:
      if (Behaves("busy")) return EBUSY;
      RequestBuffers(*static_cast<v4l2_requestbuffers*>(argument));
      return 0;
    case VIDIOC_QUERYBUF: {
      auto& buffer = *static_cast<v4l2_buffer*>(argument);
      if (buffer.index >= buffers_.size()) return EINVAL;
      buffer.length = BUFFER_SIZE;
      buffer.m.offset = static_cast<unsigned>(buffer.index * BUFFER_SIZE);
      return 0;
    }
    case VIDIOC_QBUF:
      return Queue(*static_cast<v4l2_buffer*>(argument));
    case VIDIOC_DQBUF:
      return Dequeue(*static_cast<v4l2_buffer*>(argument));
    case VIDIOC_STREAMON:
      return Stream(true);
    case VIDIOC_STREAMOFF:
      return Stream(false);
    default:
      return ENOTTY;
  }
}

/// Memory that was handed out is its user's to give back.
void FakeDevice::RequestBuffers(v4l2_requestbuffers& request) {
  buffers_.assign(request.count, {});
}

void* FakeDevice::Map(std::size_t length, long offset) {
  const std::size_t index = static_cast<std::size_t>(offset) / BUFFER_SIZE;
  if (index >= buffers_.size() || length != BUFFER_SIZE) return nullptr;
  return (buffers_[index].memory = AnonymousMemory(length));
}

int FakeDevice::Queue(const v4l2_buffer& buffer) {
  if (buffer.index >= buffers_.size()) return EINVAL;
  buffers_[buffer.index].queued = true;
  return 0;
}

int FakeDevice::Dequeue(v4l2_buffer& buffer) {
  std::uint64_t due = 0;
  if (read(descriptor_, &due, sizeof(due)) != sizeof(due)) return EAGAIN;
  const bool silent = Behaves("silent");
  if (silent != silent_) Pace(silent ? SILENCE : FrameTime());
  silent_ = silent;
  const auto queued =
      std::find_if(buffers_.begin(), buffers_.end(), [](const Buffer& each) { return each.queued; });
  if (silent || queued == buffers_.end()) return EAGAIN;
  queued->queued = false;
  buffer.index = static_cast<unsigned>(queued - buffers_.begin());
  buffer.length = BUFFER_SIZE;
  buffer.flags = V4L2_BUF_FLAG_MAPPED;
  buffer.bytesused = Behaves("empty") ? 0 : static_cast<unsigned>(Fill(queued->memory));
  return 0;
}

int FakeDevice::Stream(bool on) {
  for (Buffer& buffer : buffers_) buffer.queued = buffer.queued && on;
  silent_ = false;
  return Pace(on ? FrameTime() : std::chrono::nanoseconds(0));
}

std::chrono::nanoseconds FakeDevice::FrameTime() const {
  return std::chrono::nanoseconds(std::chrono::seconds(1)) / std::max(2U, rate_);
}

/// Makes the descriptor readable each time this has passed; never for 0.
int FakeDevice::Pace(std::chrono::nanoseconds interval) const {
  itimerspec timer{};
  timer.it_value.tv_sec = timer.it_interval.tv_sec = interval.count() / 1000000000;
  timer.it_value.tv_nsec = timer.it_interval.tv_nsec = interval.count() % 1000000000;
  return timerfd_settime(descriptor_, 0, &timer, nullptr) == 0 ? 0 : errno;
}

std::size_t FakeDevice::Fill(void* memory) {
  const std::string folder = folder_ + "/" + std::to_string(width_) + "x" + std::to_string(height_);
  const auto names = SortedNames(folder, false);
  if (names.empty() || memory == nullptr) return 0;
  std::ifstream file(folder + "/" + names[frame_++ % names.size()], std::ios::binary);
  file.read(static_cast<char*>(memory), BUFFER_SIZE);
  return static_cast<std::size_t>(file.gcount());
}

}  // namespace fake_camera
