/// Images on their way into a session and back: pixels, files elsewhere, copies.
#include "session/ImageFiles.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <stdexcept>

#include "ExifFiles.h"
#include "Matchers.h"
#include "session/SessionScenes.h"

using namespace velmora;
using unit::Raised;

namespace {

namespace fs = std::filesystem;

TEST(ImageFiles, ComeBackBitByBitInEachDepthAndNumberOfChannels) {
  const support::TemporaryFolder folder;
  for (const int type : {CV_8UC1, CV_8UC3, CV_8UC4, CV_16UC1, CV_16UC3, CV_16UC4}) {
    SessionImage image;
    cv::Mat larger(20, 30, type);
    cv::randu(larger, cv::Scalar::all(0), cv::Scalar::all(CV_MAT_DEPTH(type) == CV_8U ? 256 : 65536));
    image.pixels = larger(cv::Rect(3, 4, 20, 11));
    const ImageToKeep kept = Kept(image, 1, folder.Path());
    EXPECT_EQ(kept.stored.path, folder.File("camera-1.png"));
    support::WriteText(kept.stored.path, kept.bytes);
    EXPECT_EQ(FaultOf(kept.stored, true), "");
    EXPECT_SAME_MAT(Loaded(kept.stored), image.pixels.clone());
  }
}

TEST(ImageFiles, AreReadAsTheSensorSawThem) {
  const support::TemporaryFolder folder;
  const cv::Mat pixels(20, 30, CV_8UC3, cv::Scalar(10, 20, 30));
  support::WriteText(folder.File("turned.jpg"), support::TurnedJpeg(support::Encoded(pixels, ".jpg"), 6));
  SessionImage image;
  image.path = folder.File("turned.jpg");
  EXPECT_EQ(Loaded(Kept(image, 0, folder.Path()).stored).size(), pixels.size());
}

TEST(ImageFiles, OfAKindThatCannotBeReadSaySo) {
  const support::TemporaryFolder folder;
  support::WriteText(folder.File("view.raw"), "text");
  SessionImage image;
  image.path = folder.File("view.raw");
  EXPECT_EQ(Raised<std::runtime_error>([&] { Loaded(Kept(image, 0, folder.Path()).stored); }),
            "The image \"" + image.path + "\" is of no kind that can be read.");
}

TEST(ImageFiles, KeepAnExtensionOnlyWhereItIsAPlainOne) {
  const support::TemporaryFolder folder;
  SessionImage image;
  image.copy = true;
  for (const auto& [name, expected] :
       {std::pair{"a.JPG", "camera-0.jpg"}, std::pair{"noextension", "camera-0"},
        std::pair{"a.b c", "camera-0"}, std::pair{"a.", "camera-0."}}) {
    image.path = folder.File(name);
    support::WriteText(image.path, "x");
    EXPECT_EQ(fs::path(Kept(image, 0, folder.Path()).stored.path).filename(), expected);
  }
}

TEST(ImageFiles, WhosePathIsNoUtf8AreRefusedSinceItCannotBeNoted) {
  const support::TemporaryFolder folder;
  SessionImage image;
  image.path = folder.File("view\xFF.png");
  support::WriteText(image.path, "x");
  EXPECT_EQ(Raised<std::invalid_argument>([&] { Kept(image, 0, folder.Path()); }),
            "The path of an image is no UTF-8 text, so that it cannot be noted.");
}

/// An image file outside of the session.
class ImageElsewhere : public unit::SessionTest {
 protected:
  void SetUp() override {
    cv::imwrite(file_, unit::SnapshotOfSeed(2, settings_).images[0].pixels);
    given_.images[0].pixels.release();
    given_.images[0].path = file_;
  }

  const std::string file_ = folder_.File("View 2.PNG");
  SessionSnapshot given_ = unit::SnapshotOfSeed(2, settings_);
  const cv::Mat pixels_ = unit::SnapshotOfSeed(2, settings_).images[0].pixels;
};

TEST_F(ImageElsewhere, IsNotedWithPathSizeAndHash) {
  session_->Add(given_);
  Reopen();
  const StoredImage image = session_->Snapshot(1).images[0];
  EXPECT_EQ(image.kind, StoredImage::Kind::Reference);
  EXPECT_EQ(image.path, file_);
  EXPECT_EQ(image.bytes, fs::file_size(file_));
  EXPECT_EQ(unit::NamesIn(InSession("snapshots/000001")), std::vector<std::string>{"snapshot.json"});
  EXPECT_EQ(cv::norm(session_->LoadImage(1, 0), pixels_, cv::NORM_INF), 0.0);
}

TEST_F(ImageElsewhere, ThatIsGoneOrChangedIsToldAndItsObservationsCount) {
  session_->Add(given_);
  support::WriteText(file_, "another text");
  Reopen();
  EXPECT_TRUE(session_->Snapshot(1).IsUsed());
  EXPECT_EQ(session_->Snapshot(1).images[0].fault,
            "The file \"" + file_ + "\" has changed since it was stored.");
  EXPECT_THROW(session_->LoadImage(1, 0), std::runtime_error);
  fs::remove(file_);
  Reopen();
  EXPECT_TRUE(session_->Snapshot(1).IsUsed());
  EXPECT_EQ(session_->Snapshot(1).images[0].fault, "The file \"" + file_ + "\" is missing.");
}

TEST_F(ImageElsewhere, IsCopiedByteForByteWhereThatIsAskedFor) {
  given_.images[0].copy = true;
  session_->Add(given_);
  const std::string bytes = support::ReadText(file_);
  fs::remove(file_);
  Reopen();
  const StoredImage image = session_->Snapshot(1).images[0];
  EXPECT_EQ(image.kind, StoredImage::Kind::Copy);
  EXPECT_EQ(image.source, file_);
  EXPECT_EQ(image.path, InSession("snapshots/000001/camera-0.png"));
  EXPECT_EQ(support::ReadText(image.path), bytes);
  EXPECT_EQ(session_->Snapshot(1).fault, "");
  EXPECT_EQ(cv::norm(session_->LoadImage(1, 0), pixels_, cv::NORM_INF), 0.0);
  fs::remove(image.path);
  Reopen();
  EXPECT_EQ(session_->Snapshot(1).fault, "Its image camera-0.png is missing.");
}

TEST_F(ImageElsewhere, ThatIsNotThereIsRefused) {
  fs::remove(file_);
  EXPECT_EQ(Raised<std::runtime_error>([&] { session_->Add(given_); }),
            "Cannot read the image \"" + file_ + "\": there is no such file or folder.");
  EXPECT_TRUE(unit::NamesIn(InSession("snapshots")).empty());
}

}  // namespace
