/// Silence on standard error, and its end.
#include "common/LibraryNoise.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <future>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

/// Sets or removes an environment variable for the length of a test.
class Variable {
 public:
  Variable(const char* name, const char* value) : name_(name) {
    if (const char* old = std::getenv(name)) old_ = old;
    Assign(value);
  }
  ~Variable() { Assign(old_ ? old_->c_str() : nullptr); }
  Variable(const Variable&) = delete;
  Variable& operator=(const Variable&) = delete;

 private:
  void Assign(const char* value) {
    if (value == nullptr) {
      unsetenv(name_);
    } else {
      setenv(name_, value, 1);
    }
  }

  const char* const name_;
  std::optional<std::string> old_;
};

void WriteToStandardError(const std::string& text) {
  EXPECT_EQ(write(STDERR_FILENO, text.data(), text.size()), static_cast<ssize_t>(text.size()));
}

TEST(LibraryNoise, WhatIsWrittenWhileMutedIsLostAndNothingElse) {
  const Variable level("OPENCV_LOG_LEVEL", nullptr);
  testing::internal::CaptureStderr();
  WriteToStandardError("before ");
  {
    const common::MutedStandardError muted;
    WriteToStandardError("meanwhile ");
  }
  WriteToStandardError("after");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "before after");
}

/// The number of files that this process has open.
std::ptrdiff_t OpenFiles() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                       std::filesystem::directory_iterator());
}

TEST(LibraryNoise, MutingLeavesNoFileOpen) {
  const Variable level("OPENCV_LOG_LEVEL", nullptr);
  const auto before = OpenFiles();
  { const common::MutedStandardError muted; }
  EXPECT_EQ(OpenFiles(), before);
}

TEST(LibraryNoise, StaysMutedUntilTheLastOfSeveralHasEnded) {
  const Variable level("OPENCV_LOG_LEVEL", nullptr);
  testing::internal::CaptureStderr();
  auto first = std::make_unique<common::MutedStandardError>();
  auto second = std::make_unique<common::MutedStandardError>();
  first.reset();
  WriteToStandardError("meanwhile ");
  second.reset();
  WriteToStandardError("after");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "after");
}

TEST(LibraryNoise, ThreadsMuteItAsTheyLike) {
  const Variable level("OPENCV_LOG_LEVEL", nullptr);
  const auto before = OpenFiles();
  testing::internal::CaptureStderr();
  std::vector<std::future<void>> threads;
  for (int i = 0; i < 4; ++i) {
    threads.push_back(std::async(std::launch::async, [] {
      for (int k = 0; k < 1000; ++k) {
        const common::MutedStandardError muted;
        WriteToStandardError("meanwhile ");
      }
    }));
  }
  for (auto& thread : threads) thread.get();
  WriteToStandardError("after");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "after");
  EXPECT_EQ(OpenFiles(), before);
}

TEST(LibraryNoise, AStreamToStandardErrorIsHeardAllTheSame) {
  const Variable level("OPENCV_LOG_LEVEL", nullptr);
  testing::internal::CaptureStderr();
  {
    common::StandardErrorStream before;
    const common::MutedStandardError muted;
    common::StandardErrorStream within;
    before << "one " << 1 << std::flush;
    within << ", two " << 2 << std::endl;
    WriteToStandardError("meanwhile ");
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "one 1, two 2\n");
}

TEST(LibraryNoise, AUserWhoSetALogLevelHearsEverything) {
  const Variable level("OPENCV_LOG_LEVEL", "WARNING");
  testing::internal::CaptureStderr();
  {
    const common::MutedStandardError muted;
    WriteToStandardError("meanwhile");
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "meanwhile");
}

TEST(LibraryNoise, TheLevelThatTheUserChoseForTheDecoderStays) {
  const Variable level("OPENCV_FFMPEG_LOGLEVEL", "48");
  common::SilenceLibraries();
  EXPECT_STREQ(std::getenv("OPENCV_FFMPEG_LOGLEVEL"), "48");
}

}  // namespace
