/// The tone, with players that write down what they are given.
#include "guided/Tone.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <thread>

#include "TemporaryFolder.h"

namespace {

class ToneTest : public testing::Test {
 protected:
  ToneTest() {
    // The shell of the players is found by its path.
    setenv("PATH", folder_.Path().c_str(), 1);
  }
  ~ToneTest() override { setenv("PATH", path_.c_str(), 1); }

  void InstallPlayer(const std::string& name, const std::string& script) {
    support::WriteText(folder_.File(name), "#!/bin/sh\nPATH=" + path_ + "\n" + script + "\n");
    chmod(folder_.File(name).c_str(), 0755);
  }
  /// A script that keeps what it is given, whole, under a name of its own.
  std::string Recording(const std::string& name) const {
    return "cat \"$1\" > " + folder_.File(name) + ".$$ && mv " + folder_.File(name) + ".$$ " +
           folder_.File(name);
  }
  static std::string Content(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  }
  static bool Eventually(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition()) {
      if (std::chrono::steady_clock::now() > deadline) return false;
      std::this_thread::yield();
    }
    return true;
  }
  bool Recorded(const std::string& name) const { return std::filesystem::exists(folder_.File(name)); }

  support::TemporaryFolder folder_;
  const std::string path_ = std::getenv("PATH");
};

unsigned NumberAt(const std::string& bytes, size_t place, int count) {
  unsigned number = 0;
  for (int i = count - 1; i >= 0; --i) {
    number = number << 8U | static_cast<unsigned char>(bytes[place + static_cast<size_t>(i)]);
  }
  return number;
}

TEST_F(ToneTest, IsASoundFileThatSaysItsLength) {
  const std::string file = guided::ToneFile();
  ASSERT_GT(file.size(), 1000U);
  EXPECT_EQ(file.substr(0, 4), "RIFF");
  EXPECT_EQ(NumberAt(file, 4, 4), file.size() - 8);
  EXPECT_EQ(file.substr(8, 8), "WAVEfmt ");
  EXPECT_EQ(NumberAt(file, 20, 2), 1U) << "samples as they are";
  EXPECT_EQ(NumberAt(file, 22, 2), 1U) << "one channel";
  EXPECT_EQ(NumberAt(file, 28, 4), 2 * NumberAt(file, 24, 4)) << "bytes per second";
  EXPECT_EQ(file.substr(36, 4), "data");
  EXPECT_EQ(NumberAt(file, 40, 4), file.size() - 44);
  int loudest = 0;
  for (size_t at = 44; at < file.size(); at += 2) {
    loudest = std::max(loudest, std::abs(static_cast<int>(static_cast<short>(NumberAt(file, at, 2)))));
  }
  EXPECT_GT(loudest, 8000);
  EXPECT_LT(loudest, 32000);
}

TEST_F(ToneTest, IsGivenToThePlayerFromItsBeginningEachTime) {
  InstallPlayer("aplay", Recording("played"));
  guided::ShutterTone tone;
  for (int round = 0; round < 2; ++round) {
    tone.Play();
    ASSERT_TRUE(Eventually([&] { return Recorded("played"); })) << round;
    EXPECT_EQ(Content(folder_.File("played")), guided::ToneFile()) << round;
    std::filesystem::remove(folder_.File("played"));
  }
}

TEST_F(ToneTest, APlayerThatFailsGivesWayToTheNext) {
  InstallPlayer("paplay", "touch " + folder_.File("failed") + "; exit 1");
  InstallPlayer("aplay", Recording("played"));
  guided::ShutterTone tone;
  EXPECT_TRUE(Eventually([&] {
    tone.Play();
    return Recorded("played");
  }));
  EXPECT_TRUE(Recorded("failed"));
}

TEST_F(ToneTest, APlayerThatCannotBeStartedGivesWayAtOnce) {
  support::WriteText(folder_.File("paplay"), "#!/nowhere/shell\n");
  chmod(folder_.File("paplay").c_str(), 0755);
  InstallPlayer("aplay", Recording("played"));
  guided::ShutterTone tone;
  tone.Play();
  EXPECT_TRUE(Eventually([&] { return Recorded("played"); }));
}

TEST_F(ToneTest, PlayersThatHangAreNotHeapedUp) {
  InstallPlayer("aplay", "echo x >> " + folder_.File("started") + "; exec sleep 600");
  guided::ShutterTone tone;
  for (int i = 0; i < 10; ++i) tone.Play();
  EXPECT_TRUE(Eventually([&] { return Content(folder_.File("started")).size() >= 6; }));
  for (int i = 0; i < 10; ++i) tone.Play();
  EXPECT_EQ(Content(folder_.File("started")), "x\nx\nx\n");
  for (const pid_t player : tone.Playing()) kill(player, SIGKILL);
}

TEST_F(ToneTest, IsNotPlayedWhenItIsNotWanted) {
  InstallPlayer("aplay", Recording("played"));
  guided::ShutterTone silent(false);
  silent.Play();
  EXPECT_TRUE(silent.Playing().empty());
  guided::ShutterTone tone;
  tone.Play();
  EXPECT_EQ(tone.Playing().size(), 1U);
  EXPECT_TRUE(Eventually([&] { return Recorded("played"); }));
}

TEST_F(ToneTest, WithoutAPlayerNothingFails) {
  guided::ShutterTone tone;
  for (int i = 0; i < 10; ++i) tone.Play();
  EXPECT_TRUE(tone.Playing().empty());
}

TEST_F(ToneTest, WithoutAPlayerTheTerminalRings) {
  const int terminal = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
  ASSERT_GE(terminal, 0);
  ASSERT_EQ(grantpt(terminal), 0);
  ASSERT_EQ(unlockpt(terminal), 0);
  const int end = open(ptsname(terminal), O_RDWR | O_NOCTTY);
  ASSERT_GE(end, 0);
  const int saved = dup(STDERR_FILENO);
  dup2(end, STDERR_FILENO);
  guided::ShutterTone().Play();
  guided::ShutterTone(false).Play();
  dup2(saved, STDERR_FILENO);
  std::string rung(16, ' ');
  const ssize_t length = read(terminal, rung.data(), rung.size());
  for (const int file : {saved, end, terminal}) close(file);
  ASSERT_EQ(length, 1);
  EXPECT_EQ(rung[0], '\a');
}

}  // namespace
