/// The options of a check of an earlier result.
#pragma once

#include <string>

namespace CLI {
class App;
}

namespace batch {

struct CheckArguments {
  std::string result;      ///< result file that is checked; empty: the images are calibrated
  double tolerance = 0.0;  ///< pixels; 0: what the images can tell

  bool IsGiven() const { return !result.empty(); }
};

void AddCheckOptions(CLI::App& app, CheckArguments& arguments);

/// Raises CLI's errors for options that were given and say nothing of a check.
void CheckExclusions(const CLI::App& app);

}  // namespace batch
