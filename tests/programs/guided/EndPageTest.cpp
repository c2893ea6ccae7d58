/// The page at the end.
#include "guided/EndPage.h"

#include <gtest/gtest.h>

#include <set>

#include "Drawn.h"

namespace {

using guided::Draw;
using guided::EndPage;
using guided::EndPageLayout;
using guided::LayoutOf;
using guided::WorstView;
using Grade = CalibrationVerdict::Grade;

EndPage Full(const cv::Size& window, size_t cameras) {
  EndPage page;
  page.window = window;
  page.grade = Grade::WithCare;
  page.sentences = {
      "The grid was never seen in the upper right corner. Come closer to the corners of the image.",
      "Eight views are few: take some more."};
  page.numbers = {{"fx", "1108.513 px", "+- 0.412"},
                  {"fy", "1108.497 px", "+- 0.409"},
                  {"cx", "640.212 px", "+- 0.655"},
                  {"cy", "359.871 px", "+- 0.601"},
                  {"RMS", "0.213 px", "12 views"}};
  page.files = {"calibration.json", "/home/somebody/a/folder/of/many/letters/calibration_uncertainty.png"};
  page.keys = {{"Enter", "more views"}, {"q", "close"}};
  for (size_t i = 0; i < cameras; ++i) {
    page.maps.emplace_back(520, 920, CV_8UC3, cv::Scalar(180, 40, 60));
    WorstView worst;
    worst.name = "pose 7";
    worst.rms = 0.62;
    worst.image = cv::Mat(480, 640, CV_8UC1, cv::Scalar(200));
    worst.points = GridCentres({420, 120}, {0, 22}, {-22, 0});
    worst.residuals.assign(44, {0.1, -0.1});
    page.worst.push_back(worst);
  }
  return page;
}

const std::vector<cv::Size> WINDOWS = {{1280, 800}, {1920, 1080}, {640, 480}, {900, 1200}, {320, 240}};

TEST(EndPage, NothingIsOverSomethingElseOrOutsideThePage) {
  for (const cv::Size& window : WINDOWS) {
    for (const size_t cameras : {0U, 1U, 2U}) {
      SCOPED_TRACE(testing::Message() << window << ", cameras: " << cameras);
      EndPage page = Full(window, cameras);
      for (const size_t sentences : {2U, 12U}) {
        if (sentences > 2U && window.width < 640) continue;  // no room for that many
        page.sentences.resize(sentences,
                              "One more reason against this result, and an advice that goes with it.");
        const EndPageLayout layout = LayoutOf(page);
        std::vector<cv::Rect> boxes = TextBoxesOf(layout);
        EXPECT_EQ(layout.texts.size(), 1U + 1U + 15U + 1U + cameras);
        boxes.push_back(layout.icon);
        boxes.insert(boxes.end(), layout.maps.begin(), layout.maps.end());
        boxes.insert(boxes.end(), layout.worst.begin(), layout.worst.end());
        for (const cv::Rect& box : boxes) EXPECT_TRUE(Within(box, {cv::Point(), window})) << box;
        EXPECT_TRUE(Apart(boxes));
        EXPECT_EQ(Draw(page).size(), window);
      }
    }
  }
}

TEST(EndPage, SaysTheGradeInWordsColourAndShape) {
  std::set<std::string> words;
  std::vector<cv::Scalar> colours;
  for (const Grade grade : {Grade::None, Grade::WithCare, Grade::Worthless, Grade::Good}) {
    EndPage page = Full({1280, 800}, 1);
    page.grade = grade;
    const EndPageLayout layout = LayoutOf(page);
    const auto* heading = TextOf(layout, "verdict");
    ASSERT_NE(heading, nullptr);
    words.insert(heading->text.lines.front());
    const cv::Mat drawn = Draw(page);
    EXPECT_GT(ContrastOf(*heading, drawn), 4.5);
    colours.push_back(cv::mean(drawn(layout.icon)));
  }
  EXPECT_EQ(words, (std::set<std::string>{"Verdict: no result", "Verdict: usable with care",
                                          "Verdict: worthless", "Verdict: good"}));
  for (size_t i = 0; i < colours.size(); ++i) {
    for (size_t k = i + 1; k < colours.size(); ++k) EXPECT_GT(cv::norm(colours[i] - colours[k]), 20.0);
  }
}

TEST(EndPage, HasAHeadingOfItsOwnWhenOneIsGiven) {
  EndPage page = Full({1280, 800}, 1);
  page.verdict = "Left camera: good";
  const EndPageLayout layout = LayoutOf(page);
  EXPECT_EQ(TextOf(layout, "verdict")->text.lines.front(), "Left camera: good");
}

TEST(EndPage, TextsAreLegible) {
  for (const cv::Size& window : {cv::Size(1280, 800), cv::Size(1920, 1080)}) {
    const EndPage page = Full(window, 1);
    const cv::Mat drawn = Draw(page);
    for (const auto& text : LayoutOf(page).texts) {
      EXPECT_GT(ContrastOf(text, drawn), 3.0) << text.what;
      EXPECT_GE(text.text.size, window.height / 60.0) << text.what;
    }
  }
}

TEST(EndPage, ShowsTheMapsAndTheWorstViewsWithTheirResiduals) {
  EndPage page = Full({1280, 800}, 2);
  const EndPageLayout layout = LayoutOf(page);
  const cv::Mat drawn = Draw(page);
  for (const cv::Rect& map : layout.maps) {
    EXPECT_EQ(drawn.at<cv::Vec3b>((map.tl() + map.br()) / 2), cv::Vec3b(180, 40, 60));
  }
  page.worst[1].residuals.assign(44, {-0.1, 0.1});
  const cv::Mat other = Draw(page);
  EXPECT_EQ(cv::norm(drawn(layout.worst[0]), other(layout.worst[0]), cv::NORM_INF), 0.0);
  EXPECT_GT(cv::norm(drawn(layout.worst[1]), other(layout.worst[1]), cv::NORM_INF), 60.0);
}

TEST(EndPage, SaysByHowMuchResidualsAreEnlarged) {
  const EndPage page = Full({1280, 800}, 1);
  const EndPageLayout layout = LayoutOf(page);
  EXPECT_EQ(layout.zoom.front(), 200.0);
  std::string caption;
  for (const std::string& line : TextOf(layout, "worst")->text.lines) caption += line + " ";
  EXPECT_EQ(caption, "Worst view: pose 7, RMS 0.62 px arrows: residuals, 200 times as long ");
}

TEST(EndPage, ShowsResidualsWithoutTheImage) {
  EndPage page = Full({1280, 800}, 1);
  page.worst.front().image.release();
  page.worst.front().frame = {640, 480};
  const cv::Rect place = LayoutOf(page).worst.front();
  const cv::Mat with = Draw(page);
  page.worst.front().points.clear();
  EXPECT_GT(cv::norm(with(place), Draw(page)(place), cv::NORM_INF), 60.0);
}

TEST(EndPage, StandsWhatIsEmpty) {
  EXPECT_NO_THROW(Draw(EndPage()));
  EndPage page;
  page.window = {};
  page.numbers.resize(2);
  page.maps.resize(1);
  page.worst.resize(2);
  page.files.resize(1);
  page.sentences.resize(1);
  page.keys.resize(1);
  EXPECT_NO_THROW(Draw(page));
}

}  // namespace
