/// The choice of a solver.
#include "calibrator/SolverSettings.h"

#include <gtest/gtest.h>

#include <limits>

#include "unit/Scopes.h"

using namespace velmora;

namespace {

TEST(SolverChoice, StartsWithOpenCvAsItIs) {
  const SolverSettings settings = SolverChoice().Current();
  EXPECT_EQ(settings.solver, SOLVER_OPENCV);
  EXPECT_FALSE(settings.robust);
  EXPECT_EQ(settings.discRadius, 0.0);
  EXPECT_FALSE(settings.refineIntrinsics);
}

TEST(SolverChoice, RefusesWhatIsNoSolverAndNoRadius) {
  SolverChoice choice;
  choice.SetSolver(SOLVER_SPARSE);
  choice.SetDiscRadius(0.008);
  EXPECT_EQ(unit::PrintedBy([&] { choice.SetSolver(7); }), "ERROR : There is no solver 7.\n");
  for (const double radius : {-0.1, std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_NE(unit::PrintedBy([&] { choice.SetDiscRadius(radius); }).find("There are no discs of radius"),
              std::string::npos);
  }
  EXPECT_EQ(choice.Current().solver, SOLVER_SPARSE);
  EXPECT_EQ(choice.Current().discRadius, 0.008);
}

TEST(SolverChoice, HasOneAssumptionOfTheSheet) {
  SolverChoice choice;
  EXPECT_TRUE(choice.Current().sheet.IsFlat());
  choice.SetSheetShape(SHEET_AUTO);
  EXPECT_EQ(choice.Current().sheet.allowed, SheetShape::Auto);
  choice.SetSheetShape({{1.0, 2.0, 3.0}});
  EXPECT_EQ(choice.Current().sheet.known.size(), 1U);
  EXPECT_EQ(unit::PrintedBy([&] { choice.SetSheetShape(4); }), "ERROR : There is no shape 4 of sheets.\n");
  EXPECT_EQ(choice.Current().sheet.known.size(), 1U);
  EXPECT_TRUE(choice.Current().UsedSheet().IsFlat()) << "OpenCV knows no other";
  choice.SetSolver(SOLVER_SPARSE);
  EXPECT_EQ(choice.Current().UsedSheet().known.size(), 1U);
  choice.SetSheetShape(SHEET_BENT);
  EXPECT_TRUE(choice.Current().sheet.known.empty());
}

TEST(SolverSettings, OfferToOpenCvOnlyWhatItDoes) {
  SolverChoice choice;
  choice.SetDiscRadius(0.008);
  choice.SetRefineIntrinsics(true);
  EXPECT_EQ(choice.Current().UsedDiscRadius(), 0.0);
  EXPECT_FALSE(choice.Current().RefinesIntrinsics());
  choice.SetSolver(SOLVER_SPARSE);
  EXPECT_EQ(choice.Current().UsedDiscRadius(), 0.008);
  EXPECT_TRUE(choice.Current().RefinesIntrinsics());
}

}  // namespace
