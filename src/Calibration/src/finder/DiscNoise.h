/// What a model of a disc leaves of its pixels: how much of that is noise, and whether it is.
#pragma once

#include <vector>

#include "finder/DiscPixels.h"

namespace velmora::finder {

/// Ink and paper have noise of their own, and the rim more than both where print, sampling or sharpening
/// moves it from pixel to pixel.
class DiscNoise {
 public:
  /// Makes room for that many chunks.
  void Begin(size_t chunks);
  /// Where the model writes the shares of ink of a chunk.
  DiscModel::Floats& Shares(size_t chunk) { return shares_[chunk]; }
  /// Keeps what the equations say of a chunk's pixels.
  void Keep(size_t chunk, const DiscModel::Equations& equations);

  /// Finds the noise in what was kept, by medians.
  void Estimate(const DiscPixels& pixels);
  /// The roots of Tukey's weights: pixels that are grossly off have none.
  DiscModel::Floats RootWeights(size_t chunk) const;

  /// By how much more than their noise pixels are off: about 1, in variances, for `unknowns` fitted ones.
  double Excess(const DiscPixels& pixels, int unknowns) const;
  /// Whether what is left is noise: few pixels are grossly off, and where all are off by much of the
  /// contrast, they are so from pixel to pixel.
  bool IsNoise(const DiscPixels& pixels, double contrast) const;

 private:
  DiscModel::Floats Variances(size_t chunk) const;
  /// The square of what is left of a pixel, in variances.
  double RelativeSquare(size_t pixel) const;

  std::vector<DiscModel::Floats> rest_;       ///< of the grey values, beyond the model
  std::vector<DiscModel::Floats> shares_;     ///< of the disc
  std::vector<DiscModel::Floats> steepness_;  ///< squares of the slopes, grey levels by pixel
  float inkVariance_ = 1.0F;
  float paperVariance_ = 1.0F;
  float rimVariance_ = 0.0F;  ///< of where the rim is, pixels
};

}  // namespace velmora::finder
