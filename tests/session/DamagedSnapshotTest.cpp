/// Damaged snapshots are listed with their fault, are not used, and leave the others alone.
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "session/SessionScenes.h"
#include "session/SnapshotFolder.h"

using namespace velmora;
using unit::Raised;

namespace {

namespace fs = std::filesystem;

class DamagedSnapshot : public unit::SessionTest {
 protected:
  void SetUp() override {
    for (int seed = 1; seed <= 3; ++seed) Add(seed);
    session_.reset();
  }

  /// The fault of the second snapshot, which is not used, while the others are as they were.
  std::string Fault(const SessionOptions& options = {}) {
    Reopen(options);
    EXPECT_EQ(session_->Snapshots().size(), 3U);
    EXPECT_TRUE(unit::Holds(*session_, 1, unit::SnapshotOfSeed(1, settings_)));
    EXPECT_TRUE(unit::Holds(*session_, 3, unit::SnapshotOfSeed(3, settings_)));
    const StoredSnapshot damaged = session_->Snapshot(2);
    EXPECT_EQ(damaged.IsUsed(), damaged.fault.empty());
    EXPECT_EQ(Add(4), 4);
    session_.reset();
    fs::remove_all(InSession("snapshots/000004"));
    return damaged.fault;
  }

  const std::string document_ = InSession("snapshots/000002/snapshot.json");
  const std::string image_ = InSession("snapshots/000002/camera-0.png");
};

TEST_F(DamagedSnapshot, LacksItsDocument) {
  fs::remove(document_);
  EXPECT_EQ(Fault(), "Its snapshot.json is missing.");
}

TEST_F(DamagedSnapshot, HasADocumentThatIsCutOffAnywhere) {
  const std::string text = support::ReadText(document_);
  for (const size_t length : {size_t{0}, size_t{1}, text.size() / 2, text.size() - 3}) {
    support::WriteText(document_, text.substr(0, length));
    EXPECT_EQ(Fault(), "Its snapshot.json is cut off or no JSON text.") << length;
  }
}

TEST_F(DamagedSnapshot, HasADocumentWithoutSomethingOrOfAnotherType) {
  const nlohmann::json whole = nlohmann::json::parse(support::ReadText(document_));
  for (const auto& [key, value] : whole.items()) {
    nlohmann::json without = whole;
    without.erase(key);
    support::WriteText(document_, without.dump());
    EXPECT_EQ(Fault(), "Its snapshot.json lacks \"" + key + "\".");
  }
  for (const auto& [key, value] : whole["cameras"][0].items()) {
    nlohmann::json other = whole;
    other["cameras"][0][key] = value.is_string() ? nlohmann::json(7) : nlohmann::json("text");
    support::WriteText(document_, other.dump());
    const std::string fault = Fault();
    EXPECT_TRUE(fault == "Its snapshot.json has another type of \"" + key + "\"." ||
                fault == "Its snapshot.json lacks \"bytes\".")
        << fault;
  }
}

TEST_F(DamagedSnapshot, HasObservationsThatAreNoneOfTheSession) {
  nlohmann::json document = nlohmann::json::parse(support::ReadText(document_));
  document["cameras"][0]["centres"].erase(0);
  support::WriteText(document_, document.dump());
  EXPECT_EQ(Fault(),
            "Its snapshot.json makes no sense. There are 11 centres of camera 0, where the grid has 12.");
}

TEST_F(DamagedSnapshot, LacksItsImage) {
  fs::remove(image_);
  EXPECT_EQ(Fault(), "Its image camera-0.png is missing.");
  Reopen();
  EXPECT_NE(Raised<std::runtime_error>([&] { session_->LoadImage(2, 0); }).find("there is no such file"),
            std::string::npos);
}

TEST_F(DamagedSnapshot, HasAnImageThatIsCutOff) {
  const std::string bytes = support::ReadText(image_);
  support::WriteText(image_, bytes.substr(0, bytes.size() - 20));
  SessionOptions quick;
  quick.checkImages = false;
  EXPECT_EQ(Fault(quick), "Its image camera-0.png has changed since it was stored.");
}

TEST_F(DamagedSnapshot, HasAnImageOfWhichABitIsAnother) {
  std::string bytes = support::ReadText(image_);
  bytes[bytes.size() / 2] = static_cast<char>(bytes[bytes.size() / 2] ^ 1);
  support::WriteText(image_, bytes);
  EXPECT_EQ(Fault(), "Its image camera-0.png has changed since it was stored.");
  SessionOptions quick;
  quick.checkImages = false;
  EXPECT_EQ(Fault(quick), "") << "content is looked at only when it is to be";
  Reopen(quick);
  EXPECT_THROW(session_->LoadImage(2, 0), std::runtime_error);
}

TEST_F(DamagedSnapshot, KeepsWhatCouldBeReadAndCanBeRemovedAndPurged) {
  fs::remove(image_);
  Reopen();
  EXPECT_EQ(session_->Snapshot(2).observations[0].centres,
            unit::SnapshotOfSeed(2, settings_).observations[0].centres);
  session_->Remove({2});
  EXPECT_EQ(session_->Purge(), 1);
  EXPECT_EQ(session_->Snapshots().size(), 2U);
}

TEST_F(DamagedSnapshot, IsNotWhatWasBeingWrittenOrDeleted) {
  for (const char* name : {".new-000004", ".gone-000002"}) {
    fs::create_directory(InSession(std::string("snapshots/") + name));
    support::WriteText(InSession(std::string("snapshots/") + name + "/camera-0.png"), "half");
  }
  fs::create_directory(InSession("snapshots/000001 (copy)"));
  support::WriteText(InSession(".new-decisions.json"), "{");
  EXPECT_EQ(Fault(), "");
  EXPECT_EQ(unit::NamesIn(InSession("snapshots")),
            (std::vector<std::string>{"000001", "000001 (copy)", "000002", "000003"}));
  EXPECT_FALSE(fs::exists(InSession(".new-decisions.json")));
}

}  // namespace
