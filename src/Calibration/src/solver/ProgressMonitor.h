/// Reports a computation's progress until it is given up.
#pragma once

#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

namespace velmora::solver {

/// Copies are of one computation: once its listener gave up, all of them know. For one thread at a time.
class ProgressMonitor {
 public:
  /// Nobody listens, and nobody gives up.
  ProgressMonitor() = default;

  /// `listener` is called with the number of an iteration and the cost after it; false gives up. It may
  /// throw.
  template <typename Listener,
            typename = std::enable_if_t<std::is_invocable_r_v<bool, const Listener&, int, double>>>
  ProgressMonitor(Listener listener)  // NOLINT(google-explicit-constructor): a listener is one
      : shared_(std::make_shared<Shared>(Shared{std::move(listener), false})) {}

  /// False when the computation is to end. A listener that gave up is not asked again.
  bool Continues(int iteration, double cost) const {
    if (!shared_) return true;
    shared_->givenUp = shared_->givenUp || !shared_->listener(iteration, cost);
    return !shared_->givenUp;
  }

  bool IsGivenUp() const { return shared_ && shared_->givenUp; }

 private:
  struct Shared {
    std::function<bool(int, double)> listener;
    bool givenUp = false;
  };

  std::shared_ptr<Shared> shared_;
};

}  // namespace velmora::solver
