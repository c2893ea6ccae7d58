/// The formulas of the projection and of its derivatives, for one point or several at once.
#pragma once

#include <array>

#include "solver/Projection.h"

namespace velmora::solver {

/// A coordinate of one or several pixels (numbers of the kind T) with its derivatives by the intrinsics and
/// by the point in the camera's frame.
template <typename T>
struct CoordinateOf {
  T value{};
  std::array<T, FULL_PARAMETERS> byIntrinsics{};
  std::array<T, 3> byPoint{};
};

template <typename T>
class ProjectionFormulas {
 public:
  explicit ProjectionFormulas(const Projection::Constants& constants)
      : intrinsics_(constants.intrinsics), constants_(constants) {}

  /// Projects the point (x, y, 1) * depth. Derivatives by parameters that are not estimated are not touched.
  void Differentiate(const T& x, const T& y, const T& nearness, CoordinateOf<T>& u,
                     CoordinateOf<T>& v) const {
    const Distorted distorted = Distort(x, y);
    const Tilted tilted = Tilt(distorted);
    const auto& p = intrinsics_.values;
    u.value = p[FX] * tilted.x + p[CX];
    v.value = p[FY] * tilted.y + p[CY];
    const Matrix byDistorted = {p[FX] * tilted.xx, p[FX] * tilted.xy, p[FY] * tilted.yx, p[FY] * tilted.yy};
    ByCamera(tilted, u, v);
    ByRadial(distorted, byDistorted, u, v);
    if (intrinsics_.estimated > S1) ByPrismAndTilt(distorted, tilted, byDistorted, u, v);
    ByPoint(distorted, byDistorted, nearness, u, v);
  }

  void Project(const T& x, const T& y, T& u, T& v) const {
    const Tilted tilted = Tilt(Distort(x, y));
    u = intrinsics_.values[FX] * tilted.x + intrinsics_.values[CX];
    v = intrinsics_.values[FY] * tilted.y + intrinsics_.values[CY];
  }

 private:
  struct Matrix {
    T xx, xy, yx, yy;
  };

  /// The distorted ray before the tilt.
  struct Distorted {
    T x, y, r2, x0, y0;  ///< distorted, and the ray it came from
    Matrix byRay;
    T fraction, inverse;  ///< of the radial distortion, and of its denominator
  };

  /// The distorted ray on the tilted sensor, with its derivatives by the one before.
  struct Tilted {
    T x, y, nearness;
    T xx, xy, yx, yy;
  };

  Distorted Distort(const T& x, const T& y) const {
    const auto& p = intrinsics_.values;
    Distorted distorted;
    const T r2 = x * x + y * y;
    distorted.x0 = x;
    distorted.y0 = y;
    distorted.r2 = r2;
    distorted.inverse = 1.0 / (1.0 + r2 * (p[K4] + r2 * (p[K5] + r2 * p[K6])));
    distorted.fraction = (1.0 + r2 * (p[K1] + r2 * (p[K2] + r2 * p[K3]))) * distorted.inverse;
    const T prismX = p[S1] + r2 * p[S2];
    const T prismY = p[S3] + r2 * p[S4];
    const T xy = x * y;
    distorted.x = x * distorted.fraction + 2.0 * p[P1] * xy + p[P2] * (r2 + 2.0 * x * x) + r2 * prismX;
    distorted.y = y * distorted.fraction + p[P1] * (r2 + 2.0 * y * y) + 2.0 * p[P2] * xy + r2 * prismY;
    const T slope = (p[K1] + r2 * (2.0 * p[K2] + r2 * (3.0 * p[K3])) -
                     distorted.fraction * (p[K4] + r2 * (2.0 * p[K5] + r2 * (3.0 * p[K6])))) *
                    distorted.inverse;
    const T alongX = 2.0 * (x * slope + (p[S1] + 2.0 * p[S2] * r2));
    const T alongY = 2.0 * (y * slope + (p[S3] + 2.0 * p[S4] * r2));
    const T both = 2.0 * p[P1] * x + 2.0 * p[P2] * y;
    distorted.byRay.xx = distorted.fraction + alongX * x + 2.0 * p[P1] * y + 6.0 * p[P2] * x;
    distorted.byRay.xy = alongX * y + both;
    distorted.byRay.yx = alongY * x + both;
    distorted.byRay.yy = distorted.fraction + alongY * y + 6.0 * p[P1] * y + 2.0 * p[P2] * x;
    return distorted;
  }

  Tilted Tilt(const Distorted& distorted) const {
    const T zero{};
    if (!constants_.tilted) return {distorted.x, distorted.y, zero + 1.0, zero + 1.0, zero, zero, zero + 1.0};
    const cv::Matx33d& tilt = constants_.tilt;
    const auto row = [&](int i) { return tilt(i, 0) * distorted.x + tilt(i, 1) * distorted.y + tilt(i, 2); };
    Tilted tilted;
    tilted.nearness = 1.0 / row(2);
    tilted.x = row(0) * tilted.nearness;
    tilted.y = row(1) * tilted.nearness;
    tilted.xx = (tilt(0, 0) - tilted.x * tilt(2, 0)) * tilted.nearness;
    tilted.xy = (tilt(0, 1) - tilted.x * tilt(2, 1)) * tilted.nearness;
    tilted.yx = (tilt(1, 0) - tilted.y * tilt(2, 0)) * tilted.nearness;
    tilted.yy = (tilt(1, 1) - tilted.y * tilt(2, 1)) * tilted.nearness;
    return tilted;
  }

  static void ByCamera(const Tilted& tilted, CoordinateOf<T>& u, CoordinateOf<T>& v) {
    const T zero{};
    u.byIntrinsics[FX] = tilted.x;
    v.byIntrinsics[FY] = tilted.y;
    u.byIntrinsics[FY] = v.byIntrinsics[FX] = u.byIntrinsics[CY] = v.byIntrinsics[CX] = zero;
    u.byIntrinsics[CX] = v.byIntrinsics[CY] = zero + 1.0;
  }

  void ByRadial(const Distorted& distorted, const Matrix& byDistorted, CoordinateOf<T>& u,
                CoordinateOf<T>& v) const {
    const T& x = distorted.x0;
    const T& y = distorted.y0;
    const T& r2 = distorted.r2;
    const auto along = [&](Parameter parameter, const T& dx, const T& dy) {
      u.byIntrinsics[parameter] = byDistorted.xx * dx + byDistorted.xy * dy;
      v.byIntrinsics[parameter] = byDistorted.yx * dx + byDistorted.yy * dy;
    };
    // Each power is the one before times the squared radius; the denominator's are those of the numerator
    // times the fraction.
    const auto power = [&](Parameter parameter, Parameter before) {
      u.byIntrinsics[parameter] = r2 * u.byIntrinsics[before];
      v.byIntrinsics[parameter] = r2 * v.byIntrinsics[before];
    };
    const T first = r2 * distorted.inverse;
    along(K1, x * first, y * first);
    power(K2, K1);
    power(K3, K2);
    const T xy = 2.0 * x * y;
    along(P1, xy, r2 + 2.0 * y * y);
    along(P2, r2 + 2.0 * x * x, xy);
    if (intrinsics_.estimated <= K4) return;
    u.byIntrinsics[K4] = -distorted.fraction * u.byIntrinsics[K1];
    v.byIntrinsics[K4] = -distorted.fraction * v.byIntrinsics[K1];
    power(K5, K4);
    power(K6, K5);
  }

  void ByPrismAndTilt(const Distorted& distorted, const Tilted& tilted, const Matrix& byDistorted,
                      CoordinateOf<T>& u, CoordinateOf<T>& v) const {
    const T& r2 = distorted.r2;
    u.byIntrinsics[S1] = byDistorted.xx * r2;
    v.byIntrinsics[S1] = byDistorted.yx * r2;
    u.byIntrinsics[S3] = byDistorted.xy * r2;
    v.byIntrinsics[S3] = byDistorted.yy * r2;
    for (const Parameter first : {S1, S3}) {
      u.byIntrinsics[first + 1] = u.byIntrinsics[first] * r2;
      v.byIntrinsics[first + 1] = v.byIntrinsics[first] * r2;
    }
    const auto tilt = [&](Parameter parameter, const cv::Matx33d& by) {
      const auto change = [&](int i) { return by(i, 0) * distorted.x + by(i, 1) * distorted.y + by(i, 2); };
      const T depth = change(2);
      u.byIntrinsics[parameter] = intrinsics_.values[FX] * (change(0) - tilted.x * depth) * tilted.nearness;
      v.byIntrinsics[parameter] = intrinsics_.values[FY] * (change(1) - tilted.y * depth) * tilted.nearness;
    };
    tilt(TAU_X, constants_.tiltByX);
    tilt(TAU_Y, constants_.tiltByY);
  }

  static void ByPoint(const Distorted& distorted, const Matrix& byDistorted, const T& nearness,
                      CoordinateOf<T>& u, CoordinateOf<T>& v) {
    const Matrix& byRay = distorted.byRay;
    const auto row = [&](const T& x, const T& y, CoordinateOf<T>& coordinate) {
      const T byX = nearness * (x * byRay.xx + y * byRay.yx);
      const T byY = nearness * (x * byRay.xy + y * byRay.yy);
      coordinate.byPoint = {byX, byY, -(byX * distorted.x0 + byY * distorted.y0)};
    };
    row(byDistorted.xx, byDistorted.xy, u);
    row(byDistorted.yx, byDistorted.yy, v);
  }

  const Intrinsics& intrinsics_;
  const Projection::Constants& constants_;
};

}  // namespace velmora::solver
