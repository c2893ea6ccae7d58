/// Which shape is taken for sheets that are flat, bent, or anything else.
#include "quality/SheetChoice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>
#include <string>

#include "Calibrator.h"
#include "LensError.h"
#include "quality/Assessment.h"
#include "solver/ShapedViews.h"
#include "solver/WideViews.h"

using namespace velmora;
using unit::ShapedSheet;

namespace {

constexpr int CLASSIC = Calibrator::MODEL_CLASSIC;
constexpr int RATIONAL = Calibrator::MODEL_RATIONAL;

unit::PointLists Views(const ShapedSheet& sheet, std::uint64_t seed, int count = 15, double noise = 0.1) {
  return unit::ViewsOf(sheet, unit::DistortedCamera(), count, noise, seed);
}

SparseResult Solved(const unit::PointLists& views, const SheetAssumption& sheet, bool robust = false,
                    int model = CLASSIC) {
  SparseOptions options;
  options.sheet = sheet;
  options.robust = robust;
  return SolveIntrinsicsWithSheet(unit::Targets(views), views, unit::FRAME, model, options);
}

double ErrorOf(const SparseResult& result, const unit::PointLists& views) {
  return unit::TrueErrorOf(result, unit::DistortedCamera(), views);
}

ShapedSheet BentSheet() {
  ShapedSheet sheet;
  sheet.bend = {0.0003, -0.0002, 0.0008};
  return sheet;
}

TEST(SheetChoice, TakesAFlatSheetForFlat) {
  const unit::PointLists views = Views({}, 1);
  const SparseResult automatic = Solved(views, SheetShape::Auto);
  const SparseResult flat = Solved(views, SheetShape::Flat);
  EXPECT_TRUE(automatic.solution->sheet.IsFlat());
  EXPECT_EQ(automatic.rms, flat.rms);
  EXPECT_EQ(cv::countNonZero(automatic.K != flat.K), 0);
}

TEST(SheetChoice, TakesTheBendOfABentOne) {
  const unit::PointLists views = Views(BentSheet(), 2);
  const SparseResult bent = Solved(views, SheetShape::Auto);
  EXPECT_EQ(bent.solution->sheet.level, SheetLevel::Bent);
  EXPECT_LT(ErrorOf(bent, views), 0.25 * ErrorOf(Solved(views, SheetShape::Flat), views));
  ASSERT_NE(bent.solution->flat, nullptr);
  EXPECT_GT(RmsOf(*bent.solution->flat), bent.rms);
}

/// What a computation gives from views of that noise.
solver::SheetRung RungOfNoise(double noise, SheetLevel level, bool ownBends, double criterion) {
  const SparseResult result = Solved(Views(BentSheet(), 30, 12, noise), SheetShape::Bent);
  return {level, ownBends, *result.solution, criterion};
}

TEST(SheetChoice, TakesTheSurerOneOfThoseThatTheCriterionAllows) {
  const std::vector<solver::SheetRung> rungs = {RungOfNoise(0.2, SheetLevel::Flat, false, 0.0),
                                                RungOfNoise(0.02, SheetLevel::Bent, false, -100.0),
                                                RungOfNoise(0.2, SheetLevel::FreePoints, false, -200.0)};
  EXPECT_EQ(ChooseRung(rungs, SheetShape::Auto), 1U);
}

TEST(SheetChoice, KeepsBendsOfSingleViewsThatTheCriterionTakesThoughOthersSeemSurer) {
  const std::vector<solver::SheetRung> rungs = {RungOfNoise(0.2, SheetLevel::Flat, false, 0.0),
                                                RungOfNoise(0.02, SheetLevel::Bent, false, -100.0),
                                                RungOfNoise(0.2, SheetLevel::Bent, true, -200.0)};
  EXPECT_EQ(ChooseRung(rungs, SheetShape::Auto), 2U);
}

TEST(SheetChoice, KeepsToTheShapesThatAreAskedFor) {
  const unit::PointLists views = Views({}, 3);
  EXPECT_EQ(Solved(views, SheetShape::Bent).solution->sheet.level, SheetLevel::Bent);
  EXPECT_TRUE(HasFreePoints(Solved(views, SheetShape::Free).solution->sheet.level));
  ShapedSheet printed;
  printed.misprint = 0.0002;
  const unit::PointLists misprinted = Views(printed, 3);
  EXPECT_TRUE(HasFreePoints(Solved(misprinted, SheetShape::Auto).solution->sheet.level));
  EXPECT_FALSE(HasFreePoints(Solved(misprinted, SheetShape::Bent).solution->sheet.level));
}

TEST(SheetChoice, BringsBackWhatAFlatSheetMadeOutliersOfAndKeepsOthersOut) {
  ShapedSheet sheet;
  sheet.bend = {0.0, 0.001, 0.003};
  unit::PointLists views = Views(sheet, 4, 15, 0.05);
  for (size_t i = 0; i < 6; ++i) views[i][7 * i] += cv::Point2d(4.0, -3.0);
  const SparseResult flat = Solved(views, SheetShape::Flat, true);
  const SparseResult bent = Solved(views, SheetShape::Auto, true);
  ASSERT_FALSE(bent.solution->sheet.IsFlat());
  EXPECT_NEAR(std::sqrt(NoiseVariance(*bent.solution)), 0.05, 0.005);
  // The six, and hardly any of the others.
  for (size_t i = 0; i < 6; ++i) {
    EXPECT_TRUE(std::any_of(bent.rejected.begin(), bent.rejected.end(), [i](const Rejected& rejected) {
      return rejected.view == i && rejected.point == static_cast<int>(7 * i);
    })) << i;
  }
  EXPECT_LE(bent.rejected.size(), 8U);
  EXPECT_LT(ErrorOf(bent, views), 0.2 * ErrorOf(flat, views));
}

TEST(SheetChoice, PlacesRejectedViewsBeforeTheSheetAsItIs) {
  ShapedSheet sheet;
  sheet.bend = {0.0, 0.001, 0.003};
  const unit::PointLists views = Views(sheet, 23, 15, 0.05);
  unit::PointLists spoilt = views;
  cv::RNG random(3);
  for (cv::Point2d& point : spoilt[4]) point += cv::Point2d(random.gaussian(0.6), random.gaussian(0.6));
  const SparseResult result = Solved(spoilt, SheetShape::Auto, true);
  ASSERT_FALSE(result.solution->sheet.IsFlat());
  ASSERT_TRUE(std::any_of(result.rejected.begin(), result.rejected.end(), [](const Rejected& rejected) {
    return rejected.view == 4 && rejected.point == Rejected::WHOLE_VIEW;
  }));
  // Of a flat sheet the error would be that of the bend, several times as large.
  EXPECT_NEAR(result.perViewErrors.at<double>(4), 0.6 * std::sqrt(2.0), 0.15);
  const SparseResult right = Solved(views, SheetShape::Auto, true);
  EXPECT_LT(cv::norm(result.tvecs.at<cv::Vec3d>(4) - right.tvecs.at<cv::Vec3d>(4)),
            0.01 * cv::norm(right.tvecs.at<cv::Vec3d>(4)));
}

TEST(SheetChoice, GoesByTheClassicModelWhereALargerOneWentAstray) {
  const unit::PointLists views = Views(BentSheet(), 5);
  const SparseResult rational = Solved(views, SheetShape::Auto, false, RATIONAL);
  EXPECT_FALSE(rational.solution->sheet.IsFlat());
  EXPECT_EQ(rational.solution->rig.cameras.front().intrinsics.estimated, RATIONAL_PARAMETERS);
  EXPECT_LT(ErrorOf(rational, views), 0.2);
}

TEST(SheetChoice, OfTwoViewsOfTwoTargetsIsFlat) {
  unit::PointLists views = Views(BentSheet(), 6);
  auto targets = unit::Targets(views);
  for (cv::Point3d& point : targets.back()) point.x *= 1.01;
  SparseOptions options;
  options.sheet = SheetShape::Auto;
  const SparseResult result = SolveIntrinsicsWithSheet(targets, views, unit::FRAME, CLASSIC, options);
  EXPECT_TRUE(result.solution->sheet.IsFlat());
}

/// Where the points of a sheet are, by one calibration, for another one.
SheetAssumption MeasuredIn(const unit::PointLists& views, SheetShape shape = SheetShape::Bent) {
  SheetAssumption sheet;
  sheet.known = AssessIntrinsics(unit::Targets(views), views, unit::FRAME, Solved(views, shape)).sheet.points;
  return sheet;
}

TEST(SheetChoice, GoesByTheShapeThatWasMeasuredBefore) {
  ShapedSheet sheet = BentSheet();
  sheet.misprint = 0.0003;
  sheet.print = 1;
  const SheetAssumption known = MeasuredIn(Views(sheet, 11, 25), SheetShape::Free);
  ASSERT_EQ(known.known.size(), 44U);
  double own = 0.0;
  double given = 0.0;
  for (const std::uint64_t seed : {12U, 13U, 14U, 15U}) {
    const unit::PointLists views = Views(sheet, seed, 5);
    const SparseResult measured = Solved(views, SheetShape::Auto);
    const SparseResult result = Solved(views, known);
    ASSERT_TRUE(result.solution->sheet.IsKnown());
    EXPECT_EQ(result.solution->sheet.terms.Count(), 0);
    EXPECT_FALSE(result.solution->sheet.HasOwnBends());
    EXPECT_LT(ErrorOf(result, views), 0.25 * ErrorOf(Solved(views, SheetShape::Flat), views));
    own += ErrorOf(measured, views);
    given += ErrorOf(result, views);
  }
  EXPECT_LT(given, 0.8 * own) << "five views know less of the shape than 25";
}

TEST(SheetChoice, OfAKnownShapeBringsBackWhatAFlatSheetMadeOutliersOf) {
  ShapedSheet sheet;
  sheet.bend = {0.0, 0.001, 0.003};
  const SheetAssumption known = MeasuredIn(Views(sheet, 16, 25, 0.05));
  unit::PointLists views = Views(sheet, 17, 12, 0.05);
  views[3][9] += cv::Point2d(4.0, -3.0);
  const SparseResult result = Solved(views, known, true);
  EXPECT_NEAR(std::sqrt(NoiseVariance(*result.solution)), 0.05, 0.006);
  ASSERT_GE(result.rejected.size(), 1U);
  EXPECT_LE(result.rejected.size(), 3U);
}

TEST(SheetChoice, OfAKnownShapeGivesViewsTheirOwnBendsWhereTheyHaveThem) {
  ShapedSheet sheet = BentSheet();
  const SheetAssumption known = MeasuredIn(Views(sheet, 18, 25));
  sheet.changing = 0.0005;
  const unit::PointLists views = Views(sheet, 19, 12);
  const SparseResult result = Solved(views, known);
  EXPECT_TRUE(result.solution->sheet.HasOwnBends());
  EXPECT_NEAR(std::sqrt(NoiseVariance(*result.solution)), 0.1, 0.01);
}

TEST(SheetChoice, OfAKnownShapeIsOfTheLargerModelsToo) {
  const SheetAssumption known = MeasuredIn(Views(BentSheet(), 20, 25));
  const unit::PointLists views = Views(BentSheet(), 21, 15);
  const SparseResult result = Solved(views, known, false, RATIONAL);
  EXPECT_TRUE(result.solution->sheet.IsKnown());
  EXPECT_EQ(result.solution->rig.cameras.front().intrinsics.estimated, RATIONAL_PARAMETERS);
  EXPECT_LT(ErrorOf(result, views), 0.25);
}

TEST(SheetChoice, RefusesTheShapeOfAnotherGrid) {
  const unit::PointLists views = Views({}, 22);
  SheetAssumption other;
  other.known = MakeObjectTemplate(unit::GRID, 2.0F * unit::UNIT);
  EXPECT_THROW(Solved(views, other), cv::Exception);
}

TEST(SheetChoice, IsGivenUpAsOtherComputationsAre) {
  const unit::PointLists views = Views(BentSheet(), 7);
  SparseOptions options;
  options.sheet = SheetShape::Auto;
  int told = 0;
  options.progress = [&](int, double) { return ++told < 40; };
  EXPECT_THROW(SolveIntrinsicsWithSheet(unit::Targets(views), views, unit::FRAME, CLASSIC, options),
               cv::Exception);
  EXPECT_EQ(told, 40);
}

/// How often the computation of a flat sheet, and with it that of all shapes, tells of itself.
int IterationsOf(const unit::PointLists& views, SheetShape shape, int model) {
  SparseOptions options;
  options.sheet = shape;
  int told = 0;
  options.progress = [&](int, double) { return ++told > 0; };
  SolveIntrinsicsWithSheet(unit::Targets(views), views, unit::FRAME, model, options);
  return told;
}

TEST(SheetChoice, IsGivenUpAmongTheShapesWhateverTheyWouldHaveBeen) {
  for (const ShapedSheet& sheet : {ShapedSheet(), BentSheet()}) {
    const unit::PointLists views = Views(sheet, 8);
    for (const int model : {CLASSIC, RATIONAL}) {
      const int first = IterationsOf(views, SheetShape::Flat, model) + 1;
      const int last = IterationsOf(views, SheetShape::Auto, model);
      ASSERT_GT(last, first);
      for (const int end : {first, (first + last) / 2, last}) {
        SparseOptions options;
        options.sheet = SheetShape::Auto;
        int told = 0;
        options.progress = [&](int, double) { return ++told < end; };
        EXPECT_THROW(SolveIntrinsicsWithSheet(unit::Targets(views), views, unit::FRAME, model, options),
                     cv::Exception)
            << model << " " << end;
      }
    }
  }
}

/// How far the right camera is from where it should be, as deviations are told.
double TurnOf(const ExtrinsicsResult& result, const world::Rig& truth) {
  cv::Vec3d turn;
  cv::Rodrigues(cv::Matx33d(result.R) * truth.cameras[1].R.t(), turn);
  return cv::norm(turn) * 180.0 / CV_PI;
}

StereoIntrinsics TrueIntrinsicsOf(const world::Rig& rig) {
  const auto coefficients = [](const world::Lens& lens) {
    cv::Mat D = cv::Mat::zeros(1, 14, CV_64F);
    for (size_t i = 0; i < lens.D().size(); ++i) D.at<double>(static_cast<int>(i)) = lens.D()[i];
    return D;
  };
  return {cv::Mat(rig.cameras[0].lens.K()).clone(), coefficients(rig.cameras[0].lens),
          cv::Mat(rig.cameras[1].lens.K()).clone(), coefficients(rig.cameras[1].lens)};
}

TEST(SheetChoice, OfAPairIsOneShapeForBothCameras) {
  ShapedSheet sheet;
  sheet.bend = {0.0, 0.001, 0.002};
  const world::Rig rig = unit::RowOf(2);
  const auto views = unit::RigViewsOf(sheet, rig, 12, 0.1, 3);
  const auto targets = unit::Targets(views[0]);
  const StereoIntrinsics lenses = TrueIntrinsicsOf(rig);
  const SparsePairOptions options;
  const ExtrinsicsResult flat =
      SolveExtrinsicsSparsely(targets, views[0], views[1], lenses, CLASSIC, options);
  const solver::Target target = solver::PairTargetOf(targets, views[0], views[1]);
  const ExtrinsicsResult held = PairWithShape(flat, target, lenses, CLASSIC, SheetShape::Auto, options);
  ASSERT_FALSE(held.solution->sheet.IsFlat());
  EXPECT_NEAR(std::sqrt(NoiseVariance(*held.solution)), 0.1, 0.01);
  EXPECT_LT(held.rms, 0.5 * flat.rms);
  EXPECT_LT(TurnOf(held, rig), 0.5 * TurnOf(flat, rig));
  const ExtrinsicsResult refined =
      PairWithShape(RefinePairSparsely(targets, views[0], views[1], lenses, unit::FRAME, CLASSIC, options),
                    target, lenses, CLASSIC, SheetShape::Auto, options);
  ASSERT_FALSE(refined.solution->sheet.IsFlat());
  EXPECT_TRUE(refined.solution->estimated.intrinsics);
  EXPECT_LT(TurnOf(refined, rig), 0.2);
  SheetAssumption known;
  known.known = unit::PrintedGrid().GridPoints();
  unit::Bend(sheet.bend, known.known);
  const ExtrinsicsResult given = PairWithShape(flat, target, lenses, CLASSIC, known, options);
  EXPECT_TRUE(given.solution->sheet.IsKnown());
  EXPECT_NEAR(std::sqrt(NoiseVariance(*given.solution)), 0.1, 0.01);
  EXPECT_LT(TurnOf(given, rig), 0.5 * TurnOf(flat, rig));
  EXPECT_NEAR(refined.refined.K.at<double>(0, 0), rig.cameras[0].lens.K()(0, 0),
              0.01 * rig.cameras[0].lens.K()(0, 0));
}

TEST(SheetChoice, OfAPairBeforeAFlatSheetIsFlat) {
  const world::Rig rig = unit::RowOf(2);
  const auto views = unit::RigViewsOf({}, rig, 12, 0.1, 4);
  const auto targets = unit::Targets(views[0]);
  const StereoIntrinsics lenses = TrueIntrinsicsOf(rig);
  const ExtrinsicsResult flat = SolveExtrinsicsSparsely(targets, views[0], views[1], lenses, CLASSIC);
  const ExtrinsicsResult result = PairWithShape(flat, solver::PairTargetOf(targets, views[0], views[1]),
                                                lenses, CLASSIC, SheetShape::Auto, SparsePairOptions());
  EXPECT_TRUE(result.solution->sheet.IsFlat());
  EXPECT_EQ(result.rms, flat.rms);
}

}  // namespace
