/// What a computation was given, and what came out of it.
#pragma once

#include <Eigen/Core>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "model/Rig.h"
#include "model/Sheet.h"

namespace velmora {

/// What a computation changes besides the poses of the target.
struct Estimated {
  bool intrinsics = true;
  bool cameraPoses = true;  ///< of all cameras but the first
};

/// What a computation starts from.
struct CalibrationProblem {
  Rig rig;
  std::vector<TargetView> views;
  Estimated estimated;
  std::vector<Prior> priors;  ///< one for each camera; none at all: no camera has one
  Sheet sheet = {};
};

/// The order of the parameters that all views share: the intrinsics of all cameras, then the poses of all but
/// the first, then the shape of the sheet.
struct Layout {
  static constexpr int FIXED = -1;

  struct Block {
    int intrinsics = 0;  ///< the first of them
    int count = 0;       ///< of the intrinsics that are estimated
    int pose = FIXED;    ///< the first of six
  };

  std::vector<Block> cameras;
  int sheet = 0;   ///< the first of its terms, which are the last of all
  int shared = 0;  ///< how many there are in all
};

/// Of a flat sheet, or of what a flat sheet would have.
Layout LayoutOf(const Rig& rig, const Estimated& estimated);
Layout LayoutOf(const Rig& rig, const Estimated& estimated, const Sheet& sheet);

/// What eliminating a sheet's own bend from a view's equations leaves to know of it. Where shared parameters
/// and pose take a step x, the bend's is step - spread x.
struct EliminatedBend {
  Eigen::Matrix3d inverse =
      Eigen::Matrix3d::Zero();  ///< of its block, in which is what is known of bends beforehand
  Eigen::MatrixXd spread;  ///< 3 rows, a column for each of the view's own and six for the pose; or empty
  Eigen::Vector3d step = Eigen::Vector3d::Zero();
  double gain = 0.0;       ///< what its step alone takes off the cost, to first order
  double priorCost = 0.0;  ///< of what is known of bends beforehand
};

/// One view's normal equations, by the view's own of the shared parameters and six of the target's pose:
///
///          own   pose
///   own     A                 products, the Jacobian times itself: the lower triangle
///   pose    B     P           gradient, the Jacobian times the residuals (projected minus observed)
struct ViewEquations {
  std::vector<int> columns;  ///< which of the shared parameters are its own, rising: those of cameras that
                             ///< observed the target
  Eigen::MatrixXd products;  ///< own + 6 rows and columns
  Eigen::VectorXd gradient;
  double cost = 0.0;  ///< the weighted sum of squared residuals
  /// Of each camera: its part of the cost, if all points' deviations were alike.
  std::vector<double> pixelCosts;
  bool usable = false;       ///< every point is in front of its camera
  EliminatedBend bend = {};  ///< of views whose sheet has a bend of its own

  Eigen::Index Own() const { return static_cast<Eigen::Index>(columns.size()); }
};

/// What was rejected, and why.
struct Rejected {
  static constexpr int WHOLE_VIEW = -1;

  size_t view = 0;
  int point = WHOLE_VIEW;
  double residual = 0.0;  ///< pixels; of a view the root of the mean square
  std::string reason;
  size_t camera = 0;
};

/// An image whose points were counted from another end of the target, and are now counted as the other
/// images'.
struct Recounted {
  size_t view = 0;
  size_t camera = 0;
  std::vector<size_t> order;  ///< which of the given points each one is now
};

/// A rig and poses of the target at which the cost is least, with what led there. It is made once and not
/// changed.
struct Solution {
  Rig rig;
  std::vector<TargetView>
      views;  ///< those that it is of, as they were used: pixels corrected, outliers weightless
  Estimated estimated;
  Sheet sheet;
  std::vector<Prior> priors;             ///< one for each camera
  std::vector<ViewEquations> equations;  ///< of each view, at the solution
  double cost = 0.0;                     ///< weighted sum of squared residuals, without the priors
  double priorCost = 0.0;
  int iterations = 0;
  bool converged = false;
  bool usable = false;  ///< false when the start was not: a point behind a camera

  std::vector<size_t> kept;          ///< which of the views that were given these are
  std::vector<Rejected> rejected;    ///< the others, and points
  std::vector<Recounted> recounted;  ///< by the numbers of the views that were given
  bool robust = false;               ///< whether outliers were to be rejected
  bool tooFewAgree = false;          ///< so few views agree that none of the others could be called wrong
  double discRadius = 0.0;           ///< that pixels were corrected for; 0: they were taken as they are
  /// What a flat sheet would have given, from the same views and points; null where the sheet is taken for
  /// one.
  std::shared_ptr<const Solution> flat;
};

Layout LayoutOf(const Solution& solution);

/// The cost that a solution would have if all points' deviations were alike.
double PixelCostOf(const Solution& solution);
/// The root of the mean squared residual of a point, pixels, whatever the points' deviations.
double RmsOf(const Solution& solution);
/// The same of one of its cameras, over all views; 0 of one that saw nothing that is used.
double RmsOfCamera(const Solution& solution, size_t camera);
/// The same of the camera's image in one of the solution's views; -1 where nothing of it is used.
double RmsOfImage(const Solution& solution, size_t view, size_t camera);

/// The variance of the noise of a coordinate of a point whose deviation is usual: the cost per degree of
/// freedom, in squared pixels.
double NoiseVariance(const Solution& solution);
/// The variance that a cost of these views means when `shared` shared parameters are estimated.
double NoiseVariance(double cost, const std::vector<TargetView>& views, double shared);

}  // namespace velmora
