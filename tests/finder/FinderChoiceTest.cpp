/// The calibrator's choice between the searches.
#include <gtest/gtest.h>

#include <atomic>
#include <opencv2/imgproc.hpp>
#include <thread>

#include "finder/FinderChoice.h"
#include "finder/FinderScenes.h"
#include "finder/PartialScenes.h"
#include "finder/RobustFinder.h"
#include "finder/StandardFinder.h"
#include "model/Codes.h"
#include "unit/Collection.h"
#include "unit/Scopes.h"

using namespace velmora;

namespace {

using Centres = std::vector<cv::Point2d>;

cv::Mat HardImage() {
  cv::Mat image;
  for (int number = 0;; ++number) {
    image = unit::RandomFinderFrame(number).image;
    Centres points;
    if (!FindGridStandard(image, unit::GRID, points) && FindGridRobust(image, unit::GRID, points)) {
      return image;
    }
  }
}

TEST(FinderChoice, IsTheStandardSearchAtFirst) {
  const auto calibrator = unit::MakeCalibrator();
  EXPECT_EQ(calibrator->GetFinder(), Calibrator::FINDER_STANDARD);
  cv::Mat frame = unit::ImageWithGrid();
  Centres expected;
  ASSERT_TRUE(FindGridStandard(frame, unit::GRID, expected));
  Centres points;
  EXPECT_TRUE(calibrator->DetectPoints(frame, points, false));
  EXPECT_EQ(points, expected);
  EXPECT_EQ(calibrator->WhyNotFound(), "");
}

TEST(FinderChoice, RobustFindsWhatTheStandardSearchDoesNot) {
  const cv::Mat image = HardImage();
  const auto calibrator = unit::MakeCalibrator();
  Centres points;
  cv::Mat frame = image.clone();
  EXPECT_FALSE(calibrator->DetectPoints(frame, points, false));
  calibrator->SetFinder(Calibrator::FINDER_ROBUST);
  frame = image.clone();
  EXPECT_TRUE(calibrator->DetectPoints(frame, points, false));
  calibrator->SetFinder(Calibrator::FINDER_STANDARD);
  frame = image.clone();
  EXPECT_FALSE(calibrator->DetectPoints(frame, points, false));
}

TEST(FinderChoice, RobustSaysWhyItFoundNothingUntilItFindsTheGrid) {
  const auto calibrator = unit::MakeCalibrator();
  calibrator->SetFinder(Calibrator::FINDER_ROBUST);
  Centres points;
  cv::Mat frame = cv::Mat::zeros(unit::FRAME, CV_8UC3);
  EXPECT_FALSE(calibrator->DetectPoints(frame, points, false));
  EXPECT_EQ(calibrator->WhyNotFound(), "too few circles in sight");
  frame = unit::ImageWithGrid();
  EXPECT_TRUE(calibrator->DetectPoints(frame, points, false));
  EXPECT_EQ(calibrator->WhyNotFound(), "");
}

TEST(FinderChoice, ReachesBothFramesOfAPair) {
  const cv::Mat image = HardImage();
  const auto calibrator = unit::MakeCalibrator(Calibrator::STEREO);
  Centres left;
  Centres right;
  cv::Mat leftFrame = image.clone();
  cv::Mat rightFrame = image.clone();
  EXPECT_FALSE(calibrator->DetectStereoPoints(leftFrame, rightFrame, left, right, false));
  calibrator->SetFinder(Calibrator::FINDER_ROBUST);
  leftFrame = image.clone();
  rightFrame = image.clone();
  EXPECT_TRUE(calibrator->DetectStereoPoints(leftFrame, rightFrame, left, right, false));
  EXPECT_EQ(left, right);
  rightFrame.setTo(0);
  EXPECT_FALSE(calibrator->DetectStereoPoints(leftFrame, rightFrame, left, right, false));
  EXPECT_EQ(calibrator->WhyNotFound(), "too few circles in sight");
}

TEST(FinderChoice, ReachesPushedFrames) {
  const auto calibrator = unit::MakeCalibrator();
  calibrator->SetFinder(Calibrator::FINDER_ROBUST);
  cv::Mat frame = HardImage();
  calibrator->NextFrameRGB(frame, 0, nullptr, false);
  EXPECT_TRUE(calibrator->IsDetected());
}

TEST(FinderChoice, SizesWithoutOneOrderAreSearchedByTheStandardSearch) {
  const cv::Size grid(4, 10);
  const cv::Mat image = unit::FlatGrid(grid);
  Calibrator calibrator(grid, 0.02F, Calibrator::MONOCULAR, image.cols, image.rows);
  calibrator.SetFinder(Calibrator::FINDER_ROBUST);
  cv::Mat frame = image.clone();
  Centres points;
  EXPECT_TRUE(calibrator.DetectPoints(frame, points, false));
  EXPECT_EQ(points.size(), 40U);
}

TEST(FinderChoice, OfAnotherNumberIsRefusedWithAnErrorLine) {
  const auto calibrator = unit::MakeCalibrator();
  calibrator->SetFinder(Calibrator::FINDER_ROBUST);
  const std::string printed = unit::PrintedBy([&] { calibrator->SetFinder(7); });
  EXPECT_NE(printed.find("There is no finder 7."), std::string::npos) << printed;
  EXPECT_EQ(calibrator->GetFinder(), Calibrator::FINDER_ROBUST);
}

TEST(FinderChoice, CanBeSwitchedWhileFramesAreSearched) {
  const auto calibrator = unit::MakeCalibrator();
  const cv::Mat image = unit::ImageWithGrid();
  std::atomic<bool> done{false};
  std::thread searches([&] {
    for (int k = 0; k < 20; ++k) {
      cv::Mat frame = image.clone();
      Centres points;
      EXPECT_TRUE(calibrator->DetectPoints(frame, points, false));
    }
    done = true;
  });
  for (int k = 0; !done; ++k) {
    calibrator->SetFinder(k % 2 == 0 ? Calibrator::FINDER_ROBUST : Calibrator::FINDER_STANDARD);
    calibrator->WhyNotFound();
    std::this_thread::yield();
  }
  searches.join();
}

/// A frame with a part of the grid.
cv::Mat PartImage() {
  return unit::RandomPartialFrame(unit::Lack::OneRow, 1).image;
}

TEST(FinderChoice, AnswersWithPartsOnlyWhenTheyAreAskedForTwice) {
  FinderChoice choice;
  EXPECT_FALSE(choice.GetPartial());
  choice.Set(FINDER_ROBUST);
  const cv::Mat image = PartImage();
  Centres points;
  GridDetails details;
  const PartialGrid& part = details.part;
  details.part.points.resize(3);
  EXPECT_FALSE(choice.Find(image, unit::GRID, points, details));
  EXPECT_FALSE(part.Found()) << "switched off";
  choice.SetPartial(true);
  EXPECT_TRUE(choice.GetPartial());
  EXPECT_FALSE(choice.Find(image, unit::GRID, points, details)) << "no whole one";
  EXPECT_EQ(part.Seen(), 40);
  EXPECT_TRUE(points.empty());
  EXPECT_EQ(choice.Fault(), GridFault::PartOutside);
  EXPECT_FALSE(choice.Find(image, unit::GRID, points)) << "nor for those that ask for whole ones";
  EXPECT_TRUE(points.empty());
}

TEST(FinderChoice, HasNoPartsFromTheStandardSearch) {
  FinderChoice choice;
  choice.SetPartial(true);
  Centres points;
  GridDetails details;
  EXPECT_FALSE(choice.Find(PartImage(), unit::GRID, points, details));
  EXPECT_FALSE(details.part.Found());
}

TEST(FinderChoice, GivesTheRadiiOfTheDiscsThatTheRobustSearchFound) {
  FinderChoice choice;
  const cv::Mat image = unit::ImageWithGrid();
  Centres points;
  GridDetails details;
  details.radii.resize(3);
  EXPECT_TRUE(choice.Find(image, unit::GRID, points, details));
  EXPECT_TRUE(details.radii.empty()) << "the standard search knows none";
  choice.Set(FINDER_ROBUST);
  EXPECT_TRUE(choice.Find(image, unit::GRID, points, details));
  const GridFinding finding = SearchGridRobust(image, unit::GRID);
  EXPECT_EQ(points, finding.centres);
  EXPECT_EQ(details.radii, finding.radii);
  Centres right;
  GridDetails ofRight;
  EXPECT_TRUE(choice.FindBoth(image, image, unit::GRID, points, right, details, ofRight));
  EXPECT_EQ(details.radii, finding.radii);
  EXPECT_EQ(ofRight.radii, finding.radii);
  EXPECT_FALSE(choice.Find(cv::Mat::zeros(unit::FRAME, CV_8UC1), unit::GRID, points, details));
  EXPECT_TRUE(details.radii.empty());
}

TEST(FinderChoice, AnswersWithThePartOfEitherFrameOfAPair) {
  FinderChoice choice;
  choice.Set(FINDER_ROBUST);
  choice.SetPartial(true);
  const cv::Mat whole = unit::ImageWithGrid();
  Centres left;
  Centres right;
  GridDetails ofLeft;
  GridDetails ofRight;
  const PartialGrid& leftPart = ofLeft.part;
  const PartialGrid& rightPart = ofRight.part;
  EXPECT_FALSE(choice.FindBoth(whole, PartImage(), unit::GRID, left, right, ofLeft, ofRight));
  EXPECT_EQ(left.size(), 44U);
  EXPECT_FALSE(leftPart.Found());
  EXPECT_TRUE(right.empty());
  EXPECT_EQ(rightPart.Seen(), 40);
  choice.SetPartial(false);
  EXPECT_FALSE(choice.FindBoth(PartImage(), whole, unit::GRID, left, right, ofLeft, ofRight));
  EXPECT_FALSE(leftPart.Found() || rightPart.Found());
}

TEST(FinderChoice, OfPartsNeverReachesACalibratorsOwnDetection) {
  const auto calibrator = unit::MakeCalibrator();
  calibrator->SetFinder(Calibrator::FINDER_ROBUST);
  cv::Mat frame = PartImage();
  Centres points;
  EXPECT_FALSE(calibrator->DetectPoints(frame, points, false));
  EXPECT_TRUE(points.empty());
  EXPECT_FALSE(calibrator->IsDetected());
  EXPECT_EQ(calibrator->WhyNotFound(), "part of the grid is outside the picture");
}

TEST(FinderChoice, FollowsTheGridThroughTheFramesOfBothCamerasToTheSameCentres) {
  FinderChoice choice;
  choice.Set(FINDER_ROBUST);
  const cv::Mat still = unit::ImageWithGrid();
  GridDetails ofLeft;
  GridDetails ofRight;
  for (int frame = 0; frame < 4; ++frame) {
    cv::Mat moved;
    const cv::Matx23d shift(1, 0, 2.0 * frame, 0, 1, -1.5 * frame);
    cv::warpAffine(still, moved, shift, still.size(), cv::INTER_LINEAR, cv::BORDER_REPLICATE);
    Centres left;
    Centres right;
    ASSERT_TRUE(choice.FindBoth(moved, still, unit::GRID, left, right, ofLeft, ofRight));
    Centres expected;
    ASSERT_TRUE(FindGridRobust(moved, unit::GRID, expected));
    for (size_t k = 0; k < expected.size(); ++k) EXPECT_LT(cv::norm(left[k] - expected[k]), 1e-3);
    ASSERT_TRUE(FindGridRobust(still, unit::GRID, expected));
    for (size_t k = 0; k < expected.size(); ++k) EXPECT_LT(cv::norm(right[k] - expected[k]), 1e-3);
    // The radii that later measurements begin with come along, wherever the grid was looked for.
    EXPECT_EQ(ofLeft.radii.size(), left.size());
    EXPECT_EQ(ofRight.radii.size(), right.size());
  }
}

TEST(FinderChoice, CanBeAskedForFramesOfASequenceFromSeveralThreads) {
  FinderChoice choice;
  choice.Set(FINDER_ROBUST);
  const cv::Mat image = unit::ImageWithGrid();
  Centres expected;
  ASSERT_TRUE(FindGridRobust(image, unit::GRID, expected));
  std::vector<std::thread> threads;
  for (int number = 0; number < 3; ++number) {
    threads.emplace_back([&] {
      for (int k = 0; k < 10; ++k) {
        Centres points;
        GridDetails details;
        EXPECT_TRUE(choice.Find(image, unit::GRID, points, details));
        ASSERT_EQ(points.size(), expected.size());
        for (size_t disc = 0; disc < points.size(); ++disc) {
          EXPECT_LT(cv::norm(points[disc] - expected[disc]), 1e-3);
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
