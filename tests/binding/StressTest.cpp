/// All operations of several calibrators at random, from several threads at once. Meant for the sanitizers as
/// much as for its own checks.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <functional>
#include <nlohmann/json.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/videoio.hpp>
#include <random>
#include <set>

#include "Calibration.h"
#include "Calibrator.h"
#include "TemporaryFolder.h"
#include "base64.h"
#include "binding/Registry.h"
#include "unit/Collection.h"
#include "unit/Scopes.h"
#include "unit/ThreadGroup.h"

using namespace velmora;

namespace {

constexpr int THREADS = 4;
constexpr int OPERATIONS = 120;  ///< of each thread
constexpr size_t SLOTS = 3;

/// What the threads share: numbers of calibrators, and something to feed them.
class Stress : public ::testing::Test {
 protected:
  Stress() {
    for (auto& slot : slots_) slot = New();
    unit::WriteAssistantModel(model_, unit::NoisyViews(6));
    std::vector<unsigned char> bytes;
    EXPECT_TRUE(cv::imencode(".jpg", unit::ImageWithGrid(), bytes));
    text_ = base64_encode(bytes.data(), static_cast<unsigned int>(bytes.size()));
    cv::VideoWriter writer(video_, cv::VideoWriter::fourcc('M', 'J', 'P', 'G'), 25.0, unit::FRAME);
    for (size_t view = 0; view < 4; ++view) writer.write(unit::Rendered().images[view]);
  }
  ~Stress() override {
    for (const auto& slot : slots_) Calibration::DeleteCalibrator(slot);
  }

  static int New() { return Calibration::NewCalibrator(4, 11, 0.02F, Calibrator::MONOCULAR, 640, 480); }

  void CheckAnswers(int id) {
    static const std::set<int> statuses = {-1, 100, 200, 300, 400};
    EXPECT_EQ(statuses.count(Calibration::GetStatus(id)), 1U);
    EXPECT_TRUE(nlohmann::json::parse(Calibration::GetStatus_QVX(id)).is_object());
    EXPECT_GE(Calibration::GetPictureCount(id), -2);
    EXPECT_GE(Calibration::GetError(id), -2.0F);
    const std::string result = Calibration::GetCalibrationJSON(id, false, "");
    EXPECT_TRUE(result.empty() || nlohmann::json::accept(result));
  }

  void Listen(int id) {
    if (const auto calibrator = Registry::Instance().Find(id)) {
      calibrator->SetFrameListener([this](const std::vector<unsigned char>& jpeg, const std::string& status) {
        EXPECT_TRUE(nlohmann::json::accept(status));
        if (!jpeg.empty()) ++frames_;
      });
    }
  }

  /// One of all operations; the same random numbers give the same ones.
  void DoSomething(std::mt19937& random) {
    auto& slot = slots_[random() % SLOTS];
    const int id = slot;
    const bool coin = random() % 2 == 0;
    cv::Mat image = unit::Rendered().images[random() % 6].clone();
    std::string text = text_;
    const std::vector<std::function<void()>> operations = {
        [&] { Calibration::DeleteCalibrator(slot.exchange(New())); },
        [&] { Calibration::DetectPattern(id, image); },
        [&] { Calibration::DetectPattern(id, text, 70); },
        [&] { Calibration::NextFrameRGB(id, image, 1, nullptr); },
        [&] { Calibration::NextFrameJpegB64(id, text, 2, nullptr); },
        [&] { coin ? Calibration::OpenRGBFrameGrabber(id) : Calibration::CloseRGBFrameGrabber(id); },
        [&] { coin ? Calibration::OpenJpegB64FrameGrabber(id) : Calibration::CloseJpegB64FrameGrabber(id); },
        [&] { coin ? Calibration::StartAssistant(id, model_) : Calibration::StopAssistant(id); },
        [&] {
          coin ? Calibration::OpenFFmpegContent(id, video_) : (Calibration::CloseFFmpegContent(id), true);
        },
        [&] { Calibration::AddPicture(id); },
        [&] { Calibration::AddPicture_QVX(id); },
        [&] { Calibration::Calibrate(id, Calibrator::MODEL_CLASSIC); },
        [&] { Calibration::Calibrate_QVX(id, Calibrator::MODEL_CLASSIC); },
        [&] { Calibration::CalibrateStereo(id, "{}", text, Calibrator::MODEL_FULL); },
        [&] { Calibration::SetFlip(id, coin); },
        [&] { Calibration::GetFlip(id); },
        [&] { Calibration::IsDetected(id); },
        [&] { Calibration::ResetCalibrator(id); },
        [&] { Listen(id); },
        [&] { CheckAnswers(id); }};
    operations[random() % operations.size()]();
  }

  const unit::ScopedLogLevel silent_{0};
  support::TemporaryFolder folder_;
  const unit::ScopedCurrentFolder current_{folder_.Path()};
  const std::string model_ = folder_.File("model.json");
  const std::string video_ = folder_.File("views.avi");
  std::string text_;
  std::array<std::atomic<int>, SLOTS> slots_{};
  std::atomic<int> frames_{0};
};

TEST_F(Stress, OfAllOperationsLeavesWorkingCalibrators) {
  unit::ThreadGroup threadGroup;
  for (unsigned thread = 0; thread < THREADS; ++thread) {
    threadGroup.Add([this, thread] {
      std::mt19937 random(thread);
      for (int i = 0; i < OPERATIONS; ++i) DoSomething(random);
    });
  }
  threadGroup.RunToTheEnd();
  EXPECT_GT(frames_, 0) << "no listener saw anything";
  for (const auto& slot : slots_) {
    // Whatever is under way comes to its end; then a calibration works as ever.
    Calibration::DeleteCalibrator(slot);
    const int id = New();
    for (size_t view = 0; view < 5; ++view) {
      cv::Mat image = unit::Rendered().images[view].clone();
      ASSERT_TRUE(Calibration::DetectPattern(id, image));
      ASSERT_TRUE(Calibration::AddPicture(id));
    }
    Calibration::Calibrate(id, Calibrator::MODEL_CLASSIC);
    EXPECT_TRUE(unit::Eventually([&] { return Calibration::GetStatus(id) == Calibrator::STATUS_COMPLETED; }));
    EXPECT_TRUE(Calibration::DeleteCalibrator(id));
  }
}

}  // namespace
