/// Calibrates cameras that are fixed to each other.
#include "velmora/RigCalibration.h"

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>
#include <set>
#include <utility>

#include "calibrator/RigChecks.h"
#include "model/Codes.h"
#include "model/LensModel.h"
#include "quality/RigAssessment.h"
#include "quality/SheetChoice.h"
#include "solver/CameraCalibration.h"
#include "solver/Covariance.h"
#include "solver/OpenCvMatrices.h"
#include "solver/RigStart.h"
#include "solver/Target.h"
#include "solver/Threads.h"

namespace velmora {

namespace {

constexpr size_t FEWEST_VIEWS = 3;

SheetAssumption SheetOf(const RigOptions& options) {
  SheetAssumption sheet = SheetShapeOf(options.sheetShape);
  sheet.known = options.sheetPoints;
  return sheet;
}

class RigComputation {
 public:
  RigComputation(const RigRecords& records, const RigOptions& options)
      : records_(records), options_(options), views_(ViewsWithTarget()), target_(TargetOfViews()) {
    bundle_.parameters = options.fisheye ? FISHEYE_PARAMETERS : LensModelOf(options.model).parameters;
    bundle_.threads = options.threads > 0 ? options.threads : solver::ThreadsFor(target_.views.size());
    bundle_.discRadius = options.discRadius;
    bundle_.progress = [this, points = CountOf(target_.views)](int, double cost) {
      ++iterations_;
      return !options_.progress || options_.progress(iterations_, std::sqrt(cost / points));
    };
  }

  RigResult Run() {
    std::vector<TargetView> views = target_.views;
    Rig known = KnownRig(views);  // takes images from the views that are left below
    CalibrationProblem start = solver::StartOf(std::move(known), ObservedViews(views));
    start.estimated.intrinsics = options_.intrinsics.empty();
    Solution solution = solver::CalibrateRig(start, options_.robust, bundle_);
    RequireResult(solution, "The views agree with no rig.");
    const SheetAssumption sheet = SheetOf(options_);
    if (!sheet.IsFlat()) {
      solution = WithShape(start.views, solution, AboutMiddle(sheet, target_.middles.front()), bundle_);
      RequireResult(solution, "The views agree with no rig.");
    }
    TranslateNumbers(solution);
    return ResultOf(solution);
  }

 private:
  /// The views that any camera saw.
  std::vector<size_t> ViewsWithTarget() const {
    std::vector<size_t> views;
    for (size_t i = 0; i < records_.objectPoints.size(); ++i) {
      const bool observed = std::any_of(records_.imagePoints.begin(), records_.imagePoints.end(),
                                        [i](const auto& camera) { return !camera[i].empty(); });
      if (observed) views.push_back(i);
    }
    Require(!views.empty(), "No camera saw the target.");
    return views;
  }

  solver::Target TargetOfViews() const {
    solver::ObjectPoints object;
    std::vector<solver::ImagePoints> images(records_.imagePoints.size());
    std::vector<solver::PointDeviations> deviations(records_.deviations.size());
    for (const size_t view : views_) {
      object.push_back(records_.objectPoints[view]);
      for (size_t i = 0; i < images.size(); ++i) images[i].push_back(records_.imagePoints[i][view]);
      for (size_t i = 0; i < deviations.size(); ++i) {
        if (!records_.deviations[i].empty()) deviations[i].push_back(records_.deviations[i][view]);
      }
    }
    solver::Target target = solver::TargetOf(object, images, deviations);
    for (size_t i = 0; i < records_.weights.size(); ++i) {
      for (size_t k = 0; k < views_.size() && !records_.weights[i].empty(); ++k) {
        TakeSeen(records_.weights[i][views_[k]], target.views[k].observations[i]);
      }
    }
    return target;
  }

  static void TakeSeen(const std::vector<double>& weights, Observation& observation) {
    if (weights.empty() || observation.IsEmpty()) return;
    Observation seen;
    for (size_t k = 0; k < weights.size(); ++k) {
      if (weights[k] == 0.0) continue;
      seen.object.push_back(observation.object[k]);
      seen.image.push_back(observation.image[k]);
      if (!observation.deviations.empty()) seen.deviations.push_back(observation.deviations[k]);
    }
    observation = std::move(seen);
  }

  /// From a number among the points that a camera saw in a view of the records to that in the target.
  int InTarget(size_t view, size_t camera, int point) const {
    const bool whole = records_.weights.empty() || records_.weights[camera].empty() ||
                       records_.weights[camera][view].empty();
    if (point < 0 || whole) return point;
    const std::vector<double>& weights = records_.weights[camera][view];
    int number = 0;
    for (int left = point; weights[static_cast<size_t>(number)] == 0.0 || left-- > 0; ++number) {
    }
    return number;
  }

  void RequireResult(const Solution& solution, const std::string& text) const {
    if (bundle_.progress.IsGivenUp()) Fail(cv::Error::StsError, "The computation was given up.");
    if (!solution.usable) Fail(cv::Error::StsNoConv, text);
  }

  /// Each camera's intrinsics, given or from its own images. Images that are none of the target are taken
  /// from the views.
  Rig KnownRig(std::vector<TargetView>& views) {
    Rig rig;
    for (size_t i = 0; i < records_.imagePoints.size(); ++i) {
      Camera camera;
      camera.imageSize = records_.imageSizes[i];
      camera.intrinsics = options_.intrinsics.empty() ? IntrinsicsFrom(i, views) : GivenIntrinsics(i);
      rig.cameras.push_back(camera);
    }
    return rig;
  }

  Intrinsics GivenIntrinsics(size_t camera) const {
    const KnownIntrinsics& given = options_.intrinsics[camera];
    if (given.fisheye) {
      Require(given.K.rows == 3 && given.K.cols == 3 && given.D.total() == FISHEYE_COEFFICIENTS,
              "The intrinsics of camera " + std::to_string(camera) +
                  " are no camera matrix with the four coefficients of a fisheye.");
      return solver::KnownFisheye(given.K, given.D);
    }
    Require(given.K.rows == 3 && given.K.cols == 3 && !given.D.empty() && given.D.total() <= 14,
            "The intrinsics of camera " + std::to_string(camera) +
                " are no camera matrix with 1 to 14 coefficients.");
    return solver::KnownIntrinsics(given.K, given.D, MODEL_FULL);
  }

  Intrinsics IntrinsicsFrom(size_t camera, std::vector<TargetView>& views) {
    const std::string name = "camera " + std::to_string(camera);
    std::vector<size_t> observed;
    std::vector<TargetView> own;
    for (size_t i = 0; i < views.size(); ++i) {
      if (views[i].observations[camera].IsEmpty()) continue;
      observed.push_back(i);
      own.push_back({{}, {views[i].observations[camera]}});
    }
    Require(observed.size() >= FEWEST_VIEWS,
            "C" + name.substr(1) + " saw the target in " + std::to_string(observed.size()) +
                " views: three are the fewest that its intrinsics can be computed from.");
    const auto calibrate = [this](const auto& ofCamera, const cv::Size& size) {
      return options_.fisheye ? solver::CalibrateFisheye(ofCamera, size, options_.robust, bundle_)
                              : solver::CalibrateCamera(ofCamera, size, options_.robust, bundle_);
    };
    const Solution alone = calibrate(own, records_.imageSizes[camera]);
    RequireResult(alone, "The views of " + name + " agree with no camera.");
    for (const Rejected& rejected : alone.rejected) {
      if (rejected.point != Rejected::WHOLE_VIEW) continue;
      views[observed[rejected.view]].observations[camera] = {};
      early_.push_back(
          {observed[rejected.view], Rejected::WHOLE_VIEW, rejected.residual, rejected.reason, camera});
    }
    return alone.rig.cameras.front().intrinsics;
  }

  /// The views that at least one camera still observes.
  std::vector<TargetView> ObservedViews(const std::vector<TargetView>& views) {
    std::vector<TargetView> observed;
    for (size_t i = 0; i < views.size(); ++i) {
      if (CountOf(views[i].observations) == 0.0) continue;
      observed.push_back(views[i]);
      given_.push_back(i);
    }
    return observed;
  }

  /// From the numbers of the views that were computed from to those of the records.
  void TranslateNumbers(Solution& solution) const {
    for (Rejected& rejected : solution.rejected) rejected.view = given_[rejected.view];
    for (Recounted& recounted : solution.recounted) recounted.view = given_[recounted.view];
    for (size_t& view : solution.kept) view = given_[view];
    solution.rejected.insert(solution.rejected.begin(), early_.begin(), early_.end());
  }

  RigResult ResultOf(const Solution& solution) const {
    RigResult result;
    result.rms = RmsOf(solution);
    result.verdict = AssessRig(solution);
    for (cv::Point3d& point : result.verdict.sheet.points) point += cv::Point3d(target_.middles.front());
    for (PairVerdict::Disagreement& moved : result.verdict.disagreements) moved.view = views_[moved.view];
    for (const Rejected& rejected : solution.rejected) {
      const size_t view = views_[rejected.view];
      result.leftOut.push_back({view, rejected.camera, InTarget(view, rejected.camera, rejected.point),
                                rejected.residual, rejected.reason});
    }
    for (const Recounted& recounted : solution.recounted) {
      result.recounted.push_back({views_[recounted.view], recounted.camera});
    }
    result.views.resize(records_.objectPoints.size());
    for (RigView& view : result.views) view.rms.assign(solution.rig.cameras.size(), -1.0);
    for (size_t i = 0; i < solution.views.size(); ++i)
      CopyView(solution, i, result.views[views_[solution.kept[i]]]);
    const Eigen::MatrixXd covariance = solver::SharedCovariance(solution);
    for (size_t i = 0; i < solution.rig.cameras.size(); ++i) {
      result.cameras.push_back(CameraOf(solution, i, covariance));
    }
    return result;
  }

  void CopyView(const Solution& solution, size_t number, RigView& view) const {
    const RigidTransform& pose = solution.views[number].rigFromTarget;
    cv::Rodrigues(pose.R, view.rvec);
    view.tvec = pose.t - pose.R * target_.middles[solution.kept[number]];
    view.used = true;
    for (size_t i = 0; i < view.rms.size(); ++i) view.rms[i] = RmsOfImage(solution, number, i);
  }

  static RigCamera CameraOf(const Solution& solution, size_t number, const Eigen::MatrixXd& covariance) {
    const Camera& camera = solution.rig.cameras[number];
    RigCamera result;
    result.imageSize = camera.imageSize;
    result.K = solver::CameraMatrixOf(camera.intrinsics);
    result.D = solver::CoefficientsOf(camera.intrinsics);
    result.fisheye = camera.intrinsics.IsFisheye();
    result.R = camera.cameraFromRig.R;
    result.T = camera.cameraFromRig.t;
    for (const TargetView& view : solution.views)
      result.views += view.observations[number].Count() > 0.0 ? 1 : 0;
    result.rms = RmsOfCamera(solution, number);
    CopyDeviations(LayoutOf(solution).cameras[number], covariance, result);
    return result;
  }

  static void CopyDeviations(const Layout::Block& block, const Eigen::MatrixXd& covariance,
                             RigCamera& result) {
    result.stdDevIntrinsics = cv::Mat::zeros(FULL_PARAMETERS, 1, CV_64F);
    if (covariance.size() == 0) return;
    const auto standardDeviation = [&](int i) { return std::sqrt(covariance(i, i)); };
    for (int i = 0; i < block.count; ++i)
      result.stdDevIntrinsics.at<double>(i) = standardDeviation(block.intrinsics + i);
    for (int i = 0; i < 3 && block.pose != Layout::FIXED; ++i) {
      result.rotationDeviation[i] = standardDeviation(block.pose + i) * 180.0 / CV_PI;
      result.translationDeviation[i] = standardDeviation(block.pose + 3 + i);
    }
  }

  const RigRecords& records_;
  const RigOptions& options_;
  const std::vector<size_t> views_;  ///< of the records, those that any camera saw
  const solver::Target target_;
  solver::BundleOptions bundle_;
  std::vector<size_t> given_;    ///< of views_, those that the rig is computed from
  std::vector<Rejected> early_;  ///< images that were no image of the target, by the numbers of views_
  int iterations_ = 0;
};

}  // namespace

RigResult CalibrateRig(const RigRecords& records, const RigOptions& options) {
  RequireMatching(records, options);
  return RigComputation(records, options).Run();
}

}  // namespace velmora
