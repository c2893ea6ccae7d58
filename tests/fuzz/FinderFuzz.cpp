/// Any frame is searched without an exception, in bounded time, and what is found lies in the frame. The time
/// is handed to the fuzzer as if it were code reached, so that it looks for slow frames; the slowest one is
/// told.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <iostream>

#include "finder/RobustFinder.h"
#include "fuzz/PaintedFrame.h"

using namespace velmora;

#ifdef __clang__
/// libFuzzer counts what is set in this section.
__attribute__((section("__libfuzzer_extra_counters"))) static std::uint8_t times[256];
#else
static std::uint8_t times[256];
#endif

namespace {

const cv::Size GRID(4, 11);

/// Milliseconds of the processor; the lesser of two searches, as the machine may be busy.
double Search(const cv::Mat& frame, GridFinding& finding) {
  double least = 1e9;
  for (int run = 0; run < 2; ++run) {
    const std::clock_t start = std::clock();
    finding = SearchGridRobust(frame, GRID);
    least = std::min(least, 1e3 * static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
  }
  return least;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  cv::setNumThreads(1);
  const cv::Mat frame = fuzz::PaintedFrame(data, size, {640, 480});
  GridFinding finding;
  const double taken = Search(frame, finding);
  if (finding.Found() != (finding.centres.size() == 44) || finding.centres.size() != finding.radii.size()) {
    std::abort();
  }
  for (const cv::Point2d& centre : finding.centres) {
    if (!cv::Rect2d(0.0, 0.0, frame.cols, frame.rows).contains(centre)) std::abort();
  }
  std::fill(std::begin(times), std::end(times), std::uint8_t{0});
  // Steps of a tenth.
  times[std::min(255, std::max(0, static_cast<int>(std::log(taken + 1e-9) / std::log(1.1)) + 40))] = 1;
  static double slowest = 0.0;
  if (taken > 1.05 * slowest) {
    slowest = taken;
    std::cerr << "slowest frame so far: " << taken << " ms\n";
  }
  return 0;
}
