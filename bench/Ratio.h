/// Times two ways of doing the same thing side by side.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <vector>

namespace bench {

/// Runs both in turn in every iteration of a benchmark, so that whatever else the machine does meets both
/// alike, and reports the ratio of their medians. The benchmark's own time is that of the engine's way.
class Ratio {
 public:
  template <typename Engine, typename Bare>
  void Run(benchmark::State& state, Engine engine, Bare bare) {
    bool engineFirst = false;
    for (auto iteration : state) {
      static_cast<void>(iteration);
      engineFirst = !engineFirst;
      if (!engineFirst) bare_.push_back(Seconds(bare));
      engine_.push_back(Seconds(engine));
      if (engineFirst) bare_.push_back(Seconds(bare));
      state.SetIterationTime(engine_.back());
    }
    const double engineMedian = Median(engine_);
    const double bareMedian = Median(bare_);
    state.counters["engine_ms"] = engineMedian * 1e3;
    state.counters["bare_ms"] = bareMedian * 1e3;
    state.counters["ratio"] = engineMedian / bareMedian;
  }

 private:
  template <typename Work>
  static double Seconds(Work& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  }

  static double Median(std::vector<double> samples) {
    const auto middle = samples.begin() + static_cast<std::ptrdiff_t>(samples.size() / 2);
    std::nth_element(samples.begin(), middle, samples.end());
    return *middle;
  }

  std::vector<double> engine_;
  std::vector<double> bare_;
};

}  // namespace bench
