/// What texts are results of one camera.
#include "velmora/CameraResult.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "JSON.h"

using velmora::CameraResult;

namespace {

/// The text of a result with these matrices.
std::string Text(const cv::Mat& K, const cv::Mat& D, bool fisheye = false, int sensor = 0) {
  JSON document;
  document.addInt("sensor", sensor);
  document.addDouble("error", 0.25);
  document.addInt("imgWidth", 640);
  document.addInt("imgHeight", 480);
  document.addMat("cameraMatrix", K);
  if (fisheye) document.addString("lensModel", "kannala-brandt");
  document.addMat(fisheye ? "fisheyeCoefs" : "distCoefs", D);
  return document.toJson();
}

cv::Mat Matrix() {
  return (cv::Mat_<double>(3, 3) << 500.0, 0.0, 320.0, 0.0, 501.0, 240.0, 0.0, 0.0, 1.0);
}

std::string FaultOf(const std::string& text) {
  try {
    CameraResult::FromJson(text);
  } catch (const std::invalid_argument& fault) {
    return fault.what();
  }
  return "";
}

TEST(CameraResult, IsReadFromPlainCamerasAndFisheyes) {
  const CameraResult plain =
      CameraResult::FromJson(Text(Matrix(), (cv::Mat_<double>(1, 5) << -0.2, 0.1, 0.0, 0.0, 0.01)));
  EXPECT_FALSE(plain.fisheye);
  EXPECT_EQ(plain.imageSize, cv::Size(640, 480));
  EXPECT_EQ(plain.rms, 0.25);
  EXPECT_EQ(plain.K.at<double>(1, 1), 501.0);
  EXPECT_EQ(plain.D.at<double>(0, 4), 0.01);
  const CameraResult fisheye =
      CameraResult::FromJson(Text(Matrix(), (cv::Mat_<double>(1, 4) << 0.1, 0.2, 0.3, 0.4), true));
  EXPECT_TRUE(fisheye.fisheye);
  EXPECT_EQ(fisheye.D.at<double>(0, 3), 0.4);
}

TEST(CameraResult, IsNotReadFromOtherTexts) {
  const cv::Mat D = cv::Mat::zeros(1, 5, CV_64F);
  EXPECT_EQ(FaultOf("not JSON"), "is not a result file");
  EXPECT_EQ(FaultOf("[]"), "is not a result file");
  EXPECT_EQ(FaultOf("{}"), "is not a result file");
  EXPECT_NE(FaultOf(Text(Matrix(), D, false, 1)).find("of a pair"), std::string::npos);
  EXPECT_NE(FaultOf(R"({"cameras": [], "views": []})").find("of a rig"), std::string::npos);
  EXPECT_NE(FaultOf(Text(Matrix(), cv::Mat::zeros(1, 3, CV_64F))).find("4, 5, 8, 12 or 14"),
            std::string::npos);
  EXPECT_NE(FaultOf(Text(Matrix(), D, true)).find("four coefficients"), std::string::npos);
  EXPECT_NE(FaultOf(Text(cv::Mat::zeros(3, 3, CV_64F), D)).find("focal lengths"), std::string::npos);
  EXPECT_NE(FaultOf(Text(cv::Mat::eye(2, 2, CV_64F), D)).find("3 x 3"), std::string::npos);
}

}  // namespace
