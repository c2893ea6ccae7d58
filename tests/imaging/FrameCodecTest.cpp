/// Images as they travel.
#include "imaging/FrameCodec.h"

#include <gtest/gtest.h>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "Matchers.h"
#include "base64.h"
#include "calibrator/Pushes.h"

using namespace velmora;

namespace {

std::vector<unsigned char> Jpeg70(const cv::Mat& image) {
  std::vector<unsigned char> bytes;
  cv::imencode(".jpg", image, bytes, {cv::IMWRITE_JPEG_QUALITY, 70});
  return bytes;
}

TEST(FrameCodec, DecodesTheTextOfAPicture) {
  std::vector<unsigned char> bytes;
  const cv::Mat image = unit::ImageWithGrid();
  cv::imencode(".png", image, bytes);
  EXPECT_SAME_MAT(DecodeJpegB64(unit::Base64Of(bytes)), image);
}

TEST(FrameCodec, DecodesAGreyPictureInColour) {
  const cv::Mat grey(8, 8, CV_8UC1, cv::Scalar(90));
  EXPECT_EQ(DecodeJpegB64(unit::JpegB64(grey)).type(), CV_8UC3);
}

TEST(FrameCodec, GivesNothingForATextWithoutAPicture) {
  for (const std::string text : {"", "=", "TWFu", "no picture at all"}) {
    EXPECT_TRUE(DecodeJpegB64(text).empty()) << text;
  }
}

TEST(FrameCodec, GivesNothingForAPictureThatClaimsAnEnormousSize) {
  std::vector<unsigned char> bitmap;
  cv::imencode(".bmp", cv::Mat(1, 1, CV_8UC3), bitmap);
  // Width and height in the header, of four bytes each: 60138 x 60138.
  bitmap[18] = bitmap[19] = bitmap[22] = bitmap[23] = 0xEA;
  const std::string text = base64_encode(bitmap.data(), static_cast<unsigned int>(bitmap.size()));
  EXPECT_TRUE(DecodeJpegB64(text).empty());
}

TEST(FrameCodec, EncodesWithQuality70) {
  const cv::Mat image = unit::ImageWithGrid();
  EXPECT_EQ(EncodeJpeg(image, cv::Size()), Jpeg70(image));
}

TEST(FrameCodec, ScalesOnlyWhenBothSidesArePositive) {
  const cv::Mat image = unit::ImageWithGrid();
  cv::Mat small;
  cv::resize(image, small, {200, 100}, 0, 0, cv::INTER_LINEAR);
  EXPECT_EQ(EncodeJpeg(image, {200, 100}), Jpeg70(small));
  for (const cv::Size& size : {cv::Size(0, 100), cv::Size(200, 0), cv::Size(-1, 100), cv::Size(200, -1)}) {
    EXPECT_EQ(EncodeJpeg(image, size), Jpeg70(image)) << size;
  }
}

TEST(FrameCodec, EncodesNothingOfAnEmptyPicture) {
  EXPECT_TRUE(EncodeJpeg(cv::Mat(), {200, 100}).empty());
}

}  // namespace
