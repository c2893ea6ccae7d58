/// The files that a run writes, and what is said of them.
#include "common/OutputFiles.h"

#include <gtest/gtest.h>

#include "TemporaryFolder.h"
#include "common/Hdist.h"

namespace {

TEST(OutputFiles, AreListedWithThoseThatTheyReplaced) {
  const support::TemporaryFolder folder;
  support::WriteText(folder.File("old.json"), "earlier");
  common::OutputFiles files;
  for (const char* name : {"old.json", "new.json", "failed.png"}) files.Announce(folder.File(name));
  support::WriteText(folder.File("new.json"), "now");
  files.Written(folder.File("old.json"));
  files.Written(folder.File("new.json"));
  EXPECT_EQ(files.Text(), "Written:\n  " + folder.File("old.json") + " (replaced an earlier one)\n  " +
                              folder.File("new.json") + "\n");
}

TEST(ResultName, LosesTheExtensionThatIsAddedToIt) {
  EXPECT_EQ(common::WithoutExtension("camera.json"), "camera");
  EXPECT_EQ(common::WithoutExtension("out/camera.JSON"), "out/camera");
  EXPECT_EQ(common::WithoutExtension("camera"), "camera");
  EXPECT_EQ(common::WithoutExtension("camera.json.bak"), "camera.json.bak");
  EXPECT_EQ(common::WithoutExtension("json"), "json");
  EXPECT_EQ(common::WithoutExtension(".json"), "");
}

TEST(Hdist, IsWarnedOfWhereHardlyAnySheetHasIt) {
  for (const float usual : {0.02F, 0.19F, 0.2F, 5.0F}) EXPECT_EQ(common::HdistWarning(usual), "") << usual;
  EXPECT_EQ(
      common::HdistWarning(200.0F),
      "Warning: --hdist is in metres, and 200 m is unusual for a grid (the supplied sheet has 0.2). All "
      "lengths follow it.\n");
  EXPECT_NE(common::HdistWarning(0.019F), "");
  EXPECT_NE(common::HdistWarning(5.1F), "");
}

}  // namespace
