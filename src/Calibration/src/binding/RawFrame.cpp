/// Raw camera frames as programs push them.
#include "binding/RawFrame.h"

#include <cstdint>
#include <opencv2/imgproc.hpp>

#include "Log.h"

namespace velmora {

namespace {

constexpr int LARGEST_SIDE = 32767;
constexpr char PACKED_RGB[] = "8BPS";

struct YuvFormat {
  const char* name;
  int conversion;
};
constexpr YuvFormat YUV_FORMATS[] = {{"I420", cv::COLOR_YUV2BGR_I420},
                                     {"NV12", cv::COLOR_YUV2BGR_NV12},
                                     {"NV21", cv::COLOR_YUV2BGR_NV21},
                                     {"YV12", cv::COLOR_YUV2BGR_YV12}};

const YuvFormat* FindYuv(const std::string& format) {
  for (const YuvFormat& known : YUV_FORMATS) {
    if (format == known.name) return &known;
  }
  return nullptr;
}

void ReportShort() {
  Log::error("ERROR: Frame buffer has a wrong format. Cannot decode incoming frame.");
}

/// Rows of the image that a 4:2:0 frame is: those of the luminance, then half as many of both colours.
std::int64_t YuvRows(int height) {
  return std::int64_t{height} * 3 / 2;
}

/// Bytes from one row to the next; 0 when the buffer is too short.
std::int64_t YuvStep(std::int64_t size, int width, int height) {
  const std::int64_t expected = YuvRows(height) * width;
  if (size < expected) return 0;
  if (size == expected) return width;
  const std::int64_t step = size * 2 / 3 / height;
  return step >= width && step * (YuvRows(height) - 1) + width <= size ? step : 0;
}

}  // namespace

cv::Mat DecodeRawFrame(std::vector<unsigned char>& data, int width, int height, const std::string& format) {
  const YuvFormat* const yuv = FindYuv(format);
  const bool sizeFits = width > 0 && height > 0 && width <= LARGEST_SIDE && height <= LARGEST_SIDE;
  if ((yuv != nullptr || format == PACKED_RGB) &&
      (!sizeFits || (yuv != nullptr && (width % 2 != 0 || height % 2 != 0)))) {
    Log::error("Cannot decode a frame of %d x %d pixels in format %s.", width, height, format.c_str());
    return {};
  }
  const auto size = static_cast<std::int64_t>(data.size());
  const std::int64_t step = yuv != nullptr ? YuvStep(size, width, height) : std::int64_t{3} * width;
  if (yuv != nullptr && step == 0) {
    ReportShort();
    return {};
  }
  Log::trace("New frame received from JNI. Size: [ %d x %d ], format: %s, buffer size: %d", width, height,
             format.c_str(), static_cast<int>(size));
  cv::Mat bgr;
  if (yuv != nullptr) {
    const cv::Mat planes(static_cast<int>(YuvRows(height)), width, CV_8UC1, data.data(),
                         static_cast<size_t>(step));
    cv::cvtColor(planes, bgr, yuv->conversion);
  } else if (format != PACKED_RGB) {
    Log::error("ERROR: Non valid image format.");
  } else if (size < step * height) {
    ReportShort();
  } else {
    cv::cvtColor(cv::Mat(height, width, CV_8UC3, data.data()), bgr, cv::COLOR_RGB2BGR);
  }
  return bgr;
}

}  // namespace velmora
