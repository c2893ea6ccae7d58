/// Pictures that hold their resolution. OpenCV's encoder leaves it out, so it is added to what that makes.
#include "render/PngFile.h"

#include <cmath>
#include <cstdint>
#include <fstream>
#include <opencv2/imgcodecs.hpp>
#include <stdexcept>
#include <vector>

namespace render {

namespace {

using Bytes = std::vector<uchar>;

/// The signature and the header chunk, which always comes first; the resolution may follow it.
constexpr std::ptrdiff_t HEADER_END = 8 + 25;

void Append(Bytes& bytes, std::uint32_t number) {
  for (int shift = 24; shift >= 0; shift -= 8) bytes.push_back(static_cast<uchar>(number >> shift));
}

/// The checksum of a chunk's name and content (ISO 3309).
std::uint32_t Checksum(Bytes::const_iterator begin, Bytes::const_iterator end) {
  constexpr std::uint32_t POLYNOMIAL = 0xEDB88320U;
  std::uint32_t sum = 0xFFFFFFFFU;
  for (; begin != end; ++begin) {
    sum ^= *begin;
    for (int bit = 0; bit < 8; ++bit) sum = (sum >> 1U) ^ ((sum & 1U) != 0 ? POLYNOMIAL : 0U);
  }
  return ~sum;
}

/// The chunk "pHYs": pixels per metre in x and y.
Bytes ResolutionChunk(double pixelsPerMetre) {
  constexpr std::uint32_t LENGTH = 9;
  constexpr uchar METRE = 1;
  const auto resolution = static_cast<std::uint32_t>(std::lround(pixelsPerMetre));
  Bytes chunk;
  Append(chunk, LENGTH);
  const auto name = static_cast<std::ptrdiff_t>(chunk.size());
  for (const char letter : {'p', 'H', 'Y', 's'}) chunk.push_back(static_cast<uchar>(letter));
  Append(chunk, resolution);
  Append(chunk, resolution);
  chunk.push_back(METRE);
  Append(chunk, Checksum(chunk.begin() + name, chunk.end()));
  return chunk;
}

}  // namespace

void WritePng(const std::string& path, const cv::Mat& picture, double pixelsPerMetre) {
  Bytes bytes;
  cv::imencode(".png", picture, bytes);
  const Bytes chunk = ResolutionChunk(pixelsPerMetre);
  bytes.insert(bytes.begin() + HEADER_END, chunk.begin(), chunk.end());
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (!file) throw std::runtime_error("cannot write \"" + path + "\"");
}

}  // namespace render
