/// Making and opening a session's folder: what is refused, in which words, and what damage does.
#include "session/SessionFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "foundation/Version.h"
#include "session/DiskSteps.h"
#include "session/SessionScenes.h"

using namespace velmora;
using unit::Raised;

namespace {

namespace fs = std::filesystem;

class FolderOfASession : public unit::SessionTest {
 protected:
  std::string Named() const { return "The session \"" + path_ + "\""; }

  /// What opening says once the session is closed and session.json, or another file, has that text.
  std::string RefusalWith(const std::string& text, const std::string& file = "session.json") {
    session_.reset();
    support::WriteText(InSession(file), text);
    return Raised<std::runtime_error>([this] { Session::Open(path_); });
  }
  nlohmann::json Settings() const {
    return nlohmann::json::parse(support::ReadText(InSession("session.json")));
  }
};

TEST_F(FolderOfASession, IsNeverCreatedOverAnything) {
  Add(1);
  session_.reset();
  EXPECT_EQ(Raised<std::runtime_error>([&] { Session::Create(path_, settings_); }),
            "Cannot create the session \"" + path_ + "\": it exists already.");
  Reopen();
  EXPECT_EQ(session_->Snapshots().size(), 1U);
  support::WriteText(folder_.File("file"), "text");
  fs::create_directory(folder_.File("empty"));
  fs::create_symlink("nowhere", folder_.File("link"));
  for (const char* name : {"file", "empty", "link"}) {
    EXPECT_THROW(Session::Create(folder_.File(name), settings_), std::runtime_error) << name;
  }
  EXPECT_EQ(unit::NamesIn(folder_.Path()),
            (std::vector<std::string>{"desk.velmora", "empty", "file", "link"}));
}

TEST_F(FolderOfASession, IsNotCreatedWhereThereIsNoFolderForIt) {
  const std::string nowhere = folder_.File("missing/desk.velmora");
  EXPECT_EQ(Raised<std::runtime_error>([&] { Session::Create(nowhere, settings_); }),
            "Cannot create the session \"" + nowhere + "\": there is no such file or folder.");
  support::WriteText(folder_.File("file"), "");
  const std::string below = folder_.File("file/desk.velmora");
  EXPECT_EQ(Raised<std::runtime_error>([&] { Session::Create(below, settings_); }),
            "Cannot create the session \"" + below + "\": a part of its path is no folder.");
}

TEST_F(FolderOfASession, IsNotCreatedForSettingsThatMakeNoSense) {
  SessionSettings settings = settings_;
  settings.imageSizes.clear();
  EXPECT_EQ(Raised<std::invalid_argument>([&] { Session::Create(folder_.File("other"), settings); }),
            "A session needs at least one camera.");
  EXPECT_EQ(unit::NamesIn(folder_.Path()), std::vector<std::string>{"desk.velmora"});
}

TEST_F(FolderOfASession, IsThereWholeOrNotAtAllWheneverTheDiskRefusesIt) {
  const std::string other = folder_.File("other.velmora");
  int step = 1;
  for (bool refused = true; refused; ++step) {
    const auto full = unit::DiskSteps::FailAt(step, ENOSPC);
    const std::string refusal = Raised<std::runtime_error>([&] { Session::Create(other, settings_); });
    refused = full.Came();
    if (!refused) break;
    EXPECT_EQ(refusal, "Cannot create the session \"" + other + "\": the disk is full.") << step;
    EXPECT_EQ(unit::NamesIn(folder_.Path()), std::vector<std::string>{"desk.velmora"}) << step;
  }
  EXPECT_GE(step, 4);
  EXPECT_NO_THROW(Session::Open(other));
}

TEST_F(FolderOfASession, ThatIsNoneIsRefusedByName) {
  EXPECT_EQ(Raised<std::runtime_error>([&] { Session::Open(folder_.File("missing")); }),
            "There is no session \"" + folder_.File("missing") + "\".");
  support::WriteText(folder_.File("file"), "text");
  EXPECT_EQ(Raised<std::runtime_error>([&] { Session::Open(folder_.File("file")); }),
            "\"" + folder_.File("file") + "\" is no folder.");
  EXPECT_EQ(Raised<std::runtime_error>([&] { Session::Open(folder_.Path()); }),
            "\"" + folder_.Path() + "\" is no calibration session: it holds no session.json.");
  EXPECT_THROW(Session::Open(""), std::invalid_argument);
}

TEST_F(FolderOfASession, OfAnotherFormatIsRefusedWithBothVersions) {
  nlohmann::json settings = Settings();
  settings["format"] = 2;
  settings["velmora"] = "9.8.7";
  settings.erase("grid");  // what another format has is not known
  EXPECT_EQ(RefusalWith(settings.dump()), Named() +
                                              " is of format 2, written by version 9.8.7; this is version " +
                                              VERSION + ", which reads format 1.");
}

TEST_F(FolderOfASession, WithDamagedSettingsIsRefused) {
  const std::string text = support::ReadText(InSession("session.json"));
  EXPECT_EQ(RefusalWith(text.substr(0, text.size() / 2)),
            Named() + " is damaged: its session.json is cut off or no JSON text.");
  EXPECT_EQ(RefusalWith(""), Named() + " is damaged: its session.json is cut off or no JSON text.");
  EXPECT_EQ(RefusalWith("{}"), Named() + " is damaged: its session.json lacks \"format\".");
  nlohmann::json settings = nlohmann::json::parse(text);
  settings["unit"] = "0.02";
  EXPECT_EQ(RefusalWith(settings.dump()),
            Named() + " is damaged: its session.json has another type of \"unit\".");
  settings["unit"] = -1.0;
  EXPECT_EQ(RefusalWith(settings.dump()), Named() +
                                              " is damaged: its session.json makes no sense. The unit "
                                              "must be positive, not -1 m.");
}

TEST_F(FolderOfASession, WithOtherSettingsThanAskedForIsRefusedWithBoth) {
  session_.reset();
  SessionSettings asked = settings_;
  asked.grid = {5, 13};
  asked.unit = 0.025;
  asked.imageSizes = {{80, 60}, {80, 60}};
  EXPECT_EQ(Raised<std::runtime_error>([&] { Session::Open(path_, asked); }),
            Named() +
                " has a grid of 4 x 3, not 5 x 13; a unit of 0.02 m, not 0.025 m; cameras: 1, not 2; images "
                "of camera 0 of 40 x 30, not 80 x 60.");
  asked = settings_;
  asked.unit = static_cast<double>(0.02F);
  asked.lensModel = "full";
  EXPECT_EQ(Session::Open(path_, asked)->Settings().lensModel, "auto");
}

TEST_F(FolderOfASession, WithoutDecisionsUsesAll) {
  Add(1);
  session_->Exclude({1});
  fs::remove(InSession("decisions.json"));
  Reopen();
  EXPECT_TRUE(session_->Snapshot(1).IsUsed());
  EXPECT_TRUE(session_->Warnings().empty());
}

TEST_F(FolderOfASession, WithDamagedDecisionsPutsThemAsideAndSaysSo) {
  Add(1);
  session_->Exclude({1});
  EXPECT_EQ(RefusalWith("{\"excluded\": [1", "decisions.json"), "");
  EXPECT_EQ(support::ReadText(InSession("decisions-damaged.json")), "{\"excluded\": [1");
  fs::rename(InSession("decisions-damaged.json"), InSession("decisions.json"));
  Reopen();
  EXPECT_TRUE(session_->Snapshot(1).IsUsed());
  EXPECT_EQ(session_->Warnings(),
            std::vector<std::string>{
                "Its decisions.json is cut off or no JSON text: no snapshot counts as excluded "
                "or removed. The file is kept as decisions-damaged.json."});
}

TEST_F(FolderOfASession, WithoutItsFolderOfSnapshotsTakesNewOnes) {
  Add(1);
  session_.reset();
  fs::remove_all(InSession("snapshots"));
  Reopen();
  EXPECT_TRUE(session_->Snapshots().empty());
  EXPECT_EQ(Add(2), 1);
}

}  // namespace
