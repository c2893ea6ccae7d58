/// The JSON document.
#include "JSON.h"

#include <filesystem>
#include <fstream>

#include "Log.h"
#include "documents/AtomicFile.h"
#include "documents/JsonNumber.h"
#include "documents/MatrixCodec.h"

using namespace velmora;

namespace {

constexpr int TYPE_MASK = 0xFFF;

/// No document has the elements of a larger matrix: its sizes are wrong.
constexpr size_t MOST_BYTES = size_t{1} << 31;

/// Raises for a matrix that is too large, before OpenCV's product of its sizes may run over or its memory be
/// asked of the system.
void CheckSize(int rows, int cols, int type) {
  if (rows <= 0 || cols <= 0) return;
  const size_t rowBytes = static_cast<size_t>(cols) * static_cast<size_t>(CV_ELEM_SIZE(type));
  if (static_cast<size_t>(rows) > MOST_BYTES / rowBytes) {
    CV_Error(cv::Error::StsNoMem, "a matrix of this size is in no document");
  }
}

}  // namespace

const std::string JSON::VERSION = "1.0.2";

void JSON::addBool(const std::string& key, const bool& value) {
  document_[key] = value;
}
void JSON::addInt(const std::string& key, const int& value) {
  document_[key] = value;
}
void JSON::addDouble(const std::string& key, const double& value) {
  document_[key] = value;
}
void JSON::addString(const std::string& key, const std::string& value) {
  document_[key] = value;
}

void JSON::addMat(const std::string& key, const cv::Mat& matrix) {
  if (matrix.channels() > 1) {
    Log::error("ERROR: Only one channel matrices are supported so far.");
  }
  nlohmann::json& entry = document_[key];
  entry = nlohmann::json::object();
  entry["rows"] = matrix.rows;
  entry["cols"] = matrix.cols;
  entry["type"] = matrix.type();
  entry["depth"] = matrix.depth();
  if (matrix.depth() > MAX_ENCODED_DEPTH) {
    Log::error("ERROR: '%d' not supported depth.", matrix.depth());
    return;
  }
  entry["data"] = EncodeElements(matrix);
}

bool JSON::readBool(const std::string& key) {
  return document_[key].get<bool>();
}
int JSON::readInt(const std::string& key) {
  return NumberOf<int>(document_[key]);
}
double JSON::readDouble(const std::string& key) {
  return document_[key].get<double>();
}
std::string JSON::readString(const std::string& key) {
  return document_[key].get<std::string>();
}

cv::Mat JSON::readMat(const std::string& key) {
  nlohmann::json& entry = document_[key];
  const int rows = NumberOf<int>(entry["rows"]);
  const int cols = NumberOf<int>(entry["cols"]);
  const int type = NumberOf<int>(entry["type"]) & TYPE_MASK;
  const int depth = NumberOf<int>(entry["depth"]);
  CheckSize(rows, cols, type);
  cv::Mat matrix;
  matrix.create(rows, cols, type);
  if (depth <= MAX_ENCODED_DEPTH) DecodeElements(entry["data"], depth, matrix);
  return matrix;
}

std::string JSON::toJson() const {
  return document_.dump(4, ' ', false);
}

void JSON::fromJson(const std::string& text) {
  document_ = nlohmann::json::parse(text);
}

bool JSON::save(const std::string& path) const {
  const WriteOutcome outcome = WriteFileAtomically(path, toJson());
  // The result tells only whether the path could be opened; a full disk must not pass in silence all the
  // same.
  if (outcome == WriteOutcome::Failed) Log::error("Cannot write file: %s", path.c_str());
  return outcome != WriteOutcome::NotOpened;
}

bool JSON::load(const std::string& path) {
  std::error_code ignored;
  if (std::filesystem::is_directory(path, ignored)) return false;  // opens, but never reads
  std::ifstream file(path);
  if (!file) return false;
  // Word by word: documents are read without any white space, that inside of strings included.
  std::string text;
  std::string word;
  while (file >> word) text += word;
  if (file.bad()) return false;
  fromJson(text);
  return true;
}
