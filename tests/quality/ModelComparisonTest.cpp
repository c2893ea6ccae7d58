/// Which lens model views of known lenses ask for.
#include "quality/ModelComparison.h"

#include <gtest/gtest.h>

#include <limits>

#include "Calibrator.h"
#include "Views.h"
#include "model/TargetGeometry.h"
#include "solver/NoisyViews.h"
#include "unit/Collection.h"
#include "unit/Scopes.h"

using namespace velmora;

namespace {

world::Camera RationalCamera() {
  return world::CameraFromFieldOfView(unit::FRAME, 95.0,
                                      {0.9, 0.12, 0.0005, -0.0004, 0.002, 1.25, 0.42, 0.03});
}

world::Camera LeaningCamera() {
  return world::CameraFromFieldOfView(
      unit::FRAME, 75.0,
      {-0.28, 0.11, 0.0012, 0.0009, -0.02, 0.0, 0.0, 0.0, 0.01, -0.004, -0.008, 0.004, 0.04, -0.03});
}

/// Fewer under the thread sanitizer, which takes half a minute for each and has one thread to look at.
std::vector<std::uint64_t> Seeds() {
#if defined(__SANITIZE_THREAD__)
  return {41};
#else
  return {41, 42, 43, 44, 45};
#endif
}

ModelChoice Chosen(const unit::PointLists& views, const SparseOptions& options = {}) {
  return CompareModels({views.size(), MakeObjectTemplate(unit::GRID, unit::UNIT)}, views, unit::FRAME,
                       options);
}

TEST(ModelComparison, ChoosesTheClassicModelForALensOfItsKind) {
  for (const std::uint64_t seed : Seeds()) {
    const ModelChoice choice = Chosen(unit::NoisyViews(unit::DistortedCamera(), 15, seed));
    EXPECT_EQ(choice.Name(), "classic") << seed;
    ASSERT_EQ(choice.reasons.size(), 2U);
    EXPECT_EQ(choice.reasons[0].find("The rational model is not better than the classic one: "), 0U);
    EXPECT_EQ(choice.reasons[1].find("The full model is not better than the classic one: "), 0U);
  }
}

TEST(ModelComparison, ChoosesTheRationalModelForAStrongLensOfItsKind) {
  for (const std::uint64_t seed : Seeds()) {
    const ModelChoice choice = Chosen(unit::NoisyViews(RationalCamera(), 15, seed));
    EXPECT_EQ(choice.Name(), "rational") << seed;
    EXPECT_EQ(choice.reasons[0].find("The rational model is better than the classic one: RMS"), 0U);
    EXPECT_LT(choice.candidates[1].unseen, choice.candidates[0].unseen);
  }
}

TEST(ModelComparison, ChoosesTheFullModelForASensorThatLeans) {
  for (const std::uint64_t seed : Seeds()) {
    EXPECT_EQ(Chosen(unit::NoisyViews(LeaningCamera(), 20, seed)).Name(), "full") << seed;
  }
}

TEST(ModelComparison, MeetsUnseenViewsWithTheErrorOfTheirPointsAlone) {
  // With many views the intrinsics are as good as known: what is left is the noise, less what poses take up.
  const ModelChoice choice = Chosen(unit::NoisyViews(unit::DistortedCamera(), 40, 46));
  EXPECT_NEAR(choice.candidates[0].unseen, choice.candidates[0].rms, 0.02 * choice.candidates[0].rms);
  EXPECT_GT(choice.candidates[0].unseen, choice.candidates[0].rms);
}

TEST(ModelComparison, IsNotMisledByAViewInWrongOrder) {
  auto views = unit::NoisyViews(unit::DistortedCamera(), 15, 47);
  std::reverse(views[3].begin(), views[3].end());
  SparseOptions options;
  options.robust = true;
  const ModelChoice choice = Chosen(views, options);
  EXPECT_EQ(choice.Name(), "classic");
  EXPECT_LT(choice.candidates[0].rms, 0.2);
}

ModelChoice::Candidate CandidateOf(int model, double criterion, double unseen, bool poleFree = true) {
  ModelChoice::Candidate candidate;
  candidate.model = model;
  candidate.rms = 0.1;
  candidate.criterion = criterion;
  candidate.unseen = unseen;
  candidate.poleFree = poleFree;
  return candidate;
}

TEST(ModelComparison, WantsALargerModelToBeBetterInEveryRespect) {
  const auto classic = CandidateOf(Calibrator::MODEL_CLASSIC, -100.0, 0.12);
  const auto choose = [&](double criterion, double unseen, bool poleFree) {
    return ChooseAmong({classic, CandidateOf(Calibrator::MODEL_RATIONAL, criterion, unseen, poleFree)});
  };
  EXPECT_EQ(choose(-101.0, 0.12, true).Name(), "rational");
  const double infinite = std::numeric_limits<double>::infinity();
  const std::tuple<ModelChoice, const char*> refused[] = {
      {choose(-99.0, 0.11, true), "not worth its coefficients"},
      {choose(-101.0, 0.13, true), "predicts views kept out of the fit less well"},
      {choose(-101.0, infinite, true), "predicts views kept out of the fit less well"},
      {choose(-101.0, 0.11, false), "pole"}};
  for (const auto& [choice, words] : refused) {
    EXPECT_EQ(choice.Name(), "classic");
    EXPECT_NE(choice.reasons.front().find(words), std::string::npos) << choice.reasons.front();
  }
}

TEST(ModelComparison, MayStepOverARationalModelThatIsNotBetter) {
  const ModelChoice choice = ChooseAmong({CandidateOf(Calibrator::MODEL_CLASSIC, -100.0, 0.12),
                                          CandidateOf(Calibrator::MODEL_RATIONAL, -90.0, 0.12),
                                          CandidateOf(Calibrator::MODEL_FULL, -200.0, 0.11)});
  EXPECT_EQ(choice.Name(), "full");
  EXPECT_NE(choice.reasons[1].find("than the classic one"), std::string::npos);
}

TEST(ModelComparison, IsACalibratorsToo) {
  const auto calibrator = unit::CalibratorWith(unit::NoisyViews(unit::DistortedCamera(), 12, 41));
  const ModelChoice choice = calibrator->ChooseModel();
  EXPECT_EQ(choice.model, Calibrator::MODEL_CLASSIC);
  EXPECT_EQ(choice.candidates.size(), 3U);
  EXPECT_EQ(calibrator->GetStatus(), Calibrator::STATUS_READY);
  EXPECT_TRUE(calibrator->GetK().empty());
}

TEST(ModelComparison, ChoosesNothingWithoutEnoughSnapshots) {
  const auto calibrator = unit::CalibratorWith(unit::NoisyViews(unit::DistortedCamera(), 4, 41));
  EXPECT_NE(unit::PrintedBy([&] { EXPECT_EQ(calibrator->ChooseModel().Name(), "none"); }), "");
  EXPECT_EQ(unit::MakeCalibrator(Calibrator::STEREO)->ChooseModel().model, 0);
}

TEST(ModelChoice, HasANumberForEachName) {
  for (const int model : {Calibrator::MODEL_CLASSIC, Calibrator::MODEL_RATIONAL, Calibrator::MODEL_FULL}) {
    EXPECT_EQ(ModelChoice::NumberOf(ModelChoice::NameOf(model)), model);
  }
  EXPECT_EQ(ModelChoice::NumberOf("none"), 0);
  EXPECT_EQ(ModelChoice::NumberOf("Classic"), 0);
}

}  // namespace
