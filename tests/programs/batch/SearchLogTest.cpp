/// What a session's images were found to hold: the file, damage to it, and what is told of it.
#include "batch/SearchLog.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "TemporaryFolder.h"
#include "batch/MomentText.h"
#include "common/InputError.h"

using batch::LoggedMoment;
using batch::SearchHeader;
using batch::SearchLog;

namespace {

/// Images of a pair; the right one without the grid, and of a name that is no UTF-8.
LoggedMoment MomentOfNumber(int number) {
  const std::string name = std::to_string(number) + ".png";
  return {{name, "0123456789abcdef", "5 7 /views/" + name, {640, 480}, ""},
          {"r\xFF" + name, "", "", {320, 240}, "no grid found"}};
}

std::vector<std::string> NamesIn(const SearchLog& log) {
  std::vector<std::string> names;
  for (const LoggedMoment& moment : log.Moments()) names.push_back(moment.front().name);
  return names;
}

class SearchLogs : public ::testing::Test {
 protected:
  /// Writes a log with that number of moments, of which the first comes before there is a file.
  void Write(int moments) const {
    SearchLog log;
    SearchHeader header;
    header.kind = "rig";
    header.cameras = {"left", "right"};
    header.parts = true;
    header.copies = true;
    header.frame = {640, 0};
    header.disc = 0.008;
    log.Set(header);
    log.Add(MomentOfNumber(1));
    log.MoveTo(path_);
    for (int number = 2; number <= moments; ++number) log.Add(MomentOfNumber(number));
  }

  support::TemporaryFolder folder_;
  const std::string path_ = folder_.File("searched.jsonl");
};

TEST_F(SearchLogs, HoldAfterwardsWhatWasAddedBeforeAndAfterThereWasAFile) {
  Write(3);
  const SearchLog log(path_);
  ASSERT_TRUE(log.Header());
  EXPECT_EQ(log.Header()->kind, "rig");
  EXPECT_EQ(log.Header()->cameras, (std::vector<std::string>{"left", "right"}));
  EXPECT_TRUE(log.Header()->parts);
  EXPECT_TRUE(log.Header()->copies);
  EXPECT_EQ(log.Header()->frame, cv::Size(640, 0));
  EXPECT_EQ(log.Header()->disc, 0.008);
  EXPECT_EQ(NamesIn(log), (std::vector<std::string>{"1.png", "2.png", "3.png"}));
  const batch::LoggedImage& left = log.Moments()[1][0];
  EXPECT_EQ(left.origin, "0123456789abcdef");
  EXPECT_EQ(left.stamp, "5 7 /views/2.png");
  EXPECT_EQ(left.size, cv::Size(640, 480));
  EXPECT_EQ(left.fault, "");
  EXPECT_EQ(log.Moments()[1][1].fault, "no grid found");
}

TEST_F(SearchLogs, AreOfEachMomentOnce) {
  Write(2);
  SearchLog log(path_);
  log.Add(MomentOfNumber(2));
  log.Add(MomentOfNumber(3));
  EXPECT_EQ(NamesIn(SearchLog(path_)), (std::vector<std::string>{"1.png", "2.png", "3.png"}));
}

TEST_F(SearchLogs, LoseNothingButTheLineThatIsCutOffAnywhere) {
  Write(2);
  const std::string text = support::ReadText(path_);
  const size_t last = text.rfind('\n', text.size() - 2) + 1;
  for (size_t length = last; length < text.size(); length += 7) {
    support::WriteText(path_, text.substr(0, length));
    SearchLog log(path_);
    EXPECT_EQ(NamesIn(log), std::vector<std::string>{"1.png"}) << length;
    log.Add(MomentOfNumber(3));
    EXPECT_EQ(NamesIn(SearchLog(path_)), (std::vector<std::string>{"1.png", "3.png"})) << length;
  }
}

TEST_F(SearchLogs, PassOverWhatIsDamagedOrOfAnotherFormat) {
  Write(2);
  const std::string text = support::ReadText(path_);
  support::WriteText(path_, "no JSON\n{\"images\":7}\n[]\n{\"format\":2}\n\n" + text);
  EXPECT_EQ(NamesIn(SearchLog(path_)), (std::vector<std::string>{"1.png", "2.png"}));
  support::WriteText(path_, "{\"format\":2,\"kind\":\"rig\"}\n");
  EXPECT_FALSE(SearchLog(path_).Header());
  EXPECT_TRUE(SearchLog(folder_.File("none")).Moments().empty());
}

TEST_F(SearchLogs, ThatCannotBeWrittenSaySo) {
  Write(1);
  SearchLog log(path_);
  std::filesystem::remove(path_);
  std::filesystem::create_directory(path_);
  EXPECT_THROW(log.Add(MomentOfNumber(2)), common::InputError);
}

TEST(MomentTexts, TellWhoFoundTheGridOrWhyNobodyDid) {
  const LoggedMoment none = {{"a", "", "", {}, "dark"}, {"b", "", "", {}, "bright"}};
  const LoggedMoment right = {{"a", "", "", {}, "dark"}, {"b", "", "", {}, ""}};
  const LoggedMoment both = {{"a", "", "", {}, ""}, {"b", "", "", {}, ""}};
  const LoggedMoment alone = {{}, {"b", "", "", {}, ""}};
  EXPECT_EQ(batch::TextOf({none[0]}, "camera", {}), "dark");
  EXPECT_EQ(batch::TextOf({both[0]}, "camera", {}), "grid found");
  EXPECT_EQ(batch::TextOf(none, "pair", {}), "both: dark");
  EXPECT_EQ(batch::TextOf(right, "pair", {}), "left: dark");
  EXPECT_EQ(batch::TextOf({right[1], right[0]}, "pair", {}), "right: dark");
  EXPECT_EQ(batch::TextOf(both, "pair", {}), "grid found in both");
  EXPECT_EQ(batch::TextOf(none, "rig", {"l", "r"}), "dark");
  EXPECT_EQ(batch::TextOf(both, "rig", {"l", "r"}), "grid found by l, r");
  EXPECT_EQ(batch::TextOf(alone, "rig", {"l", "r"}), "grid found by r");
  EXPECT_FALSE(batch::HasView(none));
  EXPECT_TRUE(batch::HasView(right));
  EXPECT_FALSE(batch::HasView({{}, none[0]}));
}

}  // namespace
