/// Image files are read as the sensor saw them.
#include "batch/ImageFile.h"

#include <gtest/gtest.h>

#include "ExifFiles.h"
#include "Matchers.h"
#include "TemporaryFolder.h"
#include "batch/ImageHeaders.h"

namespace {

/// No rotation and no mirror image of it is the same.
cv::Mat Lopsided() {
  cv::Mat image(40, 64, CV_8UC3, cv::Scalar::all(30));
  image(cv::Rect(0, 0, 20, 10)).setTo(cv::Scalar(40, 90, 200));
  image(cv::Rect(44, 0, 20, 20)).setTo(cv::Scalar::all(240));
  return image;
}

class ImageFiles : public ::testing::Test {
 protected:
  batch::ImageFile Read(const std::string& name, const std::string& bytes) {
    support::WriteText(folder_.File(name), bytes);
    return batch::ReadImageFile(folder_.File(name));
  }

  support::TemporaryFolder folder_;
};

TEST_F(ImageFiles, AreNotTurnedWhateverTheirOrientationAsksFor) {
  const cv::Mat image = Lopsided();
  const std::string jpeg = support::Encoded(image, ".jpg");
  const std::string png = support::Encoded(image, ".png");
  const cv::Mat fromJpeg = Read("plain.jpg", jpeg).image;
  for (int orientation = 1; orientation <= 8; ++orientation) {
    const bool asks = orientation != 1;
    for (const bool bigEndian : {false, true}) {
      const batch::ImageFile file = Read("a.jpg", support::TurnedJpeg(jpeg, orientation, bigEndian));
      EXPECT_SAME_MAT(file.image, fromJpeg) << orientation;
      EXPECT_EQ(file.orientationIgnored, asks) << orientation;
    }
    const batch::ImageFile turnedPng = Read("a.png", support::TurnedPng(png, orientation));
    EXPECT_SAME_MAT(turnedPng.image, image) << orientation;
    EXPECT_EQ(turnedPng.orientationIgnored, asks) << orientation;
    const batch::ImageFile turnedTiff = Read("a.tif", support::TurnedTiff(image, orientation));
    EXPECT_SAME_MAT(turnedTiff.image, image) << orientation;
    EXPECT_EQ(turnedTiff.orientationIgnored, asks) << orientation;
  }
}

TEST_F(ImageFiles, WithoutAnOrientationAskForNone) {
  for (const char* extension : {".jpg", ".png", ".bmp", ".tif"}) {
    const batch::ImageFile file =
        Read(std::string("plain") + extension, support::Encoded(Lopsided(), extension));
    EXPECT_FALSE(file.image.empty()) << extension;
    EXPECT_FALSE(file.orientationIgnored) << extension;
    EXPECT_FALSE(file.endsTooEarly) << extension;
  }
}

TEST_F(ImageFiles, ThatAreCutOffAreKnownAndTheDecodersKeepQuiet) {
  ::testing::internal::CaptureStderr();
  for (const char* extension : {".jpg", ".png"}) {
    const std::string whole = support::Encoded(Lopsided(), extension);
    const batch::ImageFile file = Read(std::string("cut") + extension, whole.substr(0, whole.size() / 2));
    EXPECT_TRUE(file.endsTooEarly) << extension;
  }
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

TEST(ImageHeaders, SurviveFilesThatEndAnywhere) {
  const std::string jpeg = support::TurnedJpeg(support::Encoded(Lopsided(), ".jpg"), 6);
  const std::string png = support::TurnedPng(support::Encoded(Lopsided(), ".png"), 6);
  const std::string tiff = support::OrientationTag(6, true, 5);
  for (const std::string& whole : {jpeg, png, tiff}) {
    EXPECT_EQ(batch::OrientationOf(whole), 6);
    for (size_t length = 0; length < whole.size(); ++length) {
      const std::string part = whole.substr(0, length);
      const int orientation = batch::OrientationOf(part);
      EXPECT_TRUE(orientation == 1 || orientation == 6) << length;
      if (batch::HasKnownHeader(part) && !batch::IsTiff(part)) {
        EXPECT_TRUE(batch::EndsTooEarly(part)) << length;
      }
    }
    EXPECT_FALSE(batch::EndsTooEarly(whole));
  }
}

TEST(ImageHeaders, TakeNumbersThatNoOrientationHasForNone) {
  for (const int orientation : {0, 9, 255}) {
    EXPECT_EQ(batch::OrientationOf(support::OrientationTag(orientation)), 1) << orientation;
  }
  EXPECT_EQ(batch::OrientationOf("II*"), 1);
  EXPECT_EQ(batch::OrientationOf(std::string("II*\0\xFF\xFF\xFF\xFF", 8)), 1);
  EXPECT_EQ(batch::OrientationOf("no image at all"), 1);
}

TEST(ImageHeaders, DoNotTakeTheEndOfAPreviewForThatOfTheImage) {
  const std::string jpeg = support::Encoded(Lopsided(), ".jpg");
  // A segment that holds a whole small image, as cameras write it.
  const std::string preview = support::Encoded(Lopsided()(cv::Rect(0, 0, 8, 8)), ".jpg");
  const auto length = static_cast<std::uint32_t>(preview.size() + 2);
  const std::string with =
      jpeg.substr(0, 2) + "\xFF\xE2" + support::BytesOfNumber(length, 2, true) + preview + jpeg.substr(2);
  EXPECT_FALSE(batch::EndsTooEarly(with));
  EXPECT_TRUE(batch::EndsTooEarly(with.substr(0, with.size() - 20)));
}

}  // namespace
