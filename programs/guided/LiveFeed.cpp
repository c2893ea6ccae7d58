/// Hands out the frames of a reader, those of a recording at its pace.
#include "guided/LiveFeed.h"

#include <algorithm>
#include <cmath>
#include <thread>
#include <utility>

namespace guided {

Pace::Pace(double framesPerSecond)
    : interval_(std::chrono::duration_cast<std::chrono::nanoseconds>(
          std::chrono::duration<double>(1.0 / framesPerSecond))) {
}

bool Pace::Due(Moment now) {
  if (next_ && now < *next_) return false;
  next_ = next_ ? std::max(*next_ + interval_, now) : now + interval_;
  return true;
}

std::chrono::nanoseconds Pace::Remaining(Moment now) const {
  return next_ && now < *next_ ? std::chrono::nanoseconds(*next_ - now) : std::chrono::nanoseconds(0);
}

double PlayingRate(double told) {
  constexpr double SLOWEST = 1.0;
  constexpr double FASTEST = 240.0;
  constexpr double USUAL = 30.0;
  return std::isfinite(told) && told >= SLOWEST && told <= FASTEST ? told : USUAL;
}

template <typename Frame>
LiveFeed<Frame>::LiveFeed(common::BasicFrameFeed<Frame>& feed, const SourceWatch& watch,
                          std::optional<Pace> pace, Clock clock)
    : feed_(feed), watch_(watch), pace_(pace), clock_(std::move(clock)) {
}

template <typename Frame>
bool LiveFeed<Frame>::Fetch(std::chrono::milliseconds patience) {
  if (!holds_ && feed_.Take(held_, patience)) holds_ = true;
  return holds_;
}

template <typename Frame>
const Frame* LiveFeed<Frame>::AwaitFirst(const std::function<bool()>& interrupted) {
  constexpr std::chrono::milliseconds GLANCE{100};
  while (!Fetch(GLANCE)) {
    if (FailedToStart() || interrupted()) return nullptr;
  }
  return &held_;
}

template <typename Frame>
bool LiveFeed<Frame>::Take(Frame& frame, std::chrono::milliseconds patience) {
  if (!Fetch(patience)) return false;
  if (pace_ && !pace_->Due(clock_())) {
    std::this_thread::sleep_for(
        std::min(pace_->Remaining(clock_()), std::chrono::nanoseconds(std::max(patience, patience.zero()))));
    if (!pace_->Due(clock_())) return false;
  }
  frame = std::exchange(held_, Frame());
  holds_ = false;
  return true;
}

template <typename Frame>
bool LiveFeed<Frame>::FailedToStart() const {
  return watch_.State().kind == SourceState::Kind::FailedToStart;
}

template <typename Frame>
SourceState LiveFeed<Frame>::State() const {
  return holds_ ? SourceState() : watch_.State();
}

template class LiveFeed<cv::Mat>;
template class LiveFeed<common::FramePair>;

}  // namespace guided
