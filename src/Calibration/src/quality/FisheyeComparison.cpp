/// Compares a fisheye with the lenses of planes.
#include "quality/FisheyeComparison.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "model/LensModel.h"
#include "quality/ModelCandidate.h"
#include "quality/SheetChoice.h"
#include "solver/FisheyeProjection.h"

namespace velmora {

namespace {

/// Before lenses of planes wide views look like no image of a grid: beyond this ratio of the points that are
/// kept those of the fisheye count.
constexpr double CLEARLY_MORE = 1.02;

/// Points of views, as they are observed.
struct Records {
  std::vector<std::vector<cv::Point3d>> object;
  std::vector<std::vector<cv::Point2d>> image;
  solver::PointDeviations deviations;  ///< none where nothing is known of any

  double Count() const {
    double count = 0.0;
    for (const auto& view : image) count += static_cast<double>(view.size());
    return count;
  }
};

/// What a computation did not reject.
Records KeptOf(const SparseResult& result, const Records& all) {
  std::vector<std::vector<bool>> kept;
  for (const auto& view : all.image) kept.emplace_back(view.size(), true);
  for (const Rejected& rejected : result.rejected) {
    std::vector<bool>& view = kept[rejected.view];
    if (rejected.point == Rejected::WHOLE_VIEW) {
      view.assign(view.size(), false);
    } else {
      view[static_cast<size_t>(rejected.point)] = false;
    }
  }
  Records records;
  for (size_t i = 0; i < kept.size(); ++i) {
    std::vector<cv::Point3d> object;
    std::vector<cv::Point2d> image;
    std::vector<double> deviations;
    const bool known = !all.deviations.empty() && !all.deviations[i].empty();
    for (size_t k = 0; k < kept[i].size(); ++k) {
      if (!kept[i][k]) continue;
      object.push_back(all.object[i][k]);
      image.push_back(all.image[i][k]);
      if (known) deviations.push_back(all.deviations[i][k]);
    }
    if (object.empty()) continue;
    records.object.push_back(std::move(object));
    records.image.push_back(std::move(image));
    if (!all.deviations.empty()) records.deviations.push_back(std::move(deviations));
  }
  return records;
}

/// Gives nothing for views that cannot be computed so.
template <typename Compute>
bool Tried(const Compute& compute, SparseResult& result) {
  try {
    result = compute();
    return true;
  } catch (const cv::Exception&) {
    return false;
  }
}

class Comparison {
 public:
  Comparison(const cv::Size& imageSize, int model, const SparseOptions& options)
      : imageSize_(imageSize), model_(model), options_(options) {}

  bool Fisheye(const Records& records, SparseResult& result) const {
    return Tried(
        [&] { return SolveFisheyeWithSheet(records.object, records.image, imageSize_, OptionsFor(records)); },
        result);
  }

  bool Plane(const Records& records, SparseResult& result) const {
    return Tried(
        [&] {
          return SolveIntrinsicsWithSheet(records.object, records.image, imageSize_, model_,
                                          OptionsFor(records));
        },
        result);
  }

  void TakeAll() { options_.robust = false; }

  ModelChoice::Candidate CandidateFrom(const SparseResult& result, int model, int parameters) const {
    solver::BundleOptions bundle;
    bundle.parameters = parameters;
    bundle.threads = std::max(options_.threads, 1);
    return CandidateOf(*result.solution, bundle, model);
  }

 private:
  SparseOptions OptionsFor(const Records& records) const {
    SparseOptions options = options_;
    options.deviations = records.deviations;
    return options;
  }

  const cv::Size imageSize_;
  const int model_;
  SparseOptions options_;
};

}  // namespace

double WidestAngleOf(const Solution& fisheye) {
  const solver::FisheyeProjection projection(fisheye.rig.cameras.front().intrinsics);
  double widest = 0.0;
  for (const TargetView& view : fisheye.views) {
    const Observation& observation = view.observations.front();
    for (size_t k = 0; k < observation.image.size(); ++k) {
      cv::Vec3d ray;
      if (observation.Weight(k) > 0.0 && projection.RayOf(observation.image[k], ray))
        widest = std::max(widest, std::acos(ray[2]) * 180.0 / CV_PI);
    }
  }
  return widest;
}

FisheyeComparison CompareWithFisheye(const std::vector<std::vector<cv::Point3d>>& objectPoints,
                                     const std::vector<std::vector<cv::Point2d>>& imagePoints,
                                     const cv::Size& imageSize, int model, const SparseOptions& options) {
  FisheyeComparison compared;
  Comparison comparison(imageSize, model, options);
  const Records all{objectPoints, imagePoints, options.deviations};
  Records records = all;
  SparseResult fisheye;
  SparseResult plane;
  compared.computed = comparison.Fisheye(records, fisheye);
  if (!compared.computed) return compared;
  compared.planeComputed = comparison.Plane(records, plane);
  if (options.robust) {
    const Records ofFisheye = KeptOf(fisheye, all);
    const Records ofPlane = compared.planeComputed ? KeptOf(plane, all) : Records();
    records = ofFisheye.Count() > CLEARLY_MORE * ofPlane.Count() ? ofFisheye : ofPlane;
    comparison.TakeAll();
    compared.computed = comparison.Fisheye(records, fisheye);
    compared.planeComputed = comparison.Plane(records, plane);
  }
  if (compared.computed) {
    compared.fisheye = comparison.CandidateFrom(fisheye, 0, FISHEYE_PARAMETERS);
    compared.widest = WidestAngleOf(*fisheye.solution);
  }
  if (compared.planeComputed) {
    compared.plane = comparison.CandidateFrom(plane, model, LensModelOf(model).parameters);
  }
  return compared;
}

}  // namespace velmora
