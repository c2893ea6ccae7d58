/// What a source of frames is doing, as a value that a loop can ask for at every turn.
#include "guided/SourceState.h"

#include <utility>

namespace guided {

namespace {

/// A recording may have a frame that cannot be decoded; one whose reads fail again and again is at its end.
constexpr int FAILURES_AT_THE_END = 5;

std::string SilenceText(const SourceState& state, const std::string& question) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(state.silence).count();
  return "No picture for " + std::to_string(seconds) + " s" + question;
}

std::string StalledText(const SourceState& state, SourceKind kind) {
  switch (kind) {
    case SourceKind::Camera:
      return SilenceText(state, ": is the camera still plugged in?");
    case SourceKind::Stream:
      return SilenceText(state, ": is the stream still sent?");
    case SourceKind::Recording:
      break;
  }
  return SilenceText(state, ".");
}

}  // namespace

std::string WordsOf(const SourceState& state, SourceKind kind) {
  switch (state.kind) {
    case SourceState::Kind::Live:
      break;
    case SourceState::Kind::Ended:
      return "The recording has ended.";
    case SourceState::Kind::Stalled:
      return StalledText(state, kind);
    case SourceState::Kind::Unplugged:
      return "The camera (" + state.gone + ") is gone: plug it in again.";
    case SourceState::Kind::FailedToStart:
      return "There is no picture.";
  }
  return "";
}

SourceWatch::SourceWatch(SourceKind kind, Clock clock) : kind_(kind), clock_(std::move(clock)) {
}

void SourceWatch::ReadBegins() {
  const Moment now = clock_();
  const std::lock_guard<std::mutex> guard(lock_);
  if (waiting_) return;
  waiting_ = true;
  since_ = now;
}

void SourceWatch::ReadEnds(bool delivered) {
  const std::lock_guard<std::mutex> guard(lock_);
  if (!delivered) {
    if (failures_ < FAILURES_AT_THE_END) ++failures_;
    return;
  }
  waiting_ = false;
  delivered_ = true;
  failures_ = 0;
  gone_.clear();
}

void SourceWatch::SetGone(const std::string& name, bool gone) {
  const std::lock_guard<std::mutex> guard(lock_);
  if (gone) {
    gone_.insert(name);
  } else {
    gone_.erase(name);
  }
}

/// Of a recording: no read is going to succeed any more.
bool SourceWatch::EndedOrBroken() const {
  return kind_ == SourceKind::Recording && failures_ >= (delivered_ ? FAILURES_AT_THE_END : 1);
}

SourceState SourceWatch::State() const {
  const Moment now = clock_();
  const std::lock_guard<std::mutex> guard(lock_);
  SourceState state;
  if (waiting_ && now > since_) {
    state.silence = std::chrono::duration_cast<std::chrono::milliseconds>(now - since_);
  }
  if (EndedOrBroken()) {
    state.kind = delivered_ ? SourceState::Kind::Ended : SourceState::Kind::FailedToStart;
  } else if (!delivered_ && state.silence > START_PATIENCE) {
    state.kind = SourceState::Kind::FailedToStart;
  } else if (!gone_.empty()) {
    state.kind = SourceState::Kind::Unplugged;
    state.gone = *gone_.begin();
  } else if (state.silence > STALLED_AFTER) {
    state.kind = SourceState::Kind::Stalled;
  }
  return state;
}

}  // namespace guided
