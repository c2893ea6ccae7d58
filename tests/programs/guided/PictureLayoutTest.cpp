/// Where things are in the live picture.
#include <gtest/gtest.h>

#include "Drawn.h"
#include "velmora/Guide.h"

namespace {

using guided::CameraPicture;
using guided::LayoutOf;
using guided::MapPlace;
using guided::Picture;
using guided::PictureLayout;

const std::vector<cv::Size> WINDOWS = {{1280, 800}, {1280, 720}, {1920, 1080}, {640, 480},
                                       {800, 600},  {900, 1200}, {320, 240},   {2560, 600}};
const std::vector<cv::Size> IMAGES = {{320, 240}, {1280, 720}, {480, 640}, {4096, 3072}};
const std::vector<std::string> INSTRUCTIONS = {"Closer", "Tilt the left edge away",
                                               "Part of the grid is outside the picture",
                                               "This one is much longer than the instructions that are "
                                               "given, and still all of it has to be there to be read"};

Picture Full(const cv::Size& window, const cv::Size& image, size_t cameras) {
  Picture picture;
  picture.window = window;
  picture.instruction = INSTRUCTIONS[1];
  picture.closeness = 0.5;
  picture.view = 3;
  picture.goal = 12;
  picture.precision = "known to 0.42 px, goal 0.30 px";
  picture.message = "View 3 taken back";
  picture.keys = LiveKeys();
  picture.map = cv::Mat(300, 460, CV_8UC3, cv::Scalar(200, 100, 50));
  for (size_t i = 0; i < cameras; ++i) {
    CameraPicture camera;
    camera.image = cv::Mat(image, CV_8UC1, cv::Scalar(90));
    camera.name = i == 0 ? "left camera" : "right camera";
    picture.cameras.push_back(camera);
  }
  return picture;
}

/// Calls with pictures of all sizes, of one camera and of two.
template <typename Check>
void ForAllSizes(const Check& check) {
  for (const cv::Size& window : WINDOWS) {
    for (const cv::Size& image : IMAGES) {
      for (const size_t cameras : {1U, 2U}) {
        SCOPED_TRACE(testing::Message() << window << " of " << cameras << " images of " << image);
        check(Full(window, image, cameras));
      }
    }
  }
}

void ExpectAllApart(const PictureLayout& layout) {
  const cv::Rect whole(cv::Point(), layout.picture);
  std::vector<cv::Rect> boxes = TextBoxesOf(layout);
  for (const cv::Rect& box : boxes) EXPECT_TRUE(Within(box, whole)) << box;
  boxes.insert(boxes.end(), {layout.bar, layout.steps, layout.icon});
  EXPECT_TRUE(Apart(boxes));
}

TEST(PictureLayout, NoTextIsOverAnotherOrOutsideThePicture) {
  ForAllSizes([](Picture picture) {
    for (const std::string& instruction : INSTRUCTIONS) {
      picture.instruction = instruction;
      for (const MapPlace place : {MapPlace::None, MapPlace::Inset, MapPlace::Whole}) {
        picture.mapPlace = place;
        SCOPED_TRACE(instruction);
        ExpectAllApart(LayoutOf(picture));
      }
    }
  });
}

TEST(PictureLayout, LongTextsOfAllKindsAreStillThereWhole) {
  const std::string text = "a rather long text of which all words are to be read, wherever it may be written";
  ForAllSizes([&](Picture picture) {
    picture.precision = picture.message = text;
    for (CameraPicture& camera : picture.cameras) camera.name = text;
    const PictureLayout layout = LayoutOf(picture);
    ExpectAllApart(layout);
    for (const std::string what :
         {"instruction", "view", "precision", "message", "label", "match", "percent"}) {
      EXPECT_NE(TextOf(layout, what), nullptr) << what;
    }
    EXPECT_EQ(layout.keys.size(), picture.keys.size());
  });
}

TEST(PictureLayout, InstructionsAreAtLeastAFourteenthOfTheWindowHigh) {
  ForAllSizes([](Picture picture) {
    for (size_t i = 0; i < 3; ++i) {
      picture.instruction = INSTRUCTIONS[i];
      const PictureLayout layout = LayoutOf(picture);
      const auto* text = TextOf(layout, "instruction");
      ASSERT_NE(text, nullptr);
      EXPECT_GE(text->text.size, picture.window.height / 14.0) << picture.instruction;
    }
  });
}

TEST(PictureLayout, ImagesKeepTheirShapeAndHideNoText) {
  ForAllSizes([](const Picture& picture) {
    const PictureLayout layout = LayoutOf(picture);
    ASSERT_EQ(layout.halves.size(), picture.cameras.size());
    const cv::Size image = picture.cameras.front().image.size();
    for (const cv::Rect& half : layout.halves) {
      ASSERT_GT(half.area(), 0);
      EXPECT_NEAR(half.width, static_cast<double>(half.height) * image.width / image.height, 1.5);
    }
    std::vector<cv::Rect> boxes = layout.halves;
    boxes.insert(boxes.end(), {layout.head, layout.bar, layout.side});
    for (const auto& key : layout.keys) boxes.push_back(key.cap);
    EXPECT_TRUE(Apart(boxes));
  });
}

TEST(PictureLayout, OneImageHasMuchOfAnUsualWindow) {
  for (const cv::Size& image : {cv::Size(640, 480), cv::Size(1280, 720), cv::Size(1920, 1080)}) {
    const PictureLayout layout = LayoutOf(Full({1280, 800}, image, 1));
    EXPECT_GT(layout.halves.front().area(), 0.3 * 1280 * 800) << image;
  }
}

TEST(PictureLayout, AnImageHasTwoThirdsOfTheWidthBelowALowHead) {
  using velmora::Guide;
  for (int hint = 0; hint <= static_cast<int>(velmora::GuideHint::Skip); ++hint) {
    Picture picture = Full({1280, 800}, {640, 480}, 1);
    picture.instruction = Guide::Words(static_cast<velmora::GuideHint>(hint));
    const PictureLayout layout = LayoutOf(picture);
    EXPECT_GE(layout.halves.front().width, 0.64 * 1280) << picture.instruction;
    EXPECT_LE(layout.head.height, 0.15 * 800) << picture.instruction;
    if (picture.instruction.empty()) continue;
    const auto* text = TextOf(layout, "instruction");
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(text->text.lines.size(), 1U) << picture.instruction;
    EXPECT_GE(text->text.size, 800 / 14.0) << picture.instruction;
    EXPECT_GE(text->text.width, 0.6) << picture.instruction;
  }
}

TEST(PictureLayout, ImagesStayWhereTheyAreWhateverIsSaid) {
  for (const cv::Size& window : {cv::Size(1280, 800), cv::Size(1920, 1080), cv::Size(640, 480)}) {
    Picture picture = Full(window, {1280, 720}, 1);
    const auto halves = LayoutOf(picture).halves;
    for (size_t i = 0; i < 3; ++i) {
      picture.instruction = INSTRUCTIONS[i];
      EXPECT_EQ(LayoutOf(picture).halves, halves) << picture.instruction;
    }
    picture.closeness.reset();
    picture.precision.clear();
    picture.instruction.clear();
    picture.message.clear();
    EXPECT_EQ(LayoutOf(picture).halves, halves);
  }
}

TEST(PictureLayout, ANoticeLeavesTheKeysAlone) {
  ForAllSizes([](Picture picture) {
    picture.notice = "No picture for 5 s: is the camera plugged in?";
    const PictureLayout layout = LayoutOf(picture);
    ASSERT_EQ(layout.texts.size(), 1U);
    EXPECT_EQ(layout.texts.front().what, "notice");
    EXPECT_TRUE(layout.halves.empty());
    EXPECT_EQ(layout.keys.size(), 8U);
    ExpectAllApart(layout);
  });
}

TEST(PictureLayout, AnInsetMapHidesNoTextAndAWholeOneTakesThePlaceOfTheImages) {
  ForAllSizes([](Picture picture) {
    picture.mapPlace = MapPlace::Inset;
    PictureLayout layout = LayoutOf(picture);
    EXPECT_FALSE(layout.map.empty());
    for (const auto& text : layout.texts) EXPECT_TRUE(Apart({layout.map, text.box})) << text.what;
    picture.mapPlace = MapPlace::Whole;
    layout = LayoutOf(picture);
    EXPECT_TRUE(layout.halves.empty());
    EXPECT_TRUE(Within(layout.map, {cv::Point(), layout.picture}));
    EXPECT_TRUE(Apart({layout.map, layout.head, layout.bar, layout.side}));
  });
}

TEST(PictureLayout, SaysWhichViewIsTakenAndOfHowMany) {
  Picture picture = Full({1280, 800}, {640, 480}, 1);
  const auto words = [&] {
    const PictureLayout layout = LayoutOf(picture);
    const auto* text = TextOf(layout, "view");
    return text == nullptr || text->text.lines.size() != 1 ? std::string() : text->text.lines.front();
  };
  EXPECT_EQ(words(), "View 3 of 12");
  picture.goal = 0;
  EXPECT_EQ(words(), "View 3");
  picture.view = 0;
  EXPECT_EQ(words(), "");
}

}  // namespace
