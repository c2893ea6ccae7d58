/// Whether cameras that stayed as they were pass, and those that moved fail.
#include "velmora/ResultCheck.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "quality/CheckScenes.h"

using namespace velmora;
using Answer = ResultCheck::Answer;
using unit::Calibrated;

namespace {

/// Of rendered images of usual noise it is a sixth of that.
constexpr double NOISE = 0.03;

/// Held by hand: bent in another way in each image.
unit::ShapedSheet HeldSheet() {
  unit::ShapedSheet sheet;
  sheet.changing = 0.0002;
  return sheet;
}

Calibrated CalibratedCamera(std::uint64_t seed, const unit::ShapedSheet& sheet = HeldSheet()) {
  return unit::CalibratedFrom(unit::ViewsOf(sheet, unit::DistortedCamera(), 15, NOISE, 1000 + seed));
}

/// Later images of the camera, which may have moved.
unit::PointLists Later(std::uint64_t seed, double focal = 0.0, const cv::Point2d& centre = {}, int count = 5,
                       const unit::ShapedSheet& sheet = HeldSheet()) {
  return unit::ViewsOf(sheet, unit::MovedCamera(unit::DistortedCamera(), focal, centre), count, NOISE,
                       50000 + seed);
}

ResultCheck Checked(const Calibrated& camera, const unit::PointLists& views,
                    const CheckOptions& options = unit::GridOptions()) {
  return CheckResult(camera.result, camera.verdict, unit::CheckImages(views), options);
}

bool StartsWith(const std::string& text, const std::string& words) {
  return text.rfind(words, 0) == 0;
}

bool Has(const std::string& text, const std::string& words) {
  return text.find(words) != std::string::npos;
}

/// Twenty calibrations, each with five lots of five images afterwards: how many of the answers are that one.
int CountOf(Answer answer, double focal, const cv::Point2d& centre) {
  int count = 0;
  for (std::uint64_t camera = 0; camera < 20; ++camera) {
    const Calibrated calibrated = CalibratedCamera(camera);
    for (std::uint64_t lot = 0; lot < 5; ++lot)
      count += Checked(calibrated, Later(5 * camera + lot, focal, centre)).answer == answer ? 1 : 0;
  }
  return count;
}

TEST(ResultCheck, PassesCamerasThatStayedAsTheyWere) {
  EXPECT_GE(CountOf(Answer::Calibrated, 0.0, {}), 97);
}

TEST(ResultCheck, FailsAFocalLengthThatGrewByHalfAPercent) {
  EXPECT_GE(CountOf(Answer::NotCalibrated, 0.005, {}), 97);
}

TEST(ResultCheck, FailsAPrincipalPointThatMovedByThreePixels) {
  EXPECT_GE(CountOf(Answer::NotCalibrated, 0.0, {-1.8, 2.4}), 97);
}

TEST(ResultCheck, TellsWhatMovedAndByHowMuch) {
  const Calibrated camera = CalibratedCamera(1);
  const ResultCheck focal = Checked(camera, Later(1, 0.01, {}, 8));
  EXPECT_NEAR(focal.focalChange, 0.01, 3.0 * focal.focalDeviation);
  EXPECT_LT(focal.focalDeviation, 0.002);
  EXPECT_TRUE(StartsWith(focal.sentence, "No longer calibrated: the camera has moved off by about "))
      << focal.sentence;
  EXPECT_TRUE(Has(focal.sentence, "focal length +")) << focal.sentence;
  EXPECT_TRUE(Has(focal.advice, "focus and zoom")) << focal.advice;
  EXPECT_GT(focal.evidence, 1.0);
  EXPECT_GT(focal.rms, focal.noise);
  const ResultCheck centre = Checked(camera, Later(2, 0.0, {6.0, -4.0}, 8));
  EXPECT_NEAR(centre.principalPointChange.x, 6.0, 3.0 * centre.principalPointDeviation.x);
  EXPECT_NEAR(centre.principalPointChange.y, -4.0, 3.0 * centre.principalPointDeviation.y);
  EXPECT_TRUE(Has(centre.sentence, "principal point +")) << centre.sentence;
  EXPECT_TRUE(Has(centre.advice, "lens sits tight")) << centre.advice;
}

/// What the shift is by definition: of the projections of both lenses, after the best rotation.
TEST(ResultCheck, MeasuresHowFarProjectionsMoved) {
  const ResultCheck check = Checked(CalibratedCamera(3), Later(3, 0.01, {}, 12));
  const double halfDiagonal = 0.5 * std::hypot(unit::FRAME.width, unit::FRAME.height);
  EXPECT_NEAR(check.shift, 0.01 * 0.45 * halfDiagonal, 0.01 * 0.15 * halfDiagonal);
  EXPECT_LT(check.shiftDeviation, 0.3 * check.shift);
}

TEST(ResultCheck, DescribesEachImage) {
  unit::PointLists views = Later(4);
  views[2][7] += cv::Point2d(6.0, -5.0);
  const ResultCheck check = Checked(CalibratedCamera(4), views);
  ASSERT_EQ(check.images.size(), 5U);
  for (const ResultCheck::Image& image : check.images) {
    EXPECT_TRUE(image.used);
    EXPECT_GT(image.rms, 0.0);
    EXPECT_LT(image.rms, 0.2);
    EXPECT_GE(image.largest, image.rms);
    EXPECT_GT(image.tvec[2], 0.0);
    EXPECT_LT(image.tilt, 60.0);
  }
  EXPECT_EQ(check.images[2].largestPoint, 7);
  EXPECT_GT(check.images[2].largest, 5.0);
  EXPECT_EQ(check.images[2].outliers, 1);
  EXPECT_EQ(check.answer, Answer::Calibrated) << check.sentence;
  EXPECT_GT(check.coverage, 0.3);
}

TEST(ResultCheck, LeavesCirclesOutThatAreNotSeen) {
  const Calibrated camera = CalibratedCamera(5);
  std::vector<CheckImage> images = unit::CheckImages(Later(5));
  for (CheckImage& image : images) {
    image.weights.assign(image.points.size(), 1.0);
    image.deviations.assign(image.points.size(), NOISE);
    for (const size_t hidden : {0U, 1U, 2U, 3U, 9U}) {
      image.weights[hidden] = 0.0;
      image.points[hidden] = {std::numeric_limits<double>::quiet_NaN(), -1e9};
      image.deviations[hidden] = std::numeric_limits<double>::quiet_NaN();
    }
    image.points[20] += cv::Point2d(8.0, 0.0);
  }
  const ResultCheck check = CheckResult(camera.result, camera.verdict, images, unit::GridOptions());
  EXPECT_EQ(check.answer, Answer::Calibrated) << check.sentence;
  EXPECT_EQ(check.images.front().largestPoint, 20) << "the number on the grid, not among those that are seen";
}

TEST(ResultCheck, CannotTellFromFrontalImages) {
  unit::PointLists views;
  cv::RNG random(1);
  for (const world::Pose& pose : world::FrontalViews(unit::DistortedCamera(), 5, unit::PrintedGrid())) {
    views.push_back(world::TrueCentres(unit::DistortedCamera().lens, unit::PrintedGrid(), pose));
    for (cv::Point2d& point : views.back())
      point += cv::Point2d(random.gaussian(NOISE), random.gaussian(NOISE));
  }
  const ResultCheck check = Checked(CalibratedCamera(6), views);
  EXPECT_EQ(check.answer, Answer::CannotTell) << check.sentence;
  EXPECT_FALSE(check.Passed());
  EXPECT_TRUE(StartsWith(check.sentence, "Cannot tell: ")) << check.sentence;
  EXPECT_TRUE(Has(check.advice, "Tilt the sheet")) << check.advice;
}

TEST(ResultCheck, CannotTellFromOneImageWithMuchNoise) {
  const unit::PointLists view = unit::ViewsOf({}, unit::DistortedCamera(), 1, 0.3, 9);
  const ResultCheck check = Checked(CalibratedCamera(7), view);
  EXPECT_EQ(check.answer, Answer::CannotTell) << check.sentence;
  EXPECT_FALSE(check.advice.empty());
}

TEST(ResultCheck, AllowsAsManyPixelsAsAreAskedFor) {
  const Calibrated camera = CalibratedCamera(8);
  const unit::PointLists views = Later(8, 0.008, {}, 8);
  CheckOptions options = unit::GridOptions();
  EXPECT_EQ(Checked(camera, views, options).answer, Answer::NotCalibrated);
  options.tolerance = 5.0;
  const ResultCheck allowed = Checked(camera, views, options);
  EXPECT_EQ(allowed.answer, Answer::Calibrated) << allowed.sentence;
  EXPECT_TRUE(Has(allowed.sentence, "no more than the 5.0 px that are allowed")) << allowed.sentence;
  // What such images do not show.
  options.tolerance = 0.001;
  EXPECT_EQ(Checked(camera, Later(8), options).answer, Answer::CannotTell);
}

TEST(ResultCheck, TakesTheResultForAsSureAsTheImagesWhereNoVerdictIsGiven) {
  const Calibrated camera = CalibratedCamera(9);
  const auto same = unit::CheckImages(Later(9));
  const auto moved = unit::CheckImages(Later(9, 0.02));
  EXPECT_EQ(CheckResult(camera.result, {}, same, unit::GridOptions()).answer, Answer::Calibrated);
  EXPECT_EQ(CheckResult(camera.result, {}, moved, unit::GridOptions()).answer, Answer::NotCalibrated);
  // It knows less then.
  EXPECT_LT(CheckResult(camera.result, {}, moved, unit::GridOptions()).evidence,
            CheckResult(camera.result, camera.verdict, moved, unit::GridOptions()).evidence);
}

TEST(ResultCheck, CannotTellOfAResultThatIsWorthless) {
  Calibrated camera = CalibratedCamera(13);
  camera.verdict.grade = CalibrationVerdict::Grade::Worthless;
  const ResultCheck check = Checked(camera, Later(13, 0.02));
  EXPECT_EQ(check.answer, Answer::CannotTell);
  EXPECT_TRUE(Has(check.sentence, "worthless")) << check.sentence;
  EXPECT_TRUE(Has(check.advice, "Calibrate the camera again")) << check.advice;
}

TEST(ResultCheck, GoesByWhatTheVerdictSaysOfTheResultsOwnUncertainty) {
  Calibrated camera = CalibratedCamera(10);
  const unit::PointLists views = Later(10, 0.008);
  EXPECT_EQ(Checked(camera, views).answer, Answer::NotCalibrated);
  camera.verdict.covariance *= 400.0;
  camera.verdict.jackknifeCovariance *= 400.0;
  EXPECT_NE(Checked(camera, views).answer, Answer::NotCalibrated);
}

unit::ShapedSheet BentSheet() {
  unit::ShapedSheet sheet;
  sheet.bend = {0.0005, -0.0003, 0.0012};
  sheet.changing = 0.0001;
  sheet.stretch = 0.002;
  sheet.misprint = 0.0001;
  sheet.print = 3;
  return sheet;
}

TEST(ResultCheck, AllowsForTheSheetThatTheVerdictMeasured) {
  int passed = 0;
  int failed = 0;
  for (std::uint64_t seed = 0; seed < 20; ++seed) {
    const Calibrated camera = CalibratedCamera(seed, BentSheet());
    ASSERT_FALSE(camera.verdict.sheet.points.empty());
    passed += Checked(camera, Later(seed, 0.0, {}, 5, BentSheet())).Passed() ? 1 : 0;
    failed += Checked(camera, Later(seed, 0.01, {}, 5, BentSheet())).answer == Answer::NotCalibrated ? 1 : 0;
  }
  EXPECT_GE(passed, 19);
  EXPECT_GE(failed, 19);
}

TEST(ResultCheck, AllowsForASheetThatIsAnotherThanThatOfTheCalibration) {
  unit::ShapedSheet bent;
  bent.bend = {0.001, 0.0005, -0.002};
  int passed = 0;
  for (std::uint64_t seed = 0; seed < 20; ++seed) {
    passed += Checked(CalibratedCamera(seed), Later(seed, 0.0, {}, 5, bent)).Passed() ? 1 : 0;
  }
  EXPECT_GE(passed, 19);
}

TEST(ResultCheck, ChecksFisheyesToo) {
  const cv::Matx33d K(244.0, 0.0, 322.0, 0.0, 244.5, 238.0, 0.0, 0.0, 1.0);
  const world::Camera camera{unit::FRAME, world::Lens(K, world::FisheyeCurve({0.02, -0.005, 0.001, 0.0}))};
  const auto views = [](const world::Camera& of, int count, std::uint64_t seed) {
    return unit::ViewsOf({}, of, count, NOISE, seed);
  };
  int passed = 0;
  int failed = 0;
  for (std::uint64_t seed = 0; seed < 10; ++seed) {
    const Calibrated calibrated = unit::CalibratedFrom(views(camera, 15, 300 + seed), 0, true);
    passed += Checked(calibrated, views(camera, 5, 400 + seed)).Passed() ? 1 : 0;
    const world::Camera moved = unit::MovedCamera(camera, 0.005, {});
    failed += Checked(calibrated, views(moved, 5, 400 + seed)).answer == Answer::NotCalibrated ? 1 : 0;
  }
  EXPECT_EQ(passed, 10);
  EXPECT_EQ(failed, 10);
}

TEST(ResultCheck, FailsAnotherCamera) {
  const ResultCheck check = Checked(CalibratedCamera(11), Later(11, 0.3, {20.0, -15.0}, 8));
  EXPECT_EQ(check.answer, Answer::NotCalibrated) << check.sentence;
  EXPECT_NEAR(check.focalChange, 0.3, 0.05);
}

std::string FaultOf(const CameraResult& result, const std::vector<CheckImage>& images,
                    const CheckOptions& options = unit::GridOptions()) {
  try {
    CheckResult(result, {}, images, options);
  } catch (const std::invalid_argument& fault) {
    return fault.what();
  }
  return "";
}

TEST(ResultCheck, RefusesWhatItCannotCheck) {
  const CameraResult result = CalibratedCamera(12).result;
  const auto images = unit::CheckImages(Later(12, 0.0, {}, 2));
  EXPECT_EQ(FaultOf(result, images), "");
  EXPECT_TRUE(Has(FaultOf({}, images), "camera matrix"));
  EXPECT_TRUE(Has(FaultOf(result, {}), "no images"));
  CheckOptions other = unit::GridOptions();
  other.grid = {3, 9};
  EXPECT_TRUE(Has(FaultOf(result, images, other), "44 points, the grid 27"));
  other = unit::GridOptions();
  other.unit = 0.0;
  EXPECT_TRUE(Has(FaultOf(result, images, other), "not positive"));
  other = unit::GridOptions();
  other.sheetPoints.resize(44);
  EXPECT_TRUE(Has(FaultOf(result, images, other), "another grid"));
  other = unit::GridOptions();
  other.tolerance = -1.0;
  EXPECT_TRUE(Has(FaultOf(result, images, other), "tolerance"));
  auto broken = images;
  broken[1].points[3].x = std::numeric_limits<double>::infinity();
  EXPECT_TRUE(Has(FaultOf(result, broken), "A point of image 1 is not finite"));
  broken = images;
  broken[0].weights.assign(44, 0.0);
  EXPECT_TRUE(Has(FaultOf(result, broken), "Fewer than six circles of image 0"));
  broken[0].weights.assign(44, 0.5);
  EXPECT_TRUE(Has(FaultOf(result, broken), "neither 0 nor 1"));
}

}  // namespace
