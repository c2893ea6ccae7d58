/// The rim of a disc: how much of it is visible, and the middle that it speaks for.
#include "finder/Rim.h"

#include <Eigen/Cholesky>
#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "finder/Grey.h"

namespace velmora::finder {

namespace {

constexpr size_t DIRECTIONS = 32;
constexpr int ROUNDS = 6;
/// How far from its expected position the rim is looked for, and how far off it may be: shares of the radius,
/// and pixels.
constexpr double REACH = 0.45;
constexpr double REACH_PIXELS = 1.0;
constexpr double OFF = 0.12;
constexpr double OFF_PIXELS = 0.4;
/// The rim's least step in brightness, as a share of the contrast: a shadow leaves a third of it.
constexpr double LEAST_STEP = 0.22;
/// The expected radius is only about right: how firm it is, in edges, and the share by which it may change.
constexpr double FIRM = 4.0;
constexpr double GROWTH = 0.1;
/// A centre that moves less than this has settled, pixels.
constexpr double SETTLED = 0.03;
/// Added before ratios are taken, grey levels: below, noise is all.
constexpr double DARK = 16.0;

/// Where the rim is in one direction from the middle.
struct Edge {
  cv::Vec2d normal;   ///< the direction, in steps
  double off = 0.0;   ///< beyond the expected radius, steps
  double step = 0.0;  ///< how much brighter it is outside, grey levels
};

std::array<cv::Vec2d, DIRECTIONS> AllRound() {
  std::array<cv::Vec2d, DIRECTIONS> directions;
  for (size_t k = 0; k < DIRECTIONS; ++k) {
    const double angle = 2.0 * CV_PI * static_cast<double>(k) / static_cast<double>(DIRECTIONS);
    directions[k] = {std::cos(angle), std::sin(angle)};
  }
  return directions;
}

class RimFollower {
 public:
  RimFollower(const cv::Mat& grey, const ExpectedDisc& expected)
      : grey_(grey), disc_(expected), pixel_(1.0 / std::sqrt(std::abs(cv::determinant(expected.slope)))) {}

  Rim Run() {
    for (int round = 0; round < ROUNDS; ++round) {
      FindEdges();
      // First all edges draw, then those on one circle.
      const double scale = (round < 2 ? 0.5 : 0.2) * Tolerance();
      if (Adapt(scale) < SETTLED * pixel_ && round >= 2) break;
    }
    FindEdges();
    const auto visible = std::count_if(edges_.begin(), edges_.end(), [&](const Edge& edge) {
      return edge.step > LEAST_STEP * disc_.contrast && std::abs(edge.off) < Tolerance();
    });
    return {static_cast<double>(visible) / static_cast<double>(DIRECTIONS), disc_.centre};
  }

 private:
  double Tolerance() const { return OFF * disc_.radius + OFF_PIXELS * pixel_; }

  void FindEdges() {
    static const std::array<cv::Vec2d, DIRECTIONS> ALL_ROUND = AllRound();
    for (size_t k = 0; k < DIRECTIONS; ++k) edges_[k] = EdgeAlong(ALL_ROUND[k]);
  }

  /// The steepest rise of brightness outwards, around the expected radius, by the ratio: that of ink to paper
  /// is the same in a shadow, and that at the shadow's edge is smaller.
  Edge EdgeAlong(const cv::Vec2d& normal) {
    const cv::Vec2d outwards = disc_.slope * normal;
    // About half a pixel along this direction.
    const double stride = 0.5 / std::max(1e-6, cv::norm(outwards));
    const double reach = std::min(0.95 * disc_.radius, REACH * disc_.radius + REACH_PIXELS * pixel_);
    const int half = std::max(2, cvCeil(reach / stride));
    // Over more pixels in a large disc: a steep rise over few may be noise.
    const int apart = std::max(2, std::min(half / 3, 6));
    greys_.clear();
    const auto sample = [&](int k) {
      return disc_.centre + cv::Point2d(outwards * (disc_.radius + k * stride));
    };
    const int last = half + apart;
    if (IsInside(grey_, sample(-last)) && IsInside(grey_, sample(last))) {
      for (int k = -last; k <= last; ++k) greys_.push_back(GreyInside(grey_, sample(k)));
    } else {
      for (int k = -last; k <= last; ++k) greys_.push_back(GreyAt(grey_, sample(k)));
    }
    const auto inside = [&](int k) { return greys_[static_cast<size_t>(k + half)]; };
    const auto outside = [&](int k) { return greys_[static_cast<size_t>(k + half + 2 * apart)]; };
    const auto ratio = [&](int k) { return (outside(k) + DARK) / (inside(k) + DARK); };
    const auto rise = [&](int k) { return outside(k) - inside(k); };
    int steepest = -half;
    double largest = ratio(steepest);
    for (int k = -half + 1; k <= half; ++k) {
      const double here = ratio(k);
      if (here <= largest) continue;
      steepest = k;
      largest = here;
    }
    // The ratio is largest on the dark side of the edge: up to where it is steepest itself.
    while (steepest < half && rise(steepest + 1) > rise(steepest)) ++steepest;
    double between = 0.0;
    if (steepest > -half && steepest < half) {
      const double before = rise(steepest) - rise(steepest - 1);
      const double after = rise(steepest) - rise(steepest + 1);
      if (before + after > 1e-9) between = 0.5 * (before - after) / (before + after);
    }
    return {normal, (steepest + between) * stride, rise(steepest)};
  }

  /// Moves the centre and changes the radius a little, and tells by how much in steps. Edges far off the
  /// others hardly count.
  double Adapt(double scale) {
    Eigen::Vector3d change = Eigen::Vector3d::Zero();
    for (int round = 0; round < 3; ++round) {
      Eigen::Matrix3d normal = Eigen::Vector3d(1e-9, 1e-9, FIRM).asDiagonal();
      Eigen::Vector3d right(0.0, 0.0, -FIRM * grown_);
      for (const Edge& edge : edges_) {
        const Eigen::Vector3d row(edge.normal[0], edge.normal[1], 1.0);
        const double left = edge.off - row.dot(change);
        const double share = std::min(1.0, std::max(0.0, edge.step / disc_.contrast));
        const double weight = share / (1.0 + left * left / (scale * scale));
        normal += weight * row * row.transpose();
        right += weight * edge.off * row;
      }
      change = normal.llt().solve(right);
    }
    disc_.centre += cv::Point2d(cv::Vec2d(disc_.slope * cv::Vec2d(change[0], change[1])));
    const double most = GROWTH * (disc_.radius - grown_);
    const double grown = std::min(most, std::max(-most, grown_ + change[2]));
    disc_.radius += grown - grown_;
    grown_ = grown;
    return std::hypot(change[0], change[1]);
  }

  const cv::Mat& grey_;
  ExpectedDisc disc_;
  const double pixel_;  ///< steps
  double grown_ = 0.0;  ///< of the radius
  std::array<Edge, DIRECTIONS> edges_;
  std::vector<double> greys_;
};

}  // namespace

Rim FollowRim(const cv::Mat& grey, const ExpectedDisc& expected) {
  return RimFollower(grey, expected).Run();
}

}  // namespace velmora::finder
