/// What was decided of a session's snapshots, with undo and redo.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "velmora/Session.h"

namespace velmora {

/// A value: who copies it has the decisions and the history of that moment. Numbers are those of snapshots.
class Decisions {
 public:
  Decisions() = default;
  /// As it was when the session was opened, which nothing undoes.
  Decisions(const std::vector<int>& all, const std::vector<int>& excluded, const std::vector<int>& removed);

  /// A snapshot that was just taken; it is used. Its number is new.
  void Add(int number);
  /// These raise std::invalid_argument for numbers that do not exist, Exclude and Include for removed ones
  /// too; nothing changes then. True when something changed: only then there is something to undo.
  bool Exclude(const std::vector<int>& numbers);
  bool Include(const std::vector<int>& numbers);
  bool Remove(const std::vector<int>& numbers);
  bool BringBack(const std::vector<int>& numbers);

  std::optional<SessionStep> Undo();
  std::optional<SessionStep> Redo();
  bool CanUndo() const { return done_ > 0; }
  bool CanRedo() const { return done_ < steps_.size(); }

  /// Forgets these snapshots, and all that was done.
  void Purge(const std::vector<int>& numbers);

  /// The number must exist.
  SnapshotDecision Of(int number) const;
  /// In ascending order; a snapshot may be in both, and is excluded once it is brought back.
  std::vector<int> Excluded() const;
  std::vector<int> Removed() const;

 private:
  struct State {
    bool excluded = false;
    bool removed = false;
  };
  struct Change {
    int number;
    State before, after;
  };
  struct Step {
    SessionStep::Kind kind;
    std::vector<Change> changes;
  };

  bool Set(SessionStep::Kind kind, const std::vector<int>& numbers, bool State::*flag, bool value);
  void Push(Step step);
  std::vector<int> With(bool State::*flag) const;
  static SessionStep Told(const Step& step);

  std::map<int, State> states_;
  std::vector<Step> steps_;
  size_t done_ = 0;  ///< the steps before this one are done, those from it on were taken back
};

}  // namespace velmora
