/// The homography of the discs, and the distortion of the image.
#include "finder/GridProjection.h"

#include <gtest/gtest.h>

#include "finder/Elimination.h"
#include "finder/FlatDiscs.h"

using namespace velmora;

namespace {

using finder::GridProjection;
using finder::LabelledDiscs;
using unit::FLAT_STEP;
using unit::Wide;

/// The distortion of discs off their homography, by elimination in extended precision: terms of a polynomial
/// in both directions, weighted by the length of a step.
class DistortionByElimination {
 public:
  DistortionByElimination(const GridProjection& projection, const LabelledDiscs& discs, int degree)
      : degree_(degree), size_(2.0 * discs.grid.width - 1.0, discs.grid.height - 1.0), plane_(projection) {
    const size_t terms = TermsAt({0.0, 0.0}).size();
    unit::WideEquations equations(terms, 2, 1e-9L);
    for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
      if (!discs.Has(k)) continue;
      const cv::Point2d off = discs.centres[k] - projection.Project(discs.gridIndices[k]);
      const Wide step = projection.Step(discs.gridIndices[k]);
      equations.Add(TermsAt(discs.gridIndices[k]), {off.x, off.y}, 1.0L / (step * step));
    }
    equations_ = equations;
    distortion_ = equations.Solve();
  }

  cv::Point2d Predict(const cv::Point2d& gridIndex) const {
    const std::vector<Wide> terms = TermsAt(gridIndex);
    Wide x = 0.0L;
    Wide y = 0.0L;
    for (size_t k = 0; k < terms.size(); ++k) {
      x += terms[k] * distortion_[k][0];
      y += terms[k] * distortion_[k][1];
    }
    return plane_.Project(gridIndex) + cv::Point2d(static_cast<double>(x), static_cast<double>(y));
  }

  /// How much of its own offset a disc puts into the fit.
  double Leverage(const cv::Point2d& gridIndex) const {
    const std::vector<Wide> terms = TermsAt(gridIndex);
    const Wide weight = 1.0L / static_cast<Wide>(plane_.Step(gridIndex));
    unit::WideEquations equations = equations_;
    equations.Replace(terms);
    Wide leverage = 0.0L;
    const unit::WideMatrix pulled = equations.Solve();
    for (size_t k = 0; k < terms.size(); ++k) leverage += terms[k] * pulled[k][0] * weight * weight;
    return static_cast<double>(leverage);
  }

 private:
  std::vector<Wide> TermsAt(const cv::Point2d& gridIndex) const {
    const Wide u = (gridIndex.x - 0.5 * size_.x) / (0.5 * size_.x);
    const Wide v = (gridIndex.y - 0.5 * size_.y) / (0.5 * size_.y);
    std::vector<Wide> terms;
    for (int ofU = 0; ofU <= degree_; ++ofU) {
      for (int ofV = 0; ofU + ofV <= degree_; ++ofV) terms.push_back(std::pow(u, ofU) * std::pow(v, ofV));
    }
    return terms;
  }

  const int degree_;
  const cv::Point2d size_;
  const GridProjection& plane_;
  unit::WideEquations equations_{0, 0};
  unit::WideMatrix distortion_;
};

TEST(GridProjection, ProjectsAndPredictsGridPoints) {
  LabelledDiscs discs = unit::FlatDiscs();
  GridProjection projection;
  ASSERT_TRUE(projection.Fit(discs));
  EXPECT_LT(cv::norm(projection.Project({3.0, 5.0}) - unit::InFlatGrid({3, 5})), 1e-6);
  EXPECT_NEAR(projection.Step({3.0, 5.0}), FLAT_STEP, 1e-6);
  discs = unit::BentDiscs();
  ASSERT_TRUE(projection.Fit(discs));
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    EXPECT_LT(cv::norm(projection.Predict(discs.gridIndices[k]) - discs.centres[k]), 0.02 * FLAT_STEP);
  }
}

TEST(GridProjection, IsNoneThroughTooFewOrMirroredDiscs) {
  LabelledDiscs discs = unit::FlatDiscs();
  std::fill(discs.radii.begin() + 6, discs.radii.end(), 0.0);
  GridProjection projection;
  EXPECT_FALSE(projection.Fit(discs));
  discs = unit::FlatDiscs();
  for (cv::Point2d& centre : discs.centres) centre.x = 400.0 - centre.x;
  EXPECT_FALSE(projection.Fit(discs));
}

/// Discs of a grid of any size, seen at a slant, that are off the homography by what a lens and chance do.
LabelledDiscs DiscsOffPlane(const cv::Size& grid, double chance) {
  const cv::Matx33d H(38.0, 6.0, 120.0, -9.0, 26.0, 100.0, 0.01, 0.03, 1.0);
  LabelledDiscs discs = unit::DiscsProjectedBy(H, grid);
  cv::RNG random(21);
  const cv::Point2d middle = discs.centres[discs.centres.size() / 2];
  for (cv::Point2d& centre : discs.centres) {
    const cv::Point2d ray = (centre - middle) / 300.0;
    centre -= 60.0 * ray.dot(ray) * ray;
    centre += cv::Point2d(random.gaussian(chance), random.gaussian(chance));
  }
  return discs;
}

TEST(GridProjection, PredictsAndScalesResidualsAsEliminationDoes) {
  const struct {
    cv::Size grid;
    size_t missing;
    int degree;
  } cases[] = {{{4, 11}, 0, 3}, {{4, 11}, 6, 3}, {{20, 29}, 0, 3}, {{4, 11}, 19, 3}, {{4, 11}, 20, 2},
               {{3, 5}, 0, 2},  {{3, 5}, 2, 2},  {{3, 5}, 3, 1},   {{2, 7}, 6, 1}};
  for (const auto& wanted : cases) {
    for (const double chance : {0.0, 0.5, 3.0}) {
      SCOPED_TRACE(testing::Message() << wanted.grid << wanted.missing << ", " << chance);
      LabelledDiscs discs = DiscsOffPlane(wanted.grid, chance);
      for (size_t k = 0; k < wanted.missing; ++k) discs.radii[2 * k + 1] = 0.0;
      GridProjection projection;
      ASSERT_TRUE(projection.Fit(discs));
      const DistortionByElimination distortion(projection, discs, wanted.degree);
      for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
        const cv::Point2d gridIndex = discs.gridIndices[k];
        EXPECT_LT(cv::norm(projection.Predict(gridIndex) - distortion.Predict(gridIndex)), 1e-8) << k;
        if (!discs.Has(k)) continue;
        const double off =
            cv::norm(discs.centres[k] - distortion.Predict(gridIndex)) / projection.Step(gridIndex);
        const double residual = off / std::sqrt(std::max(0.01, 1.0 - distortion.Leverage(gridIndex)));
        EXPECT_NEAR(projection.ScaledResidual(discs, k), residual, 1e-8) << k;
      }
    }
  }
}

TEST(GridProjection, HasTheSlopeOfItsProjection) {
  const LabelledDiscs discs = DiscsOffPlane({4, 11}, 0.3);
  const GridProjection projection = unit::PlaneOf(discs);
  constexpr double LITTLE = 1e-5;
  for (const cv::Point& at : discs.gridIndices) {
    const cv::Point2d gridIndex = at;
    const cv::Point2d ofX = projection.Project(gridIndex + cv::Point2d(LITTLE, 0.0)) -
                            projection.Project(gridIndex - cv::Point2d(LITTLE, 0.0));
    const cv::Point2d ofY = projection.Project(gridIndex + cv::Point2d(0.0, LITTLE)) -
                            projection.Project(gridIndex - cv::Point2d(0.0, LITTLE));
    const cv::Matx22d slope = cv::Matx22d(ofX.x, ofY.x, ofX.y, ofY.y) * (0.5 / LITTLE);
    EXPECT_LT(cv::norm(projection.Slope(gridIndex) - slope), 1e-6) << at;
    EXPECT_NEAR(projection.Step(gridIndex), std::sqrt(cv::determinant(slope)), 1e-6) << at;
  }
}

TEST(GridProjection, IsNoneThroughDiscsThatAreNotFiniteOrOfBothSides) {
  GridProjection projection;
  LabelledDiscs discs = unit::FlatDiscs();
  discs.centres[9].x = std::nan("");
  EXPECT_FALSE(projection.Fit(discs));
  // The far rows lie behind the camera.
  const cv::Matx33d H(38.0, 6.0, 120.0, -9.0, 26.0, 100.0, 0.0, -0.13, 1.0);
  EXPECT_FALSE(projection.Fit(unit::DiscsProjectedBy(H, {4, 11})));
}

/// The distortion is fitted anew, the homography is not.
TEST(GridProjection, KeepsItsHomographyWhenTheDistortionIsFittedAlone) {
  LabelledDiscs discs = unit::FlatDiscs();
  GridProjection projection = unit::PlaneOf(discs);
  for (cv::Point2d& centre : discs.centres) centre += cv::Point2d(2.0, -1.0);
  ASSERT_TRUE(projection.FitDistortion(discs));
  EXPECT_LT(cv::norm(projection.Project({3.0, 5.0}) - unit::InFlatGrid({3, 5})), 1e-6);
  EXPECT_LT(cv::norm(projection.Predict({3.0, 5.0}) - unit::InFlatGrid({3, 5}) - cv::Point2d(2.0, -1.0)),
            1e-6);
}

/// The discs of a plane that a wide lens shows; the last row is beside and behind the camera.
LabelledDiscs DiscsThrough(const finder::WideLens& lens) {
  const cv::Matx33d H(0.08, 0.01, -0.25, -0.01, 0.09, -0.1, 0.01, -0.055, 0.45);
  LabelledDiscs discs = unit::FlatDiscs();
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    const cv::Point& gridIndex = discs.gridIndices[k];
    discs.centres[k] = lens.PixelOf(H * cv::Vec3d(gridIndex.x, gridIndex.y, 1.0));
  }
  return discs;
}

TEST(GridProjection, LeadsThroughALensToWhatIsBesideTheCamera) {
  const finder::WideLens lens({640, 480}, 0.9);
  const LabelledDiscs discs = DiscsThrough(lens);
  EXPECT_LT(lens.RayOf(discs.centres.back())[2], 0.0);
  GridProjection projection;
  ASSERT_TRUE(projection.Fit(discs, lens));
  for (size_t k = 0; k < discs.gridIndices.size(); ++k) {
    const cv::Point2d gridIndex = discs.gridIndices[k];
    EXPECT_LT(cv::norm(projection.Project(gridIndex) - discs.centres[k]), 1e-6) << k;
    EXPECT_LT(projection.ScaledResidual(discs, k), 1e-6) << k;
  }
}

TEST(GridProjection, HasTheSlopeOfItsProjectionThroughALens) {
  const finder::WideLens lens({640, 480}, 0.9);
  const LabelledDiscs discs = DiscsThrough(lens);
  GridProjection projection;
  ASSERT_TRUE(projection.Fit(discs, lens));
  constexpr double LITTLE = 1e-5;
  for (const cv::Point& at : discs.gridIndices) {
    const cv::Point2d gridIndex = at;
    const cv::Point2d ofX = projection.Project(gridIndex + cv::Point2d(LITTLE, 0.0)) -
                            projection.Project(gridIndex - cv::Point2d(LITTLE, 0.0));
    const cv::Point2d ofY = projection.Project(gridIndex + cv::Point2d(0.0, LITTLE)) -
                            projection.Project(gridIndex - cv::Point2d(0.0, LITTLE));
    const cv::Matx22d slope = cv::Matx22d(ofX.x, ofY.x, ofX.y, ofY.y) * (0.5 / LITTLE);
    EXPECT_LT(cv::norm(projection.Slope(gridIndex) - slope), 1e-5) << at;
  }
}

TEST(GridProjection, KeepsItsLensWhenItIsFittedAnew) {
  const finder::WideLens lens({640, 480}, 0.9);
  LabelledDiscs discs = DiscsThrough(lens);
  GridProjection projection;
  ASSERT_TRUE(projection.Fit(discs, lens));
  const cv::Point2d last = discs.centres.back();
  discs.radii.back() = 0.0;
  ASSERT_TRUE(projection.Fit(discs));
  EXPECT_LT(cv::norm(projection.Project(discs.gridIndices.back()) - last), 1e-6);
}

TEST(GridProjection, IsNoneThroughALensForMirroredDiscsOrThoseAllAround) {
  const finder::WideLens lens({640, 480}, 0.9);
  LabelledDiscs discs = DiscsThrough(lens);
  for (cv::Point2d& centre : discs.centres) centre.x = 639.0 - centre.x;
  GridProjection projection;
  EXPECT_FALSE(projection.Fit(discs, lens));
  discs = unit::FlatDiscs();
  for (cv::Point2d& centre : discs.centres)
    centre = 20.0 * (centre - cv::Point2d(132.0, 168.0)) + cv::Point2d(320.0, 240.0);
  EXPECT_FALSE(projection.Fit(discs, lens));
}

TEST(LabelledDiscs, AreFoundByTheirPositions) {
  LabelledDiscs discs = unit::FlatDiscs();
  for (size_t k = 0; k < discs.gridIndices.size(); ++k)
    EXPECT_EQ(discs.At(discs.gridIndices[k]), static_cast<int>(k));
  for (const cv::Point& none :
       {cv::Point(1, 0), cv::Point(0, 1), cv::Point(-1, 1), cv::Point(8, 0), cv::Point(9, 1),
        cv::Point(0, -2), cv::Point(0, 11), cv::Point(1, 11), cv::Point(-2, 0)}) {
    EXPECT_EQ(discs.At(none), -1) << none;
  }
  discs.radii[13] = 0.0;
  EXPECT_EQ(discs.At(discs.gridIndices[13]), -1);
  EXPECT_EQ(discs.Missing(), 1);
}

TEST(LabelledDiscs, HaveTheMedianRadiusOfThoseThatAreKnown) {
  LabelledDiscs discs = unit::FlatDiscs();
  std::fill(discs.radii.begin(), discs.radii.end(), 0.0);
  EXPECT_EQ(discs.MedianRadius(), 0.0);
  discs.radii[3] = 9.0;
  discs.radii[8] = 2.0;
  discs.radii[40] = 4.0;
  EXPECT_EQ(discs.MedianRadius(), 4.0);
}

}  // namespace
