/// Images of several cameras that belong together by their names.
#include "batch/NameMatching.h"

#include <gtest/gtest.h>

#include "batch/InputFiles.h"

namespace {

using batch::CameraFiles;
using batch::DifferingParts;
using batch::MatchByNames;
using Texts = std::vector<std::string>;

/// What is said of cameras that do not match.
std::string Fault(const std::vector<CameraFiles>& cameras) {
  try {
    MatchByNames(cameras);
  } catch (const common::InputError& error) {
    return error.what();
  }
  return "";
}

TEST(NameMatching, NamesDifferByWhatIsNotCommonAtTheirBeginningAndEnd) {
  EXPECT_EQ(DifferingParts({"a/left_001.png", "a/left_002.png"}), (Texts{"001", "002"}));
  EXPECT_EQ(DifferingParts({"cam1-001.jpg", "cam1-012.jpg"}), (Texts{"001", "012"}));
  EXPECT_EQ(DifferingParts({"7 of left.png", "12 of left.png"}), (Texts{"7", "12"}));
  EXPECT_EQ(DifferingParts({"1690000001.25.png", "1690000002.75.png"}),
            (Texts{"1690000001.25", "1690000002.75"}));
}

TEST(NameMatching, NumbersAndWordsAreNotCut) {
  EXPECT_EQ(DifferingParts({"img100.png", "img110.png", "img120.png"}), (Texts{"100", "110", "120"}));
  EXPECT_EQ(DifferingParts({"left-apple.png", "left-avocado.png"}), (Texts{"apple", "avocado"}));
  EXPECT_EQ(DifferingParts({"img1.png", "img12.png"}), (Texts{"1", "12"}));
  EXPECT_EQ(DifferingParts({"bär.png", "bör.png"}), (Texts{"bär", "bör"}));
}

TEST(NameMatching, TheExtensionOfAnImageDoesNotCount) {
  EXPECT_EQ(DifferingParts({"left_001.png", "left_002.JPG"}), (Texts{"001", "002"}));
  EXPECT_EQ(DifferingParts({"only_001.png"}), (Texts{"only_001"}));
  EXPECT_TRUE(DifferingParts({}).empty());
}

TEST(NameMatching, ImagesWithTheSamePartBelongTogetherInItsOrder) {
  const auto moments = MatchByNames({{"left", {"l/left_002.png", "l/left_001.png", "l/left_010.png"}},
                                     {"right", {"r/cam1-001.jpg", "r/cam1-002.jpg", "r/cam1-010.jpg"}}});
  ASSERT_EQ(moments.size(), 3U);
  EXPECT_EQ(moments[0].key, "001");
  EXPECT_EQ(moments[0].files, (Texts{"l/left_001.png", "r/cam1-001.jpg"}));
  EXPECT_EQ(moments[1].files, (Texts{"l/left_002.png", "r/cam1-002.jpg"}));
  EXPECT_EQ(moments[2].files, (Texts{"l/left_010.png", "r/cam1-010.jpg"}));
}

TEST(NameMatching, ACameraMayHaveMissedMoments) {
  const auto moments =
      MatchByNames({{"a", {"a1.png", "a2.png"}}, {"b", {"b2.png", "b3.png"}}, {"c", {"c1.png", "c3.png"}}});
  ASSERT_EQ(moments.size(), 3U);
  EXPECT_EQ(moments[0].files, (Texts{"a1.png", "", "c1.png"}));
  EXPECT_EQ(moments[1].files, (Texts{"a2.png", "b2.png", ""}));
  EXPECT_EQ(moments[2].files, (Texts{"", "b3.png", "c3.png"}));
}

TEST(NameMatching, TwoImagesOfACameraWithTheSamePartAreNamed) {
  EXPECT_EQ(Fault({{"left", {"a-1.png", "a-2.png", "a-2.jpg"}}, {"right", {"b-1.png", "b-2.png"}}}),
            "two images of camera 'left' cannot be told apart by '2': 'a-2.png' and 'a-2.jpg'");
}

TEST(NameMatching, ACameraWithoutAPartInCommonIsNamed) {
  const std::string fault = Fault(
      {{"a", {"a1.png", "a2.png"}}, {"b", {"b1.png", "b2.png"}}, {"far", {"far-07.png", "far-08.png"}}});
  EXPECT_EQ(fault,
            "no image of camera 'far' belongs to one of another camera by its name: its images differ by "
            "parts such as '07', those of 'a' by such as '1'");
}

TEST(NameMatching, FramesOfVideosHaveNoNames) {
  const std::string end = " is none, and frames have no names";
  EXPECT_EQ(Fault({{"a", {"a1.png", "a2.png"}}, {"b", {"b.avi"}}}),
            "--match names needs images: 'b.avi'" + end);
  EXPECT_EQ(Fault({{"a", {"rtsp://host/a.png"}}, {"b", {"b1.png"}}}),
            "--match names needs images: 'rtsp://host/a.png'" + end);
}

}  // namespace
