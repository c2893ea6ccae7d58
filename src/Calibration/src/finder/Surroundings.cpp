/// What the discs around a place say about the disc on it.
#include "finder/Surroundings.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "finder/DiscWindow.h"

namespace velmora::finder {

namespace {

/// Discs up to so many steps away, along each axis, are asked.
constexpr int FAR = 4;
constexpr int NEAR = 2;
constexpr int TERMS = 6;
/// So many determine the polynomial with some to spare.
constexpr size_t ENOUGH = 9;
constexpr int ROUNDS = 4;
/// Discs farther off the polynomial than this hardly count, steps.
constexpr double FARTHEST_OFF = 0.02;

using Terms = cv::Vec<double, TERMS>;

struct Neighbour {
  Terms terms;
  cv::Vec3d says;  ///< x, y, logarithm of the radius
};

/// The polynomials' coefficients for x, y and the radius, which changes too little for more than the terms of
/// first degree. Those that disagree with the others in place count little.
bool FitPolynomials(const std::vector<Neighbour>& neighbours, double step,
                    cv::Matx<double, TERMS, 3>& coefficients) {
  coefficients = cv::Matx<double, TERMS, 3>::zeros();
  for (int round = 0; round < ROUNDS; ++round) {
    cv::Matx<double, TERMS, TERMS> normal = cv::Matx<double, TERMS, TERMS>::eye() * 1e-9;
    cv::Matx<double, TERMS, 3> right = cv::Matx<double, TERMS, 3>::zeros();
    for (const Neighbour& neighbour : neighbours) {
      const cv::Vec3d left = neighbour.says - cv::Vec3d(coefficients.t() * neighbour.terms);
      const double off = std::hypot(left[0], left[1]) / (FARTHEST_OFF * step);
      const double weight = round == 0 ? 1.0 : 1.0 / (1.0 + off * off);
      normal += weight * neighbour.terms * neighbour.terms.t();
      right += weight * neighbour.terms * neighbour.says.t();
    }
    bool solved = false;
    coefficients = normal.inv(cv::DECOMP_CHOLESKY, &solved) * right;
    if (!solved) return false;
    const cv::Matx33d linear = normal.get_minor<3, 3>(0, 0);
    const cv::Vec3d radius = linear.inv() * cv::Vec3d(right(0, 2), right(1, 2), right(2, 2));
    for (int term = 0; term < TERMS; ++term) coefficients(term, 2) = term < 3 ? radius[term] : 0.0;
  }
  return true;
}

}  // namespace

bool ExpectDisc(const SheetPlane& plane, const PlacedDiscs& discs, size_t k, ExpectedDisc& expected) {
  std::vector<Neighbour> neighbours;
  for (size_t other = 0; other < discs.places.size(); ++other) {
    const cv::Point apart = discs.places[other] - discs.places[k];
    const int distance = std::max(std::abs(apart.x), std::abs(apart.y));
    if (distance == 0 || distance > FAR || !discs.Has(other)) continue;
    const double x = apart.x;
    const double y = apart.y;
    neighbours.push_back({{1.0, x, y, x * x, x * y, y * y},
                          {discs.centres[other].x, discs.centres[other].y, std::log(discs.radii[other])}});
  }
  cv::Matx<double, TERMS, 3> says;
  if (neighbours.size() < ENOUGH) return false;
  if (!FitPolynomials(neighbours, plane.Step(discs.places[k]), says)) return false;
  expected.centre = {says(0, 0), says(0, 1)};
  expected.slope = {says(1, 0), says(2, 0), says(1, 1), says(2, 1)};
  const double step = std::sqrt(std::abs(cv::determinant(expected.slope)));
  expected.radius = std::exp(says(0, 2)) / step;
  return step > 0.0 && std::isfinite(expected.radius) && expected.radius < 1.0;
}

double ContrastAround(const SheetPlane& plane, const cv::Mat& grey, const PlacedDiscs& discs, size_t k) {
  std::vector<double> contrasts;
  for (size_t other = 0; other < discs.places.size(); ++other) {
    const cv::Point apart = discs.places[other] - discs.places[k];
    const int distance = std::max(std::abs(apart.x), std::abs(apart.y));
    if (distance == 0 || distance > NEAR || !discs.Has(other)) continue;
    const DiscWindow window = WindowOf(plane, discs, other);
    Histogram all;
    Tones tones;
    if (!TonesIn(grey, window, SpansOf(window, grey.size()), all, tones)) continue;
    contrasts.push_back(tones.paper - tones.ink);
  }
  if (contrasts.empty()) return 0.0;
  const auto middle = contrasts.begin() + static_cast<std::ptrdiff_t>(contrasts.size() / 2);
  std::nth_element(contrasts.begin(), middle, contrasts.end());
  return *middle;
}

}  // namespace velmora::finder
