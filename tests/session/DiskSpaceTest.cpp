/// What a session takes of its disk, and when that is nearly full.
#include "session/DiskSpace.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>

#include "session/SessionScenes.h"

using namespace velmora;

namespace {

TEST(DiskSpace, CountsFilesInFoldersBelowToo) {
  const support::TemporaryFolder folder;
  EXPECT_EQ(BytesIn(folder.Path()), 0U);
  support::WriteText(folder.File("a"), "12345");
  std::filesystem::create_directories(folder.File("b/c"));
  support::WriteText(folder.File("b/c/d"), "123");
  EXPECT_EQ(BytesIn(folder.Path()), 8U);
  EXPECT_EQ(BytesIn(folder.File("missing")), 0U);
}

TEST(DiskSpace, OfAFolderThatIsNotThereIsAnError) {
  const support::TemporaryFolder folder;
  EXPECT_GT(BytesFreeAt(folder.Path()), 0U);
  EXPECT_THROW(BytesFreeAt(folder.File("missing")), std::runtime_error);
}

TEST(DiskSpace, IsWarnedOfWhenFewerSnapshotsFitThanAskedFor) {
  constexpr std::uint64_t MEGABYTE = 1000000;
  EXPECT_EQ(WarningOf(30 * MEGABYTE, MEGABYTE, 30), "");
  EXPECT_EQ(WarningOf(30 * MEGABYTE - 1, MEGABYTE, 30),
            "Only 29 MB are free on the session's disk: enough for about 29 snapshots.");
  EXPECT_EQ(WarningOf(MEGABYTE, MEGABYTE, 2),
            "Only 1 MB are free on the session's disk: enough for about 1 snapshot.");
  EXPECT_EQ(WarningOf(0, 0, 30), "");
  EXPECT_EQ(WarningOf(0, MEGABYTE, 0), "");
}

TEST(DiskSpace, IsGuessedFromImageSizesBeforeTheFirstSnapshot) {
  SessionSettings settings = unit::SettingsOfCameras(2);
  const std::uint64_t withImages = GuessedBytes(settings);
  settings.keepsImages = false;
  const std::uint64_t pixels = 40 * 30 + 50 * 30;
  EXPECT_EQ(withImages - GuessedBytes(settings), 3 * pixels);
  EXPECT_GT(GuessedBytes(settings), 0U);
}

}  // namespace
