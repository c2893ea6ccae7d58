/// Which targets there are, which of them are to be reached still, and which views were kept.
#pragma once

#include <deque>
#include <opencv2/core.hpp>
#include <vector>

#include "assistant/GuidePose.h"

namespace velmora {

/// The targets of a guide, numbered from 1, and the views that were kept for them or by hand.
class GuideTargets {
 public:
  using Centres = std::vector<cv::Point2d>;

  explicit GuideTargets(const GuideView& view) : view_(view) {}

  /// Throws std::invalid_argument for targets that are none; those that were there then stay. Views stay,
  /// too.
  void Set(const std::vector<Centres>& targets);

  int Count() const { return static_cast<int>(targets_.size()); }
  int Number() const { return pending_.empty() ? 0 : pending_.front(); }
  /// The one to reach now; null when there is none.
  const GuideTarget* Current() const;
  std::vector<int> Reached() const { return NumbersOf(Fate::Reached); }
  std::vector<int> LeftOut() const { return NumbersOf(Fate::LeftOut); }

  void Advance();
  void Skip();
  void Restart();
  void SetReached(const std::vector<int>& numbers);
  std::vector<int> ReachedBy(const std::vector<Centres>& views) const;

  void Keep(const Centres& centres) { views_.push_back({centres, 0}); }
  /// False when there is no view.
  bool TakeBack();
  int Views() const { return static_cast<int>(views_.size()); }
  /// Whether a view is where one was that is kept.
  bool IsKept(const Centres& centres) const;

 private:
  enum class Fate { Open, Skipped, Reached, LeftOut };
  struct View {
    Centres centres;
    int target;  ///< that it reached; 0: none
  };

  Fate& FateOf(int number) { return fates_[static_cast<size_t>(number) - 1]; }
  std::vector<int> NumbersOf(Fate fate) const;
  /// For each view the target that it is at, each for one view only; 0: none.
  std::vector<int> Matches(const std::vector<Centres>& views) const;
  void Unlink();

  const GuideView& view_;
  std::vector<GuideTarget> targets_;
  std::vector<Fate> fates_;
  std::deque<int> pending_;  ///< the one to reach now is the first
  std::vector<View> views_;
};

}  // namespace velmora
