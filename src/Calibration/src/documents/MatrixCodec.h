/// The elements of a matrix as a JSON array, and back.
#pragma once

#include <nlohmann/json.hpp>
#include <opencv2/core.hpp>

namespace velmora {

/// The greatest depth that the encoding knows.
constexpr int MAX_ENCODED_DEPTH = CV_64F;

/// The elements in memory order, as numbers of their own kind; see JSON::addMat. The depth must be known.
nlohmann::json EncodeElements(const cv::Mat& matrix);

/// Copies the elements, read as of the depth, into the matrix from its first element on, at most as many
/// bytes as it holds. Raises the JSON library's type error when `data` is no array of numbers.
void DecodeElements(const nlohmann::json& data, int depth, cv::Mat& matrix);

}  // namespace velmora
