/// Real photographs of sheets, as far as they are at hand.
#include "Photographs.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <opencv2/imgcodecs.hpp>

#include "Calibrator.h"
#include "model/TargetGeometry.h"

using namespace velmora;

namespace accuracy {

namespace {

namespace fs = std::filesystem;

Photographs Read(const std::string& folder, bool fine) {
  Photographs all;
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(folder)) files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  const std::vector<cv::Point3d> target = MakeObjectTemplate(GRID, UNIT);
  std::unique_ptr<Calibrator> finder;
  for (const fs::path& file : files) {
    cv::Mat image = cv::imread(file.string(), cv::IMREAD_COLOR | cv::IMREAD_IGNORE_ORIENTATION);
    if (image.empty() || (finder != nullptr && image.size() != all.size)) continue;
    if (finder == nullptr) {
      all.size = image.size();
      finder = std::make_unique<Calibrator>(GRID, UNIT, Calibrator::MONOCULAR, image.cols, image.rows);
      finder->SetFinder(Calibrator::FINDER_ROBUST);
      finder->SetPartialGrids(true);
      finder->SetFineCentres(fine);
    }
    std::vector<cv::Point2d> points;
    std::vector<double> weights;
    std::vector<double> deviations;
    if (!finder->DetectPartial(image, points, weights, deviations, false)) continue;
    all.targets.emplace_back();
    all.views.emplace_back();
    if (fine) all.deviations.emplace_back();
    for (std::size_t k = 0; k < points.size(); ++k) {
      if (weights[k] == 0.0) continue;
      all.targets.back().push_back(target[k]);
      all.views.back().push_back(points[k]);
      if (fine) all.deviations.back().push_back(deviations[k]);
    }
  }
  return all;
}

}  // namespace

std::unique_ptr<Photographs> PhotographsAtHand(const std::string& name, bool fine) {
  const std::string folder = std::string(VELMORA_SHARED_DATA) + "/" + name;
  if (fs::is_directory(folder)) return std::make_unique<Photographs>(Read(folder, fine));
  std::cerr << "skipped: the photographs " << name << " are not at hand\n";
  return nullptr;
}

Photographs Chosen(const Photographs& all, const std::vector<std::size_t>& which) {
  Photographs chosen;
  chosen.size = all.size;
  for (const std::size_t i : which) {
    chosen.targets.push_back(all.targets[i]);
    chosen.views.push_back(all.views[i]);
    if (!all.deviations.empty()) chosen.deviations.push_back(all.deviations[i]);
  }
  return chosen;
}

std::vector<std::size_t> Shuffled(std::size_t count, std::uint64_t seed) {
  std::vector<std::size_t> order(count);
  for (std::size_t i = 0; i < count; ++i) order[i] = i;
  cv::RNG random(seed);
  for (std::size_t i = count; i > 1; --i) {
    std::swap(order[i - 1], order[static_cast<std::size_t>(random.uniform(0, static_cast<int>(i)))]);
  }
  return order;
}

}  // namespace accuracy
