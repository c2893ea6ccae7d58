/// The live picture, by its pixels.
#include "guided/Picture.h"

#include <gtest/gtest.h>

#include <limits>

#include "Drawn.h"
#include "guided/ImageView.h"

namespace {

using guided::CameraPicture;
using guided::Draw;
using guided::ImageView;
using guided::LayoutOf;
using guided::MapPlace;
using guided::Picture;
using guided::PictureLayout;
using guided::Tone;

Picture Showing(const cv::Mat& image, size_t cameras = 1) {
  Picture picture;
  picture.keys = LiveKeys();
  picture.cameras.resize(cameras);
  for (CameraPicture& camera : picture.cameras) camera.image = image;
  picture.instruction = "Hold still";
  picture.closeness = 0.4;
  picture.view = 2;
  picture.goal = 8;
  picture.precision = "known to 0.42 px";
  return picture;
}

cv::Mat Grey(const cv::Size& size = {640, 480}, double value = 128.0) {
  return {size, CV_8UC3, cv::Scalar::all(value)};
}

TEST(Picture, HasTheWindowsSizeWhateverTheImagesAre) {
  for (const cv::Size& window : {cv::Size(1280, 800), cv::Size(640, 480), cv::Size(1920, 1080)}) {
    for (const int type : {CV_8UC1, CV_8UC3, CV_8UC4}) {
      Picture picture = Showing(cv::Mat(480, 640, type, cv::Scalar::all(100)));
      picture.window = window;
      const cv::Mat drawn = Draw(picture);
      EXPECT_EQ(drawn.size(), window);
      EXPECT_EQ(drawn.type(), CV_8UC3);
    }
  }
  Picture small = Showing(Grey());
  small.window = {};
  EXPECT_EQ(Draw(small).size(), cv::Size(160, 120));
}

TEST(Picture, DrawsTheTargetAndWhatWasFoundWhereTheyAre) {
  for (const cv::Mat& ground : Grounds({1280, 720})) {
    Picture picture = Showing(ground);
    const cv::Mat before = Draw(picture);
    const PictureLayout layout = LayoutOf(picture);
    const ImageView view(ground.size(), layout.halves.front());
    const auto in = [&](const cv::Point2d& pixel) {
      return cv::Point(view(pixel)) + layout.halves.front().tl();
    };
    picture.cameras[0].target = GridCentres({900, 200}, {0, 40}, {-40, 0});
    picture.cameras[0].found = GridCentres({700, 250}, {0, 30}, {-30, 0});
    const cv::Mat drawn = Draw(picture);
    for (const cv::Point2d& centre : picture.cameras[0].target) {
      EXPECT_GT(DifferenceAround(drawn, before, in(centre + cv::Point2d(16, 0)), 3), 60) << centre;
    }
    for (const cv::Point2d& centre : picture.cameras[0].found) {
      EXPECT_GT(DifferenceAround(drawn, before, in(centre), 3), 60) << centre;
    }
    // Far from both, nothing.
    EXPECT_EQ(DifferenceAround(drawn, before, in({1200, 650}), 15), 0);
  }
}

TEST(Picture, EachHalfHasItsOwnFindings) {
  Picture picture = Showing(Grey(), 2);
  const cv::Mat before = Draw(picture);
  const auto centres = GridCentres({420, 120}, {0, 22}, {-22, 0});
  for (const size_t side : {0U, 1U}) {
    Picture one = picture;
    one.cameras[side].found = centres;
    const cv::Mat drawn = Draw(one);
    const auto halves = LayoutOf(one).halves;
    EXPECT_GT(cv::norm(drawn(halves[side]), before(halves[side]), cv::NORM_INF), 60.0);
    EXPECT_EQ(cv::norm(drawn(halves[1 - side]), before(halves[1 - side]), cv::NORM_INF), 0.0);
  }
}

TEST(Picture, AMirroredOneIsTheMirrorImageWithItsWordsReadable) {
  cv::Mat image(480, 640, CV_8UC3);
  cv::RNG random(3);
  random.fill(image, cv::RNG::UNIFORM, 0, 256);
  cv::GaussianBlur(image, image, {}, 8.0);
  Picture picture = Showing(image);
  const cv::Rect place = LayoutOf(picture).halves.front();
  const cv::Mat plain = Draw(picture);
  picture.cameras[0].mirrored = true;
  const cv::Mat mirrored = Draw(picture);
  cv::Mat turned;
  cv::flip(plain(place), turned, 1);
  EXPECT_EQ(cv::norm(turned, mirrored(place), cv::NORM_INF), 0.0);
  EXPECT_EQ(cv::norm(plain.rowRange(0, place.y), mirrored.rowRange(0, place.y), cv::NORM_INF), 0.0);
  // What was found moves with it.
  const cv::Mat before = mirrored.clone();
  picture.cameras[0].found = {{600.0, 240.0}};
  const ImageView view(image.size(), place);
  const cv::Point right = cv::Point(view({600, 240})) + place.tl();
  const cv::Point left = cv::Point(view({639 - 600, 240})) + place.tl();
  EXPECT_GT(DifferenceAround(Draw(picture), before, left, 2), 40);
  EXPECT_EQ(DifferenceAround(Draw(picture), before, right, 2), 0);
}

TEST(Picture, AllTextsAreLegibleOnAnyImage) {
  for (const cv::Size& window : {cv::Size(1280, 800), cv::Size(1920, 1080), cv::Size(640, 480)}) {
    for (const cv::Mat& ground : Grounds({640, 480})) {
      for (const Tone tone : {Tone::Neutral, Tone::Warning, Tone::Good}) {
        Picture picture = Showing(ground, 2);
        picture.window = window;
        picture.tone = tone;
        picture.message = "View 3 taken back";
        picture.cameras[0].name = "left camera";
        picture.cameras[1].undistorted = true;
        const cv::Mat drawn = Draw(picture);
        const PictureLayout layout = LayoutOf(picture);
        ASSERT_EQ(layout.texts.size(), 8U);
        for (const auto& text : layout.texts) {
          EXPECT_GT(ContrastOf(text, drawn), text.what == "instruction" ? 7.0 : 3.0)
              << text.what << " " << window;
        }
      }
    }
  }
}

TEST(Picture, TonesDifferInMoreThanTheirColour) {
  std::vector<cv::Mat> icons;
  for (const Tone tone : {Tone::Neutral, Tone::Warning, Tone::Good}) {
    Picture picture = Showing(Grey());
    picture.tone = tone;
    cv::Mat icon;
    cv::cvtColor(Draw(picture)(LayoutOf(picture).icon), icon, cv::COLOR_BGR2GRAY);
    icons.push_back(icon > 100);
  }
  const auto apart = [&](size_t a, size_t b) {
    return cv::norm(icons[a], icons[b], cv::NORM_L1) / 255.0 / static_cast<double>(icons[a].total());
  };
  EXPECT_GT(apart(0, 1), 0.1);
  EXPECT_GT(apart(1, 2), 0.1);
  EXPECT_GT(apart(0, 2), 0.1);
}

TEST(Picture, AFlashMakesAllOfItBrighter) {
  for (const double ground : {0.0, 128.0}) {
    Picture picture = Showing(Grey({640, 480}, ground));
    double before = cv::mean(Draw(picture))[0];
    for (const double flash : {0.3, 0.6, 1.0}) {
      picture.flash = flash;
      const cv::Mat drawn = Draw(picture);
      const double now = cv::mean(drawn)[0];
      EXPECT_GT(now, before + 20.0) << flash;
      before = now;
    }
  }
}

TEST(Picture, AFlashHasAFrameThatIsSeenOnWhite) {
  Picture picture = Showing(Grey({640, 480}, 255.0));
  picture.flash = 1.0;
  const cv::Mat drawn = Draw(picture);
  const cv::Vec3b frame = drawn.at<cv::Vec3b>(2, 2);
  const cv::Rect place = LayoutOf(picture).halves.front();
  const cv::Vec3b inside = drawn.at<cv::Vec3b>((place.tl() + place.br()) / 2);
  EXPECT_GT(inside[2], 240);
  EXPECT_GT(cv::norm(frame, inside, cv::NORM_INF), 100.0);
  for (const cv::Point& corner :
       {cv::Point(1277, 2), cv::Point(2, 797), cv::Point(1277, 797), cv::Point(10, 400)}) {
    EXPECT_EQ(drawn.at<cv::Vec3b>(corner), frame) << corner;
  }
}

TEST(Picture, TheMessageIsLegibleInAFlash) {
  Picture picture = Showing(Grey());
  picture.flash = 1.0;
  picture.message = "View 3 taken";
  const PictureLayout layout = LayoutOf(picture);
  EXPECT_GT(ContrastOf(*TextOf(layout, "message"), Draw(picture)), 7.0);
}

TEST(Picture, TheMessageFades) {
  Picture picture = Showing(Grey());
  const cv::Mat without = Draw(picture);
  picture.message = "View 3 taken back";
  double before = 1e9;
  for (const double strength : {1.0, 0.7, 0.3}) {
    picture.messageStrength = strength;
    const double seen = cv::norm(Draw(picture), without, cv::NORM_L1);
    EXPECT_LT(seen, 0.8 * before) << strength;
    EXPECT_GT(seen, 0.0);
    before = seen;
  }
  picture.messageStrength = 0.0;
  EXPECT_EQ(cv::norm(Draw(picture), without, cv::NORM_INF), 0.0);
}

TEST(Picture, KeysThatCannotWorkAreDarker) {
  Picture picture = Showing(Grey());
  const cv::Mat working = Draw(picture);
  picture.keys = LiveKeys(false);
  const cv::Mat grey = Draw(picture);
  for (const auto& key : LayoutOf(picture).keys) {
    double now = 0.0;
    double before = 0.0;
    cv::minMaxLoc(grey(key.words).clone().reshape(1), nullptr, &now);
    cv::minMaxLoc(working(key.words).clone().reshape(1), nullptr, &before);
    EXPECT_EQ(now < before - 90.0, !key.works) << key.does.lines.front();
  }
}

TEST(Picture, TheBarGrowsWithTheCloseness) {
  Picture picture = Showing(Grey());
  const auto length = [&](double closeness) {
    picture.closeness = closeness;
    const cv::Rect bar = LayoutOf(picture).bar;
    const cv::Mat line = Draw(picture)(bar).row(bar.height / 2);
    int lit = 0;
    for (int x = 0; x < line.cols; ++x) lit += line.at<cv::Vec3b>(x)[1] > 150 ? 1 : 0;
    return static_cast<double>(lit) / line.cols;
  };
  for (const double closeness : {0.1, 0.5, 0.9, 1.0}) EXPECT_NEAR(length(closeness), closeness, 0.03);
  EXPECT_NEAR(length(0.0), 0.0, 0.02);
  EXPECT_NEAR(length(-3.0), 0.0, 0.02);
  EXPECT_NEAR(length(7.0), 1.0, 0.03);
}

TEST(Picture, ANoticeReplacesTheImages) {
  Picture bright = Showing(Grey({640, 480}, 255.0));
  Picture dark = Showing(Grey({640, 480}, 0.0));
  bright.notice = dark.notice = "The recording has ended";
  const cv::Mat drawn = Draw(bright);
  EXPECT_EQ(cv::norm(drawn, Draw(dark), cv::NORM_INF), 0.0);
  EXPECT_GT(ContrastOf(LayoutOf(bright).texts.front(), drawn), 7.0);
}

TEST(Picture, ShowsTheMapInTheCornerOrInsteadOfTheImages) {
  Picture picture = Showing(Grey());
  picture.map = cv::Mat(300, 460, CV_8UC3, cv::Scalar(200, 30, 70));
  for (const MapPlace place : {MapPlace::Inset, MapPlace::Whole}) {
    picture.mapPlace = place;
    const cv::Rect map = LayoutOf(picture).map;
    EXPECT_EQ(Draw(picture).at<cv::Vec3b>((map.tl() + map.br()) / 2), cv::Vec3b(200, 30, 70));
  }
  EXPECT_GT(LayoutOf(picture).map.area(), 1280 * 800 / 4);
}

TEST(Picture, SaysThatTheImageIsUndistorted) {
  Picture picture = Showing(Grey());
  EXPECT_EQ(TextOf(LayoutOf(picture), "label"), nullptr);
  picture.cameras[0].undistorted = true;
  const PictureLayout layout = LayoutOf(picture);
  ASSERT_NE(TextOf(layout, "label"), nullptr);
  EXPECT_EQ(TextOf(layout, "label")->text.lines.front(), "without distortion");
}

TEST(Picture, LeavesTheImagesAsTheyWere) {
  const cv::Mat image = Grey();
  Picture picture = Showing(image);
  picture.window = {1280, 800};
  picture.cameras[0].target = picture.cameras[0].found = GridCentres({420, 120}, {0, 22}, {-22, 0});
  picture.cameras[0].kept = {picture.cameras[0].target};
  picture.flash = 0.5;
  Draw(picture);
  EXPECT_EQ(cv::norm(image, Grey(), cv::NORM_INF), 0.0);
}

TEST(Picture, StandsWhatIsEmptyAndWhatIsNoNumber) {
  EXPECT_NO_THROW(Draw(Picture()));
  Picture picture;
  picture.cameras.resize(2);
  picture.mapPlace = MapPlace::Whole;
  EXPECT_NO_THROW(Draw(picture));
  picture.mapPlace = MapPlace::Inset;
  const double none = std::numeric_limits<double>::quiet_NaN();
  picture.closeness = picture.flash = picture.messageStrength = none;
  picture.message = "message";
  picture.goal = picture.view = -4;
  picture.grid = {};
  picture.cameras[0].image = Grey({1, 1});
  picture.cameras[0].found = picture.cameras[0].target = {{none, none}};
  picture.cameras[0].kept = {{}};
  EXPECT_NO_THROW(Draw(picture));
  picture.view = 9;
  picture.goal = 3;
  EXPECT_NO_THROW(Draw(picture));
}

}  // namespace
