/// Which targets there are, which of them are to be reached still, and which views were kept.
#include "assistant/GuideTargets.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace velmora {

namespace {

/// Views whose centres are nearer on the average than this share of the grid's spread say nearly the same of
/// the camera. The shipped poses are more than twice as far from each other.
constexpr double SAME = 0.08;

double MeanDistance(const std::vector<cv::Point2d>& a, const std::vector<cv::Point2d>& b) {
  double sum = 0.0;
  for (size_t i = 0; i < a.size(); ++i) sum += cv::norm(a[i] - b[i]);
  return sum / static_cast<double>(a.size());
}

}  // namespace

void GuideTargets::Set(const std::vector<Centres>& targets) {
  std::vector<GuideTarget> all;
  all.reserve(targets.size());
  for (const Centres& centres : targets) all.emplace_back(view_, centres);
  targets_ = std::move(all);
  Unlink();
  SetReached({});
}

const GuideTarget* GuideTargets::Current() const {
  return pending_.empty() ? nullptr : &targets_[static_cast<size_t>(Number()) - 1];
}

void GuideTargets::Advance() {
  if (pending_.empty()) return;
  const int number = Number();
  FateOf(number) = Fate::Reached;
  pending_.pop_front();
  if (!views_.empty() && views_.back().target == 0) views_.back().target = number;
}

/// Nobody is asked forever for a pose that cannot be reached, and nobody is kept from a second try.
void GuideTargets::Skip() {
  if (pending_.empty()) return;
  const int number = Number();
  pending_.pop_front();
  if (FateOf(number) == Fate::Open && !pending_.empty()) {
    FateOf(number) = Fate::Skipped;
    pending_.push_back(number);
  } else {
    FateOf(number) = Fate::LeftOut;
  }
}

void GuideTargets::Restart() {
  views_.clear();
  SetReached({});
}

void GuideTargets::SetReached(const std::vector<int>& numbers) {
  for (const int number : numbers) {
    if (number < 1 || number > Count()) {
      throw std::invalid_argument("there is no target " + std::to_string(number) + " among " +
                                  std::to_string(Count()));
    }
  }
  fates_.assign(targets_.size(), Fate::Open);
  for (const int number : numbers) FateOf(number) = Fate::Reached;
  pending_.clear();
  for (int number = 1; number <= Count(); ++number) {
    if (FateOf(number) == Fate::Open) pending_.push_back(number);
  }
  // A view that is taken back later brings the target back that it reached.
  Unlink();
  std::vector<Centres> kept;
  kept.reserve(views_.size());
  for (const View& view : views_) kept.push_back(view.centres);
  const std::vector<int> matches = Matches(kept);
  for (size_t i = 0; i < views_.size(); ++i) {
    if (matches[i] > 0 && FateOf(matches[i]) == Fate::Reached) views_[i].target = matches[i];
  }
}

std::vector<int> GuideTargets::ReachedBy(const std::vector<Centres>& views) const {
  std::vector<int> numbers = Matches(views);
  std::sort(numbers.begin(), numbers.end());
  numbers.erase(numbers.begin(), std::upper_bound(numbers.begin(), numbers.end(), 0));
  return numbers;
}

std::vector<int> GuideTargets::Matches(const std::vector<Centres>& views) const {
  std::vector<int> matches;
  matches.reserve(views.size());
  std::vector<bool> taken(targets_.size(), false);
  for (const Centres& view : views) {
    int best = 0;
    double least = 0.0;
    const auto pose = view.empty() ? std::nullopt : view_.PoseOf(view);
    for (size_t i = 0; pose && i < targets_.size(); ++i) {
      if (taken[i] || !targets_[i].IsReachedBy(view_, view, *pose, true)) continue;
      const double distance = targets_[i].DistanceOf(view) / targets_[i].Reach();
      if (best > 0 && distance >= least) continue;
      best = static_cast<int>(i) + 1;
      least = distance;
    }
    if (best > 0) taken[static_cast<size_t>(best) - 1] = true;
    matches.push_back(best);
  }
  return matches;
}

bool GuideTargets::TakeBack() {
  if (views_.empty()) return false;
  const int target = views_.back().target;
  views_.pop_back();
  if (target > 0) {
    FateOf(target) = Fate::Open;
    pending_.push_front(target);
  }
  return true;
}

bool GuideTargets::IsKept(const Centres& centres) const {
  const double spread = SpreadOf(centres);
  return std::any_of(views_.begin(), views_.end(), [&](const View& view) {
    return MeanDistance(view.centres, centres) < SAME * std::min(spread, SpreadOf(view.centres));
  });
}

std::vector<int> GuideTargets::NumbersOf(Fate fate) const {
  std::vector<int> numbers;
  for (size_t i = 0; i < fates_.size(); ++i) {
    if (fates_[i] == fate) numbers.push_back(static_cast<int>(i) + 1);
  }
  return numbers;
}

void GuideTargets::Unlink() {
  for (View& view : views_) view.target = 0;
}

}  // namespace velmora
