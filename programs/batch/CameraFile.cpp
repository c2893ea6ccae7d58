/// The result files of a pair's or a rig's cameras that a user gives.
#include "batch/CameraFile.h"

#include "JSON.h"
#include "batch/ImageStream.h"

namespace batch {

namespace {

constexpr int MOST_COEFFICIENTS = 14;

[[noreturn]] void Refuse(const std::string& path, const char* member, const cv::Mat& matrix,
                         const char* wanted) {
  std::string shape = std::to_string(matrix.rows) + " x " + std::to_string(matrix.cols);
  if (matrix.channels() != 1) shape += " of " + std::to_string(matrix.channels()) + " channels";
  throw InputError("'" + path + "' is no result of a camera: its " + member + " is " + shape + ", not " +
                   wanted);
}

void CheckShapes(const CameraFile& file) {
  const auto& [path, frame, K, D, fisheye] = file;
  if (K.size() != cv::Size(3, 3) || K.channels() != 1) Refuse(path, "cameraMatrix", K, "3 x 3");
  if (fisheye && (D.size() != cv::Size(4, 1) || D.channels() != 1)) Refuse(path, "fisheyeCoefs", D, "1 x 4");
  // Fewer columns are those of a smaller model, on which the engine remarks.
  if (D.rows != 1 || D.cols > MOST_COEFFICIENTS || D.channels() != 1) Refuse(path, "distCoefs", D, "1 x 14");
}

}  // namespace

void CheckCameraFile(const std::string& path) {
  CameraFile file;
  file.path = path;
  try {
    JSON document;
    if (!document.load(path)) return;
    file.K = document.readMat("cameraMatrix");
    file.D = document.readMat("distCoefs");
  } catch (const std::exception&) {
    return;
  }
  CheckShapes(file);
}

CameraFile ReadCameraFile(const std::string& path) {
  CameraFile file;
  file.path = path;
  bool isPair = false;
  try {
    JSON document;
    if (!document.load(path)) throw InputError("'" + path + "' cannot be read");
    isPair = document.readInt("sensor") != 0;
    file.frame = {document.readInt("imgWidth"), document.readInt("imgHeight")};
    document.readMat("cameraMatrix").convertTo(file.K, CV_64F);
    file.fisheye = document.toJson().find("\"fisheyeCoefs\"") != std::string::npos;
    document.readMat(file.fisheye ? "fisheyeCoefs" : "distCoefs").convertTo(file.D, CV_64F);
  } catch (const InputError&) {
    throw;
  } catch (const std::exception&) {
    throw InputError("'" + path + "' is no result of a camera");
  }
  if (isPair) throw InputError("'" + path + "' is the result of a pair, not of one camera");
  CheckShapes(file);
  return file;
}

}  // namespace batch
