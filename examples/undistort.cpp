/// Straightens a picture with a result file.
///
///   velmora-undistort RESULT.json PICTURE STRAIGHTENED
///
/// The picture has to be of the size that the camera was calibrated at. An EXIF orientation is not obeyed:
/// the result describes the sensor, whichever way up the camera was held.
#include <iostream>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgcodecs.hpp>

#include "JSON.h"

int main(int argc, char** argv) {
  if (argc != 4) {
    std::cerr << "usage: velmora-undistort RESULT.json PICTURE STRAIGHTENED" << std::endl;
    return 2;
  }
  try {
    JSON result;
    if (!result.load(argv[1])) throw std::runtime_error("the result file cannot be read");
    const cv::Mat K = result.readMat("cameraMatrix");
    const cv::Mat D = result.readMat("distCoefs");
    const cv::Size size(result.readInt("imgWidth"), result.readInt("imgHeight"));

    const cv::Mat picture = cv::imread(argv[2], cv::IMREAD_COLOR | cv::IMREAD_IGNORE_ORIENTATION);
    if (picture.size() != size) throw std::runtime_error("the picture is missing or of another size");
    cv::Mat undistorted;
    cv::undistort(picture, undistorted, K, D);
    if (!cv::imwrite(argv[3], undistorted)) throw std::runtime_error("the picture cannot be written");
    return 0;
  } catch (const std::exception& fault) {
    std::cerr << "ERROR: " << fault.what() << "." << std::endl;
    return 1;
  }
}
