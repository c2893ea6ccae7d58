/// Text that fits its room.
#include "guided/Lettering.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <opencv2/imgproc.hpp>

namespace {

using guided::Align;
using guided::FitText;
using guided::Lettering;

const std::vector<std::string> TEXTS = {
    "Hold still",
    "Part of the grid is outside the picture",
    "/a/folder/with_a_very_long_name_and_no_place_to_break/calibration.json",
    "W",
    "(gjpqy|[])",
    "one\ntwo\n\nfour",
    std::string(300, 'm') + " and words"};
const std::vector<cv::Size> ROOMS = {{1200, 180}, {300, 60}, {60, 400}, {40, 20}, {1000, 15}};

std::string WithoutSpaces(const std::string& text) {
  std::string letters;
  for (const char character : text) {
    if (character != ' ' && character != '\n') letters += character;
  }
  return letters;
}

std::string Joined(const Lettering& text) {
  std::string all;
  for (const std::string& line : text.lines) all += line;
  return all;
}

TEST(Lettering, FitsItsRoomWithAllItsLetters) {
  for (const std::string& text : TEXTS) {
    for (const cv::Size& room : ROOMS) {
      const Lettering fitted = FitText(text, room, {60.0, 40.0, 12.0});
      ASSERT_FALSE(fitted.Empty()) << text << " " << room;
      EXPECT_LE(fitted.extent.width, room.width) << text;
      EXPECT_LE(fitted.extent.height, room.height) << text;
      EXPECT_EQ(WithoutSpaces(Joined(fitted)), WithoutSpaces(text)) << room;
    }
  }
}

TEST(Lettering, WritesNothingBesideItsBox) {
  for (const std::string& text : TEXTS) {
    for (const double size : {8.0, 13.0, 21.0, 37.0, 80.0}) {
      const Lettering fitted = FitText(text, {900, 500}, {size, size, size / 3.0});
      for (const Align align : {Align::Left, Align::Centre, Align::Right}) {
        cv::Mat picture(700, 1100, CV_8UC3, cv::Scalar::all(90));
        const cv::Rect room(100, 100, 900, 500);
        const cv::Rect box = guided::TextBox(fitted, room, align);
        EXPECT_EQ(box & room, box);
        WriteText(fitted, room, align, {cv::Scalar::all(255), cv::Scalar::all(0)}, picture);
        EXPECT_GT(cv::norm(picture(box), cv::Mat(box.size(), CV_8UC3, cv::Scalar::all(90)), cv::NORM_INF),
                  80.0);
        picture(box).setTo(cv::Scalar::all(90));
        EXPECT_EQ(cv::norm(picture, cv::Mat(picture.size(), CV_8UC3, cv::Scalar::all(90)), cv::NORM_INF), 0.0)
            << text << " at " << size;
      }
    }
  }
}

TEST(Lettering, StaysInOneLineWhileThatIsLargeEnough) {
  const std::string text = "Tilt the left edge away";
  const int inOneLine = FitText(text, {10000, 1000}, {30.0, 30.0, 30.0}).extent.width;
  const Lettering kept = FitText(text, {inOneLine, 200}, {60.0, 25.0, 10.0});
  EXPECT_EQ(kept.lines.size(), 1U);
  EXPECT_NEAR(kept.size, 30.0, 3.0);
  const Lettering broken = FitText(text, {inOneLine, 200}, {60.0, 40.0, 10.0});
  EXPECT_GT(broken.lines.size(), 1U);
  EXPECT_GT(broken.size, 40.0);
}

TEST(Lettering, IsMadeNarrowRatherThanBrokenAsFarAsItMayBe) {
  const std::string text = "Part of the grid is outside the picture";
  const Lettering usual = FitText(text, {2000, 200}, {40.0, 40.0, 40.0});
  const double width = usual.extent.width;
  const auto in = [&](double share) {
    return FitText(text, {cvCeil(share * width), 200}, {60.0, 40.0, 40.0, 1.5, 0.7});
  };
  EXPECT_EQ(in(1.01).width, 1.0);
  for (const double share : {0.95, 0.8, 0.71}) {
    const Lettering narrow = in(share);
    ASSERT_EQ(narrow.lines.size(), 1U) << share;
    EXPECT_EQ(narrow.size, 40.0) << share;
    EXPECT_NEAR(narrow.width, share, 0.01);
    EXPECT_LE(narrow.extent.width, cvCeil(share * width)) << share;
  }
  EXPECT_GT(in(0.65).lines.size(), 1U);
  EXPECT_EQ(in(0.65).width, 1.0);
}

/// The text in white with a black rim. Expects nothing beside its box; of it, the row in the middle.
cv::Mat MiddleOf(const Lettering& text, const cv::Scalar& ground) {
  cv::Mat picture(text.extent.height + 40, text.extent.width + 40, CV_8UC3, ground);
  const cv::Rect box(cv::Point(20, 20), text.extent);
  WriteText(text, box, Align::Left, {cv::Scalar::all(255), cv::Scalar::all(0)}, picture);
  cv::Mat changed = picture != cv::Mat(picture.size(), CV_8UC3, ground);
  changed(box).setTo(cv::Scalar::all(0));
  EXPECT_EQ(cv::countNonZero(changed.reshape(1)), 0) << "beside the box";
  cv::Mat grey;
  cv::cvtColor(picture(box), grey, cv::COLOR_BGR2GRAY);
  return grey.row(grey.rows / 2);
}

/// How often the row becomes brighter than that.
size_t Rises(const cv::Mat& row, int level) {
  size_t count = 0;
  for (int x = 1; x < row.cols; ++x) {
    if (row.at<unsigned char>(x) > level && row.at<unsigned char>(x - 1) <= level) ++count;
  }
  return count;
}

TEST(Lettering, InNarrowLettersFillsItsBoxAndHasItsRim) {
  const std::string text = "llllllllllll";
  const Lettering usual = FitText(text, {2000, 200}, {40.0, 40.0, 40.0});
  const Lettering narrow = FitText(text, {usual.extent.width * 7 / 10, 200}, {40.0, 40.0, 40.0, 1.5, 0.6});
  ASSERT_LT(narrow.width, 0.75);
  const cv::Mat onGrey = MiddleOf(narrow, cv::Scalar::all(90));
  EXPECT_EQ(Rises(onGrey, 180), text.size());
  int last = onGrey.cols - 1;
  while (last > 0 && onGrey.at<unsigned char>(last) < 180) --last;
  EXPECT_GT(last, onGrey.cols - 15);
  // Each letter, and after the last one the ground.
  EXPECT_EQ(Rises(MiddleOf(narrow, cv::Scalar::all(255)), 128), text.size() + 1);
}

TEST(Lettering, BreaksWordsOnlyWhenTheyWouldBeTooSmall) {
  const Lettering whole = FitText("incomprehensibilities", {200, 200}, {40.0, 40.0, 8.0});
  EXPECT_EQ(whole.lines.size(), 1U);
  const Lettering broken = FitText("incomprehensibilities", {60, 200}, {40.0, 40.0, 8.0});
  EXPECT_GT(broken.lines.size(), 1U);
  EXPECT_LT(broken.size, 8.0);
}

TEST(Lettering, HasLinesOfAboutOneLength) {
  const std::string text = "Part of the grid is outside the picture";
  const int all = FitText(text, {10000, 1000}, {30.0, 30.0, 30.0}).extent.width;
  const Lettering fitted = FitText(text, {all - 40, 120}, {30.0, 30.0, 30.0});
  ASSERT_EQ(fitted.lines.size(), 2U);
  EXPECT_GT(fitted.lines[1].size(), 12U) << "a single word is left for the last line";
}

TEST(Lettering, KeepsANumberBesideItsUnit) {
  for (int width = 100; width < 700; width += 20) {
    for (const std::string& line :
         FitText("known to 0.42 px, goal 0.30 px", {width, 300}, {40.0, 40.0, 8.0}).lines) {
      EXPECT_NE(line.substr(0, 2), "px") << width;
    }
  }
}

TEST(Lettering, HasAQuestionMarkForEachCharacterThatIsNotAscii) {
  EXPECT_EQ(Joined(FitText("K\xC3\xBChl \xE2\x82\xAC", {500, 100}, {20.0, 20.0, 20.0})), "K?hl ?");
}

TEST(Lettering, HasNoLinesWhereNotEvenTheSmallestLettersFit) {
  EXPECT_TRUE(FitText("Match", {4, 4}, {20.0, 0.0, 0.0}).Empty());
  EXPECT_TRUE(FitText("Match", {4, 4}, {20.0, 0.0, 0.0, 1.5, 0.5}).Empty());
}

TEST(Lettering, HasNoLinesWithoutTextOrRoom) {
  EXPECT_TRUE(FitText("", {500, 100}, {}).Empty());
  EXPECT_TRUE(FitText(" \n", {500, 100}, {}).Empty());
  EXPECT_TRUE(FitText("text", {0, 100}, {}).Empty());
  EXPECT_TRUE(FitText("text", {100, 0}, {}).Empty());
  cv::Mat picture(10, 10, CV_8UC3, cv::Scalar::all(0));
  EXPECT_NO_THROW(WriteText({}, {0, 0, 10, 10}, Align::Left, {}, picture));
}

}  // namespace
