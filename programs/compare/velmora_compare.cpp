/// Compares a calibration result with the truth of the pictures that it was made from, or with another
/// result.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "LensError.h"
#include "Truth.h"
#include "common/CommandLine.h"
#include "common/ExitStatus.h"
#include "common/Messages.h"

namespace {

constexpr const char* COEFFICIENTS[] = {"k1", "k2", "p1", "p2", "k3", "k4",   "k5",
                                        "k6", "s1", "s2", "s3", "s4", "tauX", "tauY"};

struct Result {
  world::Lens lens;
  cv::Size size;
  double rms = 0.0;
};

/// A member of a result file; raises std::runtime_error in ordinary words when there is none of that kind.
template <typename Value>
Value Member(const nlohmann::json& document, const char* key) {
  const auto found = document.find(key);
  if (found == document.end()) throw std::runtime_error(std::string("it has no ") + key);
  try {
    return found->template get<Value>();
  } catch (const nlohmann::json::exception&) {
    throw std::runtime_error(std::string("its ") + key + " is of another kind");
  }
}

std::vector<double> MatrixData(const nlohmann::json& document, const char* key) {
  const auto matrix = Member<nlohmann::json>(document, key);
  const auto data = matrix.is_object() ? matrix.find("data") : matrix.end();
  if (data == matrix.end() || !data->is_array() ||
      !std::all_of(data->begin(), data->end(), [](const auto& number) { return number.is_number(); })) {
    throw std::runtime_error(std::string("its ") + key + " is not a matrix");
  }
  return data->get<std::vector<double>>();
}

world::Lens LensIn(const nlohmann::json& document, const cv::Matx33d& K) {
  if (!document.contains("fisheyeCoefs")) return world::Lens(K, MatrixData(document, "distCoefs"));
  const std::vector<double> data = MatrixData(document, "fisheyeCoefs");
  world::FisheyeCurve::Coefficients k = {};
  if (data.size() != k.size()) throw std::runtime_error("its fisheyeCoefs do not hold 4 numbers");
  std::copy(data.begin(), data.end(), k.begin());
  return world::Lens(K, world::FisheyeCurve(k));
}

Result ResultIn(const nlohmann::json& document) {
  if (!document.is_object()) throw std::runtime_error("it is not a JSON object");
  const std::vector<double> k = MatrixData(document, "cameraMatrix");
  if (k.size() != 9) throw std::runtime_error("its cameraMatrix does not hold 9 numbers");
  Result result;
  result.lens = LensIn(document, cv::Matx33d(k.data()));
  result.size = {Member<int>(document, "imgWidth"), Member<int>(document, "imgHeight")};
  result.rms = Member<double>(document, "error");
  if (result.size.width < 1 || result.size.height < 1) {
    throw std::runtime_error("its image size is not positive");
  }
  return result;
}

Result LoadResult(const std::string& path) {
  std::ifstream file(path);
  if (!file) throw std::runtime_error("cannot read '" + path + "'");
  try {
    return ResultIn(nlohmann::json::parse(file));
  } catch (const nlohmann::json::parse_error&) {
    throw std::runtime_error("'" + path + "' is not a result file: it is not JSON, or ends too early");
  } catch (const std::exception& fault) {
    throw std::runtime_error("'" + path + "' is not a result file: " + fault.what());
  }
}

/// One of the two lenses, and what it is called beside the other one.
struct Compared {
  world::Lens lens;
  std::string name;
};

/// Whether the file holds a result, not a truth; false of what cannot be read.
bool HoldsResult(const std::string& path) {
  std::ifstream file(path);
  const nlohmann::json document = nlohmann::json::parse(file, nullptr, false);
  return document.is_object() && document.contains("cameraMatrix") && document.contains("imgWidth");
}

/// Coefficients without the zeros at their end.
std::vector<double> Significant(std::vector<double> D) {
  while (!D.empty() && D.back() == 0.0) D.pop_back();
  return D;
}

/// How many coefficients the smallest model has that these belong to.
std::size_t ModelOf(const std::vector<double>& D) {
  const std::size_t count = Significant(D).size();
  if (count <= 5) return 5;
  return count <= 8 ? 8 : 14;
}

void PrintRow(const char* name, double estimate, double truth, bool percent) {
  std::printf("%-6s %14.6f | %14.6f | %12.6f", name, estimate, truth, std::abs(estimate - truth));
  if (percent) std::printf("  (%.4f %%)", 100.0 * std::abs(estimate - truth) / truth);
  std::printf("\n");
}

void PrintCoefficients(const std::vector<double>& estimate, const std::vector<double>& truth) {
  if (ModelOf(estimate) != ModelOf(truth)) {
    std::printf("The coefficients belong to different models (%zu and %zu of them) and are not comparable.\n",
                ModelOf(estimate), ModelOf(truth));
    return;
  }
  std::vector<double> left = Significant(estimate);
  std::vector<double> right = Significant(truth);
  const std::size_t count = std::max(left.size(), right.size());
  left.resize(count, 0.0);
  right.resize(count, 0.0);
  for (std::size_t k = 0; k < count; ++k) PrintRow(COEFFICIENTS[k], left[k], right[k], false);
}

void PrintLenses(const Compared& first, const Compared& second) {
  const world::Lens& estimate = first.lens;
  const world::Lens& truth = second.lens;
  if (estimate.IsFisheye() != truth.IsFisheye()) {
    const Compared& fisheye = truth.IsFisheye() ? second : first;
    const Compared& pinhole = truth.IsFisheye() ? first : second;
    std::printf("The %s is a fisheye, the %s a pinhole: coefficients are not comparable.\n",
                fisheye.name.c_str(), pinhole.name.c_str());
    return;
  }
  if (!truth.IsFisheye()) {
    PrintCoefficients(estimate.D(), truth.D());
    return;
  }
  constexpr const char* NAMES[] = {"k1", "k2", "k3", "k4"};
  for (std::size_t i = 0; i < truth.Curve()->D().size(); ++i) {
    PrintRow(NAMES[i], estimate.Curve()->D()[i], truth.Curve()->D()[i], false);
  }
}

void PrintDistance(const std::string& name, const world::ProjectionDistance& distance) {
  if (std::isfinite(distance.max)) {
    std::printf("%-35s mean %9.4f px | max %9.4f px\n", name.c_str(), distance.mean, distance.max);
  } else {
    std::printf("%-35s the estimate has no pixel for what is beside the camera\n", name.c_str());
  }
}

/// Where fisheyes are compared, how far they are apart grows with the angle from the axis.
void PrintDistancesByAngle(const world::Lens& truth, const Result& result) {
  const std::vector<double> limits = {0.0, 30.0, 45.0, 60.0, 75.0, 90.0, 105.0, 180.0};
  const auto distances = world::ProjectionDistancesByAngle(truth, result.lens, result.size, limits, {},
                                                           world::Alignment::Rotated);
  for (std::size_t k = 0; k < distances.size(); ++k) {
    if (distances[k].count == 0) continue;
    const auto degrees = [](double limit) { return std::to_string(static_cast<int>(limit)); };
    PrintDistance("  " + degrees(limits[k]) + " to " + degrees(limits[k + 1]) + " degrees from the axis",
                  distances[k]);
  }
}

void PrintComparison(const Compared& first, const Compared& second, const Result& result) {
  std::printf("%-6s %14s | %14s | %12s\n", "", first.name.c_str(), second.name.c_str(),
              second.name == "truth" ? "error" : "difference");
  const cv::Matx33d K = second.lens.K();
  PrintRow("fx", first.lens.K()(0, 0), K(0, 0), true);
  PrintRow("fy", first.lens.K()(1, 1), K(1, 1), true);
  PrintRow("cx", first.lens.K()(0, 2), K(0, 2), false);
  PrintRow("cy", first.lens.K()(1, 2), K(1, 2), false);
  PrintLenses(first, second);
  std::printf("\nRMS error of the result %.4f px\n", result.rms);
  using world::Alignment;
  PrintDistance("Whole-image projection distance",
                world::MeanProjectionDistance(second.lens, result.lens, result.size, {}, Alignment::Raw));
  PrintDistance("  after the best rotation of the camera",
                world::MeanProjectionDistance(second.lens, result.lens, result.size, {}, Alignment::Rotated));
  if (second.lens.IsFisheye()) PrintDistancesByAngle(second.lens, result);
}

void CompareWithTruth(const Result& result, const std::string& truthPath) {
  const world::Truth truth = world::LoadTruth(truthPath);
  if (result.size != truth.imageSize) {
    std::printf("The truth of %d x %d pixels is scaled to the result's %d x %d.\n", truth.imageSize.width,
                truth.imageSize.height, result.size.width, result.size.height);
  }
  PrintComparison({result.lens, "estimate"},
                  {world::Resized(truth.lens, truth.imageSize, result.size), "truth"}, result);
}

void CompareWithResult(const Result& result, const std::string& path) {
  const Result other = LoadResult(path);
  if (result.size != other.size) throw std::runtime_error("the results are of images of different sizes");
  PrintComparison({result.lens, "result"}, {other.lens, "other"}, result);
}

void Compare(const std::string& resultPath, const std::string& otherPath) {
  const Result result = LoadResult(resultPath);
  if (HoldsResult(otherPath)) {
    CompareWithResult(result, otherPath);
  } else {
    CompareWithTruth(result, otherPath);
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::string result;
  std::string truth;
  CLI::App app("Compares a calibration result with the truth of rendered images, or with another result.",
               "velmora-compare");
  common::PrepareCommandLine(app);
  app.add_option("RESULT", result, "result file of a calibration")->required();
  app.add_option("TRUTH", truth, "truth file of the rendered images, or another result file")->required();
  try {
    app.parse(argc, argv);
    Compare(result, truth);
    return common::SUCCESS;
  } catch (const CLI::ParseError& error) {
    return common::EndOfParsing(app, error, "give a result file and a truth file, or another result file");
  } catch (const std::exception& fault) {
    common::PrintError(std::cerr, fault);
    return common::UNUSABLE;
  }
}
