/// The headless tool with a session, as a user runs it: what is kept, what is searched, what is computed.
#include <gtest/gtest.h>

#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/videoio.hpp>

#include "SessionRuns.h"
#include "velmora/Session.h"

using namespace batch_runs;
using velmora::Session;
using velmora::StoredImage;

namespace {

namespace fs = std::filesystem;
const char* const KNOWN = ", as the session has it\n";

class SessionProgram : public SessionRuns {
 protected:
  /// Files of the session, and those of a run without one of that name.
  void ExpectSame(const std::vector<std::string>& endings, const std::string& name = "plain") const {
    for (const std::string& ending : endings) {
      EXPECT_EQ(Text("desk/calibration" + ending), Text(name + ending)) << ending;
    }
  }
};

/// The table without the files that were written.
std::string TableOf(const Outcome& outcome) {
  return outcome.output.substr(0, outcome.output.find("\nWritten:"));
}

TEST_F(SessionProgram, GivesToTheLastBitWhatARunWithoutOneDoes) {
  const Outcome plain = RunWell({Rendered("left"), "--output", "plain"});
  const Outcome kept = RunWell({Rendered("left"), "--session", "desk", "--output", "twice"});
  EXPECT_EQ(TableOf(kept), TableOf(plain));
  ExpectSame({".json", "_verdict.json", "_uncertainty.png"});
  EXPECT_EQ(Text("twice.json"), Text("plain.json")) << "written where --output says, too";
  EXPECT_TRUE(Contains(kept.output, "  desk/calibration.json\n")) << kept.output;
  EXPECT_TRUE(Contains(kept.output, "  twice_verdict.json\n"));
  EXPECT_FALSE(fs::exists(File("calibration.json")));
  const auto session = Session::Open(File("desk"));
  ASSERT_EQ(session->Snapshots().size(), 12U);
  const velmora::StoredSnapshot last = session->Snapshot(12);
  EXPECT_EQ(last.name, NameOf(11));
  EXPECT_EQ(last.images[0].kind, StoredImage::Kind::Reference);
  EXPECT_EQ(last.images[0].path, Rendered("left/" + NameOf(11)));
  EXPECT_EQ(last.origins[0], Session::ContentKey(last.images[0].path));
}

TEST_F(SessionProgram, ComputesFromWhatIsThereWithoutInputs) {
  const Outcome first = RunWell({Copied("views", 0, 12), "--session", "desk/", "--model", "rational",
                                 "--sheet-shape", "flat", "--hdist", "0.21", "--disc", "0"});
  fs::rename(File("desk/calibration.json"), File("plain.json"));
  fs::rename(File("desk/calibration_verdict.json"), File("plain_verdict.json"));
  fs::remove_all(File("views"));
  const Outcome second = RunWell({"--session", "desk"});
  EXPECT_EQ(TableOf(second), TableOf(first)) << "options that were given once count";
  EXPECT_EQ(second.errors, "The session 'desk' has 12 views in " +
                               second.errors.substr(second.errors.find(" in ") + 4, 6) +
                               "; 0 images searched, 0 known already\nComputing the rational model ...\n");
  ExpectSame({".json", "_verdict.json"});
  EXPECT_TRUE(Contains(RunWell({"--session", "desk", "--model", "classic"}).output, "Model: classic"));
}

TEST_F(SessionProgram, SearchesOnlyImagesThatItDoesNotKnow) {
  Copied("views", 0, 9);
  cv::imwrite(File("views/empty.png"), cv::Mat(480, 640, CV_8UC3, cv::Scalar::all(90)));
  cv::imwrite(File("views/small.png"), cv::Mat(240, 320, CV_8UC3, cv::Scalar::all(90)));
  support::WriteText(File("views/broken.png"), "no image");
  EXPECT_TRUE(
      Contains(RunWell({"views", "--session", "desk"}).errors, "; 12 images searched, 0 known already\n"));
  Copied("views", 9, 12);
  fs::rename(File("views/" + NameOf(4)), File("views/zz.png"));
  const Outcome second = RunWell({"views", "--session", "desk"});
  EXPECT_TRUE(Contains(second.errors, "; 3 images searched, 12 known already\n")) << second.errors;
  EXPECT_EQ(CountOf(second.errors, KNOWN), 12) << second.errors;
  EXPECT_EQ(CountOf(second.errors, "grid found\n"), 3);
  EXPECT_TRUE(Contains(second.errors, "zz.png: grid found, as the session has it\n"));
  EXPECT_TRUE(Contains(second.errors, "small.png: of another size than the first (640 x 480), as"));
  EXPECT_TRUE(Contains(second.output, "12 of 15 images used\n  1 not used, cannot be decoded:\n"))
      << second.output;
  EXPECT_EQ(Session::Open(File("desk"))->Snapshots().size(), 12U);
  const Outcome third = RunWell({"--session", "desk", "--list"});
  EXPECT_TRUE(Contains(third.output, "12 of 12 views used; ")) << third.output;
}

TEST_F(SessionProgram, ComputesFromAllItHasWhateverIsGivenNow) {
  RunWell({Copied("first", 0, 7), "--session", "desk"});
  RunWell({Copied("more", 7, 12), "--session", "desk"});
  RunWell({Rendered("left"), "--output", "plain"});
  ExpectSame({".json", "_verdict.json", "_uncertainty.png"});
}

TEST_F(SessionProgram, TakesAnImageThatIsGivenTwiceTwiceHoweverOftenItIsRun) {
  const Words twice = {Copied("views", 0, 6), "views/" + NameOf(2), "--session", "desk"};
  RunWell(twice);
  EXPECT_EQ(Session::Open(File("desk"))->Snapshots().size(), 7U);
  RunWell(twice);
  EXPECT_EQ(Session::Open(File("desk"))->Snapshots().size(), 7U);
}

TEST_F(SessionProgram, ExcludesAndIncludesByNameOrNumberAndListsWhatItHas) {
  RunWell({Rendered("left"), "--session", "desk", "--max-views", "10"});
  const Outcome list = RunWell({"--session", "desk", "--list"});
  const std::string top = "  no.  name     decision  RMS, px       kB\n    1  100.png  used ";
  EXPECT_EQ(list.output.substr(0, top.size()), top);
  EXPECT_EQ(CountOf(list.output, "  used       0."), 10) << list.output;
  EXPECT_EQ(CountOf(list.output, "  found but not needed (--max-views 10)\n"), 2) << list.output;
  EXPECT_TRUE(Contains(list.output, "\n12 of 12 views used; 0.")) << list.output;

  const Outcome less = RunWell({"--session", "desk", "--exclude", "104.png", "--exclude", "9"});
  EXPECT_TRUE(Contains(less.output, "10 of 12 images used\n  2 not used, excluded:\n    104.png, 108.png\n"))
      << less.output;
  Words others;
  for (int i = 0; i < 12; ++i) {
    if (i != 4 && i != 8) others.push_back(Rendered("left/" + NameOf(i)));
  }
  others.insert(others.end(), {"--output", "plain"});
  RunWell(others);
  ExpectSame({".json", "_uncertainty.png"});
  const Outcome again = RunWell({"--session", "desk", "--list", "--include", "104.png"});
  EXPECT_TRUE(Contains(again.output, "\n    9  108.png  excluded        - ")) << again.output;
  EXPECT_TRUE(Contains(again.output, "\n    5  104.png  used            - ")) << again.output;
  EXPECT_EQ(Refusal({"--session", "desk", "--exclude", "999.png"}),
            "ERROR: the session 'desk' has no view '999.png' (--list names them).\n");
}

TEST_F(SessionProgram, AsksForTheNumberWhereAViewsNameIsThatOfAnother) {
  fs::create_directories(File("a"));
  fs::create_directories(File("b"));
  Copied("views", 0, 6);
  fs::copy(Rendered("left/" + NameOf(7)), File("a/x.png"));
  fs::copy(Rendered("left/" + NameOf(8)), File("b/x.png"));
  RunWell({"views", "a", "b", "--session", "desk"});
  EXPECT_EQ(Refusal({"--session", "desk", "--exclude", "x.png"}),
            "ERROR: the session 'desk' has 2 views 'x.png': give the number of one, such as 7.\n")
      << "nothing is decided by guess";
}

TEST_F(SessionProgram, KeepsCopiesOrNothingButCentres) {
  RunWell({Copied("views", 0, 5), "--session", "copies", "--keep-images"});
  RunWell({Copied("views", 0, 6), "--session", "copies"});
  RunWell({"views", "--session", "centres", "--no-images"});
  const std::string pixels = Text("views/" + NameOf(5));
  fs::remove_all(File("views"));
  const auto copies = Session::Open(File("copies"));
  EXPECT_EQ(support::ReadText(copies->Snapshot(6).images[0].path), pixels);
  const auto centres = Session::Open(File("centres"));
  EXPECT_EQ(centres->Snapshot(6).images[0].kind, StoredImage::Kind::None);
  Copied("again", 0, 6);
  EXPECT_TRUE(Contains(RunWell({"again", "--session", "centres2", "--no-images"}).errors,
                       "; 6 images searched, 0 known"));
  EXPECT_TRUE(Contains(RunWell({"again", "--session", "centres2"}).errors, "; 0 images searched, 6 known"));
}

TEST_F(SessionProgram, TakesImagesWhosePathsCannotBeNoted) {
  const std::string latin = "caf\xE9";
  RunWell({Copied(latin, 0, 6), "--session", "desk"});
  EXPECT_EQ(Session::Open(File("desk"))->Snapshot(6).images[0].kind, StoredImage::Kind::None);
  EXPECT_TRUE(
      Contains(RunWell({latin, "--session", "desk"}).errors, "; 0 images searched, 6 known already\n"));
}

TEST_F(SessionProgram, KnowsFramesOfAVideoAgain) {
  cv::VideoWriter video(File("views.avi"), cv::VideoWriter::fourcc('M', 'J', 'P', 'G'), 5.0, {640, 480});
  for (int i = 0; i < 12; ++i) video.write(cv::imread(Rendered("left/" + NameOf(i))));
  video.release();
  RunWell({"views.avi", "--session", "desk", "--every", "2", "--keep-images"});
  EXPECT_EQ(Session::Open(File("desk"))->LoadImage(6, 0).size(), cv::Size(640, 480));
  EXPECT_EQ(Session::Open(File("desk"))->Snapshot(6).name, "views.avi#10");
  fs::rename(File("views.avi"), File("renamed.avi"));
  const Outcome all = RunWell({"renamed.avi", "--session", "desk"});
  EXPECT_TRUE(Contains(all.errors, "has 12 views in ")) << all.errors;
  EXPECT_TRUE(Contains(all.errors, "; 6 images searched, 6 known already\n")) << all.errors;
}

TEST_F(SessionProgram, GivesOfAPairWhatARunWithoutOneDoes) {
  const Outcome plain = RunWell({Rendered("left"), "--right", Rendered("right"), "--output", "plain"});
  const Outcome kept = RunWell({Rendered("left"), "--right", Rendered("right"), "--session", "desk"});
  EXPECT_EQ(TableOf(kept), TableOf(plain));
  const std::vector<std::string> files = {".json",       "_verdict.json",      "_left.json",
                                          "_right.json", "_left_verdict.json", "_uncertainty_right.png"};
  ExpectSame(files);
  const Outcome again = RunWell({"--session", "desk"});
  EXPECT_EQ(TableOf(again), TableOf(plain));
  ExpectSame(files);
  const Outcome list = RunWell({"--session", "desk", "--list", "--exclude", "103.png"});
  EXPECT_EQ(CountOf(list.output, "  used       0."), 11) << list.output;
  EXPECT_TRUE(Contains(RunWell({"--session", "desk"}).output,
                       "11 of 12 pairs used\n  1 not used, both: excluded:\n"));
}

TEST_F(SessionProgram, KeepsWhatOneCameraOfAPairSawAlone) {
  Copied("views", 0, 12);
  fs::create_directories(File("right"));
  for (int i = 0; i < 12; ++i) {
    fs::copy(i == 3 ? Rendered("left/../left/" + NameOf(3)) : Rendered("right/" + NameOf(i)),
             File("right/" + NameOf(i)));
  }
  cv::imwrite(File("right/" + NameOf(3)), cv::Mat(480, 640, CV_8UC3, cv::Scalar::all(90)));
  const Outcome plain = RunWell({"views", "--right", "right", "--output", "plain"});
  RunWell({"views", "--right", "right", "--session", "desk"});
  const Outcome again = RunWell({"--session", "desk"});
  EXPECT_EQ(TableOf(again), TableOf(plain));
  ExpectSame({".json", "_left.json", "_right.json"});
  EXPECT_TRUE(Contains(RunWell({"--session", "desk", "--list"}).output, "  right: no grid found: "));
}

TEST_F(SessionProgram, GivesOfASplitPairWhatARunWithoutOneDoes) {
  RunWell({Rendered("both"), "--split", "vertical", "--output", "plain"});
  RunWell({Rendered("both"), "--split", "vertical", "--session", "desk", "--keep-images"});
  ExpectSame({".json", "_left.json", "_right.json"});
  const Outcome again = RunWell({Rendered("both"), "--split", "vertical", "--session", "desk"});
  EXPECT_TRUE(Contains(again.errors, "; 0 images searched, 24 known already\n")) << again.errors;
  ExpectSame({".json"});
  EXPECT_EQ(Session::Open(File("desk"))->LoadImage(1, 1).size(), cv::Size(640, 480));
}

TEST_F(SessionProgram, GivesOfARigWhatARunWithoutOneDoesEvenIfACameraMissesTheFirstImages) {
  for (const char* camera : {"left", "right"}) {
    fs::create_directories(File(camera));
    for (int i = camera == std::string("left") ? 0 : 3; i < 12; ++i) {
      fs::copy(Rendered(std::string(camera) + "/" + NameOf(i)), File(std::string(camera) + "/" + NameOf(i)));
    }
  }
  const Words rig = {"--rig", "left", "right", "--match", "names"};
  Words words = rig;
  words.insert(words.end(), {"--output", "plain"});
  const Outcome plain = RunWell(words);
  words = rig;
  words.insert(words.end(), {"--session", "desk"});
  RunWell(words);
  ExpectSame({"_rig.json", "_rig_uncertainty_1.png"});
  const Outcome again = RunWell({"--session", "desk"});
  EXPECT_EQ(TableOf(again), TableOf(plain));
  ExpectSame({"_rig.json"});
  EXPECT_EQ(CountOf(RunWell({"--session", "desk", "--list"}).output, "  used       0."), 12);
}

}  // namespace
