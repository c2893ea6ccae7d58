/// The text of decisions.json: what was decided of a session's snapshots.
#pragma once

#include <string>
#include <vector>

namespace velmora {

struct DecisionLists {
  std::vector<int> excluded, removed;  ///< numbers of snapshots
  int next = 1;                        ///< the number of the next snapshot is this one or a later one
};

std::string TextOf(const DecisionLists& lists);

/// Raises std::runtime_error with what goes behind "its decisions.json ".
DecisionLists DecisionListsOf(const std::string& text);

}  // namespace velmora
