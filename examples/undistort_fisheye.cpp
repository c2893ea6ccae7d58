/// Straightens a picture of a fisheye with a result file.
///
///   velmora-undistort-fisheye RESULT_fisheye.json PICTURE STRAIGHT [DEGREES]
///
/// No straight picture holds half a sphere: DEGREES is how much of what is seen, from left to right, the
/// straightened one shows (default: 90; less than 180). The picture has to be of the size that the camera was
/// calibrated at. An EXIF orientation is not obeyed: the result describes the sensor, whichever way up the
/// camera was held.
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgcodecs.hpp>
#include <stdexcept>
#include <string>

#include "FisheyeResult.h"

namespace {

double FieldFrom(const std::string& text) {
  char* end = nullptr;
  const double degrees = std::strtod(text.c_str(), &end);
  if (*end != 0 || !(degrees > 0.0 && degrees < 180.0))
    throw std::invalid_argument("DEGREES lie between 0 and 180");
  return degrees;
}

/// A camera without distortion that looks the same way and sees so much.
cv::Matx33d PinholeOf(const cv::Size& size, double degrees) {
  const double focal = 0.5 * size.width / std::tan(0.5 * degrees * CV_PI / 180.0);
  return {focal, 0.0, 0.5 * (size.width - 1), 0.0, focal, 0.5 * (size.height - 1), 0.0, 0.0, 1.0};
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4 && argc != 5) {
    std::cerr << "usage: velmora-undistort-fisheye RESULT_fisheye.json PICTURE STRAIGHT [DEGREES]"
              << std::endl;
    return 2;
  }
  try {
    std::ifstream file(argv[1]);
    const FisheyeResult lens = FisheyeResult::FromJson({std::istreambuf_iterator<char>(file), {}});
    const double degrees = argc == 5 ? FieldFrom(argv[4]) : 90.0;

    const cv::Mat picture = cv::imread(argv[2], cv::IMREAD_COLOR | cv::IMREAD_IGNORE_ORIENTATION);
    if (picture.size() != lens.imageSize)
      throw std::runtime_error("the picture is missing or of another size");
    cv::Mat undistorted;
    cv::fisheye::undistortImage(picture, undistorted, lens.K, lens.coefficients,
                                PinholeOf(lens.imageSize, degrees), lens.imageSize);
    if (!cv::imwrite(argv[3], undistorted)) throw std::runtime_error("the picture cannot be written");
    return 0;
  } catch (const std::exception& fault) {
    std::cerr << "ERROR: " << fault.what() << "." << std::endl;
    return 1;
  }
}
