/// Projects points through a lens, with the derivatives of the pixels.
#include "solver/Projection.h"

#include <cmath>

namespace sparse {

namespace {

enum Parameter { FX, FY, CX, CY, K1, K2, P1, P2, K3, K4, K5, K6, S1, S2, S3, S4, TAU_X, TAU_Y };

/// The part of the tilt that looks straight at the sensor: it depends on the last column of the turn.
cv::Matx33d Straightened(const cv::Matx33d& turn) {
  return {turn(2, 2), 0.0, -turn(0, 2), 0.0, turn(2, 2), -turn(1, 2), 0.0, 0.0, 0.0};
}

cv::Matx33d TurnX(double c, double s, double axis) {
  return {axis, 0.0, 0.0, 0.0, c, s, 0.0, -s, c};
}

cv::Matx33d TurnY(double c, double s, double axis) {
  return {c, 0.0, -s, 0.0, axis, 0.0, s, 0.0, c};
}

}  // namespace

/// The distorted ray before the tilt, with its derivatives.
struct Projection::Bent {
  double x, y, r2, x0, y0;  ///< distorted, and the ray it came from
  double xx, xy, yx, yy;    ///< derivatives by the ray
  double fraction, denominator;
};

/// The distorted ray on the tilted sensor, with its derivatives by the one before.
struct Projection::Tilted {
  double x, y, depth;
  double xx, xy, yx, yy;
};

Projection::Projection(const Lens& lens) : lens_(lens) {
  const double tauX = lens.values[TAU_X];
  const double tauY = lens.values[TAU_Y];
  tilted_ = lens.free > TAU_X || tauX != 0.0 || tauY != 0.0;
  const cv::Matx33d aboutX = TurnX(std::cos(tauX), std::sin(tauX), 1.0);
  const cv::Matx33d aboutY = TurnY(std::cos(tauY), std::sin(tauY), 1.0);
  const cv::Matx33d turn = aboutY * aboutX;
  const cv::Matx33d byX = aboutY * TurnX(-std::sin(tauX), std::cos(tauX), 0.0);
  const cv::Matx33d byY = TurnY(-std::sin(tauY), std::cos(tauY), 0.0) * aboutX;
  cv::Matx33d straight = Straightened(turn);
  straight(2, 2) = 1.0;
  tilt_ = straight * turn;
  tiltByX_ = Straightened(byX) * turn + straight * byX;
  tiltByY_ = Straightened(byY) * turn + straight * byY;
}

Projection::Bent Projection::Bend(double x, double y) const {
  const auto& p = lens_.values;
  Bent bent{};
  const double r2 = x * x + y * y;
  bent.x0 = x;
  bent.y0 = y;
  bent.r2 = r2;
  bent.denominator = 1.0 + r2 * (p[K4] + r2 * (p[K5] + r2 * p[K6]));
  bent.fraction = (1.0 + r2 * (p[K1] + r2 * (p[K2] + r2 * p[K3]))) / bent.denominator;
  const double prismX = p[S1] + r2 * p[S2];
  const double prismY = p[S3] + r2 * p[S4];
  bent.x = x * bent.fraction + 2.0 * p[P1] * x * y + p[P2] * (r2 + 2.0 * x * x) + r2 * prismX;
  bent.y = y * bent.fraction + p[P1] * (r2 + 2.0 * y * y) + 2.0 * p[P2] * x * y + r2 * prismY;

  const double slope = (p[K1] + r2 * (2.0 * p[K2] + r2 * 3.0 * p[K3]) -
                        bent.fraction * (p[K4] + r2 * (2.0 * p[K5] + r2 * 3.0 * p[K6]))) /
                       bent.denominator;
  const double alongX = 2.0 * (x * slope + p[S1] + 2.0 * r2 * p[S2]);
  const double alongY = 2.0 * (y * slope + p[S3] + 2.0 * r2 * p[S4]);
  bent.xx = bent.fraction + alongX * x + 2.0 * p[P1] * y + 6.0 * p[P2] * x;
  bent.xy = alongX * y + 2.0 * p[P1] * x + 2.0 * p[P2] * y;
  bent.yx = alongY * x + 2.0 * p[P1] * x + 2.0 * p[P2] * y;
  bent.yy = bent.fraction + alongY * y + 6.0 * p[P1] * y + 2.0 * p[P2] * x;
  return bent;
}

Projection::Tilted Projection::Tilt(const Bent& bent) const {
  if (!tilted_) return {bent.x, bent.y, 1.0, 1.0, 0.0, 0.0, 1.0};
  const cv::Vec3d at = tilt_ * cv::Vec3d(bent.x, bent.y, 1.0);
  Tilted tilted{};
  tilted.depth = at[2];
  tilted.x = at[0] / at[2];
  tilted.y = at[1] / at[2];
  tilted.xx = (tilt_(0, 0) - tilted.x * tilt_(2, 0)) / at[2];
  tilted.xy = (tilt_(0, 1) - tilted.x * tilt_(2, 1)) / at[2];
  tilted.yx = (tilt_(1, 0) - tilted.y * tilt_(2, 0)) / at[2];
  tilted.yy = (tilt_(1, 1) - tilted.y * tilt_(2, 1)) / at[2];
  return tilted;
}

bool Projection::Project(const cv::Vec3d& point, cv::Point2d& pixel) const {
  if (!(point[2] > 0.0)) return false;
  const Tilted tilted = Tilt(Bend(point[0] / point[2], point[1] / point[2]));
  pixel.x = lens_.values[FX] * tilted.x + lens_.values[CX];
  pixel.y = lens_.values[FY] * tilted.y + lens_.values[CY];
  return std::isfinite(pixel.x) && std::isfinite(pixel.y);
}

bool Projection::Differentiate(const cv::Vec3d& point, Coordinate& u, Coordinate& v) const {
  if (!(point[2] > 0.0)) return false;
  const Bent bent = Bend(point[0] / point[2], point[1] / point[2]);
  const Tilted tilted = Tilt(bent);
  u.value = lens_.values[FX] * tilted.x + lens_.values[CX];
  v.value = lens_.values[FY] * tilted.y + lens_.values[CY];
  if (!std::isfinite(u.value) || !std::isfinite(v.value)) return false;
  const cv::Matx22d byBent(lens_.values[FX] * tilted.xx, lens_.values[FX] * tilted.xy,
                           lens_.values[FY] * tilted.yx, lens_.values[FY] * tilted.yy);
  ByCamera(tilted, u, v);
  ByRadial(bent, byBent, u, v);
  if (lens_.free > S1) ByPrismAndTilt(bent, tilted, byBent, u, v);
  ByPoint(bent, byBent, 1.0 / point[2], u, v);
  return true;
}

void Projection::ByCamera(const Tilted& tilted, Coordinate& u, Coordinate& v) {
  u.byLens[FX] = tilted.x;
  v.byLens[FY] = tilted.y;
  u.byLens[FY] = v.byLens[FX] = u.byLens[CY] = v.byLens[CX] = 0.0;
  u.byLens[CX] = v.byLens[CY] = 1.0;
}

void Projection::ByRadial(const Bent& bent, const cv::Matx22d& byBent, Coordinate& u, Coordinate& v) const {
  const auto along = [&](Parameter parameter, double dx, double dy) {
    u.byLens[parameter] = byBent(0, 0) * dx + byBent(0, 1) * dy;
    v.byLens[parameter] = byBent(1, 0) * dx + byBent(1, 1) * dy;
  };
  const double x = bent.x0;
  const double y = bent.y0;
  const double r2 = bent.r2;
  const double zero = 1.0 / bent.denominator;
  along(K1, x * r2 * zero, y * r2 * zero);
  along(K2, x * r2 * r2 * zero, y * r2 * r2 * zero);
  along(P1, 2.0 * x * y, r2 + 2.0 * y * y);
  along(P2, r2 + 2.0 * x * x, 2.0 * x * y);
  along(K3, x * r2 * r2 * r2 * zero, y * r2 * r2 * r2 * zero);
  if (lens_.free <= K4) return;
  const double pole = -bent.fraction * zero;
  along(K4, x * r2 * pole, y * r2 * pole);
  along(K5, x * r2 * r2 * pole, y * r2 * r2 * pole);
  along(K6, x * r2 * r2 * r2 * pole, y * r2 * r2 * r2 * pole);
}

void Projection::ByPrismAndTilt(const Bent& bent, const Tilted& tilted, const cv::Matx22d& byBent,
                                Coordinate& u, Coordinate& v) const {
  const double r2 = bent.r2;
  const auto prism = [&](Parameter first, Parameter second, int axis) {
    u.byLens[first] = byBent(0, axis) * r2;
    v.byLens[first] = byBent(1, axis) * r2;
    u.byLens[second] = u.byLens[first] * r2;
    v.byLens[second] = v.byLens[first] * r2;
  };
  prism(S1, S2, 0);
  prism(S3, S4, 1);
  const cv::Vec3d at(bent.x, bent.y, 1.0);
  const auto tilt = [&](Parameter parameter, const cv::Vec3d& change) {
    u.byLens[parameter] = lens_.values[FX] * (change[0] - tilted.x * change[2]) / tilted.depth;
    v.byLens[parameter] = lens_.values[FY] * (change[1] - tilted.y * change[2]) / tilted.depth;
  };
  tilt(TAU_X, tiltByX_ * at);
  tilt(TAU_Y, tiltByY_ * at);
}

void Projection::ByPoint(const Bent& bent, const cv::Matx22d& byBent, double nearness, Coordinate& u,
                         Coordinate& v) {
  const cv::Matx22d byRay = byBent * cv::Matx22d(bent.xx, bent.xy, bent.yx, bent.yy);
  const auto row = [&](int i) {
    return nearness * cv::Vec3d(byRay(i, 0), byRay(i, 1), -(byRay(i, 0) * bent.x0 + byRay(i, 1) * bent.y0));
  };
  u.byPoint = row(0);
  v.byPoint = row(1);
}

}  // namespace sparse
