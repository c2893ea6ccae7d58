/// The elements of a matrix as a JSON array, and back.
#include "documents/MatrixCodec.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "documents/JsonNumber.h"

namespace velmora {

namespace {

template <typename T>
nlohmann::json Encode(const cv::Mat& matrix) {
  std::vector<T> elements;
  if (matrix.isContinuous()) {
    const auto* begin = reinterpret_cast<const T*>(matrix.datastart);
    const auto* end = reinterpret_cast<const T*>(matrix.dataend);
    if (begin != nullptr) elements.assign(begin, end);
  } else {
    // One channel's worth of each row: matrices of several channels are outside the format.
    for (int row = 0; row < matrix.rows; ++row) {
      const T* begin = matrix.ptr<T>(row);
      elements.insert(elements.end(), begin, begin + matrix.cols);
    }
  }
  return nlohmann::json(elements);
}

template <typename T>
void Decode(const nlohmann::json& data, cv::Mat& matrix) {
  if (!data.is_array()) static_cast<void>(data.get<std::vector<T>>());  // raises the library's error
  std::vector<T> elements;
  elements.reserve(data.size());
  for (const auto& element : data) elements.push_back(NumberOf<T>(element));
  const size_t room = matrix.total() * matrix.elemSize();
  const size_t bytes = std::min(room, elements.size() * sizeof(T));
  if (bytes > 0) std::memcpy(matrix.data, elements.data(), bytes);
}

/// Calls `visit` with a value of the depth's element type.
template <typename Visitor>
void WithElementOf(int depth, Visitor visit) {
  switch (depth) {
    case CV_8U:
      return visit(std::uint8_t{});
    case CV_8S:
      return visit(std::int8_t{});
    case CV_16U:
      return visit(std::uint16_t{});
    case CV_16S:
      return visit(std::int16_t{});
    case CV_32S:
      return visit(std::int32_t{});
    case CV_32F:
      return visit(float{});
    default:
      return visit(double{});
  }
}

}  // namespace

nlohmann::json EncodeElements(const cv::Mat& matrix) {
  nlohmann::json data;
  WithElementOf(matrix.depth(), [&](auto element) { data = Encode<decltype(element)>(matrix); });
  return data;
}

void DecodeElements(const nlohmann::json& data, int depth, cv::Mat& matrix) {
  WithElementOf(depth, [&](auto element) { Decode<decltype(element)>(data, matrix); });
}

}  // namespace velmora
