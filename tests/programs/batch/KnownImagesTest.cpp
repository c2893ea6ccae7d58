/// The images that a session has seen, by their content.
#include "batch/KnownImages.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "TemporaryFolder.h"

using batch::ImageOrigins;
using batch::KnownImages;
using batch::LoggedMoment;
using batch::NamedImage;
using batch::SearchLog;
using batch::UnmatchedSnapshots;
using velmora::StoredSnapshot;

namespace {

StoredSnapshot SnapshotOf(int number, const std::string& origin) {
  StoredSnapshot snapshot;
  snapshot.number = number;
  snapshot.observations = {{{{1.5, 2.5}, {3.5, 4.5}}, {}, {0.1, 0.2}}};
  snapshot.origins = {origin};
  return snapshot;
}

SearchLog LogOf(const std::vector<LoggedMoment>& moments) {
  SearchLog log;
  for (const LoggedMoment& moment : moments) log.Add(moment);
  return log;
}

TEST(KnownImage, HasItsFaultFromTheLogAndItsViewFromTheSnapshot) {
  const SearchLog log =
      LogOf({{{"a.png", "a", "", {640, 480}, ""}}, {{"b.png", "b", "", {640, 480}, "dark"}}});
  const KnownImages known({SnapshotOf(1, "a")}, log);
  const auto seen = known.Find("a");
  ASSERT_TRUE(seen);
  EXPECT_EQ(seen->fault, "");
  EXPECT_EQ(seen->size, cv::Size(640, 480));
  EXPECT_EQ(seen->view.points[1], cv::Point2d(3.5, 4.5));
  EXPECT_EQ(seen->view.weights, (std::vector<double>{1.0, 1.0})) << "all were seen";
  EXPECT_EQ(seen->view.deviations, (std::vector<double>{0.1, 0.2}));
  EXPECT_EQ(known.Find("b")->fault, "dark");
  EXPECT_FALSE(known.Find("c"));
  EXPECT_FALSE(known.Find(""));
}

TEST(KnownImage, IsNoneWhoseViewIsNotThereOrIsDamaged) {
  const SearchLog log = LogOf({{{"a.png", "a", "", {640, 480}, ""}}, {{"", "", "", {}, ""}}});
  EXPECT_FALSE(KnownImages({}, log).Find("a")) << "the end came between the log and the snapshot";
  StoredSnapshot damaged = SnapshotOf(1, "a");
  damaged.fault = "It is.";
  EXPECT_FALSE(KnownImages({damaged}, log).Find("a"));
  EXPECT_FALSE(KnownImages({SnapshotOf(1, "a")}, SearchLog()).Find("a")) << "of an unknown size";
}

TEST(Snapshots, AreMatchedOnceInTheirOrder) {
  StoredSnapshot damaged = SnapshotOf(2, "a");
  damaged.fault = "It is.";
  UnmatchedSnapshots unmatched(
      {SnapshotOf(1, "a"), damaged, SnapshotOf(3, "b"), SnapshotOf(4, "a"), SnapshotOf(5, "")});
  EXPECT_EQ(unmatched.Take({"a"}), 1);
  EXPECT_EQ(unmatched.Take({"a"}), 4);
  EXPECT_EQ(unmatched.Take({"a"}), 0);
  EXPECT_EQ(unmatched.Take({"b"}), 3);
  EXPECT_EQ(unmatched.Take({"b", "a"}), 0);
  EXPECT_EQ(unmatched.Take({""}), 0) << "nothing is known of it";
}

class ImageOrigin : public ::testing::Test {
 protected:
  /// The images of a file, and of its frame 12.
  std::vector<NamedImage> Noted(ImageOrigins& origins, const std::string& file) const {
    std::vector<NamedImage> inputs(2);
    for (NamedImage& input : inputs) input.file = file;
    inputs[1].frame = 12;
    origins.NoteFiles(inputs);
    origins.NoteFrames(inputs);
    return inputs;
  }

  support::TemporaryFolder folder_;
  const std::string file_ = folder_.File("a.png");
};

TEST_F(ImageOrigin, IsTheHashOfTheFileWithTheNumberOfAFrame) {
  support::WriteText(file_, "foobar");
  ImageOrigins origins;
  const auto inputs = Noted(origins, file_);
  EXPECT_EQ(inputs[0].origin, "85944171f73967e8");
  EXPECT_EQ(inputs[1].origin, "85944171f73967e8#12");
  EXPECT_EQ(inputs[0].stamp.substr(0, 2), "6 ");
  EXPECT_EQ(inputs[0].stamp.substr(inputs[0].stamp.size() - file_.size()), file_);
}

TEST_F(ImageOrigin, IsNoneOfStreamsPipesAndWhatIsNotThere) {
  const std::string pipe = folder_.File("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  for (const std::string& file : {std::string(), pipe, folder_.File("none"), folder_.Path()}) {
    ImageOrigins origins;
    for (const NamedImage& input : Noted(origins, file)) {
      EXPECT_EQ(input.origin, "") << file;
      EXPECT_EQ(input.stamp, "");
    }
  }
}

TEST_F(ImageOrigin, OfAFileThatHasNotChangedIsThatOfTheLog) {
  support::WriteText(file_, "foobar");
  ImageOrigins fresh;
  const std::string stamp = Noted(fresh, file_)[0].stamp;
  // Another hash than that of the content shows that this was not read.
  const SearchLog log = LogOf({{{"a.png", "0000000000000000/left", stamp, {640, 480}, ""}}});
  ImageOrigins origins(log);
  const auto same = Noted(origins, file_);
  EXPECT_EQ(same[0].origin, "0000000000000000");
  EXPECT_EQ(same[1].origin, "0000000000000000#12");
  namespace fs = std::filesystem;
  fs::last_write_time(file_, fs::last_write_time(file_) + std::chrono::seconds(1));
  ImageOrigins later(log);
  EXPECT_EQ(Noted(later, file_)[0].origin, "85944171f73967e8");
}

}  // namespace
