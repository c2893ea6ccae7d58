/// Computes what is known of the camera while more views are taken.
#pragma once

#include <atomic>
#include <future>
#include <memory>
#include <mutex>
#include <vector>

#include "guided/Outcome.h"

namespace guided {

/// Computes on a thread of its own, one computation at a time, always of the newest views. Used by one
/// thread.
class Estimator {
 public:
  explicit Estimator(ComputationSettings settings) : settings_(std::move(settings)) {}
  /// Cancels what is being computed, and waits for it to end.
  ~Estimator();
  Estimator(const Estimator&) = delete;
  Estimator& operator=(const Estimator&) = delete;

  /// These are the views now: with fewer than five there is nothing to know.
  void Update(std::vector<NamedSnapshot> snapshots);
  /// Takes what has been computed, and begins what is still to be. Does not wait.
  void Poll();
  /// Of the views of the last Update; null as long as that is not computed, or when it cannot be.
  std::shared_ptr<const Outcome> Current() const;
  /// The newest there is, perhaps of earlier views; null before the first one and when views are too few.
  std::shared_ptr<const Outcome> Latest() const { return latest_; }
  bool IsComputing() const { return running_.valid(); }

  static constexpr size_t ENOUGH = 5;

 private:
  void Begin();
  void Cancel();

  const ComputationSettings settings_;
  std::vector<NamedSnapshot> snapshots_;  ///< of the last update
  size_t wanted_ = 0;                     ///< counts updates
  size_t begun_ = 0;                      ///< the update that the newest computation is of
  size_t known_ = 0;                      ///< the update that the latest outcome is of
  std::shared_ptr<const Outcome> latest_;
  std::future<std::shared_ptr<const Outcome>> running_;

  std::atomic<bool> cancelled_{false};
  std::mutex lock_;                     ///< guards the engine
  std::shared_ptr<Calibrator> engine_;  ///< that computes
};

}  // namespace guided
