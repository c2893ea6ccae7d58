/// A calibrator that reads a real stream which stalls is deleted within the time that a user waits.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <opencv2/videoio.hpp>

#include "Calibrator.h"
#include "CapturedStdout.h"
#include "Log.h"
#include "TemporaryFolder.h"
#include "VirtualDisplay.h"

using namespace system_test;  // NOLINT

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds SOON{3};
constexpr std::chrono::milliseconds QUIET{300};
const char* const LEFT_BEHIND = "WARN  : The source does not answer; its thread is left behind.\n";
constexpr int FRAMES = 60;
constexpr int PIPE_BYTES = 1 << 20;  ///< more than the video has

/// A video that somebody sends through a pipe, who then sends nothing more and does not hang up either.
class StalledStream : public ::testing::Test {
 protected:
  StalledStream() {
    Log::LOG_LEVEL = 2;
    cv::VideoWriter writer(video_, cv::VideoWriter::fourcc('M', 'J', 'P', 'G'), 25.0, {320, 240});
    for (int i = 0; i < FRAMES; ++i) writer.write(cv::Mat(240, 320, CV_8UC3, cv::Scalar::all(4.0 * i)));
    writer.release();
    EXPECT_EQ(mkfifo(pipe_.c_str(), 0600), 0);
    end_ = open(pipe_.c_str(), O_RDWR | O_CLOEXEC);
    EXPECT_GE(fcntl(end_, F_SETPIPE_SZ, PIPE_BYTES), PIPE_BYTES);
    const std::string bytes = support::ReadText(video_);
    EXPECT_EQ(write(end_, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  }
  ~StalledStream() override {
    calibrator_.reset();
    close(end_);  // whoever was left behind meets the stream's end
    Log::LOG_LEVEL = level_;
  }

  /// All is read from the pipe, and the frames that the reader still had are delivered.
  bool Stalls() {
    return WaitUntil([&] {
      int waiting = 0;
      const Clock::time_point latest = latest_;
      return ioctl(end_, FIONREAD, &waiting) == 0 && waiting == 0 && latest != Clock::time_point() &&
             Clock::now() - latest > QUIET;
    });
  }

  void OpenAndStall() {
    calibrator_->SetFrameListener([this](const auto&, const auto&) { latest_ = Clock::now(); });
    ASSERT_TRUE(calibrator_->OpenFFmpegContent(pipe_));
    ASSERT_TRUE(Stalls());
  }

  /// How long the action takes, and what it prints.
  template <typename Action>
  void ExpectSoon(Action action) {
    support::CapturedStdout printed;
    const auto start = Clock::now();
    action();
    EXPECT_LT(Clock::now() - start, SOON);
    EXPECT_EQ(printed.Text(), LEFT_BEHIND);
  }

  std::unique_ptr<Calibrator> calibrator_ =
      std::make_unique<Calibrator>(cv::Size(4, 11), 0.02F, Calibrator::MONOCULAR, 320, 240);
  const support::TemporaryFolder folder_;
  const std::string video_ = folder_.File("video.avi");
  const std::string pipe_ = folder_.File("stream.avi");

 private:
  const int level_ = Log::LOG_LEVEL;
  int end_ = -1;
  std::atomic<Clock::time_point> latest_{Clock::time_point()};
};

TEST_F(StalledStream, IsLeftBehindWhenItsCalibratorIsDestroyed) {
  OpenAndStall();
  ExpectSoon([&] { calibrator_.reset(); });
}

TEST_F(StalledStream, IsLeftBehindByAClose) {
  OpenAndStall();
  ExpectSoon([&] { calibrator_->CloseFFmpegContent(); });
}

}  // namespace
