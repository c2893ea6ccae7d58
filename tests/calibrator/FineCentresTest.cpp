/// Calibrators that measure the centres of what is kept anew: which centres that are, and what it brings.
#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/imgproc.hpp>

#include "Calibrator.h"
#include "LensError.h"
#include "Matchers.h"
#include "Renderer.h"
#include "Views.h"
#include "finder/CentreFit.h"
#include "finder/Grey.h"
#include "finder/RobustFinder.h"
#include "unit/Collection.h"
#include "unit/Scopes.h"
#include "unit/StereoCollection.h"

using namespace velmora;

namespace {

using Centres = std::vector<cv::Point2d>;
using Numbers = std::vector<double>;

/// With the search that finds centres which can be measured, and the solver that goes by their deviations.
std::unique_ptr<Calibrator> Sparse(int kind = Calibrator::MONOCULAR) {
  auto calibrator = unit::MakeCalibrator(kind);
  calibrator->SetFinder(Calibrator::FINDER_ROBUST);
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  return calibrator;
}

std::unique_ptr<Calibrator> Fine(int kind = Calibrator::MONOCULAR) {
  auto calibrator = Sparse(kind);
  calibrator->SetFineCentres(true);
  return calibrator;
}

Centres SearchedIn(const cv::Mat& image) {
  return SearchGridRobust(image, unit::GRID).centres;
}

MeasuredCentres MeasuredIn(const cv::Mat& image) {
  const GridFinding finding = SearchGridRobust(image, unit::GRID);
  return MeasureCentres(finder::GreyOf(image), unit::GRID, finding.centres, finding.radii);
}

TEST(FineCentres, AreOffAtFirst) {
  const auto calibrator = Sparse();
  EXPECT_FALSE(calibrator->GetFineCentres());
  cv::Mat frame = unit::ImageWithGrid();
  Centres points;
  ASSERT_TRUE(calibrator->DetectPoints(frame, points, false));
  Centres seen;
  ASSERT_TRUE(calibrator->AddSeen(seen));
  EXPECT_EQ(seen, points);
  calibrator->SetFineCentres(true);
  EXPECT_TRUE(calibrator->GetFineCentres());
}

TEST(FineCentres, AreThoseOfSnapshotsAndNotOfDetections) {
  const auto calibrator = Fine();
  const cv::Mat image = unit::ImageWithGrid();
  cv::Mat frame = image.clone();
  Centres points;
  ASSERT_TRUE(calibrator->DetectPoints(frame, points, true));
  EXPECT_EQ(points, SearchedIn(image));
  Centres seen;
  ASSERT_TRUE(calibrator->AddSeen(seen));
  EXPECT_EQ(seen, MeasuredIn(image).centres);
  EXPECT_NE(seen, points);
  EXPECT_FALSE(calibrator->AddSeen(seen)) << "once only";
  EXPECT_EQ(calibrator->GetNumberOfRecords(), 1);
}

TEST(FineCentres, AreNoneOfTheStandardSearch) {
  const auto calibrator = Fine();
  calibrator->SetFinder(Calibrator::FINDER_STANDARD);
  cv::Mat frame = unit::ImageWithGrid();
  Centres points;
  ASSERT_TRUE(calibrator->DetectPoints(frame, points, false));
  Centres seen;
  ASSERT_TRUE(calibrator->AddSeen(seen));
  EXPECT_EQ(seen, points);
}

TEST(FineCentres, AreThoseOfBothCamerasOfAPair) {
  const auto calibrator = Fine(Calibrator::STEREO);
  const unit::ImagePair pair = unit::PairWithGrid();
  cv::Mat left = pair.left.clone();
  cv::Mat right = pair.right.clone();
  Centres leftPoints;
  Centres rightPoints;
  ASSERT_TRUE(calibrator->DetectStereoPoints(left, right, leftPoints, rightPoints, true));
  EXPECT_EQ(leftPoints, SearchedIn(pair.left));
  Centres leftSeen;
  Centres rightSeen;
  ASSERT_TRUE(calibrator->AddSeen(leftSeen, rightSeen));
  EXPECT_EQ(leftSeen, MeasuredIn(pair.left).centres);
  EXPECT_EQ(rightSeen, MeasuredIn(pair.right).centres);
}

TEST(FineCentres, OfAFrameThatIsKeptComeWithTheirDeviations) {
  const auto calibrator = Fine();
  const cv::Mat image = unit::ImageWithGrid();
  cv::Mat frame = image.clone();
  Centres points;
  Numbers weights;
  Numbers deviations;
  ASSERT_TRUE(calibrator->DetectPartial(frame, points, weights, deviations, true));
  const MeasuredCentres expected = MeasuredIn(image);
  EXPECT_EQ(points, expected.centres);
  EXPECT_EQ(weights, Numbers(44, 1.0));
  EXPECT_EQ(deviations, expected.deviations);
  EXPECT_TRUE(calibrator->IsDetected());
  frame = image.clone();
  ASSERT_TRUE(calibrator->DetectPartial(frame, points, weights, false));
  EXPECT_EQ(points, SearchedIn(image)) << "without deviations, centres are those of the search";
  calibrator->SetFineCentres(false);
  frame = image.clone();
  ASSERT_TRUE(calibrator->DetectPartial(frame, points, weights, deviations, false));
  EXPECT_EQ(points, SearchedIn(image));
  EXPECT_TRUE(deviations.empty());
  cv::Mat empty = unit::ImageWithoutGrid();
  deviations.resize(3);
  EXPECT_FALSE(calibrator->DetectPartial(empty, points, weights, deviations, false));
  EXPECT_TRUE(deviations.empty());
}

/// The camera matrix of eight rendered views that became snapshots one way or the other.
template <typename Add>
cv::Mat ComputedFrom(Calibrator& calibrator, Add add) {
  for (size_t i = 0; i < 8; ++i) {
    cv::Mat frame = unit::Rendered().images[i].clone();
    add(i, frame);
  }
  EXPECT_EQ(calibrator.GetNumberOfRecords(), 8);
  calibrator.ComputeCalibration(Calibrator::MODEL_CLASSIC);
  return calibrator.GetK();
}

TEST(FineCentres, AreTheSameWhateverWayTheyBecomeASnapshot) {
  Centres points;
  const auto plain = Sparse();
  const cv::Mat ofSearch =
      ComputedFrom(*plain, [&](size_t, cv::Mat& frame) { plain->AddPoints(frame, false); });
  const auto detected = Fine();
  const cv::Mat expected = ComputedFrom(*detected, [&](size_t, cv::Mat& frame) {
    EXPECT_TRUE(detected->DetectPoints(frame, points, false));
    EXPECT_TRUE(detected->AddPoints());
  });
  EXPECT_GT(cv::norm(expected, ofSearch), 1e-3);
  const auto added = Fine();
  EXPECT_SAME_MAT(ComputedFrom(*added, [&](size_t, cv::Mat& frame) { added->AddPoints(frame, false); }),
                  expected);
  const auto guided = Fine();
  EXPECT_SAME_MAT(ComputedFrom(*guided,
                               [&](size_t i, cv::Mat& frame) {
                                 EXPECT_TRUE(guided->AskForPose(unit::Rendered().centres[i]));
                                 EXPECT_TRUE(guided->DetectPoints(frame, points, true));
                               }),
                  expected);
  const auto supplied = Fine();
  Numbers weights;
  Numbers deviations;
  EXPECT_SAME_MAT(ComputedFrom(*supplied,
                               [&](size_t, cv::Mat& frame) {
                                 supplied->DetectPartial(frame, points, weights, deviations, false);
                                 EXPECT_TRUE(supplied->AddPoints(points, weights, deviations));
                               }),
                  expected);
  // Without their deviations, points that are the same lead to another camera.
  const auto alike = Fine();
  EXPECT_GT(cv::norm(ComputedFrom(*alike,
                                  [&](size_t, cv::Mat& frame) {
                                    alike->DetectPartial(frame, points, weights, deviations, false);
                                    EXPECT_TRUE(alike->AddPoints(points, weights));
                                  }),
                     expected),
            1e-6);
}

TEST(FineCentres, WithWrongDeviationsAreRefused) {
  const auto calibrator = Sparse();
  const Centres& points = unit::Rendered().centres.front();
  const std::string printed = unit::PrintedBy([&] {
    EXPECT_FALSE(calibrator->AddPoints(points, Numbers(44, 1.0), Numbers(43, 0.02)));
    EXPECT_FALSE(calibrator->AddPoints(points, Numbers(44, 1.0), Numbers(44, -0.02)));
  });
  EXPECT_NE(printed.find("A deviation of each of the grid's 44 circles is needed, or none."),
            std::string::npos)
      << printed;
  EXPECT_NE(printed.find("A deviation is negative or not finite."), std::string::npos) << printed;
  EXPECT_EQ(calibrator->GetNumberOfRecords(), 0);
  EXPECT_TRUE(calibrator->AddPoints(points, Numbers(44, 1.0), Numbers(44, 0.02)));
}

/// The picture in light that falls on the sheet through a blind: soft stripes across it.
cv::Mat ThroughABlind(const cv::Mat& image, double angle, double phase) {
  const double period = 0.25 * image.cols;
  cv::Mat lit = image.clone();
  for (int y = 0; y < image.rows; ++y) {
    for (int x = 0; x < image.cols; ++x) {
      const double along = x * std::cos(angle) + y * std::sin(angle);
      const double light = 0.65 + 0.35 * std::sin(2.0 * CV_PI * along / period + phase);
      for (int c = 0; c < 3; ++c) {
        lit.at<cv::Vec3b>(y, x)[c] = cv::saturate_cast<uchar>(light * image.at<cv::Vec3b>(y, x)[c]);
      }
    }
  }
  return lit;
}

/// How far the projections of a camera are off that is computed from views in such light, pixels.
double ErrorThroughABlind(const world::Scene& scene, const std::vector<cv::Mat>& images, bool fine) {
  const cv::Size size = scene.camera.size;
  Calibrator calibrator(unit::GRID, unit::UNIT, Calibrator::MONOCULAR, size.width, size.height);
  calibrator.SetFinder(Calibrator::FINDER_ROBUST);
  calibrator.SetSolver(Calibrator::SOLVER_SPARSE);
  calibrator.SetDiscRadius(0.4 * static_cast<double>(unit::UNIT));
  calibrator.SetFineCentres(fine);
  for (const cv::Mat& image : images) {
    cv::Mat frame = image.clone();
    calibrator.AddPoints(frame, false);
  }
  // A stripe may hide a grid.
  EXPECT_GE(calibrator.GetNumberOfRecords(), static_cast<int>(images.size()) - 1);
  const float rms = calibrator.ComputeCalibration(Calibrator::MODEL_CLASSIC);
  ::testing::Test::RecordProperty(fine ? "RmsOfFineCentres" : "RmsOfPlainCentres", std::to_string(rms));
  return world::MeanProjectionDistance(scene.camera.lens,
                                       world::LensFrom(calibrator.GetK(), calibrator.GetDistCoefs()), size)
      .rms;
}

TEST(FineCentres, GiveACameraThatUnevenLightHardlyMoves) {
  world::Scene scene;
  scene.camera = world::CameraFromFieldOfView({1280, 960}, 62.0, {-0.21, 0.06, 0.0008, -0.0006, -0.008});
  scene.sheet = world::Sheet(unit::GRID, static_cast<double>(unit::UNIT));
  scene.blur = 0.8;
  scene.noise = 1.0;
  world::Renderer renderer(scene);
  std::vector<cv::Mat> images;
  for (const world::Pose& pose : world::SpreadViews(scene.camera, 10, scene.sheet)) {
    const double number = static_cast<double>(images.size());
    images.push_back(ThroughABlind(renderer.Render(pose, images.size()), 0.7 * number, 1.3 * number));
  }
  const double plain = ErrorThroughABlind(scene, images, false);
  const double fine = ErrorThroughABlind(scene, images, true);
  RecordProperty("ErrorOfPlainCentres", std::to_string(plain));
  RecordProperty("ErrorOfFineCentres", std::to_string(fine));
  EXPECT_LT(fine, plain / 3.0) << plain;
}

}  // namespace
