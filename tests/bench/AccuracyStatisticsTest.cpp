/// The numbers that stand for many trials.
#include "Statistics.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

/// Errors of 0.5, 1.5, 2.5 and -0.5 deviations in the first parameter.
std::vector<accuracy::Trial> FourTrials() {
  std::vector<accuracy::Trial> trials;
  for (const double error : {0.5, 1.5, 2.5, -0.5}) {
    accuracy::Trial trial;
    trial.errors[0] = 3.0 * error;
    trial.deviations[0] = 3.0;
    trials.push_back(trial);
  }
  return trials;
}

TEST(AccuracyStatistics, CountErrorsWithinDeviations) {
  const accuracy::Honesty honesty = accuracy::HonestyOf(FourTrials(), 0, 1);
  EXPECT_EQ(honesty.within1, 0.5);
  EXPECT_EQ(honesty.within2, 0.75);
  EXPECT_NEAR(honesty.ratio, 1.5 / 0.6745, 1e-12);
}

TEST(AccuracyStatistics, LeaveOutTrialsThatFailed) {
  auto trials = FourTrials();
  trials[2].failed = true;
  EXPECT_EQ(accuracy::Succeeded(trials).size(), 3U);
  EXPECT_EQ(accuracy::HonestyOf(trials, 0, 1).within2, 1.0);
}

TEST(AccuracyStatistics, QuantilesTakeInfinitiesForLarge) {
  const double infinite = std::numeric_limits<double>::infinity();
  EXPECT_EQ(accuracy::Median({3.0, infinite, 1.0}), 3.0);
  EXPECT_EQ(accuracy::Quantile({3.0, infinite, 1.0}, 1.0), infinite);
  EXPECT_EQ(accuracy::Quantile({3.0, 2.0, 1.0}, 0.0), 1.0);
  EXPECT_TRUE(std::isnan(accuracy::Median({})));
}

TEST(AccuracyStatistics, RootOfTheMeanSquareIsWhatItSays) {
  EXPECT_NEAR(accuracy::RootMeanSquare({3.0, 4.0}), std::sqrt(12.5), 1e-12);
}

}  // namespace
