/// Any bytes are a raw frame of the size asked for, or are refused. The first six choose format and size.
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "Calibration.h"
#include "binding/RawFrame.h"

using namespace velmora;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t HEAD = 6;
  if (size < HEAD) return 0;
  Calibration::SetLogLevel(0);
  static const char* const formats[] = {"8BPS", "I420", "NV12", "NV21", "YV12", "RGBA"};
  const auto number = [&](std::size_t at) { return static_cast<std::int16_t>(data[at] | data[at + 1] << 8); };
  const int width = number(1);
  const int height = number(3);
  std::vector<unsigned char> bytes(data + HEAD, data + size);
  const cv::Mat image = DecodeRawFrame(bytes, width, height, formats[data[0] % 6]);
  if (!image.empty() && image.size() != cv::Size(width, height)) std::abort();
  return 0;
}
