/// What the discs around a grid point say about the disc on it.
#include "finder/Surroundings.h"

#include <Eigen/Cholesky>
#include <algorithm>
#include <cmath>
#include <vector>

#include "finder/DiscWindow.h"

namespace velmora::finder {

namespace {

/// Discs up to this many steps away, along each axis, are used.
constexpr int FAR = 4;
constexpr int NEAR = 2;
constexpr int TERMS = 6;
/// The number of discs that determine the polynomial with some to spare.
constexpr size_t ENOUGH = 9;
constexpr int ROUNDS = 4;
/// Discs farther off the polynomial than this hardly count, steps.
constexpr double FARTHEST_OFF = 0.02;

using Terms = Eigen::Matrix<double, TERMS, 1>;
using Normal = Eigen::Matrix<double, TERMS, TERMS>;
using Coefficients = Eigen::Matrix<double, TERMS, 3>;

struct Neighbour {
  Terms terms;
  Eigen::Vector3d says;  ///< x, y, logarithm of the radius
};

/// The polynomials' coefficients for x, y and the radius, which changes too little for more than the terms of
/// first degree. Those that disagree with the others in position count little.
bool FitPolynomials(const std::vector<Neighbour>& neighbours, double step, Coefficients& coefficients) {
  coefficients.setZero();
  for (int round = 0; round < ROUNDS; ++round) {
    Normal normal = Normal::Identity() * 1e-9;
    Coefficients right = Coefficients::Zero();
    for (const Neighbour& neighbour : neighbours) {
      const Eigen::Vector3d left = neighbour.says - coefficients.transpose() * neighbour.terms;
      const double off = std::hypot(left(0), left(1)) / (FARTHEST_OFF * step);
      const double weight = round == 0 ? 1.0 : 1.0 / (1.0 + off * off);
      normal += weight * neighbour.terms * neighbour.terms.transpose();
      right += weight * neighbour.terms * neighbour.says.transpose();
    }
    const Eigen::LLT<Normal> positions(normal);
    const Eigen::LLT<Eigen::Matrix3d> sizes(normal.topLeftCorner<3, 3>());
    if (positions.info() != Eigen::Success || sizes.info() != Eigen::Success) return false;
    coefficients.leftCols<2>() = positions.solve(right.leftCols<2>());
    coefficients.col(2) << sizes.solve(right.topRightCorner<3, 1>()), Eigen::Vector3d::Zero();
  }
  return true;
}

}  // namespace

bool ExpectDisc(const GridProjection& projection, const LabelledDiscs& discs, size_t k,
                ExpectedDisc& expected) {
  std::vector<Neighbour> neighbours;
  for (size_t other = 0; other < discs.gridIndices.size(); ++other) {
    const cv::Point apart = discs.gridIndices[other] - discs.gridIndices[k];
    const int distance = std::max(std::abs(apart.x), std::abs(apart.y));
    if (distance == 0 || distance > FAR || !discs.Has(other)) continue;
    const double x = apart.x;
    const double y = apart.y;
    Neighbour neighbour;
    neighbour.terms << 1.0, x, y, x * x, x * y, y * y;
    neighbour.says << discs.centres[other].x, discs.centres[other].y, std::log(discs.radii[other]);
    neighbours.push_back(neighbour);
  }
  Coefficients says;
  if (neighbours.size() < ENOUGH) return false;
  if (!FitPolynomials(neighbours, projection.Step(discs.gridIndices[k]), says)) return false;
  expected.centre = {says(0, 0), says(0, 1)};
  expected.slope = {says(1, 0), says(2, 0), says(1, 1), says(2, 1)};
  const double step = std::sqrt(std::abs(cv::determinant(expected.slope)));
  expected.radius = std::exp(says(0, 2)) / step;
  return step > 0.0 && std::isfinite(expected.radius) && expected.radius < 1.0;
}

Contrasts::Contrasts(const GridProjection& projection, const cv::Mat& grey, const LabelledDiscs& discs)
    : projection_(projection), grey_(grey), discs_(discs), known_(discs.gridIndices.size(), -1.0) {
}

double Contrasts::Of(size_t k) {
  double& known = known_[k];
  if (known >= 0.0) return known;
  const DiscWindow window = WindowOf(projection_, discs_, k);
  Tones tones;
  const bool told = TonesIn(grey_, window, tones);
  known = told ? tones.paper - tones.ink : 0.0;
  return known;
}

double Contrasts::Around(size_t k) {
  std::vector<double> contrasts;
  for (size_t other = 0; other < discs_.gridIndices.size(); ++other) {
    const cv::Point apart = discs_.gridIndices[other] - discs_.gridIndices[k];
    const int distance = std::max(std::abs(apart.x), std::abs(apart.y));
    if (distance == 0 || distance > NEAR || !discs_.Has(other)) continue;
    const double contrast = Of(other);
    if (contrast > 0.0) contrasts.push_back(contrast);
  }
  if (contrasts.empty()) return 0.0;
  const auto middle = contrasts.begin() + static_cast<std::ptrdiff_t>(contrasts.size() / 2);
  std::nth_element(contrasts.begin(), middle, contrasts.end());
  return *middle;
}

}  // namespace velmora::finder
