/// What is asked of the records of a rig before it is computed.
#include "calibrator/RigChecks.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>

namespace velmora {

namespace {

constexpr std::ptrdiff_t FEWEST_POINTS = 4;

/// A number of each point, of each camera and each view. Lists may be empty.
using Numbers = std::vector<std::vector<std::vector<double>>>;
/// Gets those of an image, and which it is.
using Check = std::function<void(const std::vector<double>& numbers, const std::string& place)>;

/// `name` is what the numbers are.
void RequireNumbers(const RigRecords& records, const Numbers& numbers, const std::string& name,
                    const Check& check) {
  Require(numbers.empty() || numbers.size() == records.imagePoints.size(),
          "There are " + name + " for " + std::to_string(numbers.size()) + " of " +
              std::to_string(records.imagePoints.size()) + " cameras: give all or none.");
  for (size_t i = 0; i < numbers.size(); ++i) {
    const std::string camera = " of camera " + std::to_string(i);
    Require(numbers[i].empty() || numbers[i].size() == records.objectPoints.size(),
            "The " + name + camera + " are of " + std::to_string(numbers[i].size()) +
                " views, the target has " + std::to_string(records.objectPoints.size()) + ".");
    for (size_t view = 0; view < numbers[i].size(); ++view) {
      const std::vector<double>& each = numbers[i][view];
      if (each.empty()) continue;
      const std::string place = camera + " in view " + std::to_string(view);
      Require(each.size() == records.imagePoints[i][view].size(),
              "There are " + std::to_string(each.size()) + " " + name + place + ", and " +
                  std::to_string(records.imagePoints[i][view].size()) + " points.");
      check(each, place);
    }
  }
}

void RequireWeights(const std::vector<double>& weights, const std::string& place) {
  Require(std::all_of(weights.begin(), weights.end(), [](double w) { return w == 0.0 || w == 1.0; }),
          "A weight" + place + " is neither 0 nor 1.");
  Require(std::count(weights.begin(), weights.end(), 1.0) >= FEWEST_POINTS,
          "Fewer than four points" + place + " were seen.");
}

void RequireDeviations(const std::vector<double>& deviations, const std::string& place) {
  Require(std::all_of(deviations.begin(), deviations.end(),
                      [](double deviation) { return std::isfinite(deviation) && deviation >= 0.0; }),
          "A deviation" + place + " is negative or not finite.");
}

}  // namespace

void Fail(int code, const std::string& text) {
  CV_Error(code, text);
}

void Require(bool condition, const std::string& text) {
  if (!condition) Fail(cv::Error::StsBadArg, text);
}

void RequireMatching(const RigRecords& records, const RigOptions& options) {
  const size_t cameras = records.imagePoints.size();
  Require(cameras >= 2, "A rig has two cameras or more.");
  Require(records.imageSizes.size() == cameras, "Each camera of a rig has an image size.");
  Require(!records.objectPoints.empty(), "There are no views.");
  Require(options.intrinsics.empty() || options.intrinsics.size() == cameras,
          "Intrinsics are given for " + std::to_string(options.intrinsics.size()) + " of " +
              std::to_string(cameras) + " cameras: give all or none.");
  for (size_t i = 0; i < cameras; ++i) {
    Require(records.imagePoints[i].size() == records.objectPoints.size(),
            "Camera " + std::to_string(i) + " has " + std::to_string(records.imagePoints[i].size()) +
                " views, the target " + std::to_string(records.objectPoints.size()) + ".");
  }
  RequireNumbers(records, records.weights, "weights", RequireWeights);
  RequireNumbers(records, records.deviations, "deviations", RequireDeviations);
}

}  // namespace velmora
