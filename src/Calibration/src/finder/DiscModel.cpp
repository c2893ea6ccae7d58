/// What a camera sees of a printed disc: an ellipse that the lens blurs, ink and paper each lit unevenly.
#include "finder/DiscModel.h"

#include <algorithm>
#include <cmath>

#include "finder/EdgeProfile.h"

namespace velmora::finder {

namespace {

/// Keeps the middle of the disc from dividing by zero: a millionth of the radius.
constexpr float TINY = 1e-12F;

/// What the square of a pixel adds to the derivatives of fourth order of what is blurred by s in all.
float SquareExcess(float s) {
  constexpr float CUMULANT = 1.0F / 120.0F;
  constexpr float LEAST = 0.3F;
  const float variance = std::max(s, LEAST) * std::max(s, LEAST);
  return CUMULANT / (24.0F * variance * variance);
}

}  // namespace

void DiscModel::Evaluate(const Unknowns& unknowns, const Pixels& pixels, Equations& equations,
                         Floats& shares) const {
  const Eigen::Matrix<float, UNKNOWNS, 1> t = unknowns.cast<float>();
  const float perRadius = 1.0F / radius_;
  const float perSquare = perRadius * perRadius;
  const float xx = t(XX) * perSquare;
  const float yy = t(YY) * perSquare;
  const float xy = t(XY) * perSquare;
  const float s = t(BLUR);
  const float perBlur = 1.0F / s;
  const float area = xx * yy - xy * xy;

  // The way from the centre, in the measure in which the outline is the unit circle, and the gradient of
  // that.
  const Floats vx = pixels.x - t(CENTRE_X);
  const Floats vy = pixels.y - t(CENTRE_Y);
  const Floats ux = xx * vx + xy * vy;
  const Floats uy = xy * vx + yy * vy;
  const Floats gx = xx * ux + xy * uy;
  const Floats gy = xy * ux + yy * uy;
  const Floats rho = (ux * ux + uy * uy + TINY).sqrt();
  const Floats perSlope = 1.0F / (gx * gx + gy * gy + TINY * perSquare).sqrt();
  const Floats nx = gx * perSlope;
  const Floats ny = gy * perSlope;
  // The curvature is that of the rim on the same ray.
  const Floats ray = rho * perSlope;
  const Floats curvature = area * area * ray * ray * ray;
  const Floats z = (rho - 1.0F) * ray * perBlur;

  const EdgeProfile& profile = EdgeProfile::Instance();
  Floats fall;
  Floats bend;
  for (int k = 0; k < CHUNK; ++k) {
    const EdgeProfile::Value edge = profile.At(z(k), s * curvature(k));
    shares(k) = edge.share;
    fall(k) = edge.fall;
    bend(k) = edge.byCurvature;
  }

  // A square is no Gaussian of the same width: its fourth cumulant along the edge's normal comes on top.
  const Floats square = z * z;
  const Floats excess = SquareExcess(s) * (nx.square().square() + ny.square().square()) * fall;
  shares -= excess * z * (square - 3.0F);
  fall -= excess * (square * square - 6.0F * square + 3.0F);

  const Floats x = pixels.x * perRadius;
  const Floats y = pixels.y * perRadius;
  const Floats paper = t(PAPER) + t(PAPER_X) * x + t(PAPER_Y) * y;
  const Floats contrast = t(INK) + t(INK_X) * x + t(INK_Y) * y - paper;
  const Floats across = perRadius * ((t(INK_X) - t(PAPER_X)) * nx + (t(INK_Y) - t(PAPER_Y)) * ny);
  const Floats byDistance = fall * (z * across - contrast * perBlur);
  const Floats byCurvature = contrast * bend * curvature;
  // With the form the distance changes by u v / |g|, and with its size the curvature.
  const Floats form = byDistance * perSlope * perSquare;
  const Floats size = 0.5F * s * perRadius * byCurvature;
  equations.col(CENTRE_X) = -byDistance * nx;
  equations.col(CENTRE_Y) = -byDistance * ny;
  equations.col(XX) = form * ux * vx + size;
  equations.col(YY) = form * uy * vy + size;
  equations.col(XY) = form * (ux * vy + uy * vx);
  equations.col(BLUR) = fall * (contrast * z * perBlur - across * (1.0F + square)) + byCurvature;
  const Floats mixed = s * perRadius * fall;
  equations.col(INK) = shares;
  equations.col(INK_X) = shares * x - mixed * nx;
  equations.col(INK_Y) = shares * y - mixed * ny;
  equations.col(PAPER) = 1.0F - shares;
  equations.col(PAPER_X) = x - equations.col(INK_X);
  equations.col(PAPER_Y) = y - equations.col(INK_Y);
  equations.col(REST) = pixels.grade - (paper + contrast * shares - s * fall * across);
}

OutlineDistance::OutlineDistance(const DiscModel::Unknowns& unknowns, double radius) {
  const Eigen::Matrix<float, DiscModel::UNKNOWNS, 1> t = unknowns.cast<float>();
  const float perSquare = static_cast<float>(1.0 / (radius * radius));
  centreX_ = t(DiscModel::CENTRE_X);
  centreY_ = t(DiscModel::CENTRE_Y);
  xx_ = t(DiscModel::XX) * perSquare;
  yy_ = t(DiscModel::YY) * perSquare;
  xy_ = t(DiscModel::XY) * perSquare;
}

float OutlineDistance::Of(float x, float y) const {
  const float vx = x - centreX_;
  const float vy = y - centreY_;
  const float ux = xx_ * vx + xy_ * vy;
  const float uy = xy_ * vx + yy_ * vy;
  const float gx = xx_ * ux + xy_ * uy;
  const float gy = xy_ * ux + yy_ * uy;
  const float square = ux * ux + uy * uy;
  return (square - std::sqrt(square)) / std::sqrt(gx * gx + gy * gy + TINY);
}

}  // namespace velmora::finder
