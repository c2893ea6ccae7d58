/// What is known of a camera while views are taken.
#include "guided/Estimator.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <future>
#include <memory>
#include <thread>

#include "GuidedScenes.h"
#include "Matchers.h"
#include "unit/Scopes.h"

namespace {

using guided::Compute;
using guided::Estimator;
using guided::NamedSnapshot;
using guided_test::JustCompute;
using guided_test::Named;

guided::ComputationSettings Settings() {
  return guided_test::SettingsOfPoints(Calibrator::MODEL_CLASSIC);
}

bool Known(Estimator& estimator) {
  return unit::Eventually([&] {
    estimator.Poll();
    return estimator.Current() != nullptr;
  });
}

bool AtRest(Estimator& estimator) {
  return unit::Eventually([&] {
    estimator.Poll();
    return !estimator.IsComputing();
  });
}

std::vector<NamedSnapshot> FirstOf(const std::vector<NamedSnapshot>& views, std::ptrdiff_t count) {
  return {views.begin(), views.begin() + count};
}

TEST(Estimator, KnowsWhatTheViewsComeTo) {
  const auto views = Named(unit::NoisyViews(6));
  Estimator estimator(Settings());
  EXPECT_EQ(estimator.Current(), nullptr);
  EXPECT_EQ(estimator.Latest(), nullptr);
  estimator.Update(views);
  ASSERT_TRUE(Known(estimator));
  const auto expected = Compute(views, Settings(), JustCompute);
  ASSERT_FALSE(estimator.Current()->Failed()) << estimator.Current()->fault;
  EXPECT_EQ(estimator.Current()->numbers, expected.numbers);
  EXPECT_SAME_MAT(estimator.Current()->cameras[0].report.K, expected.cameras[0].report.K);
  EXPECT_EQ(estimator.Latest(), estimator.Current());
}

TEST(Estimator, DoesNotComputeTheSameViewsAgain) {
  Estimator estimator(Settings());
  estimator.Update(Named(unit::NoisyViews(5)));
  ASSERT_TRUE(Known(estimator));
  const auto known = estimator.Current();
  for (int i = 0; i < 3; ++i) {
    estimator.Poll();
    EXPECT_FALSE(estimator.IsComputing());
  }
  EXPECT_EQ(estimator.Current(), known);
}

TEST(Estimator, EndsWithTheNewestViewsHoweverFastTheyCome) {
  const auto views = Named(unit::NoisyViews(12));
  Estimator estimator(Settings());
  for (std::ptrdiff_t count = 1; count <= 12; ++count) estimator.Update(FirstOf(views, count));
  ASSERT_TRUE(Known(estimator));
  EXPECT_EQ(estimator.Current()->numbers.size(), 12U);
  ASSERT_TRUE(AtRest(estimator));
  EXPECT_EQ(estimator.Current()->numbers.size(), 12U);
}

TEST(Estimator, HasTheEarlierResultUntilTheNewOneIsThere) {
  const auto views = Named(unit::NoisyViews(7));
  Estimator estimator(Settings());
  estimator.Update(FirstOf(views, 6));
  ASSERT_TRUE(Known(estimator));
  const auto earlier = estimator.Current();
  estimator.Update(views);
  // Only Poll takes what has been computed.
  EXPECT_EQ(estimator.Current(), nullptr);
  EXPECT_EQ(estimator.Latest(), earlier);
  EXPECT_TRUE(estimator.IsComputing());
  ASSERT_TRUE(Known(estimator));
  EXPECT_EQ(estimator.Latest(), estimator.Current());
  EXPECT_EQ(estimator.Latest()->numbers.size(), 7U);
}

TEST(Estimator, KnowsNothingBelowFiveViews) {
  const auto views = Named(unit::NoisyViews(6));
  Estimator estimator(Settings());
  estimator.Update(FirstOf(views, 4));
  EXPECT_FALSE(estimator.IsComputing());
  EXPECT_EQ(estimator.Current(), nullptr);
  estimator.Update(FirstOf(views, 5));
  ASSERT_TRUE(Known(estimator));
  estimator.Update(FirstOf(views, 4));
  EXPECT_EQ(estimator.Current(), nullptr);
  EXPECT_EQ(estimator.Latest(), nullptr);
  estimator.Update({});
  EXPECT_EQ(estimator.Latest(), nullptr);
  EXPECT_FALSE(estimator.IsComputing());
}

TEST(Estimator, ForgetsWhatIsComputedOfViewsThatWereTakenBack) {
  const auto views = Named(unit::NoisyViews(6));
  Estimator estimator(Settings());
  estimator.Update(views);
  EXPECT_TRUE(estimator.IsComputing());
  estimator.Update(FirstOf(views, 4));
  ASSERT_TRUE(AtRest(estimator));
  EXPECT_EQ(estimator.Latest(), nullptr);
  EXPECT_EQ(estimator.Current(), nullptr);
  estimator.Update(FirstOf(views, 5));
  ASSERT_TRUE(Known(estimator));
  EXPECT_EQ(estimator.Current()->numbers.size(), 5U);
}

TEST(Estimator, HasTheFaultOfViewsThatComeToNothing) {
  unit::PointLists still(6, std::vector<cv::Point2d>(44, cv::Point2d(320.0, 240.0)));
  Estimator estimator(Settings());
  estimator.Update(Named(still));
  ASSERT_TRUE(Known(estimator));
  EXPECT_TRUE(estimator.Current()->Failed());
  EXPECT_NE(estimator.Current()->fault, "");
}

TEST(Estimator, OfAPairKnowsThePair) {
  Estimator estimator(guided_test::SettingsOfPoints());
  estimator.Update(Named(unit::NoisyPairs(6)));
  ASSERT_TRUE(Known(estimator));
  ASSERT_FALSE(estimator.Current()->Failed()) << estimator.Current()->fault;
  EXPECT_TRUE(estimator.Current()->pair);
}

/// Destroys it on another thread. Whether that ended before a deadline.
bool EndsSoon(std::unique_ptr<Estimator> estimator) {
  std::promise<void> ended;
  std::future<void> end = ended.get_future();
  std::thread destroying([&] {
    estimator.reset();
    ended.set_value();
  });
  const bool soon = end.wait_for(std::chrono::seconds(120)) == std::future_status::ready;
  if (soon) {
    destroying.join();
  } else {
    std::abort();  // the thread has what this function owns
  }
  return soon;
}

TEST(Estimator, EndsWhileItComputes) {
  for (const auto& views : {Named(unit::NoisyViews(60)), Named(unit::NoisyPairs(40))}) {
    auto estimator = std::make_unique<Estimator>(guided_test::SettingsOfPoints());
    estimator->Update(views);
    EXPECT_TRUE(estimator->IsComputing());
    EXPECT_TRUE(EndsSoon(std::move(estimator)));
  }
}

TEST(Estimator, EndsInAnyMomentOfAComputation) {
  const auto views = Named(unit::NoisyPairs(5));
  for (int i = 0; i < 12; ++i) {
    auto estimator = std::make_unique<Estimator>(guided_test::SettingsOfPoints(Calibrator::MODEL_RATIONAL));
    estimator->Update(views);
    // Moments that differ by what this thread does meanwhile.
    for (int k = 0; k < i; ++k) unit::NoisyPairs(6);
    EXPECT_TRUE(EndsSoon(std::move(estimator)));
  }
}

}  // namespace
