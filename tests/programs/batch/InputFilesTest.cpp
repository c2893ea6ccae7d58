/// What is told of files that a folder holds beside its images.
#include "batch/InputFiles.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "TemporaryFolder.h"

namespace {

namespace fs = std::filesystem;

class FolderOfImages : public ::testing::Test {
 protected:
  void Put(const std::string& name) const { support::WriteText(folder_.File(name), "content"); }

  std::vector<std::string> Expand() {
    skipped_ = {};
    return batch::ExpandInputs({folder_.Path()}, skipped_);
  }

  support::TemporaryFolder folder_;
  batch::SkippedFiles skipped_;
};

TEST_F(FolderOfImages, SaysNothingOfAFolderThatHoldsNothingElse) {
  Put("a.png");
  Put(".DS_Store");
  EXPECT_EQ(Expand(), std::vector<std::string>{folder_.File("a.png")});
  EXPECT_EQ(skipped_.Text(), "");
}

TEST_F(FolderOfImages, CountsWhatIsSkippedByKind) {
  for (const char* name : {"a.png", "1.heic", "2.HEIC", "notes"}) Put(name);
  fs::create_directory(folder_.File("more.jpg"));
  fs::create_symlink("nowhere.png", folder_.File("b.png"));
  EXPECT_EQ(Expand(), std::vector<std::string>{folder_.File("a.png")});
  EXPECT_EQ(skipped_.Text(), "5 files skipped: 2 .heic, 1 broken link, 1 folder, 1 without an extension");
}

TEST_F(FolderOfImages, LeavesHiddenImagesAlone) {
  Put("x.jpg");
  Put("._x.jpg");
  EXPECT_EQ(Expand(), std::vector<std::string>{folder_.File("x.jpg")});
  EXPECT_EQ(skipped_.Text(), "1 file skipped: 1 hidden");
  EXPECT_EQ(batch::ExpandInputs({folder_.File("._x.jpg")}).size(), 1U) << "asked for by name";
}

TEST_F(FolderOfImages, SaysWhatAFolderWithoutImagesHolds) {
  Put("clip.mp4");
  Put("1.heic");
  Put("2.heic");
  std::string message;
  try {
    Expand();
  } catch (const common::InputError& error) {
    message = error.what();
  }
  EXPECT_EQ(message, "no image in folder '" + folder_.Path() + "' (3 files skipped: 2 .heic, 1 .mp4)");
}

}  // namespace
