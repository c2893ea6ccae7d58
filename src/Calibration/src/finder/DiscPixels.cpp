/// The pixels that say where a disc is.
#include "finder/DiscPixels.h"

#include <algorithm>
#include <cmath>

namespace velmora::finder {

namespace {

/// All pixels are used up to here from the rim: blurs, and pixels. Farther away one of STRIDE x STRIDE is.
constexpr double BAND_BLURS = 3.0;
constexpr double BAND = 1.0;
constexpr int STRIDE = 3;
/// These are enough to begin with, or one of ONE_OF where that is more.
constexpr size_t ENOUGH = 200;
constexpr size_t ONE_OF = 4;

}  // namespace

DiscPixels::DiscPixels(const cv::Mat& grey, const FoundDisc& found, const cv::Point& origin,
                       const DiscModel::Unknowns& unknowns, double radius, Choice choice) {
  const OutlineDistance distance(unknowns, radius);
  const auto band = static_cast<float>(BAND_BLURS * unknowns(DiscModel::BLUR) + BAND);
  const double middleX = origin.x + unknowns(DiscModel::CENTRE_X);
  const double middleY = origin.y + unknowns(DiscModel::CENTRE_Y);
  const cv::Matx22d form = found.outline.t() * found.outline;
  const double high = found.reach * std::sqrt(form(0, 0) / cv::determinant(form));
  const int bottom = std::min(grey.rows - 1, cvFloor(middleY + high));
  for (int row = std::max(0, cvCeil(middleY - high)); row <= bottom; ++row) {
    const double y = row - middleY;
    const double turn = form(0, 1) * y / form(0, 0);
    const double square = (found.reach * found.reach - form(1, 1) * y * y) / form(0, 0) + turn * turn;
    if (square < 0.0) continue;
    const double half = std::sqrt(square);
    const int last = std::min(grey.cols - 1, cvFloor(middleX - turn + half));
    const auto down = static_cast<float>(row - origin.y);
    for (int x = std::max(0, cvCeil(middleX - turn - half)); x <= last; ++x) {
      const auto right = static_cast<float>(x - origin.x);
      const bool always = row % STRIDE == 0 && x % STRIDE == 0;
      if (always || std::abs(distance.Of(right, down)) <= band) places_.emplace_back(x, row);
    }
  }
  const int every = static_cast<int>(std::min(ONE_OF, places_.size() / ENOUGH));
  if (choice == Choice::Few && every > 1) {
    // For each divisor that is a pattern in which rows and columns have equal shares.
    const auto isLeftOut = [every](const cv::Point& place) { return (place.x + 5 * place.y) % every != 0; };
    places_.erase(std::remove_if(places_.begin(), places_.end(), isLeftOut), places_.end());
  }
  chunks_.resize((places_.size() + DiscModel::CHUNK - 1) / DiscModel::CHUNK);
  for (size_t k = 0; k < chunks_.size() * DiscModel::CHUNK; ++k) {
    const cv::Point& place = places_[std::min(k, places_.size() - 1)];
    DiscModel::Pixels& chunk = chunks_[k / DiscModel::CHUNK];
    const auto at = static_cast<Eigen::Index>(k % DiscModel::CHUNK);
    chunk.x(at) = static_cast<float>(place.x - origin.x);
    chunk.y(at) = static_cast<float>(place.y - origin.y);
    chunk.grade(at) = static_cast<float>(grey.at<unsigned char>(place));
  }
}

Eigen::Index DiscPixels::CountIn(size_t chunk) const {
  return static_cast<Eigen::Index>(std::min<size_t>(DiscModel::CHUNK, Count() - chunk * DiscModel::CHUNK));
}

bool DiscPixels::IsBesideLast(size_t pixel) const {
  return pixel > 0 && places_[pixel] == places_[pixel - 1] + cv::Point(1, 0);
}

}  // namespace velmora::finder
