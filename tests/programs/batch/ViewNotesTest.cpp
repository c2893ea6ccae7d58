/// What the last result says of each view of a session.
#include "batch/ViewNotes.h"

#include <gtest/gtest.h>

#include "TemporaryFolder.h"
#include "common/InputError.h"

using batch::ReadNotes;
using batch::ViewNote;

namespace {

TEST(ViewNotes, AreReadAsTheyWereWritten) {
  const support::TemporaryFolder folder;
  const std::string path = folder.File("views.json");
  batch::WriteNotes({{1, {0.125, ""}}, {7, {-1.0, "not needed"}}}, path);
  batch::WriteNotes({{3, {0.25, ""}}, {12, {-1.0, "disagrees"}}}, path);
  const auto notes = ReadNotes(path);
  ASSERT_EQ(notes.size(), 2U);
  EXPECT_EQ(notes.at(3).rms, 0.25);
  EXPECT_EQ(notes.at(3).reason, "");
  EXPECT_LT(notes.at(12).rms, 0.0);
  EXPECT_EQ(notes.at(12).reason, "disagrees");
}

TEST(ViewNotes, AreNoneWhereTheFileIsNotThereOrDamaged) {
  const support::TemporaryFolder folder;
  EXPECT_TRUE(ReadNotes(folder.File("none")).empty());
  for (const char* text :
       {"", "{", "[]", "{\"views\":[{\"snapshot\":1}]}", "{\"views\":[{\"snapshot\":\"x\"}]}"}) {
    support::WriteText(folder.File("views.json"), text);
    EXPECT_TRUE(ReadNotes(folder.File("views.json")).empty()) << text;
  }
}

TEST(ViewNotes, ThatCannotBeWrittenSaySo) {
  const support::TemporaryFolder folder;
  EXPECT_THROW(batch::WriteNotes({{1, {}}}, folder.File("none/views.json")), common::InputError);
}

}  // namespace
