/// The options of a check of an earlier result.
#include "batch/CheckOptions.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "batch/Arguments.h"

namespace {

batch::Parsed Parse(std::vector<std::string> words) {
  words.insert(words.begin(), "velmora-batch");
  std::vector<char*> argv;
  argv.reserve(words.size() + 1);
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  return batch::ParseArguments(static_cast<int>(words.size()), argv.data());
}

TEST(CheckOptions, NameAResultAndATolerance) {
  const batch::Parsed parsed = Parse({"--check", "my_camera.json", "--tolerance", "0.5", "a.png"});
  ASSERT_TRUE(parsed.run);
  EXPECT_TRUE(parsed.arguments.check.IsGiven());
  EXPECT_EQ(parsed.arguments.check.result, "my_camera.json");
  EXPECT_EQ(parsed.arguments.check.tolerance, 0.5);
  EXPECT_EQ(parsed.arguments.inputs, std::vector<std::string>{"a.png"});
  EXPECT_FALSE(Parse({"a.png"}).arguments.check.IsGiven());
}

TEST(CheckOptions, GoWithHowGridsAreSearched) {
  EXPECT_TRUE(Parse({"--check", "c.json", "a.png", "--hdist", "0.3", "--grid", "5x9", "--finder", "standard",
                     "--centres", "plain", "--disc", "0", "--threads", "2", "--every", "3", "--whole-grids"})
                  .run);
}

TEST(CheckOptions, ExcludeWhatMakesNoSenseWithACheck) {
  const std::vector<std::vector<std::string>> others = {
      {"--output", "out"},    {"--model", "classic"}, {"--max-views", "20"},        {"--strict"},
      {"--solver", "sparse"}, {"--width", "640"},     {"--record-model", "m.json"}, {"--split", "vertical"},
      {"--right", "b.png"},   {"--rig", "a", "b"},    {"--sheet-shape", "flat"}};
  for (const auto& other : others) {
    std::vector<std::string> words = {"a.png", "--check", "c.json"};
    words.insert(words.end(), other.begin(), other.end());
    const batch::Parsed parsed = Parse(words);
    EXPECT_FALSE(parsed.run) << other.front();
    EXPECT_EQ(parsed.exitStatus, 2) << other.front();
  }
  for (const auto& words :
       std::vector<std::vector<std::string>>{{"--check", "c.json"},
                                             {"a.png", "--check", ""},
                                             {"a.png", "--tolerance", "1"},
                                             {"a.png", "--check", "c.json", "--tolerance", "0"},
                                             {"a.png", "--check", "c.json", "--tolerance", "-1"},
                                             {"a.png", "--check", "c.json", "--tolerance", "x"}}) {
    EXPECT_EQ(Parse(words).exitStatus, 2) << words.back();
  }
}

}  // namespace
