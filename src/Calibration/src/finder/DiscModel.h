/// What a camera sees of a printed disc: an ellipse that the lens blurs, ink and paper each lit unevenly.
#pragma once

#include <Eigen/Core>

namespace velmora::finder {

/// The brightness around one disc as a function of twelve unknowns. Distances are in pixels from an origin
/// near the disc. All unknowns have about the same effect: they are pixels at the rim, or grey levels there.
///
/// The outline is the ellipse |A (x - c)| = R², with A symmetric and R a fixed radius. Brightness is a plane
/// K inside and another one, P, outside, all blurred: with D the share of the disc in what reaches a pixel,
/// and s the blur's standard deviation,
///
///     P + (K - P) D + s² (grad K - grad P) . grad D
///
/// which is exact for a Gaussian. D is that of a circle as curved as the nearest rim: exact for circles, and
/// near that for ellipses whose curvature changes little within the blur's reach. A pixel's own square counts
/// as blur.
class DiscModel {
 public:
  static constexpr int UNKNOWNS = 12;
  enum Unknown { CENTRE_X, CENTRE_Y, XX, YY, XY, BLUR, INK, INK_X, INK_Y, PAPER, PAPER_X, PAPER_Y };
  using Unknowns = Eigen::Matrix<double, UNKNOWNS, 1>;

  /// Pixels are taken in chunks of this size.
  static constexpr int CHUNK = 64;
  using Floats = Eigen::Array<float, CHUNK, 1>;
  struct Pixels {
    Floats x, y;   ///< from the origin
    Floats grade;  ///< grey values
  };
  /// A row for each pixel: the derivatives by the unknowns, and how much brighter it is than the model.
  static constexpr int REST = UNKNOWNS;
  using Equations = Eigen::Array<float, CHUNK, UNKNOWNS + 1>;

  /// `radius` is about that of the disc, pixels.
  explicit DiscModel(double radius) : radius_(static_cast<float>(radius)) {}

  /// The equations of pixels, and the share of the disc in each.
  void Evaluate(const Unknowns& unknowns, const Pixels& pixels, Equations& equations, Floats& shares) const;

 private:
  float radius_;
};

/// The distance of points from the outline, pixels, less than 0 inside: exact for circles and on the axes.
class OutlineDistance {
 public:
  OutlineDistance(const DiscModel::Unknowns& unknowns, double radius);
  float Of(float x, float y) const;

 private:
  float centreX_, centreY_;
  float xx_, yy_, xy_;
};

}  // namespace velmora::finder
