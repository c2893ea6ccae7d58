/// Which session is written, and what is said of it.
#include "guided/SessionChoice.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "GuidedScenes.h"
#include "TemporaryFolder.h"
#include "common/LensModels.h"

namespace {

namespace fs = std::filesystem;

using guided::Arguments;
using guided::ChooseSession;
using guided::SettingsOf;
using velmora::Session;

class SessionChoice : public ::testing::Test {
 protected:
  SessionChoice() { arguments_.output = folder_.File("camera"); }

  std::unique_ptr<Session> Choose(const cv::Size& frame = unit::FRAME, size_t cameras = 1) {
    out_.str("");
    return ChooseSession(arguments_, SettingsOf(arguments_, "cam:0", frame, cameras), out_);
  }
  std::string Refusal(const cv::Size& frame = unit::FRAME, size_t cameras = 1) {
    try {
      Choose(frame, cameras);
    } catch (const std::runtime_error& refusal) {
      EXPECT_EQ(out_.str(), "");
      return refusal.what();
    }
    return "";
  }
  void Add(Session& session, size_t view) const {
    velmora::SessionSnapshot snapshot;
    snapshot.observations = {{unit::NoisyViews(6).at(view)}};
    session.Add(snapshot);
  }
  /// The folder of a session of two views, whose name ends so.
  std::string Existing(const std::string& name) {
    const std::string folder = folder_.File(name);
    const auto session = Session::Create(folder, SettingsOf(arguments_, "cam:0", unit::FRAME, 1));
    for (const size_t view : {0U, 1U}) Add(*session, view);
    return folder;
  }

  support::TemporaryFolder folder_;
  Arguments arguments_;
  std::ostringstream out_;
};

TEST_F(SessionChoice, HasTheSettingsOfTheArguments) {
  arguments_.model = common::MODEL_FISHEYE;
  arguments_.finder = Calibrator::FINDER_STANDARD;
  arguments_.solver = Calibrator::SOLVER_SPARSE;
  arguments_.sheet = Calibrator::SHEET_BENT;
  arguments_.hdist = 0.3F;
  arguments_.keepImages = false;
  arguments_.fineCentres = false;
  const auto settings = SettingsOf(arguments_, "cam:0 --split vertical", {320, 240}, 2);
  EXPECT_EQ(settings.grid, guided::GRID);
  EXPECT_EQ(settings.unit, static_cast<double>(UnitOf(arguments_)));
  EXPECT_NEAR(settings.unit, 0.03, 1e-6);
  EXPECT_EQ(settings.imageSizes, (std::vector<cv::Size>{{320, 240}, {320, 240}}));
  EXPECT_EQ(settings.lensModel, "fisheye");
  EXPECT_EQ(settings.finder, "standard");
  EXPECT_EQ(settings.solver, "sparse");
  EXPECT_EQ(settings.sheetShape, "bent");
  EXPECT_NEAR(settings.discRadius, 0.4 * 0.03, 1e-6);
  EXPECT_FALSE(settings.fineCentres);
  EXPECT_FALSE(settings.keepsImages);
  EXPECT_EQ(settings.source, "cam:0 --split vertical");
}

TEST_F(SessionChoice, HasTheWordsOfTheDefaultsAndOfASheetThatWasMeasured) {
  auto settings = SettingsOf(arguments_, "", unit::FRAME, 1);
  EXPECT_EQ(settings.lensModel, "auto");
  EXPECT_EQ(settings.finder, "robust");
  EXPECT_EQ(settings.solver, "sparse");
  EXPECT_EQ(settings.sheetShape, "auto");
  EXPECT_TRUE(settings.fineCentres);
  EXPECT_TRUE(settings.keepsImages);
  arguments_.model = Calibrator::MODEL_RATIONAL;
  arguments_.solver = Calibrator::SOLVER_OPENCV;
  arguments_.sheetFile = "sheet_verdict.json";
  settings = SettingsOf(arguments_, "", unit::FRAME, 1);
  EXPECT_EQ(settings.lensModel, "rational");
  EXPECT_EQ(settings.solver, "opencv");
  EXPECT_EQ(settings.sheetShape, "sheet_verdict.json");
}

TEST_F(SessionChoice, IsANewOneBesideTheResult) {
  const auto session = Choose();
  const std::string folder = folder_.File("camera.velmora");
  EXPECT_EQ(session->Folder(), folder);
  EXPECT_TRUE(fs::is_directory(folder));
  EXPECT_EQ(out_.str(), "Every view is kept in '" + folder + "'.\n");
}

TEST_F(SessionChoice, TakesAnotherNameWhereThereIsOneAlready) {
  const std::string there = Existing("camera.velmora");
  for (const char* number : {"2", "3"}) {
    const auto session = Choose();
    EXPECT_EQ(session->Folder(), folder_.File(std::string("camera-") + number + ".velmora"));
    EXPECT_EQ(out_.str(), "Every view is kept in '" + session->Folder() + "': there is a '" + there +
                              "' already, which --session would go on with.\n");
    EXPECT_TRUE(session->Snapshots().empty());
  }
  EXPECT_EQ(Session::Open(there)->Snapshots().size(), 2U) << "as it was";
}

TEST_F(SessionChoice, GoesOnWithOneThatIsNamed) {
  const std::string folder = Existing("desk.velmora");
  arguments_.session = folder;
  const auto session = Choose();
  EXPECT_EQ(session->Folder(), folder);
  EXPECT_EQ(session->Snapshots().size(), 2U);
  EXPECT_EQ(out_.str(), "Going on with the session in '" + folder + "': 2 views.\n");
  EXPECT_FALSE(fs::exists(folder_.File("camera.velmora")));
}

TEST_F(SessionChoice, CountsTheViewsThatAreUsed) {
  arguments_.session = Existing("desk.velmora");
  Session::Open(arguments_.session)->Exclude({1});
  Choose();
  EXPECT_EQ(out_.str(), "Going on with the session in '" + arguments_.session + "': 1 view.\n");
}

TEST_F(SessionChoice, CreatesOneThatIsNamedAndDoesNotExist) {
  arguments_.session = folder_.File("desk");
  const auto session = Choose();
  EXPECT_EQ(session->Folder(), folder_.File("desk"));
  EXPECT_EQ(out_.str(), "Every view is kept in '" + folder_.File("desk") + "'.\n");
}

TEST_F(SessionChoice, GoesOnWithOtherOptionsOfTheComputation) {
  arguments_.session = Existing("desk.velmora");
  arguments_.model = Calibrator::MODEL_FULL;
  arguments_.solver = Calibrator::SOLVER_OPENCV;
  arguments_.keepImages = false;
  EXPECT_EQ(Choose()->Snapshots().size(), 2U);
}

TEST_F(SessionChoice, RefusesOneOfAnotherSizeUnitOrNumberOfCamerasInWords) {
  arguments_.session = Existing("desk.velmora");
  const std::string size = Refusal({1280, 720});
  EXPECT_NE(size.find("640 x 480"), std::string::npos) << size;
  EXPECT_NE(size.find("1280 x 720"), std::string::npos) << size;
  const std::string cameras = Refusal(unit::FRAME, 2);
  EXPECT_NE(cameras.find("camera"), std::string::npos) << cameras;
  arguments_.hdist = 0.3F;
  const std::string unit = Refusal();
  EXPECT_NE(unit.find("0.03"), std::string::npos) << unit;
  for (const std::string& refusal : {size, cameras, unit}) {
    EXPECT_NE(refusal.find(arguments_.session), std::string::npos) << refusal;
    EXPECT_EQ(refusal.back(), '.') << refusal;
  }
  EXPECT_EQ(Session::Open(arguments_.session)->Snapshots().size(), 2U) << "as it was";
}

TEST_F(SessionChoice, RefusesOneOfAnotherGrid) {
  auto settings = SettingsOf(arguments_, "cam:0", unit::FRAME, 1);
  settings.grid = {4, 9};
  arguments_.session = folder_.File("desk.velmora");
  Session::Create(arguments_.session, settings);
  const std::string grid = Refusal();
  EXPECT_NE(grid.find("4 x 9"), std::string::npos) << grid;
  EXPECT_NE(grid.find("4 x 11"), std::string::npos) << grid;
}

TEST_F(SessionChoice, RefusesWhatIsNoSessionOrIsOpenElsewhere) {
  arguments_.session = folder_.File("other.velmora");
  fs::create_directory(arguments_.session);
  support::WriteText(arguments_.session + "/photo.txt", "mine");
  EXPECT_NE(Refusal(), "");
  EXPECT_EQ(support::ReadText(arguments_.session + "/photo.txt"), "mine");
  arguments_.session = Existing("desk.velmora");
  const auto open = Session::Open(arguments_.session);
  EXPECT_NE(Refusal(), "");
  EXPECT_EQ(open->Snapshots().size(), 2U);
}

TEST_F(SessionChoice, WarnsOfViewsThatAreDamaged) {
  arguments_.session = Existing("desk.velmora");
  support::WriteText(arguments_.session + "/snapshots/000002/snapshot.json", "{");
  const auto session = Choose();
  const std::string text = out_.str();
  const std::string start =
      "Going on with the session in '" + arguments_.session + "': 1 view.\nWarning: view 2: ";
  EXPECT_EQ(text.compare(0, start.size(), start), 0) << text;
  EXPECT_GT(text.size(), start.size() + 10);
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2) << text;
}

}  // namespace
