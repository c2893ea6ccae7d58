/// Images as they travel: Base64 text of a JPEG in, JPEG bytes out.
#include "imaging/FrameCodec.h"

#include <limits>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "base64.h"

namespace velmora {

namespace {

constexpr int QUALITY = 70;

}  // namespace

cv::Mat DecodeJpegB64(const std::string& text) {
  std::string bytes = base64_decode(text);
  if (bytes.empty() || bytes.size() > static_cast<size_t>(std::numeric_limits<int>::max())) return cv::Mat();
  try {
    return cv::imdecode(cv::Mat(1, static_cast<int>(bytes.size()), CV_8UC1, bytes.data()), cv::IMREAD_COLOR);
  } catch (const cv::Exception&) {
    return cv::Mat();  // it claims an enormous size
  }
}

std::vector<unsigned char> EncodeJpeg(const cv::Mat& image, const cv::Size& size) {
  std::vector<unsigned char> bytes;
  if (image.empty()) return bytes;
  cv::Mat scaled = image;
  if (size.width > 0 && size.height > 0) cv::resize(image, scaled, size, 0, 0, cv::INTER_LINEAR);
  cv::imencode(".jpg", scaled, bytes, {cv::IMWRITE_JPEG_QUALITY, QUALITY});
  return bytes;
}

}  // namespace velmora
