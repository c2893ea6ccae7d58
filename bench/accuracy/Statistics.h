/// Numbers that stand for many trials.
#pragma once

#include <functional>
#include <vector>

#include "Trial.h"

namespace accuracy {

/// The value below which the share lies; infinities count as large. NaN of nothing.
double Quantile(std::vector<double> values, double share);
double Median(const std::vector<double>& values);
double RootMeanSquare(const std::vector<double>& values);

/// The trials of seeds 1 to `count`: all cases meet the same ones, so that they can be compared.
std::vector<Trial> RunTrials(const Case& what, int count);

/// Only the trials that did not fail.
std::vector<Trial> Succeeded(const std::vector<Trial>& trials);

/// One number of each trial.
std::vector<double> Each(const std::vector<Trial>& trials, const std::function<double(const Trial&)>& number);

/// How true the standard deviations of the parameters from `first` to before `last` were.
struct Honesty {
  double within1 = 0.0;  ///< share of the errors within one standard deviation; 0.683 if they are true
  double within2 = 0.0;  ///< within two; 0.954
  double ratio = 0.0;    ///< median error over standard deviation, over that of normal errors; 1
};
Honesty HonestyOf(const std::vector<Trial>& trials, std::size_t first, std::size_t last);

}  // namespace accuracy
