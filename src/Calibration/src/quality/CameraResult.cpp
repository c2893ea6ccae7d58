/// The result of a calibration of one camera, as its file has it.
#include "velmora/CameraResult.h"

#include <nlohmann/json.hpp>
#include <stdexcept>

#include "JSON.h"
#include "model/Intrinsics.h"

namespace velmora {

namespace {

constexpr const char* FISHEYE_MODEL = "kannala-brandt";
constexpr int PAIR = 1;

bool IsNumbers(const cv::Mat& matrix) {
  return matrix.type() == CV_64FC1 && !matrix.empty() && cv::checkRange(matrix);
}

bool IsCameraMatrix(const cv::Mat& K) {
  return K.rows == 3 && K.cols == 3 && IsNumbers(K) && K.at<double>(0, 0) > 0.0 && K.at<double>(1, 1) > 0.0;
}

bool IsNumberOfCoefficients(size_t count, bool fisheye) {
  if (fisheye) return count == FISHEYE_COEFFICIENTS;
  return count == 4 || count == 5 || count == 8 || count == 12 || count == 14;
}

CameraResult ResultIn(const std::string& text) {
  JSON document;
  document.fromJson(text);
  const nlohmann::json keys = nlohmann::json::parse(text);
  if (!keys.is_object()) throw std::invalid_argument("is not a result file");
  if (keys.contains("sensor") && keys.at("sensor") == PAIR)
    throw std::invalid_argument("is the result of a pair; that of one of its cameras is needed");
  if (keys.contains("cameras")) throw std::invalid_argument("is the result of a rig, not of one camera");
  CameraResult result;
  result.fisheye = keys.contains("fisheyeCoefs");
  if (result.fisheye && document.readString("lensModel") != FISHEYE_MODEL)
    throw std::invalid_argument("has a lens model that is not known");
  result.K = document.readMat("cameraMatrix");
  result.D = document.readMat(result.fisheye ? "fisheyeCoefs" : "distCoefs");
  result.imageSize = {document.readInt("imgWidth"), document.readInt("imgHeight")};
  result.rms = document.readDouble("error");
  return result;
}

}  // namespace

CameraResult CameraResult::FromJson(const std::string& text) {
  CameraResult result;
  try {
    result = ResultIn(text);
  } catch (const nlohmann::json::exception&) {
    throw std::invalid_argument("is not a result file");
  } catch (const cv::Exception&) {
    throw std::invalid_argument("is not a result file: a matrix of it is none");
  }
  try {
    result.Check();
  } catch (const std::invalid_argument& fault) {
    throw std::invalid_argument(std::string("is not a result file: ") + fault.what());
  }
  return result;
}

void CameraResult::Check() const {
  if (!IsCameraMatrix(K))
    throw std::invalid_argument("the camera matrix is not one of 3 x 3 numbers with positive focal lengths");
  if (!IsNumbers(D) || D.rows != 1 || !IsNumberOfCoefficients(D.total(), fisheye)) {
    throw std::invalid_argument(fisheye ? "a fisheye has four coefficients"
                                        : "there are not 4, 5, 8, 12 or 14 coefficients");
  }
  if (imageSize.width < 1 || imageSize.height < 1)
    throw std::invalid_argument("the size of the images is not positive");
}

}  // namespace velmora
