/// What was decided of a session's snapshots, with undo and redo.
#include "session/Decisions.h"

#include <set>
#include <stdexcept>
#include <utility>

namespace velmora {

Decisions::Decisions(const std::vector<int>& all, const std::vector<int>& excluded,
                     const std::vector<int>& removed) {
  for (const int number : all) states_[number];
  const auto mark = [this](const std::vector<int>& numbers, bool State::*flag) {
    for (const int number : numbers) {
      const auto state = states_.find(number);
      if (state != states_.end()) state->second.*flag = true;
    }
  };
  mark(excluded, &State::excluded);
  mark(removed, &State::removed);
}

void Decisions::Add(int number) {
  states_[number] = State{};
  State absent;
  absent.removed = true;
  Push({SessionStep::Kind::Add, {{number, absent, State{}}}});
}

bool Decisions::Exclude(const std::vector<int>& numbers) {
  return Set(SessionStep::Kind::Exclude, numbers, &State::excluded, true);
}

bool Decisions::Include(const std::vector<int>& numbers) {
  return Set(SessionStep::Kind::Include, numbers, &State::excluded, false);
}

bool Decisions::Remove(const std::vector<int>& numbers) {
  return Set(SessionStep::Kind::Remove, numbers, &State::removed, true);
}

bool Decisions::BringBack(const std::vector<int>& numbers) {
  return Set(SessionStep::Kind::BringBack, numbers, &State::removed, false);
}

bool Decisions::Set(SessionStep::Kind kind, const std::vector<int>& numbers, bool State::*flag, bool value) {
  Step step{kind, {}};
  for (const int number : std::set<int>(numbers.begin(), numbers.end())) {
    const auto found = states_.find(number);
    if (found == states_.end()) {
      throw std::invalid_argument("There is no snapshot " + std::to_string(number) + ".");
    }
    const State before = found->second;
    if (flag == &State::excluded && before.removed) {
      throw std::invalid_argument("Snapshot " + std::to_string(number) + " is removed: bring it back first.");
    }
    State after = before;
    after.*flag = value;
    if (before.*flag != value) step.changes.push_back({number, before, after});
  }
  if (step.changes.empty()) return false;
  for (const Change& change : step.changes) states_[change.number] = change.after;
  Push(std::move(step));
  return true;
}

void Decisions::Push(Step step) {
  steps_.resize(done_);
  steps_.push_back(std::move(step));
  ++done_;
}

std::optional<SessionStep> Decisions::Undo() {
  if (!CanUndo()) return std::nullopt;
  const Step& step = steps_[--done_];
  for (const Change& change : step.changes) states_[change.number] = change.before;
  return Told(step);
}

std::optional<SessionStep> Decisions::Redo() {
  if (!CanRedo()) return std::nullopt;
  const Step& step = steps_[done_++];
  for (const Change& change : step.changes) states_[change.number] = change.after;
  return Told(step);
}

void Decisions::Purge(const std::vector<int>& numbers) {
  for (const int number : numbers) states_.erase(number);
  steps_.clear();
  done_ = 0;
}

SnapshotDecision Decisions::Of(int number) const {
  const State& state = states_.at(number);
  if (state.removed) return SnapshotDecision::Removed;
  return state.excluded ? SnapshotDecision::Excluded : SnapshotDecision::Used;
}

std::vector<int> Decisions::Excluded() const {
  return With(&State::excluded);
}

std::vector<int> Decisions::Removed() const {
  return With(&State::removed);
}

std::vector<int> Decisions::With(bool State::*flag) const {
  std::vector<int> numbers;
  for (const auto& [number, state] : states_) {
    if (state.*flag) numbers.push_back(number);
  }
  return numbers;
}

SessionStep Decisions::Told(const Step& step) {
  SessionStep told{step.kind, {}};
  for (const Change& change : step.changes) told.numbers.push_back(change.number);
  return told;
}

}  // namespace velmora
