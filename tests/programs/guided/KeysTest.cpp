/// The line that says what the keys do.
#include "guided/Keys.h"

#include <gtest/gtest.h>

#include <set>

#include "Drawn.h"

namespace {

using guided::PlaceKeys;

std::set<int> RowsOf(const std::vector<guided::PlacedKey>& keys) {
  std::set<int> rows;
  for (const auto& key : keys) rows.insert(key.cap.y);
  return rows;
}

std::vector<cv::Rect> BoxesOf(const std::vector<guided::PlacedKey>& keys) {
  std::vector<cv::Rect> boxes;
  boxes.reserve(2 * keys.size());
  for (const auto& key : keys) {
    boxes.push_back(key.cap);
    boxes.push_back(key.words);
  }
  return boxes;
}

TEST(Keys, AreInOneLineWhereThatIsReadable) {
  const auto keys = PlaceKeys(LiveKeys(), {10, 700, 1260, 60}, 20.0);
  ASSERT_EQ(keys.size(), 8U);
  EXPECT_EQ(RowsOf(keys).size(), 1U);
  EXPECT_GE(keys.front().name.size, 11.0);
}

TEST(Keys, AreInMoreLinesWhereOneWouldBeTooSmall) {
  const auto keys = PlaceKeys(LiveKeys(), {10, 700, 500, 80}, 20.0);
  ASSERT_EQ(keys.size(), 8U);
  EXPECT_GT(RowsOf(keys).size(), 1U);
}

TEST(Keys, LieApartInTheirPlace) {
  for (const cv::Rect& place :
       {cv::Rect(10, 700, 1260, 60), cv::Rect(0, 0, 500, 80), cv::Rect(5, 5, 150, 30)}) {
    const auto keys = PlaceKeys(LiveKeys(), place, 24.0);
    ASSERT_EQ(keys.size(), 8U) << place;
    EXPECT_TRUE(Apart(BoxesOf(keys))) << place;
    for (const cv::Rect& box : BoxesOf(keys)) EXPECT_TRUE(Within(box, place)) << box << " in " << place;
  }
}

TEST(Keys, StayWhereTheyAreWhenTheyCannotWork) {
  const cv::Rect place(10, 10, 1260, 60);
  EXPECT_EQ(BoxesOf(PlaceKeys(LiveKeys(true), place, 20.0)),
            BoxesOf(PlaceKeys(LiveKeys(false), place, 20.0)));
}

TEST(Keys, AreGreyWhenTheyCannotWork) {
  const auto drawn = [](bool works) {
    cv::Mat picture(80, 1280, CV_8UC3, cv::Scalar::all(20));
    const auto keys = PlaceKeys({{"Enter", "compute", works}}, {0, 0, 1280, 80}, 20.0);
    guided::DrawKeys(keys, picture);
    double brightest = 0.0;
    cv::minMaxLoc(picture.reshape(1), nullptr, &brightest);
    return brightest;
  };
  EXPECT_GT(drawn(true), 230.0);
  EXPECT_LT(drawn(false), 130.0);
  EXPECT_GT(drawn(false), 90.0) << "what the key does can still be read";
}

TEST(Keys, AreNoneWithoutKeysOrRoom) {
  EXPECT_TRUE(PlaceKeys({}, {0, 0, 100, 20}, 20.0).empty());
  EXPECT_TRUE(PlaceKeys(LiveKeys(), {}, 20.0).empty());
}

}  // namespace
