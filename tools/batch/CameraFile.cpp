/// The result files of a pair's cameras that a user gives.
#include "batch/CameraFile.h"

#include "JSON.h"
#include "batch/Pictures.h"

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

}  // namespace

void CheckCameraFile(const std::string& path) {
  cv::Mat K;
  cv::Mat D;
  try {
    JSON document;
    if (!document.load(path)) return;
    K = document.readMat("cameraMatrix");
    D = document.readMat("distCoefs");
  } catch (const std::exception&) {
    return;
  }
  if (K.size() != cv::Size(3, 3) || K.channels() != 1) Refuse(path, "cameraMatrix", K, "3 x 3");
  // Fewer columns are those of a smaller model, of which the engine tells.
  if (D.rows != 1 || D.cols > MOST_COEFFICIENTS || D.channels() != 1) Refuse(path, "distCoefs", D, "1 x 14");
}

}  // namespace batch
