/// The text of decisions.json: what was decided of a session's snapshots.
#include "session/DecisionFile.h"

#include "session/JsonFields.h"

namespace velmora {

std::string TextOf(const DecisionLists& lists) {
  return JsonText({{"excluded", lists.excluded}, {"removed", lists.removed}, {"next", lists.next}});
}

DecisionLists DecisionListsOf(const std::string& text) {
  const nlohmann::json document = ParsedJson(text);
  return {FieldOf<std::vector<int>>(document, "excluded"), FieldOf<std::vector<int>>(document, "removed"),
          FieldOf<int>(document, "next")};
}

}  // namespace velmora
