/// What a model of a disc leaves of its pixels: how much of that is noise, and whether it is.
#include "finder/DiscNoise.h"

#include <algorithm>
#include <cmath>

namespace velmora::finder {

namespace {

/// Residuals beyond this many standard deviations have no weight.
constexpr double GROSS = 5.0;
/// The least deviation of noise, grey levels: that of rounding.
constexpr double LEAST_NOISE = 0.3;
constexpr double MEDIAN_TO_DEVIATION = 1.4826;
/// The rim's pixels are those with more than this share of both ink and paper.
constexpr float RIM = 0.1F;
/// The few pixels of the rim are off by a little more now and then.
constexpr double RIM_MARGIN = 1.25;
/// Fewer pixels tell no noise.
constexpr size_t FEW = 16;
/// The most pixels that may be grossly off, as a share.
constexpr double MOST_GROSS = 0.15;
/// What is left of the pixels is large beyond this share of the contrast, and smooth when the variance from
/// one to the next is less than this share of it all.
constexpr double LARGE = 0.12;
constexpr double SMOOTH = 0.4;

size_t ChunkOf(size_t pixel) {
  return pixel / DiscModel::CHUNK;
}

Eigen::Index PlaceOf(size_t pixel) {
  return static_cast<Eigen::Index>(pixel % DiscModel::CHUNK);
}

double VarianceOf(std::vector<float>& rests) {
  if (rests.empty()) return LEAST_NOISE * LEAST_NOISE;
  const auto middle = rests.begin() + static_cast<std::ptrdiff_t>(rests.size() / 2);
  std::nth_element(rests.begin(), middle, rests.end());
  const double deviation = std::max(LEAST_NOISE, MEDIAN_TO_DEVIATION * static_cast<double>(*middle));
  return deviation * deviation;
}

}  // namespace

void DiscNoise::Begin(size_t chunks) {
  rest_.resize(chunks);
  shares_.resize(chunks);
  steepness_.resize(chunks);
}

void DiscNoise::Keep(size_t chunk, const DiscModel::Equations& equations) {
  rest_[chunk] = equations.col(DiscModel::REST);
  steepness_[chunk] =
      equations.col(DiscModel::CENTRE_X).square() + equations.col(DiscModel::CENTRE_Y).square();
}

void DiscNoise::Estimate(const DiscPixels& pixels) {
  std::vector<float> ofInk;
  std::vector<float> ofPaper;
  std::vector<float> ofRim;
  double steepness = 0.0;
  double shares = 0.0;
  for (size_t k = 0; k < pixels.Count(); ++k) {
    const float rest = std::abs(rest_[ChunkOf(k)](PlaceOf(k)));
    const float share = shares_[ChunkOf(k)](PlaceOf(k));
    if (share < RIM || share > 1.0F - RIM) {
      (share > 0.5F ? ofInk : ofPaper).push_back(rest);
      continue;
    }
    ofRim.push_back(rest);
    steepness += static_cast<double>(steepness_[ChunkOf(k)](PlaceOf(k)));
    shares += static_cast<double>(share);
  }
  const double paper = VarianceOf(ofPaper.size() < FEW ? ofRim : ofPaper);
  const double ink = VarianceOf(ofInk.size() < FEW ? ofRim : ofInk);
  const auto count = static_cast<double>(ofRim.size());
  const double expected = paper + shares / std::max(1.0, count) * (ink - paper);
  const double beyond = std::max(0.0, VarianceOf(ofRim) - RIM_MARGIN * expected);
  paperVariance_ = static_cast<float>(paper);
  inkVariance_ = static_cast<float>(ink);
  rimVariance_ = static_cast<float>(steepness > 0.0 ? beyond * count / steepness : 0.0);
}

DiscModel::Floats DiscNoise::Variances(size_t chunk) const {
  return paperVariance_ + shares_[chunk] * (inkVariance_ - paperVariance_) + rimVariance_ * steepness_[chunk];
}

DiscModel::Floats DiscNoise::RootWeights(size_t chunk) const {
  const DiscModel::Floats variances = Variances(chunk);
  constexpr auto LIMIT = static_cast<float>(GROSS * GROSS);
  return (1.0F - rest_[chunk].square() / (LIMIT * variances)).max(0.0F) / variances.sqrt();
}

double DiscNoise::RelativeSquare(size_t pixel) const {
  const size_t chunk = ChunkOf(pixel);
  const Eigen::Index at = PlaceOf(pixel);
  const float variance = paperVariance_ + shares_[chunk](at) * (inkVariance_ - paperVariance_) +
                         rimVariance_ * steepness_[chunk](at);
  const float rest = rest_[chunk](at);
  return static_cast<double>(rest * rest / variance);
}

double DiscNoise::Excess(const DiscPixels& pixels, int unknowns) const {
  double sum = 0.0;
  for (size_t k = 0; k < pixels.Count(); ++k) sum += std::min(RelativeSquare(k), GROSS * GROSS);
  return sum / (static_cast<double>(pixels.Count()) - unknowns);
}

bool DiscNoise::IsNoise(const DiscPixels& pixels, double contrast) const {
  double squares = 0.0;
  double gross = 0.0;
  double changes = 0.0;
  double pairs = 0.0;
  double before = 0.0;
  for (size_t k = 0; k < pixels.Count(); ++k) {
    const auto rest = static_cast<double>(rest_[ChunkOf(k)](PlaceOf(k)));
    squares += rest * rest;
    if (RelativeSquare(k) > GROSS * GROSS) gross += 1.0;
    if (pixels.IsBesideLast(k)) {
      changes += (rest - before) * (rest - before);
      pairs += 2.0;
    }
    before = rest;
  }
  const auto count = static_cast<double>(pixels.Count());
  const double variance = squares / count;
  const bool isLarge = variance > LARGE * LARGE * contrast * contrast;
  const bool isSmooth = changes < SMOOTH * variance * pairs;
  return gross < MOST_GROSS * count && !(isLarge && isSmooth);
}

}  // namespace velmora::finder
