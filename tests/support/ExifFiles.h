/// Image files that ask to be shown turned or mirrored, as cameras that were held otherwise write them.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <stdexcept>
#include <string>
#include <vector>

namespace support {

/// The number's bytes, the lowest first unless bigEndian.
inline std::string BytesOfNumber(std::uint32_t number, int size, bool bigEndian) {
  std::string bytes;
  for (int i = 0; i < size; ++i) {
    const int shift = 8 * (bigEndian ? size - 1 - i : i);
    bytes += static_cast<char>(number >> shift & 0xFFU);
  }
  return bytes;
}

/// A TIFF structure with the orientation as its only tag, as Exif has it; the directory lies behind `before`
/// bytes of something else.
inline std::string OrientationTag(int orientation, bool bigEndian = false, int before = 0) {
  const auto number = [&](int value, int size) {
    return BytesOfNumber(static_cast<std::uint32_t>(value), size, bigEndian);
  };
  std::string tiff = bigEndian ? "MM" : "II";
  tiff += number(42, 2) + number(8 + before, 4) + std::string(static_cast<size_t>(before), 'x');
  // Tag, type (short), count, and the value in the first half of its four bytes.
  return tiff + number(1, 2) + number(0x0112, 2) + number(3, 2) + number(1, 4) + number(orientation, 2) +
         number(0, 2) + number(0, 4);
}

inline std::string Encoded(const cv::Mat& image, const std::string& extension) {
  std::vector<unsigned char> bytes;
  if (!cv::imencode(extension, image, bytes)) throw std::runtime_error("cannot encode " + extension);
  return {bytes.begin(), bytes.end()};
}

/// A JPEG file's bytes with an Exif segment put in front.
inline std::string TurnedJpeg(const std::string& jpeg, int orientation, bool bigEndian = false) {
  const std::string content = std::string("Exif\0\0", 6) + OrientationTag(orientation, bigEndian);
  return jpeg.substr(0, 2) + "\xFF\xE1" +
         BytesOfNumber(static_cast<std::uint32_t>(content.size() + 2), 2, true) + content + jpeg.substr(2);
}

/// A PNG file's bytes with an eXIf chunk behind the header.
inline std::string TurnedPng(const std::string& png, int orientation) {
  const std::string chunk = "eXIf" + OrientationTag(orientation);
  std::uint32_t crc = 0xFFFFFFFFU;
  for (const char c : chunk) {
    crc ^= static_cast<unsigned char>(c);
    for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ ((crc & 1U) != 0 ? 0xEDB88320U : 0U);
  }
  constexpr size_t HEADER = 33;
  const auto length = static_cast<std::uint32_t>(chunk.size() - 4);
  return png.substr(0, HEADER) + BytesOfNumber(length, 4, true) + chunk + BytesOfNumber(~crc, 4, true) +
         png.substr(HEADER);
}

/// An uncompressed TIFF file of an image (CV_8UC3).
inline std::string TurnedTiff(const cv::Mat& image, int orientation) {
  std::string pixels;
  for (int row = 0; row < image.rows; ++row) {
    for (int column = 0; column < image.cols; ++column) {
      const auto& pixel = image.at<cv::Vec3b>(row, column);
      for (const int channel : {2, 1, 0}) pixels += static_cast<char>(pixel[channel]);
    }
  }
  const auto number = [](int value, int size) {
    return BytesOfNumber(static_cast<std::uint32_t>(value), size, false);
  };
  const int size = static_cast<int>(pixels.size());
  // Width, height, depth, no compression, RGB, where the pixels are, the orientation, channels, rows, bytes.
  const std::vector<std::pair<int, int>> tags = {
      {256, image.cols},  {257, image.rows}, {258, 8},          {259, 1},    {262, 2}, {273, 8},
      {274, orientation}, {277, 3},          {278, image.rows}, {279, size}, {284, 1}};
  constexpr int LONG = 4;
  std::string file = "II" + number(42, 2) + number(8 + size, 4) + pixels;
  file += number(static_cast<int>(tags.size()), 2);
  for (const auto& [tag, value] : tags) {
    const bool isLong = tag == 273 || tag == 279;
    file += number(tag, 2) + number(isLong ? LONG : 3, 2) + number(1, 4) + number(value, 4);
  }
  return file + number(0, 4);
}

}  // namespace support
