/// Reads the intrinsics of a pair's cameras from their result files.
#include "calibrator/IntrinsicsDocuments.h"

#include "JSON.h"
#include "Log.h"

namespace velmora {

namespace {

constexpr int RATIONAL_COEFFICIENTS = 14;

/// True when the reading succeeds; reported as an unreadable file otherwise.
template <typename Reading>
bool Reads(const std::string& source, Reading reading) {
  bool read = false;
  try {
    read = reading();
  } catch (const nlohmann::json::exception&) {
    read = false;
  } catch (const cv::Exception&) {
    read = false;  // sizes that no matrix can have
  }
  if (!read) Log::error("Cannot open file: %s", source.c_str());
  return read;
}

bool Open(const std::string& source, bool isFile, JSON& document) {
  return Reads(source, [&] {
    if (isFile) return document.load(source);
    document.fromJson(source);
    return true;
  });
}

bool ReadCamera(const std::string& source, JSON& document, cv::Mat& K, cv::Mat& D) {
  return Reads(source, [&] {
    K = document.readMat("cameraMatrix");
    D = document.readMat("distCoefs");
    return true;
  });
}

}  // namespace

bool ReadIntrinsics(const std::string& left, const std::string& right, bool areFiles,
                    StereoIntrinsics& intrinsics) {
  JSON leftDocument;
  JSON rightDocument;
  return Open(left, areFiles, leftDocument) && Open(right, areFiles, rightDocument) &&
         ReadCamera(left, leftDocument, intrinsics.K, intrinsics.D) &&
         ReadCamera(right, rightDocument, intrinsics.KRight, intrinsics.DRight);
}

bool IsRational(const cv::Mat& D, const std::string& source) {
  if (D.cols >= RATIONAL_COEFFICIENTS) return true;
  Log::error("ERROR: The calibration model of '%s' is not rational. Stereo calibration cannot be processed.",
             source.c_str());
  return false;
}

}  // namespace velmora
