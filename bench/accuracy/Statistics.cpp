/// Summarises trials.
#include "Statistics.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace accuracy {

double Quantile(std::vector<double> values, double share) {
  if (values.empty()) return std::numeric_limits<double>::quiet_NaN();
  const auto at = static_cast<std::ptrdiff_t>(std::lround(share * static_cast<double>(values.size() - 1)));
  std::nth_element(values.begin(), values.begin() + at, values.end());
  return values[static_cast<std::size_t>(at)];
}

double Median(const std::vector<double>& values) {
  return Quantile(values, 0.5);
}

double RootMeanSquare(const std::vector<double>& values) {
  double sum = 0.0;
  for (const double value : values) sum += value * value;
  return std::sqrt(sum / static_cast<double>(values.size()));
}

std::vector<Trial> RunTrials(const Case& what, int count) {
  std::vector<Trial> trials;
  for (int seed = 1; seed <= count; ++seed)
    trials.push_back(RunTrial(what, static_cast<std::uint64_t>(seed)));
  return trials;
}

std::vector<Trial> Succeeded(const std::vector<Trial>& trials) {
  std::vector<Trial> good;
  std::copy_if(trials.begin(), trials.end(), std::back_inserter(good),
               [](const Trial& trial) { return !trial.failed; });
  return good;
}

std::vector<double> Each(const std::vector<Trial>& trials,
                         const std::function<double(const Trial&)>& number) {
  std::vector<double> values;
  values.reserve(trials.size());
  for (const Trial& trial : trials) values.push_back(number(trial));
  return values;
}

Honesty HonestyOf(const std::vector<Trial>& trials, std::size_t first, std::size_t last) {
  std::vector<double> ratios;
  for (const Trial& trial : Succeeded(trials)) {
    for (std::size_t i = first; i < last; ++i)
      ratios.push_back(std::abs(trial.errors[i] / trial.deviations[i]));
  }
  const auto share = [&](double limit) {
    const auto within =
        std::count_if(ratios.begin(), ratios.end(), [&](double ratio) { return ratio <= limit; });
    return static_cast<double>(within) / static_cast<double>(ratios.size());
  };
  return {share(1.0), share(2.0), Median(ratios) / 0.6745};
}

}  // namespace accuracy
