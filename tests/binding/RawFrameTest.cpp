/// Raw camera frames: each format, padded rows, and what is refused.
#include "binding/RawFrame.h"

#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#include "Log.h"
#include "Matchers.h"
#include "finder/StandardFinder.h"
#include "unit/Collection.h"
#include "unit/Scopes.h"

using namespace velmora;

namespace {

const char* const SHORT = "ERROR : ERROR: Frame buffer has a wrong format. Cannot decode incoming frame.\n";

/// The image as a 4:2:0 image of height x 3/2 rows, made from its planes here.
cv::Mat Planes(const cv::Mat& image, const std::string& format) {
  cv::Mat i420;
  cv::cvtColor(image, i420, cv::COLOR_BGR2YUV_I420);
  const int luma = image.rows * image.cols;
  const int chroma = luma / 4;
  cv::Mat result = i420.clone();
  const unsigned char* const u = i420.data + luma;
  const unsigned char* const v = u + chroma;
  unsigned char* out = result.data + luma;
  for (int i = 0; i < chroma; ++i) {
    if (format == "NV12") {
      out[2 * i] = u[i];
      out[2 * i + 1] = v[i];
    } else if (format == "NV21") {
      out[2 * i] = v[i];
      out[2 * i + 1] = u[i];
    } else if (format == "YV12") {
      out[i] = v[i];
      out[chroma + i] = u[i];
    }
  }
  return result;
}

std::vector<unsigned char> Bytes(const cv::Mat& image, int padding = 0) {
  std::vector<unsigned char> bytes;
  for (int y = 0; y < image.rows; ++y) {
    const auto* row = image.ptr<unsigned char>(y);
    bytes.insert(bytes.end(), row, row + static_cast<size_t>(image.cols) * image.elemSize());
    bytes.insert(bytes.end(), static_cast<size_t>(padding), 0xAB);
  }
  return bytes;
}

class RawFrameOfFormat : public ::testing::TestWithParam<const char*> {
 protected:
  static std::vector<cv::Point2d> CentresIn(const cv::Mat& image) {
    std::vector<cv::Point2d> points;
    EXPECT_TRUE(FindGridStandard(image, unit::GRID, points));
    return points;
  }
};

TEST_P(RawFrameOfFormat, ShowsTheSameGridAsItsPicture) {
  const cv::Mat image = unit::ImageWithGrid();
  const auto expected = CentresIn(image);
  for (const int padding : {0, 64}) {
    auto bytes = Bytes(Planes(image, GetParam()), padding);
    const cv::Mat decoded = DecodeRawFrame(bytes, 640, 480, GetParam());
    ASSERT_EQ(decoded.size(), image.size());
    ASSERT_EQ(decoded.type(), CV_8UC3);
    const auto centres = CentresIn(decoded);
    ASSERT_EQ(centres.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) {
      EXPECT_LT(cv::norm(centres[i] - expected[i]), 0.2) << GetParam() << ", padding " << padding;
    }
  }
}

TEST_P(RawFrameOfFormat, KeepsItsColours) {
  cv::Mat image(16, 32, CV_8UC3, cv::Scalar(200, 60, 20));
  for (const int padding : {0, 8}) {
    auto bytes = Bytes(Planes(image, GetParam()), padding);
    const cv::Mat decoded = DecodeRawFrame(bytes, 32, 16, GetParam());
    EXPECT_MAT_NEAR(decoded, image, 4.0);
  }
}

TEST_P(RawFrameOfFormat, IsRefusedWhenAByteIsMissing) {
  auto bytes = Bytes(Planes(cv::Mat(16, 32, CV_8UC3, cv::Scalar::all(9)), GetParam()));
  bytes.pop_back();
  cv::Mat decoded;
  EXPECT_EQ(unit::PrintedBy([&] { decoded = DecodeRawFrame(bytes, 32, 16, GetParam()); }), SHORT);
  EXPECT_TRUE(decoded.empty());
  bytes.clear();
  EXPECT_EQ(unit::PrintedBy([&] { decoded = DecodeRawFrame(bytes, 32, 16, GetParam()); }), SHORT);
  EXPECT_TRUE(decoded.empty());
}

TEST_P(RawFrameOfFormat, IsRefusedInImpossibleSizes) {
  std::vector<unsigned char> bytes(100000);
  for (const cv::Size& size : {cv::Size(0, 16), cv::Size(32, -16), cv::Size(31, 16), cv::Size(32, 15),
                               cv::Size(2147483646, 2147483646)}) {
    cv::Mat decoded;
    const std::string printed =
        unit::PrintedBy([&] { decoded = DecodeRawFrame(bytes, size.width, size.height, GetParam()); });
    EXPECT_TRUE(decoded.empty());
    EXPECT_EQ(printed, "ERROR : Cannot decode a frame of " + std::to_string(size.width) + " x " +
                           std::to_string(size.height) + " pixels in format " + GetParam() + ".\n");
  }
}

INSTANTIATE_TEST_SUITE_P(Formats, RawFrameOfFormat, ::testing::Values("I420", "NV12", "NV21", "YV12"));

TEST(RawFrame, OfPackedColoursIsTurnedFromRgbToBgr) {
  cv::Mat rgb(3, 5, CV_8UC3, cv::Scalar(1, 2, 3));
  auto bytes = Bytes(rgb);
  EXPECT_SAME_MAT(DecodeRawFrame(bytes, 5, 3, "8BPS"), cv::Mat(3, 5, CV_8UC3, cv::Scalar(3, 2, 1)));
  bytes.pop_back();
  cv::Mat decoded;
  EXPECT_EQ(unit::PrintedBy([&] { decoded = DecodeRawFrame(bytes, 5, 3, "8BPS"); }), SHORT);
  EXPECT_TRUE(decoded.empty());
  EXPECT_NE(unit::PrintedBy([&] { decoded = DecodeRawFrame(bytes, -5, 3, "8BPS"); }), "");
  EXPECT_TRUE(decoded.empty());
}

TEST(RawFrame, Of640By480Needs460800BytesOrPaddedRows) {
  std::vector<unsigned char> exact(460800, 128);
  std::vector<unsigned char> padded(506880, 128);  // 704 bytes a row
  EXPECT_EQ(unit::PrintedBy([&] {
              EXPECT_EQ(DecodeRawFrame(exact, 640, 480, "I420").size(), cv::Size(640, 480));
              EXPECT_EQ(DecodeRawFrame(padded, 640, 480, "I420").size(), cv::Size(640, 480));
            }),
            "");
}

TEST(RawFrame, ThatIsALittleTooLongIsReadWithinItsBounds) {
  // Longer than needed, but not by a byte a row: the step comes out as the width.
  std::vector<unsigned char> bytes(460800 + 100, 128);
  EXPECT_EQ(DecodeRawFrame(bytes, 640, 480, "NV21").size(), cv::Size(640, 480));
}

TEST(RawFrame, OfAnotherFormatIsRefused) {
  std::vector<unsigned char> bytes(460800);
  for (const char* format : {"RGBA", "i420", "NV12 ", ""}) {
    cv::Mat decoded;
    EXPECT_EQ(unit::PrintedBy([&] { decoded = DecodeRawFrame(bytes, 640, 480, format); }),
              "ERROR : ERROR: Non valid image format.\n");
    EXPECT_TRUE(decoded.empty());
  }
}

TEST(RawFrame, IsTracedWithItsSizeAndFormat) {
  const unit::ScopedLogLevel everything(Log::TRACE_LEVEL);
  std::vector<unsigned char> bytes(460800, 128);
  EXPECT_EQ(unit::PrintedBy([&] { DecodeRawFrame(bytes, 640, 480, "YV12"); }),
            "TRACE : New frame received from JNI. Size: [ 640 x 480 ], format: YV12, buffer size: 460800\n");
  EXPECT_EQ(unit::PrintedBy([&] { DecodeRawFrame(bytes, 640, 480, "RGBA"); }),
            "TRACE : New frame received from JNI. Size: [ 640 x 480 ], format: RGBA, buffer size: 460800\n"
            "ERROR : ERROR: Non valid image format.\n");
}

}  // namespace
