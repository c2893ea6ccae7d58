/// Computes what is known of the camera while more views are taken.
#include "guided/Estimator.h"

#include <chrono>
#include <stdexcept>
#include <utility>

namespace guided {

Estimator::~Estimator() {
  if (!running_.valid()) return;
  Cancel();
  running_.wait();
}

void Estimator::Update(std::vector<NamedSnapshot> snapshots) {
  snapshots_ = std::move(snapshots);
  ++wanted_;
  if (snapshots_.size() < ENOUGH) latest_ = nullptr;
  Poll();
}

void Estimator::Poll() {
  if (running_.valid()) {
    if (running_.wait_for(std::chrono::seconds(0)) != std::future_status::ready) return;
    std::shared_ptr<const Outcome> outcome = running_.get();
    if (snapshots_.size() >= ENOUGH) {
      latest_ = std::move(outcome);
      known_ = begun_;
    }
  }
  if (begun_ != wanted_ && snapshots_.size() >= ENOUGH) Begin();
}

std::shared_ptr<const Outcome> Estimator::Current() const {
  return known_ == wanted_ ? latest_ : nullptr;
}

void Estimator::Begin() {
  begun_ = wanted_;
  running_ = std::async(std::launch::async, [this, snapshots = snapshots_] {
    const auto computing = [this](std::shared_ptr<Calibrator> engine) {
      const std::lock_guard<std::mutex> guard(lock_);
      if (cancelled_) throw std::runtime_error("it was cancelled");
      engine_ = std::move(engine);
    };
    auto outcome = std::make_shared<const Outcome>(Compute(snapshots, settings_, computing));
    const std::lock_guard<std::mutex> guard(lock_);
    engine_ = nullptr;
    return outcome;
  });
}

void Estimator::Cancel() {
  cancelled_ = true;
  std::shared_ptr<Calibrator> engine;
  {
    const std::lock_guard<std::mutex> guard(lock_);
    engine = engine_;
  }
  if (engine) engine->CancelComputation();
}

}  // namespace guided
