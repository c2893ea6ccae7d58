/// The images of snapshots: pixels or files on their way into a session, and back.
#include "session/ImageFiles.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <opencv2/imgcodecs.hpp>
#include <stdexcept>

#include "session/ContentHash.h"
#include "session/FileContent.h"
#include "session/Reasons.h"

namespace velmora {

namespace {

namespace fs = std::filesystem;
using Kind = StoredImage::Kind;

std::string PngOf(const cv::Mat& pixels) {
  std::vector<unsigned char> bytes;
  try {
    if (cv::imencode(".png", pixels, bytes)) return {bytes.begin(), bytes.end()};
  } catch (const cv::Exception&) {
  }
  throw std::runtime_error("Cannot make a PNG of an image of " + std::to_string(pixels.cols) + " x " +
                           std::to_string(pixels.rows) + " pixels.");
}

/// Of a file name in lower case, with the dot; empty when it is none that a file name of ours may have.
std::string ExtensionOf(const fs::path& path) {
  constexpr size_t LONGEST = 9;
  std::string extension = path.extension().string();
  const bool plain =
      std::all_of(extension.begin() + (extension.empty() ? 0 : 1), extension.end(),
                  [](unsigned char letter) { return letter < 0x80 && std::isalnum(letter) != 0; });
  if (!plain || extension.size() > LONGEST) return "";
  for (char& letter : extension) {
    letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
  }
  return extension;
}

/// The path made absolute. It has to come back from a JSON text as it was.
std::string PathToNote(const std::string& path) {
  std::string absolute = fs::absolute(path).lexically_normal().string();
  try {
    nlohmann::json(absolute).dump();
  } catch (const nlohmann::json::exception&) {
    throw std::invalid_argument("The path of an image is no UTF-8 text, so that it cannot be noted.");
  }
  return absolute;
}

}  // namespace

ImageToKeep Kept(const SessionImage& image, size_t camera, const std::string& folder) {
  ImageToKeep kept;
  const std::string place = folder + "/camera-" + std::to_string(camera);
  if (!image.pixels.empty()) {
    kept.bytes = PngOf(image.pixels);
    kept.stored.kind = Kind::Png;
    kept.stored.path = place + ".png";
  } else if (!image.path.empty()) {
    std::error_code error;
    const std::string file = PathToNote(image.path);
    kept.bytes = FileContent(file, error);
    if (error) Refuse("Cannot read the image " + Quoted(image.path), error);
    kept.stored.kind = image.copy ? Kind::Copy : Kind::Reference;
    kept.stored.path = image.copy ? place + ExtensionOf(file) : file;
    if (image.copy) kept.stored.source = file;
  }
  kept.stored.bytes = kept.bytes.size();
  kept.stored.hash = kept.bytes.empty() ? 0 : ContentHash(kept.bytes);
  if (kept.stored.kind == Kind::Reference) kept.bytes.clear();
  return kept;
}

std::string FaultOf(const StoredImage& image, bool content) {
  constexpr const char* CHANGED = "has changed since it was stored";
  if (image.kind == Kind::None) return "";
  std::error_code error;
  if (!fs::is_regular_file(image.path, error)) return "is missing";
  if (fs::file_size(image.path, error) != image.bytes) return CHANGED;
  if (!content) return "";
  const std::string bytes = FileContent(image.path, error);
  if (error) return "cannot be read: " + ReasonOf(error);
  return ContentHash(bytes) == image.hash ? "" : CHANGED;
}

cv::Mat Loaded(const StoredImage& image) {
  const std::string name = "The image " + Quoted(image.path);
  std::error_code error;
  const std::string bytes = FileContent(image.path, error);
  if (error) Refuse("Cannot read the image " + Quoted(image.path), error);
  if (bytes.size() != image.bytes || ContentHash(bytes) != image.hash) {
    throw std::runtime_error(name + " has changed since it was stored.");
  }
  const int flags = image.kind == Kind::Png ? static_cast<int>(cv::IMREAD_UNCHANGED)
                                            : static_cast<int>(cv::IMREAD_COLOR) |
                                                  static_cast<int>(cv::IMREAD_IGNORE_ORIENTATION);
  cv::Mat pixels;
  try {
    pixels = cv::imdecode(cv::Mat(1, static_cast<int>(bytes.size()), CV_8U,
                                  const_cast<char*>(bytes.data())),  // NOLINT: it is only read
                          flags);
  } catch (const cv::Exception&) {
    pixels.release();
  }
  if (pixels.empty()) throw std::runtime_error(name + " is of no kind that can be read.");
  return pixels;
}

}  // namespace velmora
