/// The guided calibration with a scripted source and screen.
#include <gtest/gtest.h>

#include <filesystem>
#include <opencv2/imgproc.hpp>

#include "GuidedRuns.h"
#include "Matchers.h"

using namespace guided_runs;  // NOLINT

namespace {

TEST_F(GuidedLoopRun, TakesEachPoseAndEndsWithTheResult) {
  options_.strict = true;  // of no effect on a good result
  ASSERT_EQ(Run(), common::SUCCESS) << err_.str();
  EXPECT_EQ(screen_.closed, 1);
  EXPECT_TRUE(Printed("Bring the sheet to the drawn one, 6 times.")) << out_.str();
  for (int pose = 1; pose <= 6; ++pose) {
    const std::string number = std::to_string(pose);
    EXPECT_TRUE(Printed("View " + number + " taken: pose " + number + ".\n")) << out_.str();
  }
  EXPECT_EQ(tones_, 6);
  EXPECT_TRUE(Printed("6 of 6 images used\n")) << out_.str();
  EXPECT_TRUE(Printed("\nWritten:\n  " + options_.output + ".json\n  " + options_.output +
                      "_verdict.json\n  " + options_.output + "_uncertainty.png\n"))
      << out_.str();
  EXPECT_TRUE(Printed("\nVerdict: ")) << out_.str();
  EXPECT_EQ(err_.str(), "");
  EXPECT_EQ(Verdict().at("views"), 6);
  JSON result;
  ASSERT_TRUE(result.load(options_.output + ".json"));
  EXPECT_LT(result.readDouble("error"), 0.2);
}

TEST_F(GuidedLoopRun, KeepsResultVerdictAndMapBesideTheViewsToo) {
  ASSERT_EQ(Run(), common::SUCCESS) << err_.str();
  EXPECT_EQ(UsedViews().size(), 6U);
  for (const char* name : {"calibration.json", "calibration_verdict.json", "calibration_uncertainty.png"})
    EXPECT_TRUE(std::filesystem::exists(session_->PathFor(name))) << name;
  EXPECT_SAME_MAT(session_->LoadImage(1, 0), pictures_->front());
}

TEST_F(GuidedLoopRun, TakesNoViewOfASheetThatIsNotHeldStill) {
  feed_.pictures.clear();
  for (int i = 0; i < 60; ++i) {
    cv::Mat shaken;
    const cv::Matx23d shift(1.0, 0.0, i % 2 == 0 ? 6.0 : -6.0, 0.0, 1.0, 0.0);
    cv::warpAffine(pictures_->front(), shaken, shift, FRAME, cv::INTER_LINEAR, cv::BORDER_REPLICATE);
    feed_.pictures.push_back(shaken);
  }
  EXPECT_EQ(Run(), common::NO_RESULT);
  EXPECT_EQ(tones_, 0);
  EXPECT_EQ(err_.str(), "ERROR: the source ended after 0 views: at least five are needed.\n");
}

TEST_F(GuidedLoopRun, TakesWhatIsInViewByHandOnceAndSaysWhyNot) {
  // A picture that no pose asks for.
  cv::Mat aside;
  const cv::Matx23d shift(1.0, 0.0, 23.0, 0.0, 1.0, 12.0);
  cv::warpAffine(pictures_->back(), aside, shift, FRAME, cv::INTER_NEAREST, cv::BORDER_REPLICATE);
  const std::deque<cv::Mat> poses = feed_.pictures;
  feed_.pictures.clear();
  feed_.Hold(aside);
  feed_.Hold(cv::Mat(FRAME, CV_8UC3, cv::Scalar::all(120)));
  feed_.pictures.insert(feed_.pictures.end(), poses.begin(), poses.end());
  screen_.Press(' ', [this] { return feed_.turns >= STILL - 2; });
  screen_.Press(' ', [this] { return feed_.turns >= STILL - 1; });
  screen_.Press(' ', [this] { return feed_.turns >= STILL + 4; });
  ASSERT_EQ(Run(), common::SUCCESS) << err_.str() << out_.str();
  EXPECT_TRUE(Printed("View 1 taken: by hand 1.\nNot taken: it is the same view as one before.\nNot taken: "))
      << out_.str();
  EXPECT_TRUE(Printed("View 7 taken: pose 6.\n")) << out_.str();
  EXPECT_EQ(UsedViews().size(), 7U);
}

TEST_F(GuidedLoopRun, TakesTheLastViewBackAndAsksForItsPoseAgain) {
  const std::deque<cv::Mat> all = feed_.pictures;
  feed_.pictures.resize(2 * STILL);
  feed_.Hold((*pictures_)[1]);
  feed_.pictures.insert(feed_.pictures.end(), all.begin() + 2 * STILL, all.end());
  screen_.Press('u', Once("View 2 taken"));
  ASSERT_EQ(Run(), common::SUCCESS) << err_.str() << out_.str();
  EXPECT_TRUE(Printed("View 2 taken: pose 2.\nView 2 taken back.\nView 2 taken: pose 2.\nView 3"))
      << out_.str();
  EXPECT_EQ(UsedViews().size(), 6U);
  EXPECT_EQ(session_->Snapshots().size(), 7U) << "what was taken back can be brought back";
}

TEST_F(GuidedLoopRun, BeginsAgainOnRAndTakesThatBackOnU) {
  screen_.Press('r', Once("View 3 taken"));
  screen_.Press('u', [] { return true; });
  ASSERT_EQ(Run(), common::SUCCESS) << err_.str() << out_.str();
  EXPECT_TRUE(
      Printed("Starting again at the first pose.\nAs it was before: 3 views.\nView 4 taken: pose 4.\n"))
      << out_.str();
  EXPECT_EQ(UsedViews().size(), 6U);
}

TEST_F(GuidedLoopRun, ComesBackToAPoseThatWasSkipped) {
  const std::deque<cv::Mat> all = feed_.pictures;
  feed_.pictures.erase(feed_.pictures.begin(), feed_.pictures.begin() + STILL);
  feed_.Hold(pictures_->front());
  screen_.Press('s', [this] { return feed_.turns >= 1; });
  ASSERT_EQ(Run(), common::SUCCESS) << err_.str() << out_.str();
  EXPECT_TRUE(Printed("View 1 taken: pose 2.\n")) << out_.str();
  EXPECT_TRUE(Printed("View 6 taken: pose 1.\n")) << out_.str();
}

TEST_F(GuidedLoopRun, ComputesWithWhatIsThereOnEnterAndGoesOn) {
  options_.endsByItself = false;
  screen_.Press(13, Once("View 4 taken"));  // too few
  screen_.Press(13, Once("View 5 taken"));
  screen_.Press(13, Once("The views are in"));
  screen_.Press('q', [this] {
    const std::string text = out_.str();
    return text.rfind("The views are in") != text.find("The views are in");
  });
  ASSERT_EQ(Run(), common::SUCCESS) << err_.str() << out_.str();
  EXPECT_FALSE(Printed("Computing from 4 views")) << out_.str();
  EXPECT_TRUE(Printed("Computing from 5 views ...\n")) << out_.str();
  EXPECT_TRUE(Printed("View 6 taken: pose 6.\nComputing from 6 views ...\n")) << out_.str();
  EXPECT_EQ(Verdict().at("views"), 6);
}

TEST_F(GuidedLoopRun, StaysWithTheResultUntilItIsEnded) {
  options_.endsByItself = false;
  cv::Mat first;
  int turns = 0;
  screen_.Press('x', Once("The views are in"));
  screen_.Press('q', [&] {
    if (turns++ == 0) first = screen_.last.clone();
    return turns > 20;
  });
  ASSERT_EQ(Run(), common::SUCCESS) << err_.str();
  EXPECT_SAME_MAT(screen_.last, first);
  EXPECT_FALSE(Printed("Ended with")) << out_.str();
}

/// The share of the picture's pixels whose channels are all within the limits.
double ShareOf(const cv::Mat& picture, const cv::Scalar& least, const cv::Scalar& most) {
  if (picture.empty()) return 0.0;
  cv::Mat within;
  cv::inRange(picture, least, most, within);
  return static_cast<double>(cv::countNonZero(within)) / static_cast<double>(within.total());
}

TEST_F(GuidedLoopRun, ShowsTheMapOnceItIsKnown) {
  options_.endsByItself = false;
  options_.sourceEnded = [] { return false; };
  feed_.pictures.resize(5 * STILL);
  const auto isMap = [this] {
    return ShareOf(screen_.last, cv::Scalar::all(255), cv::Scalar::all(255)) > 0.02;
  };
  bool before = true;
  screen_.Press('m', [this] { return feed_.turns > 1; });
  screen_.Press('m', [&] {
    before = isMap();
    return feed_.turns > 4;
  });
  screen_.Press('q', isMap);
  EXPECT_EQ(Run(), common::NO_RESULT);
  EXPECT_FALSE(before) << "there is nothing to show yet";
  EXPECT_TRUE(isMap());
}

TEST_F(GuidedLoopRun, ShowsTheCameraWithoutDistortionOnceItIsKnown) {
  options_.endsByItself = false;
  options_.sourceEnded = [] { return false; };
  feed_.pictures.resize(5 * STILL);
  // What is found and what is asked for are drawn on the image as it is alone, both in colours.
  const auto colours = [this] {
    cv::Mat hsv;
    cv::cvtColor(screen_.last, hsv, cv::COLOR_BGR2HSV);
    return ShareOf(hsv, {0, 120, 120}, {180, 255, 255});
  };
  double before = 0.0;
  const auto isKnown = [this] {
    return ShareOf(screen_.last, cv::Scalar::all(255), cv::Scalar::all(255)) > 0.02;
  };
  screen_.Press('m', Once("View 5 taken"));
  screen_.Press('m', [] { return true; });
  screen_.Press('m', isKnown);  // the map has been there, and goes
  screen_.Press('v', [&] {
    before = colours();
    return !isKnown();
  });
  screen_.Press('q', [&] { return colours() < 0.8 * before; });
  EXPECT_EQ(Run(), common::NO_RESULT);
  EXPECT_GT(before, 0.0);
}

TEST_F(GuidedLoopRun, GoesOnWhereItStopped) {
  const std::deque<cv::Mat> all = feed_.pictures;
  feed_.pictures.resize(3 * STILL);
  screen_.Press('q', Once("View 3 taken"));
  EXPECT_EQ(Run(), common::NO_RESULT);
  EXPECT_TRUE(Printed("Ended with 3 views.\nThey are kept. To go on: velmora-guided --session '"))
      << out_.str();
  StartAgain();
  feed_.pictures.assign(all.begin() + 3 * STILL, all.end());
  ASSERT_EQ(Run(), common::SUCCESS) << err_.str() << out_.str();
  EXPECT_TRUE(Printed("Going on with the session in ")) << out_.str();
  EXPECT_TRUE(Printed("View 4 taken: pose 4.\n")) << out_.str();
  const cv::Mat resumed = Camera();

  session_ = nullptr;
  std::filesystem::remove_all(arguments_.session);
  arguments_.session.clear();
  options_.clock = [frame = 0]() mutable { return frame++ / 30.0; };
  feed_.pictures = all;
  ASSERT_EQ(Run(), common::SUCCESS) << err_.str();
  EXPECT_SAME_MAT(resumed, Camera());
}

TEST_F(GuidedLoopRun, TakesAViewOfAnEarlierTimeBack) {
  const std::deque<cv::Mat> all = feed_.pictures;
  feed_.pictures.resize(3 * STILL);
  screen_.Press('q', Once("View 3 taken"));
  EXPECT_EQ(Run(), common::NO_RESULT);
  StartAgain();
  feed_.pictures.assign(all.begin() + 2 * STILL, all.end());
  screen_.Press('u', [] { return true; });
  ASSERT_EQ(Run(), common::SUCCESS) << err_.str() << out_.str();
  EXPECT_TRUE(Printed("View 3 taken back.\nView 3 taken: pose 3.\n")) << out_.str();
}

TEST_F(GuidedLoopRun, EndsInOrderWhenItIsAskedTo) {
  options_.interrupted = Once("View 2 taken");
  EXPECT_EQ(Run(), common::NO_RESULT);
  EXPECT_TRUE(Printed("Ended with 2 views.\nThey are kept.")) << out_.str();
  EXPECT_EQ(UsedViews().size(), 2U);
  EXPECT_EQ(screen_.closed, 1);
}

TEST_F(GuidedLoopRun, EndsWhenItsWindowIsClosed) {
  screen_.shut = Once("View 2 taken");
  EXPECT_EQ(Run(), common::NO_RESULT);
  EXPECT_TRUE(Printed("Ended with 2 views.")) << out_.str();
}

TEST_F(GuidedLoopRun, SaysInThePictureWhatIsWrongWithTheSource) {
  options_.endsByItself = false;
  feed_.pictures.resize(1);
  cv::Mat live;
  cv::Mat ended;
  options_.remark = [this] {
    return feed_.pictures.empty() && feed_.turns > 3 ? std::string("The recording has ended.")
                                                     : std::string();
  };
  screen_.Press(0, [&] {
    live = screen_.last.clone();
    return feed_.turns > 1;
  });
  screen_.Press('q', [&] {
    ended = screen_.last.clone();
    return feed_.turns > 6;
  });
  EXPECT_EQ(Run(), common::NO_RESULT);
  ASSERT_EQ(live.size(), ended.size());
  cv::Mat apart;
  cv::absdiff(live, ended, apart);
  EXPECT_GT(cv::mean(apart)[0], 10.0);
}

TEST_F(GuidedLoopRun, GivesAWorthlessResultAStatusOfItsOwnOnDemand) {
  world::Scene scene;
  scene.camera = world::CameraFromFieldOfView(FRAME, 62.0);
  scene.noise = 2.0;
  world::Renderer renderer(scene);
  std::vector<std::vector<cv::Point2d>> centres;
  feed_.pictures.clear();
  for (int i = 0; i < 6; ++i) {
    world::Appearance facing;
    facing.span = 0.45 + 0.09 * i;
    world::Pose pose;
    ASSERT_TRUE(world::PlaceGrid(scene.camera, scene.sheet, facing, 10.0, pose));
    centres.push_back(world::TrueCentres(scene.camera.lens, scene.sheet, pose));
    feed_.Hold(renderer.Render(pose, centres.size()));
  }
  poses::ModelOf(centres, FRAME).save(options_.poses);
  options_.strict = true;
  EXPECT_EQ(Run(), common::WORTHLESS) << err_.str() << out_.str();
  EXPECT_TRUE(Printed("Verdict: worthless")) << out_.str();
  EXPECT_TRUE(std::filesystem::exists(options_.output + ".json"));
}

TEST_F(GuidedLoopRun, TellsHowFarAVideoGot) {
  feed_.pictures.resize(4 * STILL);
  EXPECT_EQ(Run(), common::NO_RESULT);
  EXPECT_EQ(err_.str(), "ERROR: the source ended after 4 views: at least five are needed.\n");
  EXPECT_FALSE(std::filesystem::exists(options_.output + ".json"));
}

TEST_F(GuidedLoopRun, ComputesWithWhatIsThereWhenTheVideoEnds) {
  feed_.pictures.resize(5 * STILL);
  ASSERT_EQ(Run(), common::SUCCESS) << err_.str();
  EXPECT_EQ(Verdict().at("views"), 5);
}

TEST_F(GuidedLoopRun, NeedsPosesThatCanBeUsed) {
  options_.poses = folder_.File("missing.json");
  EXPECT_THROW(Run(), std::runtime_error);
  EXPECT_TRUE(screen_.last.empty());
}

TEST_F(GuidedLoopRun, ReportsASourceWithoutFrames) {
  feed_.pictures.clear();
  feed_.broken = true;
  EXPECT_EQ(Run(), common::UNUSABLE);
  EXPECT_EQ(err_.str(), "ERROR: cannot read video 'a.avi'.\n");
}

TEST_F(GuidedLoopRun, ReportsAResultThatCannotBeWrittenAndLosesNothing) {
  OpenSession();
  options_.output = "/nowhere/camera";
  EXPECT_EQ(Run(), common::UNUSABLE);
  EXPECT_EQ(err_.str(), "ERROR: cannot write '/nowhere/camera.json'.\n");
  EXPECT_TRUE(Printed("They are kept. To go on: ")) << out_.str();
  EXPECT_EQ(UsedViews().size(), 6U);
}

TEST_F(GuidedLoopRun, ReportsAPictureThatCannotBeWritten) {
  const std::string picture = options_.output + "_uncertainty.png";
  std::filesystem::create_directory(picture);
  EXPECT_EQ(Run(), common::UNUSABLE);
  EXPECT_EQ(err_.str(), "ERROR: cannot write '" + picture + "'.\n");
}

}  // namespace
