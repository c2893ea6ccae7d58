/// A calibrator with parts of grids: how they are found, taken and computed from.
#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#include "Calibrator.h"
#include "Matchers.h"
#include "model/TargetGeometry.h"
#include "solver/SparseIntrinsics.h"
#include "unit/Collection.h"
#include "unit/Scopes.h"
#include "unit/StereoCollection.h"

using namespace velmora;

namespace {

using Weights = std::vector<double>;

const std::vector<size_t> FIRST_TWO_ROWS = {0, 1, 2, 3, 4, 5, 6, 7};

Weights WeightsWithout(const std::vector<size_t>& unseen) {
  Weights weights(static_cast<size_t>(unit::GRID.area()), 1.0);
  for (const size_t point : unseen) weights[point] = 0.0;
  return weights;
}

/// With the first row beyond the right border.
cv::Mat CutImage(double& shift) {
  const std::vector<cv::Point2d>& centres = unit::Rendered().centres.front();
  const double step = cv::norm(centres[8] - centres[0]) / 2.0;
  double left = centres[0].x;
  for (size_t k = 1; k < 4; ++k) left = std::min(left, centres[k].x);
  shift = std::round(unit::FRAME.width - left + 0.2 * step);
  cv::Mat image;
  const cv::Matx23d right(1.0, 0.0, shift, 0.0, 1.0, 0.0);
  cv::warpAffine(unit::ImageWithGrid(), image, right, unit::FRAME, cv::INTER_NEAREST, cv::BORDER_REPLICATE);
  return image;
}

std::unique_ptr<Calibrator> RobustFinderThatTakesParts() {
  auto calibrator = unit::MakeCalibrator();
  calibrator->SetFinder(Calibrator::FINDER_ROBUST);
  calibrator->SetPartialGrids(true);
  return calibrator;
}

/// A search in the cut picture.
struct CutSearch {
  explicit CutSearch(bool draw) {
    image = CutImage(shift);
    before = image.clone();
    found = RobustFinderThatTakesParts()->DetectPartial(image, points, weights, draw);
  }

  double shift = 0.0;
  cv::Mat before;
  cv::Mat image;  ///< after it
  std::vector<cv::Point2d> points;
  Weights weights;
  bool found = false;
};

TEST(PartialGrids, AreTakenAsTheyAreSeen) {
  const auto calibrator = RobustFinderThatTakesParts();
  double shift = 0.0;
  std::vector<cv::Point2d> points;
  std::vector<cv::Point2d> seen(3);
  EXPECT_FALSE(calibrator->HasSeen());
  EXPECT_FALSE(calibrator->AddSeen(seen));
  EXPECT_TRUE(seen.empty());
  cv::Mat image = CutImage(shift);
  EXPECT_FALSE(calibrator->DetectPoints(image, points, false));
  EXPECT_TRUE(points.empty());
  EXPECT_FALSE(calibrator->IsDetected());
  EXPECT_FALSE(calibrator->AddPoints());
  EXPECT_TRUE(calibrator->HasSeen());
  ASSERT_TRUE(calibrator->AddSeen(seen));
  EXPECT_FALSE(calibrator->HasSeen());
  EXPECT_EQ(seen.size(), 40U);
  EXPECT_EQ(calibrator->GetNumberOfRecords(), 1);
  EXPECT_FALSE(calibrator->AddSeen(seen)) << "once only";
  cv::Mat whole = unit::ImageWithGrid();
  ASSERT_TRUE(calibrator->DetectPoints(whole, points, false));
  ASSERT_TRUE(calibrator->AddSeen(seen));
  EXPECT_EQ(seen, points);
  EXPECT_FALSE(calibrator->AddPoints()) << "it was taken";
  EXPECT_EQ(calibrator->GetNumberOfRecords(), 2);
}

/// A pair in which the right camera sees a part.
unit::ImagePair CutPair() {
  double shift = 0.0;
  unit::ImagePair pair = unit::PairWithGrid();
  pair.right = CutImage(shift);
  return pair;
}

std::unique_ptr<Calibrator> PairThatTakesParts() {
  auto pair = unit::MakeCalibrator(Calibrator::STEREO);
  pair->SetFinder(Calibrator::FINDER_ROBUST);
  pair->SetPartialGrids(true);
  return pair;
}

TEST(PartialGrids, OfAPairAreTakenAsTheyAreSeen) {
  const auto calibrator = PairThatTakesParts();
  const unit::ImagePair cut = CutPair();
  std::vector<cv::Point2d> left;
  std::vector<cv::Point2d> right;
  EXPECT_FALSE(calibrator->HasSeen());
  EXPECT_FALSE(calibrator->AddSeen(left, right)) << "nothing was searched";
  for (const bool cutLeft : {false, true}) {
    cv::Mat first = (cutLeft ? cut.right : cut.left).clone();
    cv::Mat second = (cutLeft ? cut.left : cut.right).clone();
    EXPECT_FALSE(calibrator->DetectStereoPoints(first, second, left, right, false));
    EXPECT_FALSE(calibrator->AddStereoPoints());
    EXPECT_FALSE(calibrator->AddSeen(left)) << "it is a pair";
    EXPECT_TRUE(calibrator->HasSeen());
    ASSERT_TRUE(calibrator->AddSeen(left, right));
    EXPECT_FALSE(calibrator->HasSeen());
    EXPECT_EQ(left.size(), cutLeft ? 40U : 44U);
    EXPECT_EQ(right.size(), cutLeft ? 44U : 40U);
    EXPECT_FALSE(calibrator->AddSeen(left, right)) << "once only";
    EXPECT_TRUE(left.empty());
  }
  EXPECT_EQ(calibrator->GetNumberOfRecords(), 2);
}

TEST(PartialGrids, OfAPairAreTakenWholeToo) {
  const auto calibrator = PairThatTakesParts();
  unit::ImagePair whole = unit::PairWithGrid();
  std::vector<cv::Point2d> left;
  std::vector<cv::Point2d> right;
  ASSERT_TRUE(calibrator->DetectStereoPoints(whole.left, whole.right, left, right, false));
  std::vector<cv::Point2d> seenLeft;
  std::vector<cv::Point2d> seenRight;
  ASSERT_TRUE(calibrator->AddSeen(seenLeft, seenRight));
  EXPECT_EQ(seenLeft, left);
  EXPECT_EQ(seenRight, right);
  EXPECT_FALSE(calibrator->AddStereoPoints()) << "it was taken";
}

TEST(PartialGrids, OfAPairAreOffAtFirst) {
  const auto calibrator = unit::MakeCalibrator(Calibrator::STEREO);
  calibrator->SetFinder(Calibrator::FINDER_ROBUST);
  unit::ImagePair cut = CutPair();
  std::vector<cv::Point2d> left;
  std::vector<cv::Point2d> right;
  calibrator->DetectStereoPoints(cut.left, cut.right, left, right, false);
  EXPECT_FALSE(calibrator->AddSeen(left, right));
  EXPECT_EQ(calibrator->GetNumberOfRecords(), 0);
}

/// The picture without some discs, as behind a hand in front of a corner of the grid.
cv::Mat Bitten(const cv::Mat& image, const std::vector<cv::Point2d>& centres,
               const std::vector<size_t>& discs) {
  cv::Mat bitten = image.clone();
  for (const size_t k : discs) {
    const double radius = 0.45 * cv::norm(centres[k] - centres[k - 4]);
    cv::circle(bitten, centres[k], cvRound(radius), cv::Scalar::all(255), cv::FILLED);
  }
  return bitten;
}

TEST(PartialGrids, OfAPairNeedTheSameCircles) {
  const auto calibrator = PairThatTakesParts();
  const std::vector<size_t> corner = {28, 32, 33, 34, 36, 37, 38, 40, 41, 42};
  for (const bool cutRight : {false, true}) {
    unit::ImagePair pair = cutRight ? CutPair() : unit::PairWithGrid();
    pair.left = Bitten(pair.left, pair.leftCentres, corner);
    std::vector<cv::Point2d> left;
    std::vector<cv::Point2d> right;
    EXPECT_FALSE(calibrator->DetectStereoPoints(pair.left, pair.right, left, right, false));
    EXPECT_EQ(calibrator->AddSeen(left, right), !cutRight);
    EXPECT_EQ(left.size(), cutRight ? 0U : 34U);
  }
}

TEST(PartialGrids, OfAPairAreDrawnWhereTheyCanBeTaken) {
  const auto calibrator = PairThatTakesParts();
  const unit::ImagePair before = CutPair();
  for (const bool blank : {false, true}) {
    unit::ImagePair drawn = before;
    drawn.left = before.left.clone();
    drawn.right = before.right.clone();
    if (blank) drawn.left.setTo(cv::Scalar::all(255));
    std::vector<cv::Point2d> left;
    std::vector<cv::Point2d> right;
    calibrator->DetectStereoPoints(drawn.left, drawn.right, left, right, true);
    EXPECT_EQ(cv::norm(drawn.right, before.right, cv::NORM_INF) == 0.0, blank);
  }
}

TEST(PartialGrids, AreDrawnInDetectionsToo) {
  const auto calibrator = RobustFinderThatTakesParts();
  double shift = 0.0;
  std::vector<cv::Point2d> points;
  cv::Mat plain = CutImage(shift);
  cv::Mat drawn = plain.clone();
  calibrator->SetPartialGrids(false);
  calibrator->DetectPoints(plain, points, true);
  calibrator->SetPartialGrids(true);
  calibrator->DetectPoints(drawn, points, true);
  const cv::Rect belowTheTexts(0, plain.rows / 4, plain.cols, plain.rows * 3 / 4);
  EXPECT_GT(cv::norm(plain(belowTheTexts), drawn(belowTheTexts), cv::NORM_INF), 50.0);
}

TEST(PartialGrids, AreOffAtFirst) {
  const auto calibrator = unit::MakeCalibrator();
  EXPECT_FALSE(calibrator->GetPartialGrids());
  calibrator->SetFinder(Calibrator::FINDER_ROBUST);
  double shift = 0.0;
  cv::Mat image = CutImage(shift);
  std::vector<cv::Point2d> points(3);
  Weights weights(3);
  EXPECT_FALSE(calibrator->DetectPartial(image, points, weights, false));
  EXPECT_TRUE(points.empty());
  EXPECT_TRUE(weights.empty());
  calibrator->SetPartialGrids(true);
  EXPECT_TRUE(calibrator->GetPartialGrids());
}

TEST(PartialGrids, AreFoundWhereTheTruthIs) {
  const CutSearch search(false);
  ASSERT_TRUE(search.found);
  EXPECT_SAME_MAT(search.image, search.before);
  EXPECT_EQ(search.weights, WeightsWithout({0, 1, 2, 3}));
  ASSERT_EQ(search.points.size(), 44U);
  for (size_t k = 4; k < 44; ++k) {
    const cv::Point2d truth = unit::Rendered().centres.front()[k] + cv::Point2d(search.shift, 0.0);
    EXPECT_LT(cv::norm(search.points[k] - truth), 0.5) << k;
  }
}

TEST(PartialGrids, AreNoDetections) {
  const auto calibrator = RobustFinderThatTakesParts();
  double shift = 0.0;
  const cv::Mat image = CutImage(shift);
  cv::Mat whole = unit::ImageWithGrid();
  std::vector<cv::Point2d> points;
  Weights weights;
  ASSERT_TRUE(calibrator->DetectPoints(whole, points, false));
  cv::Mat frame = image.clone();
  ASSERT_TRUE(calibrator->DetectPartial(frame, points, weights, false));
  EXPECT_FALSE(calibrator->IsDetected());
  EXPECT_FALSE(calibrator->AddPoints());
  frame = image.clone();
  EXPECT_FALSE(calibrator->DetectPoints(frame, points, false));
  frame = image.clone();
  calibrator->AddPoints(frame, false);
  EXPECT_EQ(calibrator->GetNumberOfRecords(), 0);
}

TEST(PartialGrids, OfWholeOnesAreTheLastDetection) {
  const auto calibrator = RobustFinderThatTakesParts();
  cv::Mat image = unit::ImageWithGrid();
  std::vector<cv::Point2d> expected;
  ASSERT_TRUE(calibrator->DetectPoints(image, expected, false));
  image = unit::ImageWithGrid();
  std::vector<cv::Point2d> points;
  Weights weights;
  ASSERT_TRUE(calibrator->DetectPartial(image, points, weights, false));
  EXPECT_EQ(points, expected);
  EXPECT_EQ(weights, WeightsWithout({}));
  EXPECT_TRUE(calibrator->IsDetected());
}

TEST(PartialGrids, AreDrawnWhereTheyAreSeen) {
  const CutSearch search(true);
  ASSERT_TRUE(search.found);
  cv::Mat difference;
  cv::absdiff(search.image, search.before, difference);
  const cv::Rect below(0, 130, unit::FRAME.width, unit::FRAME.height - 130);  // of the overlay's texts
  cv::Mat changed = difference(below).reshape(1) > 0;
  ASSERT_GT(cv::countNonZero(changed), 0);
  double rightmost = 0.0;
  for (size_t k = 4; k < 44; ++k) rightmost = std::max(rightmost, search.points[k].x);
  const cv::Rect beyond(static_cast<int>(rightmost) + 8, 130, 1000, unit::FRAME.height - 130);
  const cv::Rect visible = beyond & cv::Rect({}, unit::FRAME);
  ASSERT_GT(visible.area(), 0);
  EXPECT_EQ(cv::countNonZero(difference(visible).clone().reshape(1)), 0);
}

/// Each second view is a part, whose other points are somewhere.
class Parts : public ::testing::TestWithParam<int> {
 protected:
  /// `away` is how far from the truth the points are that were not seen.
  std::unique_ptr<Calibrator> WithPointsAway(const cv::Point2d& away, bool robust = false) const {
    auto calibrator = unit::MakeCalibrator();
    calibrator->SetSolver(GetParam());
    calibrator->SetRobust(robust);
    calibrator->SetPartialGrids(true);
    for (size_t i = 0; i < views_.size(); ++i) {
      std::vector<cv::Point2d> points = views_[i];
      for (const size_t k : UnseenIn(i)) points[k] += away;
      EXPECT_TRUE(calibrator->AddPoints(points, WeightsWithout(UnseenIn(i))));
    }
    return calibrator;
  }

  static std::vector<size_t> UnseenIn(size_t view) {
    return view % 2 == 0 ? std::vector<size_t>{} : FIRST_TWO_ROWS;
  }

  unit::PointLists views_ = unit::NoisyViews(8);
};

TEST_P(Parts, AreComputedFromThePointsThatAreSeen) {
  const auto calibrator = WithPointsAway({300.0, -200.0});
  const float rms = calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC);
  std::vector<std::vector<cv::Point3d>> target(views_.size(), MakeObjectTemplate(unit::GRID, unit::UNIT));
  for (size_t i = 1; i < views_.size(); i += 2) {
    target[i].erase(target[i].begin(), target[i].begin() + 8);
    views_[i].erase(views_[i].begin(), views_[i].begin() + 8);
  }
  const IntrinsicsResult expected =
      GetParam() == Calibrator::SOLVER_SPARSE
          ? SolveIntrinsicsSparsely(target, views_, unit::FRAME, Calibrator::MODEL_CLASSIC)
          : SolveIntrinsics(target, views_, unit::FRAME, Calibrator::MODEL_CLASSIC);
  EXPECT_EQ(rms, static_cast<float>(expected.rms));
  EXPECT_LT(rms, 1.0F);
  EXPECT_SAME_MAT(calibrator->GetK(), expected.K);
  EXPECT_SAME_MAT(calibrator->GetPerViewErrors(), expected.perViewErrors);
  EXPECT_SAME_MAT(calibrator->GetTranslationVectors(), expected.tvecs);
}

TEST_P(Parts, ArePosesOfTheSameGridAsWholeOnes) {
  const auto parts = WithPointsAway({300.0, -200.0});
  parts->ComputeCalibration(Calibrator::MODEL_CLASSIC);
  const auto whole = unit::CalibratorWith(views_);
  whole->SetSolver(GetParam());
  whole->ComputeCalibration(Calibrator::MODEL_CLASSIC);
  EXPECT_LT(cv::norm(parts->GetTranslationVectors(), whole->GetTranslationVectors(), cv::NORM_INF), 0.005);
  EXPECT_NEAR(parts->GetK().at<double>(0, 0), whole->GetK().at<double>(0, 0), 5.0);
}

TEST_P(Parts, SayNothingWithPointsThatAreNotSeen) {
  const auto near = WithPointsAway({});
  const auto far = WithPointsAway({300.0, -200.0});
  for (const auto* const calibrator : {&near, &far})
    (*calibrator)->ComputeCalibration(Calibrator::MODEL_CLASSIC);
  EXPECT_EQ(near->GetVerdict().ToJson(), far->GetVerdict().ToJson());
  EXPECT_EQ(near->ChooseModel().reasons, far->ChooseModel().reasons);
  const PoseProposal proposal = near->ProposePose(Calibrator::MODEL_CLASSIC);
  EXPECT_FALSE(proposal.centres.empty());
  EXPECT_EQ(proposal.centres, far->ProposePose(Calibrator::MODEL_CLASSIC).centres);
  EXPECT_EQ(proposal.deviation, far->ProposePose(Calibrator::MODEL_CLASSIC).deviation);
}

INSTANTIATE_TEST_SUITE_P(Solvers, Parts,
                         ::testing::Values(Calibrator::SOLVER_OPENCV, Calibrator::SOLVER_SPARSE));

TEST(PartialGrids, WithAllWeightsAreWholeOnes) {
  const auto views = unit::NoisyViews(6);
  const auto whole = unit::CalibratorWith(views);
  const auto weighted = unit::MakeCalibrator();  // without SetPartialGrids
  for (const auto& points : views) EXPECT_TRUE(weighted->AddPoints(points, WeightsWithout({})));
  for (const auto* const calibrator : {&whole, &weighted}) {
    (*calibrator)->SetSolver(Calibrator::SOLVER_SPARSE);
    (*calibrator)->ComputeCalibration(Calibrator::MODEL_RATIONAL);
  }
  EXPECT_SAME_MAT(weighted->GetK(), whole->GetK());
  EXPECT_SAME_MAT(weighted->GetDistCoefs(), whole->GetDistCoefs());
  EXPECT_EQ(weighted->GetVerdict().ToJson(), whole->GetVerdict().ToJson());
}

TEST(PartialGrids, NameOutliersByTheirPlaceInTheGrid) {
  auto views = unit::NoisyViews(8);
  views[2][20] += cv::Point2d(15.0, 9.0);
  const auto calibrator = unit::MakeCalibrator();
  calibrator->SetSolver(Calibrator::SOLVER_SPARSE);
  calibrator->SetRobust(true);
  calibrator->SetPartialGrids(true);
  for (const auto& points : views) calibrator->AddPoints(points, WeightsWithout(FIRST_TWO_ROWS));
  const std::string printed =
      unit::PrintedBy([&] { calibrator->ComputeCalibration(Calibrator::MODEL_CLASSIC); });
  EXPECT_NE(printed.find("Point 20 of view 2 is left out"), std::string::npos) << printed;
  const CalibrationVerdict verdict = calibrator->GetVerdict();
  ASSERT_FALSE(verdict.leftOut.empty());
  EXPECT_EQ(verdict.leftOut.front().view, 2U);
  EXPECT_EQ(verdict.leftOut.front().point, 20);
}

TEST(PartialGrids, AreRefusedInWords) {
  const auto calibrator = unit::MakeCalibrator();
  const auto points = unit::NoisyViews(1).front();
  const auto printedFor = [&](const Weights& weights) {
    return unit::PrintedBy([&] { EXPECT_FALSE(calibrator->AddPoints(points, weights)); });
  };
  EXPECT_EQ(printedFor(WeightsWithout({5})),
            "ERROR : No points added. Parts of the grid are not taken: SetPartialGrids allows them.\n");
  calibrator->SetPartialGrids(true);
  EXPECT_EQ(printedFor({1.0, 1.0}),
            "ERROR : No points added. A point and a weight of each of the grid's 44 circles are needed.\n");
  EXPECT_EQ(printedFor(WeightsWithout({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11})),
            "ERROR : No points added. Only 32 of 44 circles are seen: 33 are the fewest.\n");
  EXPECT_EQ(calibrator->GetNumberOfRecords(), 0);
  EXPECT_FALSE(unit::MakeCalibrator(Calibrator::STEREO)->AddPoints(points, WeightsWithout({})));
}

TEST(PartialGrids, OfAPairAreUsedWhereBothCamerasSeeThem) {
  const auto pairWith = [](const cv::Point2d& away) {
    auto calibrator = unit::MakeCalibrator(Calibrator::STEREO);
    calibrator->SetPartialGrids(true);
    for (const auto& points : unit::NoisyViews(6)) {
      auto left = points;
      auto right = points;
      left[0] += away;
      right[43] += away;
      EXPECT_TRUE(calibrator->AddStereoPoints(left, WeightsWithout({0}), right, WeightsWithout({43})));
    }
    return calibrator;
  };
  const auto rational = unit::CalibratorWith(unit::NoisyViews(6));
  rational->ComputeCalibration(Calibrator::MODEL_RATIONAL);
  const std::string camera = rational->SaveResult(false, "");
  for (const int solver : {Calibrator::SOLVER_OPENCV, Calibrator::SOLVER_SPARSE}) {
    const auto near = pairWith({});
    const auto far = pairWith({90.0, 50.0});
    for (const auto* const calibrator : {&near, &far}) {
      (*calibrator)->SetSolver(solver);
      EXPECT_GT((*calibrator)->ComputeCalibrationStereo(camera, camera, Calibrator::MODEL_RATIONAL, false),
                0.0F);
    }
    EXPECT_SAME_MAT(near->GetR(), far->GetR());
    EXPECT_SAME_MAT(near->GetStereoTranslation(), far->GetStereoTranslation());
    EXPECT_EQ(near->GetPairVerdict().ToJson(), far->GetPairVerdict().ToJson());
  }
}

}  // namespace
