/// Sessions that the headless tool cannot use, or not for what is asked, and runs that are ended.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <opencv2/imgcodecs.hpp>

#include "SessionRuns.h"
#include "velmora/Session.h"

using namespace batch_runs;
using support::Process;
using velmora::Session;

namespace {

namespace fs = std::filesystem;

class SessionFaults : public SessionRuns {
 protected:
  /// A session of six views.
  void Begin() const { RunWell({Copied("views", 0, 6), "--session", "desk"}); }
  size_t Views(const std::string& session = "desk") const {
    return Session::Open(File(session))->Snapshots().size();
  }
  static std::string Other(const std::string& has, const std::string& asked) {
    return "ERROR: the session 'desk' has " + has + ", not " + asked +
           ": another session is needed for that.\n";
  }
};

TEST_F(SessionFaults, AreToldInOneLineAndLoseNothing) {
  Begin();
  const std::string settings = Text("desk/session.json");
  EXPECT_EQ(Refusal({"views", "--session", "desk", "--grid", "5x7"}), Other("a grid of 4x11", "5x7"));
  EXPECT_EQ(Refusal({"--session", "desk", "--hdist", "0.3"}), Other("rows 0.02 m apart", "0.03 m"));
  EXPECT_EQ(Refusal({"views", "--session", "desk", "--finder", "standard"}),
            Other("what the robust finder found", "the standard one"));
  EXPECT_EQ(Refusal({"views", "--session", "desk", "--centres", "plain"}),
            Other("fine centres", "plain ones"));
  EXPECT_EQ(Refusal({"views", "--session", "desk", "--whole-grids"}),
            Other("views of parts of the grid", "views of whole grids only"));
  EXPECT_EQ(Refusal({"views", "--session", "desk", "--width", "320"}),
            Other("images at their own size", "320 x 0"));
  EXPECT_EQ(Refusal({"views", "--right", "views", "--session", "desk"}), Other("views of one camera", "2"));
  EXPECT_EQ(Refusal({"views", "--session", "desk", "--no-images"}),
            Other("images beside its centres", "centres only"));
  EXPECT_EQ(Text("desk/session.json"), settings);
  EXPECT_EQ(Views(), 6U);
  RunWell({"views", "--session", "desk", "--grid", "4x11", "--hdist", "0.2", "--finder", "robust"});
}

TEST_F(SessionFaults, AreFoldersThatAreNoneOrNotThere) {
  Copied("views", 0, 6);
  EXPECT_EQ(Refusal({"views", "--session", "views"}),
            "ERROR: \"" + File("views") + "\" is no calibration session: it holds no session.json.\n");
  EXPECT_EQ(Refusal({"--session", "none"}), "ERROR: there is no session 'none': name images to begin it.\n");
  EXPECT_EQ(Refusal({"--session", "none", "--list"}),
            "ERROR: there is no session 'none': name images to begin it.\n");
  EXPECT_EQ(Refusal({"views", "--session", "no/where"}), "ERROR: folder 'no' does not exist.\n");
  support::WriteText(File("file"), "text");
  EXPECT_EQ(Refusal({"views", "--session", "file"}), "ERROR: \"" + File("file") + "\" is no folder.\n");
  EXPECT_FALSE(fs::exists(File("none")));
  EXPECT_TRUE(Contains(Refusal({"views", "--session", ""}), "--session: a name is needed"));
  EXPECT_TRUE(Contains(Refusal({"views", "--list"}), "--list goes only with --session"));
}

TEST_F(SessionFaults, AreImagesOfAnotherSize) {
  Begin();
  fs::create_directory(File("large"));
  cv::imwrite(File("large/1.png"), cv::Mat(960, 1280, CV_8UC3, cv::Scalar::all(90)));
  EXPECT_EQ(Refusal({"large", "--session", "desk"}),
            "ERROR: the session 'desk' is of images of 640 x 480 pixels; '1.png' has 1280 x 960.\n");
  EXPECT_EQ(Views(), 6U);
}

TEST_F(SessionFaults, LeaveNoSessionWhereNothingWasFound) {
  fs::create_directory(File("empty"));
  cv::imwrite(File("empty/1.png"), cv::Mat(480, 640, CV_8UC3, cv::Scalar::all(90)));
  const Outcome outcome = Run({"empty", "--session", "desk"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_TRUE(Contains(outcome.output, "0 of 1 image used\n  1 not used, no grid found: ")) << outcome.output;
  EXPECT_FALSE(fs::exists(File("desk")));
}

TEST_F(SessionFaults, OfOneViewAreToldAndTheImageIsSearchedAgain) {
  RunWell({Copied("views", 0, 7), "--session", "desk", "--keep-images"});
  const std::string copy = Session::Open(File("desk"))->Snapshot(3).images[0].path;
  support::WriteText(copy, Text("views/" + NameOf(2)).substr(0, 5000));
  const Outcome without = RunWell({"--session", "desk"});
  EXPECT_TRUE(
      Contains(without.errors,
               "View 3 (102.png) is damaged and left out. Its image camera-0.png has changed since it was "
               "stored.\n"))
      << without.errors;
  EXPECT_TRUE(
      Contains(without.output, "6 of 7 images used\n  1 not used, damaged in the session:\n    102.png\n"))
      << without.output;
  EXPECT_TRUE(Contains(RunWell({"--session", "desk", "--list"}).output, "  102.png  damaged         -"));
  const Outcome again = RunWell({"views", "--session", "desk"});
  EXPECT_TRUE(Contains(again.errors, "has 7 views in ")) << again.errors;
  EXPECT_TRUE(Contains(again.errors, "; 1 image searched, 6 known already\n")) << again.errors;
}

TEST_F(SessionFaults, OfTheListOfSearchedImagesHaveThemSearchedAgainAndTakenOnce) {
  Begin();
  const std::string log = Text("desk/searched.jsonl");
  for (const std::string& damaged :
       {std::string(), log.substr(0, log.size() - 9), "x" + log, log + "{\"ima"}) {
    support::WriteText(File("desk/searched.jsonl"), damaged);
    const Outcome outcome = RunWell({"views", "--session", "desk"});
    EXPECT_EQ(Views(), 6U);
    EXPECT_TRUE(Contains(RunWell({"views", "--session", "desk"}).errors, "; 0 images searched, 6 known"));
  }
}

TEST_F(SessionFaults, AreTwoProgramsOnOneSessionOfWhichTheSecondIsRefused) {
  Copied("views", 0, 6);
  ASSERT_EQ(mkfifo(File("last.pgm").c_str(), 0600), 0);
  Process first(Command({"views", "last.pgm", "--session", "desk"}), InPlace());
  ASSERT_TRUE(first.WaitForOutput("6/7 ", LONG_ENOUGH)) << first.Errors();
  const std::string refusal = "ERROR: The session \"" + File("desk") + "\" is in use by process " +
                              std::to_string(first.Id()) + ".\n";
  EXPECT_EQ(Refusal({"views", "--session", "desk"}), refusal);
  EXPECT_EQ(Refusal({"--session", "desk", "--list"}), refusal);
  first.Kill();
  EXPECT_EQ(Text("desk/lock"), std::to_string(first.Id()) + "\n") << "what a dead process left";
  EXPECT_TRUE(Contains(RunWell({"--session", "desk"}).output, "6 of 6 images used"));
}

/// Ends a run by that signal while it waits for its last image; that image comes then.
int StatusAfter(int signal, Process& tool, const std::string& pipe) {
  EXPECT_TRUE(tool.WaitForOutput("6/7 ", LONG_ENOUGH)) << tool.Errors();
  tool.Signal(signal);
  const int end = open(pipe.c_str(), O_WRONLY);
  close(end);
  return tool.WaitForExit(LONG_ENOUGH);
}

TEST_F(SessionFaults, DoNotComeOfAnInterruptionWhichSaysHowToGoOn) {
  Copied("views", 0, 6);
  ASSERT_EQ(mkfifo(File("last.pgm").c_str(), 0600), 0);
  const Words words = {"views", "last.pgm", "--session", "desk"};
  Process tool(Command(words), InPlace());
  EXPECT_EQ(StatusAfter(SIGINT, tool, File("last.pgm")), 130);
  EXPECT_TRUE(Contains(tool.Errors(),
                       "\nInterrupted: the session 'desk' has 6 views. The same command goes on with it; "
                       "velmora-batch --session desk computes from what is there.\n"))
      << tool.Errors();
  EXPECT_FALSE(fs::exists(File("desk/calibration.json")));
  EXPECT_EQ(Views(), 6U);
  const Outcome rest = RunWell({"--session", "desk"});
  EXPECT_TRUE(Contains(rest.output, "6 of 7 images used\n  1 not used, cannot be decoded:\n    last.pgm\n"))
      << rest.output;
}

TEST_F(SessionFaults, DoNotComeOfAnInterruptionWithoutASession) {
  Copied("views", 0, 6);
  ASSERT_EQ(mkfifo(File("last.pgm").c_str(), 0600), 0);
  Process tool(Command({"views", "last.pgm"}), InPlace());
  EXPECT_EQ(StatusAfter(SIGTERM, tool, File("last.pgm")), 143);
  EXPECT_TRUE(Contains(tool.Errors(), "\nInterrupted.\n")) << tool.Errors();
  EXPECT_FALSE(fs::exists(File("calibration.json")));
}

TEST_F(SessionFaults, OfAFolderThatCanOnlyBeReadAreToldBeforeAnyWork) {
  Begin();
  constexpr const char* ANYBODY = "65534";
  if (geteuid() != 0) GTEST_SKIP() << "only the superuser can become somebody else";
  for (const auto& entry : fs::recursive_directory_iterator(place_.Path())) {
    if (entry.is_directory()) chmod(entry.path().c_str(), 0555);
  }
  chmod(place_.Path().c_str(), 0755);
  const auto as = [&](Words words) {
    words.insert(words.begin(),
                 {"setpriv", "--reuid", ANYBODY, "--regid", ANYBODY, "--clear-groups", VELMORA_BATCH});
    Process tool(words, InPlace());
    Outcome outcome;
    outcome.status = tool.WaitForExit(LONG_ENOUGH);
    outcome.output = tool.Output();
    outcome.errors = tool.Errors();
    return outcome;
  };
  const Outcome refused = as({"views", "--session", "desk"});
  EXPECT_EQ(refused.status, 2);
  EXPECT_EQ(refused.errors, "ERROR: 'desk/calibration.json' cannot be written.\n");
  const Outcome made = as({"views", "--session", "views/desk"});
  EXPECT_EQ(made.errors, "ERROR: 'views/desk' cannot be written.\n");
  const Outcome list = as({"--session", "desk", "--list"});
  EXPECT_EQ(list.status, 0) << list.errors;
  EXPECT_TRUE(Contains(list.output, "6 of 6 views used; ")) << list.output;
  const Outcome excluded = as({"--session", "desk", "--list", "--exclude", "1"});
  EXPECT_EQ(excluded.status, 2);
  EXPECT_TRUE(Contains(excluded.errors, "ERROR: Cannot store the decision in ")) << excluded.errors;
}

TEST_F(SessionFaults, OfAFullDiskAreToldAndWhatIsThereIsGoneOnWith) {
  Copied("views", 0, 12);
  fs::create_directory(File("small"));
  // A disk of its own for this run; 77 where none can be mounted.
  support::WriteText(File("run.sh"),
                     "mount --make-rprivate / && mount -t tmpfs -o size=150k none small || exit 77\n"
                     "head -c 80000 /dev/zero > small/filler\n" +
                         std::string("'") + VELMORA_BATCH +
                         "' views --session small/desk --threads 1; echo status $? >&2\n"
                         "rm small/filler; cp -r small/desk kept\n");
  Process shell({"unshare", "--mount", "sh", "run.sh"}, InPlace());
  const int status = shell.WaitForExit(LONG_ENOUGH);
  if (status != 0) GTEST_SKIP() << "only the superuser can mount a small disk: " << shell.Errors();
  const std::string errors = shell.Errors();
  EXPECT_TRUE(Contains(errors, "\nstatus 2\n")) << errors;
  EXPECT_TRUE(Contains(errors, "\nOnly 0 MB are free on the session's disk: enough for about ")) << errors;
  EXPECT_TRUE(Contains(errors, "the disk is full.\n") || Contains(errors, "No space left on device.\n"))
      << errors;
  EXPECT_EQ(CountOf(errors, "ERROR: "), 1);
  const size_t kept = Views("kept");
  EXPECT_GE(kept, static_cast<size_t>(CountOf(errors, ": grid found\n")));
  EXPECT_GT(kept, 2U);
  EXPECT_LT(kept, 12U);
  RunWell({"views", "--session", "kept"});
  RunWell({"views", "--output", "plain"});
  EXPECT_EQ(Text("kept/calibration.json"), Text("plain.json"));
}

}  // namespace
