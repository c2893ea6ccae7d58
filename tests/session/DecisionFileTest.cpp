/// The text of decisions.json.
#include "session/DecisionFile.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "session/SessionScenes.h"

using namespace velmora;
using unit::Raised;

namespace {

TEST(DecisionFile, HoldsTheLists) {
  const DecisionLists lists = DecisionListsOf(TextOf(DecisionLists{{1, 5}, {5, 7}, 12}));
  EXPECT_EQ(lists.excluded, (std::vector<int>{1, 5}));
  EXPECT_EQ(lists.removed, (std::vector<int>{5, 7}));
  EXPECT_EQ(lists.next, 12);
}

TEST(DecisionFile, ThatIsNoneSaysWhatItLacks) {
  const auto fault = [](const char* text) {
    return Raised<std::runtime_error>([text] { DecisionListsOf(text); });
  };
  EXPECT_EQ(fault(""), "is cut off or no JSON text");
  EXPECT_EQ(fault("[]"), "lacks \"excluded\"");
  EXPECT_EQ(fault(R"({"excluded": [], "removed": ["a"], "next": 1})"), "has another type of \"removed\"");
  EXPECT_EQ(fault(R"({"excluded": [], "removed": []})"), "lacks \"next\"");
}

}  // namespace
