/// Finds candidates by their position in the image.
#include "finder/CandidateIndex.h"

#include <algorithm>

namespace velmora::finder {

CandidateIndex::CandidateIndex(const std::vector<DiscCandidate>& candidates, const cv::Size& size)
    : candidates_(candidates),
      // About two a cell when they are spread evenly.
      side_(std::max(12.0, std::sqrt(2.0 * size.area() / static_cast<double>(candidates.size() + 1)))),
      columns_(1 + static_cast<int>(size.width / side_)),
      rows_(1 + static_cast<int>(size.height / side_)),
      starts_(static_cast<size_t>(columns_ * rows_) + 1),
      sorted_(candidates.size()) {
  side_ = std::min(side_, 64.0);
  columns_ = 1 + static_cast<int>(size.width / side_);
  rows_ = 1 + static_cast<int>(size.height / side_);
  starts_.assign(static_cast<size_t>(columns_ * rows_) + 1, 0);
  const auto cellOf = [&](const DiscCandidate& candidate) {
    return static_cast<size_t>(Row(candidate.centre.y) * columns_ + Column(candidate.centre.x));
  };
  for (const DiscCandidate& candidate : candidates_) ++starts_[cellOf(candidate) + 1];
  for (size_t cell = 1; cell < starts_.size(); ++cell) starts_[cell] += starts_[cell - 1];
  std::vector<int> ends(starts_.begin(), starts_.end() - 1);
  for (size_t k = 0; k < candidates_.size(); ++k) {
    sorted_[static_cast<size_t>(ends[cellOf(candidates_[k])]++)] = static_cast<int>(k);
  }
}

}  // namespace velmora::finder
