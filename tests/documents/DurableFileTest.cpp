/// Files that are on the disk when a function returns: new ones, replaced ones, refused ones.
#include "documents/DurableFile.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include "TemporaryFolder.h"
#include "documents/RefusedCalls.h"
#include "unit/Scopes.h"

using namespace velmora;

namespace {

namespace fs = std::filesystem;

class DurableFile : public ::testing::Test {
 protected:
  size_t Count() const {
    return static_cast<size_t>(
        std::distance(fs::directory_iterator(folder_.Path()), fs::directory_iterator()));
  }

  support::TemporaryFolder folder_;
  const std::string path_ = folder_.File("file");
};

TEST_F(DurableFile, IsNewOrRefused) {
  const std::string bytes("a\0b", 3);
  EXPECT_FALSE(WriteNewFile(path_, bytes));
  EXPECT_EQ(support::ReadText(path_), bytes);
  EXPECT_EQ(WriteNewFile(path_, "other").value(), EEXIST);
  EXPECT_EQ(support::ReadText(path_), bytes);
  EXPECT_EQ(WriteNewFile(folder_.File("missing/file"), bytes).value(), ENOENT);
}

TEST_F(DurableFile, ReplacesAnEarlierOne) {
  EXPECT_FALSE(ReplaceFile(path_, "earlier"));
  EXPECT_FALSE(ReplaceFile(path_, "text"));
  EXPECT_EQ(support::ReadText(path_), "text");
  EXPECT_EQ(Count(), 1U);
}

TEST_F(DurableFile, ReplacesWhatALostProcessWasWriting) {
  support::WriteText(folder_.File(".new-file"), "something much longer than the text");
  EXPECT_FALSE(ReplaceFile(path_, "text"));
  EXPECT_EQ(support::ReadText(path_), "text");
  EXPECT_EQ(Count(), 1U);
}

TEST_F(DurableFile, KeepsTheEarlierOneWhenItCannotBeReplaced) {
  support::WriteText(path_, "earlier");
  const unit::RefusedCall refused(unit::RefusedCall::RENAME, EACCES);
  EXPECT_EQ(ReplaceFile(path_, "text").value(), EACCES);
  EXPECT_EQ(support::ReadText(path_), "earlier");
  EXPECT_EQ(Count(), 1U);
}

TEST_F(DurableFile, IsFoundThroughARelativePath) {
  const unit::ScopedCurrentFolder here(folder_.Path());
  EXPECT_FALSE(ReplaceFile("file", "text"));
  EXPECT_EQ(support::ReadText(path_), "text");
}

TEST_F(DurableFile, LiesInAFolderThatIsOne) {
  EXPECT_FALSE(SyncFolder(folder_.Path()));
  support::WriteText(path_, "");
  EXPECT_EQ(SyncFolder(path_).value(), ENOTDIR);
  EXPECT_EQ(SyncFolder(folder_.File("missing")).value(), ENOENT);
}

}  // namespace
