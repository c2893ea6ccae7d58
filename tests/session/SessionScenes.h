/// Sessions for tests: settings, snapshots that differ, and whether two are the same.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "TemporaryFolder.h"
#include "velmora/Session.h"

namespace unit {

/// Of a grid of 4 x 3 circles; one camera with images of 40 x 30, others of 50 x 30, 60 x 30 and so on.
velmora::SessionSettings SettingsOfCameras(size_t cameras = 1);

/// A snapshot that differs from that of any other seed in each of its numbers, with images of noise. Every
/// third one was seen by the first camera alone.
velmora::SessionSnapshot SnapshotOfSeed(int seed, const velmora::SessionSettings& settings);

/// Whether what is stored is what was given, images too, bit by bit.
::testing::AssertionResult Holds(const velmora::Session& session, int number,
                                 const velmora::SessionSnapshot& given);

/// Whether they are the same in everything but images' paths.
::testing::AssertionResult Same(const velmora::StoredSnapshot& actual,
                                const velmora::StoredSnapshot& expected);
::testing::AssertionResult Same(const std::vector<velmora::StoredSnapshot>& actual,
                                const std::vector<velmora::StoredSnapshot>& expected);

/// What the action raises as std::exception, in words; empty when it raises nothing.
template <typename Error, typename Action>
std::string Raised(const Action& action) {
  try {
    action();
  } catch (const Error& error) {
    return error.what();
  }
  return "";
}

/// Names of all that is in the folder, sorted.
std::vector<std::string> NamesIn(const std::string& folder);

/// A session of one camera in a folder of its own.
class SessionTest : public ::testing::Test {
 protected:
  SessionTest() : session_(velmora::Session::Create(path_, settings_)) {}

  int Add(int seed) { return session_->Add(SnapshotOfSeed(seed, settings_)); }
  void Reopen(const velmora::SessionOptions& options = {}) {
    session_.reset();
    session_ = velmora::Session::Open(path_, options);
  }
  std::string InSession(const std::string& name) const { return path_ + "/" + name; }
  velmora::SnapshotDecision DecisionOn(int number) const { return session_->Snapshot(number).decision; }

  support::TemporaryFolder folder_;
  const std::string path_ = folder_.File("desk.velmora");
  const velmora::SessionSettings settings_ = SettingsOfCameras();
  std::unique_ptr<velmora::Session> session_;
};

}  // namespace unit
