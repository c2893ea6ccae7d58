/// A video device of the operating system, asked about itself.
#include "guided/VideoDevice.h"

#include <fcntl.h>
#include <linux/videodev2.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace guided {

namespace {

/// The system numbers no more.
constexpr int MOST_DEVICES = 256;
/// No device lists more formats, sizes or rates; a driver that never comes to an end is left.
constexpr unsigned MOST_ENTRIES = 1000;

/// A number of the driver as one of pixels.
int Pixels(unsigned number) {
  return static_cast<int>(std::min(number, 65535U));
}

double RateOf(const v4l2_fract& interval) {
  return interval.numerator == 0 ? 0.0 : static_cast<double>(interval.denominator) / interval.numerator;
}

bool IsNoDevice(int fault) {
  return fault == ENOENT || fault == ENODEV || fault == ENXIO || fault == ENOTDIR;
}

}  // namespace

VideoDevice::VideoDevice(const std::string& path)
    : descriptor_(open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC)) {
  if (descriptor_ < 0) fault_ = errno;
}

VideoDevice::~VideoDevice() {
  if (descriptor_ >= 0) close(descriptor_);
}

bool VideoDevice::Ask(unsigned long request, void* argument) const {
  int result = 0;
  do {
    result = ioctl(descriptor_, request, argument);
  } while (result < 0 && errno == EINTR);
  return result >= 0;
}

unsigned VideoDevice::Capabilities() const {
  v4l2_capability told{};
  if (!Ask(VIDIOC_QUERYCAP, &told)) return 0;
  // Those of this device, where the driver tells them from those of the whole camera.
  return (told.capabilities & V4L2_CAP_DEVICE_CAPS) != 0U ? told.device_caps : told.capabilities;
}

bool VideoDevice::Captures() const {
  return (Capabilities() & (V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_VIDEO_CAPTURE_MPLANE)) != 0U;
}

unsigned VideoDevice::BufferType() const {
  return (Capabilities() & V4L2_CAP_VIDEO_CAPTURE) != 0U ? V4L2_BUF_TYPE_VIDEO_CAPTURE
                                                         : V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE;
}

std::string VideoDevice::Name() const {
  v4l2_capability told{};
  if (!Ask(VIDIOC_QUERYCAP, &told)) return "";
  const char* const card = reinterpret_cast<const char*>(told.card);
  return {card, strnlen(card, sizeof(told.card))};
}

/// Who has a capture's buffers keeps others from having any; none are asked for.
bool VideoDevice::InUse() const {
  v4l2_requestbuffers none{};
  none.type = BufferType();
  none.memory = V4L2_MEMORY_MMAP;
  return !Ask(VIDIOC_REQBUFS, &none) && errno == EBUSY;
}

CameraSizes VideoDevice::Sizes() const {
  CameraSizes sizes;
  v4l2_fmtdesc format{};
  format.type = BufferType();
  for (; format.index < MOST_ENTRIES && Ask(VIDIOC_ENUM_FMT, &format); ++format.index) {
    AddSizes(format.pixelformat, sizes);
  }
  return sizes;
}

void VideoDevice::AddSizes(unsigned pixelFormat, CameraSizes& sizes) const {
  v4l2_frmsizeenum size{};
  size.pixel_format = pixelFormat;
  for (; size.index < MOST_ENTRIES && Ask(VIDIOC_ENUM_FRAMESIZES, &size); ++size.index) {
    if (size.type == V4L2_FRMSIZE_TYPE_DISCRETE) {
      const cv::Size pixels(Pixels(size.discrete.width), Pixels(size.discrete.height));
      sizes.listed.push_back({pixels, FastestRate(pixelFormat, pixels)});
    } else {
      const cv::Size largest(Pixels(size.stepwise.max_width), Pixels(size.stepwise.max_height));
      if (largest.area() <= sizes.largest.area()) return;
      sizes.largest = largest;
      sizes.smallest = {Pixels(size.stepwise.min_width), Pixels(size.stepwise.min_height)};
      return;
    }
  }
}

double VideoDevice::FastestRate(unsigned pixelFormat, const cv::Size& size) const {
  v4l2_frmivalenum interval{};
  interval.pixel_format = pixelFormat;
  interval.width = static_cast<unsigned>(size.width);
  interval.height = static_cast<unsigned>(size.height);
  double fastest = 0.0;
  for (; interval.index < MOST_ENTRIES && Ask(VIDIOC_ENUM_FRAMEINTERVALS, &interval); ++interval.index) {
    if (interval.type != V4L2_FRMIVAL_TYPE_DISCRETE) return RateOf(interval.stepwise.min);
    fastest = std::max(fastest, RateOf(interval.discrete));
  }
  return fastest;
}

std::optional<CameraControl> VideoDevice::Control(unsigned id) const {
  v4l2_queryctrl kind{};
  kind.id = id;
  if (!Ask(VIDIOC_QUERYCTRL, &kind) || (kind.flags & V4L2_CTRL_FLAG_DISABLED) != 0U) return {};
  v4l2_control now{};
  now.id = id;
  if (!Ask(VIDIOC_G_CTRL, &now)) return {};
  return CameraControl{now.value, kind.default_value};
}

bool VideoDevice::SetControl(unsigned id, int value) const {
  v4l2_control wanted{};
  wanted.id = id;
  wanted.value = value;
  return Ask(VIDIOC_S_CTRL, &wanted);
}

std::string DevicePath(const std::string& folder, int number) {
  return folder + "/video" + std::to_string(number);
}

bool DeviceExists(const std::string& folder, int number) {
  return !IsNoDevice(VideoDevice(DevicePath(folder, number)).Fault());
}

std::vector<CameraDevice> FindCameras(const std::string& folder) {
  std::vector<CameraDevice> cameras;
  for (int number = 0; number < MOST_DEVICES; ++number) {
    const std::string path = DevicePath(folder, number);
    const VideoDevice device(path);
    if (IsNoDevice(device.Fault()) || (device.Fault() == 0 && !device.Captures())) continue;
    CameraDevice camera{number, path, "", device.Fault(), {}};
    if (camera.fault == 0) {
      camera.name = device.Name();
      camera.sizes = device.Sizes();
      if (device.InUse()) camera.fault = EBUSY;
    }
    cameras.push_back(std::move(camera));
  }
  return cameras;
}

}  // namespace guided
