/// The table of real photographs: how far cameras from different views of one set disagree.
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <iostream>
#include <memory>
#include <opencv2/imgcodecs.hpp>

#include "Calibrator.h"
#include "LensError.h"
#include "Seed.h"
#include "Tables.h"
#include "model/TargetGeometry.h"
#include "quality/Assessment.h"

using namespace velmora;

namespace accuracy {

namespace {

namespace fs = std::filesystem;

/// Photographs of a sheet, as a camera saw it.
struct Photographs {
  cv::Size size;
  std::vector<std::vector<cv::Point3d>> targets;  ///< the circles that are seen of each
  Points views;
};

Photographs Read(const std::string& folder) {
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
    }
    std::vector<cv::Point2d> points;
    std::vector<double> weights;
    if (!finder->DetectPartial(image, points, weights, false)) continue;
    all.targets.emplace_back();
    all.views.emplace_back();
    for (std::size_t k = 0; k < points.size(); ++k) {
      if (weights[k] == 0.0) continue;
      all.targets.back().push_back(target[k]);
      all.views.back().push_back(points[k]);
    }
  }
  return all;
}

struct Half {
  SparseResult result;
  CalibrationVerdict verdict;
};

Half Calibrated(const Photographs& all, const std::vector<std::size_t>& chosen) {
  std::vector<std::vector<cv::Point3d>> targets;
  Points views;
  for (const std::size_t i : chosen) {
    targets.push_back(all.targets[i]);
    views.push_back(all.views[i]);
  }
  SparseOptions options;
  options.robust = true;
  options.threads = 1;
  options.discRadius = 0.4 * static_cast<double>(UNIT);
  Half half;
  half.result = SolveIntrinsicsSparsely(targets, views, all.size, Calibrator::MODEL_CLASSIC, options);
  half.verdict = AssessIntrinsics(targets, views, all.size, half.result, options.discRadius);
  return half;
}

/// Of two cameras, each from as many views of its own.
struct Disagreement {
  double apart = 0.0;  ///< of a coordinate of projections, root of the mean square where any view was, pixels
  double told = 0.0;   ///< by both verdicts
  bool good = false;   ///< by either
};

Disagreement Compared(const Photographs& all, std::size_t each, std::uint64_t seed) {
  std::vector<std::size_t> order(all.views.size());
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
  cv::RNG random(world::MixSeeds(seed, each));
  for (std::size_t i = order.size(); i > 1; --i) {
    std::swap(order[i - 1], order[static_cast<std::size_t>(random.uniform(0, static_cast<int>(i)))]);
  }
  const auto at = [&](std::size_t place) { return order.begin() + static_cast<std::ptrdiff_t>(place); };
  const Half a = Calibrated(all, {at(0), at(each)});
  const Half b = Calibrated(all, {at(each), at(2 * each)});
  Disagreement disagreement;
  disagreement.apart = world::MeanProjectionDistance(
                           world::LensFrom(a.result.K, a.result.D), world::LensFrom(b.result.K, b.result.D),
                           all.size, world::CoveredRegion(all.views), world::Alignment::Rotated)
                           .rms /
                       std::sqrt(2.0);
  disagreement.told = std::hypot(a.verdict.ExpectedInData(), b.verdict.ExpectedInData());
  disagreement.good = a.verdict.grade == CalibrationVerdict::Grade::Good ||
                      b.verdict.grade == CalibrationVerdict::Grade::Good;
  return disagreement;
}

Row RowOf(const std::string& name, const Photographs& all, std::size_t each, int trials) {
  std::vector<double> apart;
  std::vector<double> told;
  double good = 0.0;
  int failed = 0;
  for (int seed = 1; seed <= trials; ++seed) {
    try {
      const Disagreement one = Compared(all, each, static_cast<std::uint64_t>(seed));
      apart.push_back(one.apart);
      told.push_back(one.told);
      good += one.good ? 1.0 : 0.0;
    } catch (const std::exception&) {
      ++failed;
    }
  }
  return {{{"photographs", name},
           {"of", Text(static_cast<double>(all.views.size()))},
           {"views of each camera", Text(static_cast<double>(each))},
           {"pairs of cameras", Text(trials)},
           {"failed", Text(failed)}},
          {{"apart", Median(apart)},
           {"apart 90", Quantile(apart, 0.9)},
           {"told", Median(told)},
           {"either good", good / std::max<double>(1.0, static_cast<double>(apart.size())), true}}};
}

}  // namespace

Table RealTable(const Effort& effort) {
  Table table{
      "photographs",
      "Real photographs",
      "Two cameras, each computed from views of its own that were drawn from one set of photographs of a "
      "hand-held sheet, classic model: how far they are apart where any view was (median and ninth "
      "decile), and how far the verdicts let expect. In pixels of a coordinate.",
      {}};
  const std::string folder = VELMORA_SHARED_DATA;
  for (const char* const name :
       {"office-4x11", "endoscope-stereo-4x11/left", "endoscope-stereo-4x11/right"}) {
    if (!fs::is_directory(folder + "/" + name)) {
      std::cerr << "skipped: the photographs " << name << " are not at hand\n";
      continue;
    }
    const Photographs all = Read(folder + "/" + name);
    for (const std::size_t each : {3U, 4U, 5U, 7U}) {
      if (2 * each <= all.views.size()) table.rows.push_back(RowOf(name, all, each, effort.Of(60)));
    }
  }
  return table;
}

}  // namespace accuracy
