/// How a blurred edge looks: straight, or the rim of a circle.
#pragma once

#include <algorithm>
#include <array>

namespace velmora::finder {

/// A table of the edge of a circle after a blur of standard deviation 1: by the distance z from the edge,
/// outwards, and by the curvature q, the reciprocal of the radius; 0 is a straight edge, and more than 1
/// counts as 1. Off by 0.001 at most. For all threads.
class EdgeProfile {
 public:
  struct Value {
    float share;        ///< of what comes from inside the circle
    float fall;         ///< how fast that falls outwards, by z
    float byCurvature;  ///< how the share changes with q
  };

  static const EdgeProfile& Instance();

  Value At(float z, float q) const {
    if (z < -REACH) return {1.0F, 0.0F, 0.0F};
    // What is no number counts as far outside.
    if (!(z <= REACH)) return {0.0F, 0.0F, 0.0F};
    const float along = (z + REACH) * static_cast<float>(PER_UNIT);
    const float across = std::min(1.0F, q) * static_cast<float>(PER_CURVATURE);
    const int i = std::min(static_cast<int>(along), LAST - 1);
    const int k = std::min(static_cast<int>(across), PER_CURVATURE - 1);
    const float u = along - static_cast<float>(i);
    const float v = across - static_cast<float>(k);
    const Node* near = &nodes_[static_cast<size_t>(k * (LAST + 1) + i)];
    const Node* far = near + LAST + 1;
    const float share = near[0].share + u * (near[1].share - near[0].share);
    const float farShare = far[0].share + u * (far[1].share - far[0].share);
    const float fall = near[0].fall + u * (near[1].fall - near[0].fall);
    const float farFall = far[0].fall + u * (far[1].fall - far[0].fall);
    return {share + v * (farShare - share), fall + v * (farFall - fall),
            (farShare - share) * static_cast<float>(PER_CURVATURE)};
  }

 private:
  struct Node {
    float share, fall;
  };

  static constexpr float REACH = 5.0F;
  static constexpr int PER_UNIT = 32;
  static constexpr int LAST = 10 * PER_UNIT;
  static constexpr int PER_CURVATURE = 20;

  EdgeProfile();

  std::array<Node, (PER_CURVATURE + 1) * (LAST + 1)> nodes_;
};

}  // namespace velmora::finder
