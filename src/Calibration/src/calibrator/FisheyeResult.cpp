/// A fisheye, as a calibration found it.
#include "FisheyeResult.h"

#include <nlohmann/json.hpp>
#include <stdexcept>

#include "JSON.h"
#include "model/Intrinsics.h"

namespace {

const std::string LENS_MODEL = "kannala-brandt";

bool IsMatrix(const cv::Mat& matrix, int rows, int columns) {
  return matrix.rows == rows && matrix.cols == columns && matrix.type() == CV_64FC1 && cv::checkRange(matrix);
}

}  // namespace

std::string FisheyeResult::ToJson() const {
  JSON document;
  document.addInt("sensor", 0);
  document.addDouble("error", rms);
  document.addInt("imgWidth", imageSize.width);
  document.addInt("imgHeight", imageSize.height);
  document.addMat("cameraMatrix", K);
  document.addString("lensModel", LENS_MODEL);
  document.addMat("fisheyeCoefs", coefficients);
  document.addDouble("widestAngle", widestAngle);
  return document.toJson();
}

FisheyeResult FisheyeResult::FromJson(const std::string& text) {
  FisheyeResult result;
  try {
    JSON document;
    document.fromJson(text);
    if (document.readString("lensModel") != LENS_MODEL)
      throw std::invalid_argument("the result is not one of a fisheye");
    result.K = document.readMat("cameraMatrix");
    result.coefficients = document.readMat("fisheyeCoefs");
    result.imageSize = {document.readInt("imgWidth"), document.readInt("imgHeight")};
    result.rms = document.readDouble("error");
    result.widestAngle = document.readDouble("widestAngle");
  } catch (const nlohmann::json::exception& fault) {
    throw std::invalid_argument(std::string("the text is no result of a fisheye: ") + fault.what());
  } catch (const cv::Exception&) {
    throw std::invalid_argument("a matrix of the result is none");
  }
  if (!IsMatrix(result.K, 3, 3) || !IsMatrix(result.coefficients, 1, velmora::FISHEYE_COEFFICIENTS))
    throw std::invalid_argument("the camera matrix is not 3 x 3, or there are not four coefficients");
  return result;
}
