/// Tests of temporary folders and small files.
#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>

using support::TemporaryFolder;
namespace fs = std::filesystem;

TEST(TemporaryFolder, IsEmptyAndItsOwn) {
  const TemporaryFolder first;
  const TemporaryFolder second;
  EXPECT_NE(first.Path(), second.Path());
  EXPECT_TRUE(fs::is_empty(first.Path()));
}

TEST(TemporaryFolder, GoesWithItsContents) {
  std::string path;
  {
    const TemporaryFolder folder;
    path = folder.Path();
    fs::create_directories(folder.File("a/b"));
    support::WriteText(folder.File("a/b/c.txt"), "text");
    fs::permissions(folder.File("a/b"), fs::perms::owner_read | fs::perms::owner_exec);
    ASSERT_TRUE(fs::exists(folder.File("a/b/c.txt")));
  }
  EXPECT_FALSE(fs::exists(path));
}

TEST(TemporaryFolder, LeavesWhatLinksInItPointTo) {
  const TemporaryFolder kept;
  support::WriteText(kept.File("kept.txt"), "text");
  {
    const TemporaryFolder folder;
    fs::create_directory_symlink(kept.Path(), folder.File("link"));
  }
  EXPECT_TRUE(fs::exists(kept.File("kept.txt")));
}

TEST(TextFiles, ComeBackAsWritten) {
  const TemporaryFolder folder;
  const std::string text("one\r\ntwo\0three", 14);
  support::WriteText(folder.File("file"), text);
  EXPECT_EQ(support::ReadText(folder.File("file")), text);
  support::WriteText(folder.File("file"), "");
  EXPECT_EQ(support::ReadText(folder.File("file")), "");
}

TEST(TextFiles, ThatCannotBeReadOrWrittenAreNamed) {
  const TemporaryFolder folder;
  EXPECT_THROW(support::ReadText(folder.File("absent")), std::runtime_error);
  EXPECT_THROW(support::WriteText(folder.File("absent/file"), "text"), std::runtime_error);
}
