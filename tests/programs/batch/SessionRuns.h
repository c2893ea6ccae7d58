/// Runs of the headless tool with sessions: images to run it on, and what a run says and leaves behind.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "Process.h"
#include "TemporaryFolder.h"

namespace batch_runs {

using Words = std::vector<std::string>;
constexpr std::chrono::minutes LONG_ENOUGH{4};

struct Outcome {
  int status = 0;
  std::string output;
  std::string errors;
};

/// The file's name, such as "103.png", of a rendered image.
std::string NameOf(int number);

bool Contains(const std::string& text, const std::string& part);
/// How often the part is in the text.
int CountOf(const std::string& text, const std::string& part);

/// Twelve images of two cameras each, rendered once for all tests, in the folders left and right and, side by
/// side, both; each test has a folder of its own to work in.
class SessionRuns : public ::testing::Test {
 protected:
  static constexpr int IMAGES = 12;

  static void SetUpTestSuite();
  static void TearDownTestSuite();

  /// A rendered folder, or a file in it.
  static std::string Rendered(const std::string& name) { return rendered_->File(name); }
  /// In the folder of this test.
  std::string File(const std::string& name) const { return place_.File(name); }
  std::string Text(const std::string& name) const { return support::ReadText(File(name)); }

  /// Copies images of the left camera, from that number up to before another, to a folder of this test.
  std::string Copied(const std::string& folder, int from, int end) const;

  Words Command(const Words& words) const;
  /// The tool's run in the folder of this test.
  Outcome Run(const Words& words) const;
  /// That run, which succeeds.
  Outcome RunWell(const Words& words) const;
  /// What standard error says when the run ends with status 2.
  std::string Refusal(const Words& words) const;
  support::Process::Options InPlace() const;

  support::TemporaryFolder place_;

 private:
  static support::TemporaryFolder* rendered_;
};

}  // namespace batch_runs
