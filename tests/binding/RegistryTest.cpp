/// Calibrators addressed by number.
#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <fstream>
#include <mutex>
#include <nlohmann/json.hpp>
#include <opencv2/imgcodecs.hpp>
#include <thread>

#include "Calibration.h"
#include "Calibrator.h"
#include "Log.h"
#include "TemporaryFolder.h"
#include "base64.h"
#include "binding/Registry.h"
#include "unit/Collection.h"
#include "unit/Scopes.h"
#include "unit/ThreadGroup.h"

using namespace velmora;

namespace {

using nlohmann::json;

constexpr int UNKNOWN = 1000000;
const char* const MISSING = "ERROR : Element 1000000 does not exist.\n";

int New(int kind = Calibrator::MONOCULAR) {
  return Calibration::NewCalibrator(4, 11, 0.02F, kind, 640, 480);
}

std::string TextOf(const cv::Mat& plain) {
  std::vector<unsigned char> bytes;
  EXPECT_TRUE(cv::imencode(".jpg", plain, bytes, {cv::IMWRITE_JPEG_QUALITY, 95}));
  return base64_encode(bytes.data(), static_cast<unsigned int>(bytes.size()));
}

class RegistryById : public ::testing::Test {
 protected:
  ~RegistryById() override {
    const unit::ScopedLogLevel silent(0);
    Calibration::DeleteCalibrator(id_);
  }

  const int id_ = New();
};

TEST(RegistryNumbers, CountFromTheFirstAndAreNeverGivenAgain) {
  const unit::ScopedLogLevel silent(0);
  Registry registry;
  const auto add = [&] {
    return registry.Add(
        std::make_unique<Calibrator>(cv::Size(4, 11), 0.02F, Calibrator::MONOCULAR, 640, 480));
  };
  EXPECT_EQ(add(), 0);
  EXPECT_EQ(add(), 1);
  EXPECT_NE(registry.Remove(0), nullptr);
  EXPECT_EQ(registry.Find(0), nullptr);
  EXPECT_EQ(registry.Remove(0), nullptr);
  EXPECT_EQ(add(), 2);
  EXPECT_NE(registry.Find(1), nullptr);
}

TEST(RegistryNumbers, OfDeletedCalibratorsAreUnknown) {
  const int id = New();
  EXPECT_TRUE(Calibration::exist(id));
  EXPECT_TRUE(Calibration::DeleteCalibrator(id));
  const std::string line = "ERROR : Element " + std::to_string(id) + " does not exist.\n";
  EXPECT_EQ(unit::PrintedBy([&] { EXPECT_FALSE(Calibration::DeleteCalibrator(id)); }), line);
  EXPECT_EQ(unit::PrintedBy([&] { EXPECT_FALSE(Calibration::exist(id)); }), line);
  const int next = New();
  EXPECT_GT(next, id);
  Calibration::DeleteCalibrator(next);
}

TEST(RegistryNumbers, AreRefusedToSizesBeyondUse) {
  const auto refused = [](int columns, int rows, float unit, int width, int height) {
    int id = 0;
    const std::string printed = unit::PrintedBy(
        [&] { id = Calibration::NewCalibrator(columns, rows, unit, Calibrator::MONOCULAR, width, height); });
    return id == -1 && printed.rfind("ERROR : Cannot create a calibrator", 0) == 0;
  };
  EXPECT_TRUE(refused(0, 11, 0.02F, 640, 480));
  EXPECT_TRUE(refused(4, -11, 0.02F, 640, 480));
  EXPECT_TRUE(refused(4, 2000000000, 0.02F, 640, 480));
  EXPECT_TRUE(refused(4, 11, std::nanf(""), 640, 480));
  EXPECT_TRUE(refused(4, 11, 0.02F, 0, 480));
  EXPECT_TRUE(refused(4, 11, 0.02F, 640, -1));
}

TEST(RegistryNumbers, OfAGridOfOneCircleAreGivenAndFindNothing) {
  const int id = Calibration::NewCalibrator(1, 1, 0.02F, Calibrator::MONOCULAR, 640, 480);
  ASSERT_GE(id, 0);
  for (const int finder : {Calibrator::FINDER_STANDARD, Calibrator::FINDER_ROBUST}) {
    Registry::Instance().Find(id)->SetFinder(finder);
    cv::Mat plain = unit::ImageWithGrid();
    EXPECT_FALSE(Calibration::DetectPattern(id, plain));
  }
  Calibration::DeleteCalibrator(id);
}

/// Every operation, on a number that does not exist: the line, and the default.
TEST(RegistryDefaults, OfOperationsWithoutAResultAreALineAlone) {
  std::string text = "text";
  cv::Mat image(480, 640, CV_8UC3, cv::Scalar());
  const std::vector<std::function<void()>> operations = {
      [] { Calibration::ResetCalibrator(UNKNOWN); },
      [] { Calibration::SetFlip(UNKNOWN, true); },
      [] { Calibration::Calibrate(UNKNOWN, Calibrator::MODEL_CLASSIC); },
      [] { Calibration::CalibrateStereo(UNKNOWN, "{}", "{}", Calibrator::MODEL_FULL); },
      [] { Calibration::CloseNativeCamera(UNKNOWN); },
      [] { Calibration::CloseStereoNativeCamera(UNKNOWN); },
      [] { Calibration::CloseFFmpegContent(UNKNOWN); },
      [] { Calibration::CloseGstreamerPipe(UNKNOWN); },
      [] { Calibration::OpenJpegB64FrameGrabber(UNKNOWN); },
      [] { Calibration::CloseJpegB64FrameGrabber(UNKNOWN); },
      [] { Calibration::OpenRGBFrameGrabber(UNKNOWN); },
      [] { Calibration::CloseRGBFrameGrabber(UNKNOWN); },
      [] { Calibration::OpenPreview(UNKNOWN); },
      [] { Calibration::ClosePreview(UNKNOWN); },
      [] { Calibration::RegisterJavaVM(UNKNOWN, nullptr); },
      [&] { Calibration::NextFrameJpegB64(UNKNOWN, text, 0, nullptr); },
      [&] { Calibration::NextFrameRGB(UNKNOWN, image, 0, nullptr); }};
  for (size_t i = 0; i < operations.size(); ++i) EXPECT_EQ(unit::PrintedBy(operations[i]), MISSING) << i;
}

TEST(RegistryDefaults, OfOperationsThatSayYesOrNoAreNo) {
  std::string text = "text";
  cv::Mat image(480, 640, CV_8UC3, cv::Scalar());
  const std::vector<std::function<bool()>> operations = {
      [] { return Calibration::DeleteCalibrator(UNKNOWN); },
      [] { return Calibration::exist(UNKNOWN); },
      [] { return Calibration::DetectPattern(UNKNOWN, 640, 480, CV_8UC3, nullptr); },
      [&] { return Calibration::DetectPattern(UNKNOWN, image); },
      [&] { return Calibration::DetectPattern(UNKNOWN, text, 90); },
      [] { return Calibration::IsDetected(UNKNOWN); },
      [] { return Calibration::GetFlip(UNKNOWN); },
      [] { return Calibration::StartAssistant(UNKNOWN, "model.json"); },
      [] { return Calibration::StopAssistant(UNKNOWN); },
      [] { return Calibration::AddPicture(UNKNOWN); },
      [] { return Calibration::AddStereoPicture(UNKNOWN); },
      [] { return Calibration::OpenNativeCamera(UNKNOWN, 0, 640, 480, 30, 0); },
      [] { return Calibration::OpenNativeStereoCamera(UNKNOWN, 0, 1, 640, 480, 30); },
      [] { return Calibration::OpenFFmpegContent(UNKNOWN, "video.avi"); },
      [] { return Calibration::OpenGstreamerPipe(UNKNOWN, "videotestsrc ! appsink"); },
      [] { return Calibration::RegisterCalibrationListener(UNKNOWN, nullptr, nullptr, 1, 0, 0); }};
  for (size_t i = 0; i < operations.size(); ++i) {
    bool result = true;
    EXPECT_EQ(unit::PrintedBy([&] { result = operations[i](); }), MISSING) << i;
    EXPECT_FALSE(result) << i;
  }
  EXPECT_EQ(text, "text");
}

TEST(RegistryDefaults, OfNumbersAndTextsCanBeToldApart) {
  const std::string printed = unit::PrintedBy([] {
    EXPECT_EQ(Calibration::GetStatus(UNKNOWN), -1);
    EXPECT_EQ(Calibration::GetPictureCount(UNKNOWN), -2);
    EXPECT_EQ(Calibration::GetAssistantGoal(UNKNOWN), -3);
    EXPECT_EQ(Calibration::GetError(UNKNOWN), -2.0F);
    EXPECT_EQ(Calibration::GetCalibrationJSON(UNKNOWN, true, "file"), "");
  });
  std::string expected;
  for (int i = 0; i < 5; ++i) expected += MISSING;
  EXPECT_EQ(printed, expected);
}

TEST(RegistryDefaults, OfJsonAnswersSayThatTheNumberIsNotFound) {
  const std::vector<std::pair<std::function<std::string()>, const char*>> operations = {
      {[] { return Calibration::AddPicture_QVX(UNKNOWN); }, "snapshot"},
      {[] { return Calibration::AddStereoPicture_QVX(UNKNOWN); }, "snapshot"},
      {[] { return Calibration::Calibrate_QVX(UNKNOWN, Calibrator::MODEL_FULL); }, "calibrate"},
      {[] { return Calibration::CalibrateStereo_QVX(UNKNOWN, "{}", "{}", Calibrator::MODEL_FULL); },
       "calibrate"},
      {[] { return Calibration::GetStatus_QVX(UNKNOWN); }, "cs"}};
  for (const auto& [operation, name] : operations) {
    std::string answer;
    EXPECT_EQ(unit::PrintedBy([&, &run = operation] { answer = run(); }), MISSING);
    EXPECT_EQ(json::parse(answer),
              json({{"id", UNKNOWN}, {"op", name}, {"c", "error"}, {"it", "ID not found."}}));
  }
}

TEST_F(RegistryById, DetectsInAllThreeKindsOfFrames) {
  const cv::Mat plain = unit::ImageWithGrid();
  cv::Mat image = plain.clone();
  EXPECT_TRUE(Calibration::DetectPattern(id_, image));
  EXPECT_TRUE(Calibration::IsDetected(id_));
  EXPECT_GT(cv::norm(image, plain, cv::NORM_INF), 0.0) << "it is drawn on";

  cv::Mat buffer = plain.clone();
  EXPECT_TRUE(Calibration::DetectPattern(id_, buffer.cols, buffer.rows, CV_8UC3, buffer.data));

  std::string text = TextOf(plain);
  const std::string before = text;
  EXPECT_TRUE(Calibration::DetectPattern(id_, text, 80));
  EXPECT_NE(text, before);
  const std::string bytes = base64_decode(text);
  const cv::Mat annotated =
      cv::imdecode(std::vector<unsigned char>(bytes.begin(), bytes.end()), cv::IMREAD_COLOR);
  ASSERT_EQ(annotated.size(), plain.size());
  EXPECT_LT(cv::norm(annotated, image, cv::NORM_L1) / static_cast<double>(annotated.total() * 3), 6.0);
}

TEST_F(RegistryById, AnswersALowerQualityWithAShorterText) {
  std::string good = TextOf(unit::ImageWithGrid());
  std::string poor = good;
  EXPECT_TRUE(Calibration::DetectPattern(id_, good, 95));
  EXPECT_TRUE(Calibration::DetectPattern(id_, poor, 10));
  EXPECT_LT(2 * poor.size(), good.size());
}

TEST_F(RegistryById, LeavesATextThatIsNoPictureAlone) {
  for (const char* words : {"", "no picture", "TWFu", "===="}) {
    std::string text = words;
    bool found = true;
    EXPECT_EQ(unit::PrintedBy([&] { found = Calibration::DetectPattern(id_, text, 90); }),
              "ERROR : Cannot convert B64 data to an image.\n");
    EXPECT_FALSE(found);
    EXPECT_EQ(text, words);
  }
}

TEST_F(RegistryById, RefusesBuffersThatAreNone) {
  unsigned char byte = 0;
  const std::vector<std::function<bool()>> wrong = {
      [&] { return Calibration::DetectPattern(id_, 640, 480, CV_8UC3, nullptr); },
      [&] { return Calibration::DetectPattern(id_, 0, 480, CV_8UC3, &byte); },
      [&] { return Calibration::DetectPattern(id_, 640, -480, CV_8UC3, &byte); }};
  for (const auto& detect : wrong) {
    bool found = true;
    const std::string printed = unit::PrintedBy([&] { found = detect(); });
    EXPECT_FALSE(found);
    EXPECT_EQ(printed.rfind("ERROR : Cannot process a frame of ", 0), 0U) << printed;
  }
}

TEST_F(RegistryById, AnswersASnapshotWithStatusAndCount) {
  std::string answer;
  unit::PrintedBy([&] { answer = Calibration::AddPicture_QVX(id_); });
  EXPECT_EQ(json::parse(answer), json({{"id", id_},
                                       {"op", "snapshot"},
                                       {"c", "error"},
                                       {"it", "Pattern not detected."},
                                       {"ii", Calibrator::STATUS_NOT_READY},
                                       {"ni", 0}}));
  cv::Mat image = unit::ImageWithGrid();
  Calibration::DetectPattern(id_, image);
  unit::PrintedBy([&] { answer = Calibration::AddPicture_QVX(id_); });
  EXPECT_EQ(json::parse(answer), json({{"id", id_},
                                       {"op", "snapshot"},
                                       {"c", "success"},
                                       {"it", "Snapshot recorded."},
                                       {"ii", Calibrator::STATUS_NOT_READY},
                                       {"ni", 1}}));
  EXPECT_EQ(Calibration::GetPictureCount(id_), 1);
}

TEST_F(RegistryById, CalibratesInTheBackgroundAndTellsSo) {
  const unit::ScopedLogLevel silent(0);
  for (size_t view = 0; view < 6; ++view) {
    cv::Mat image = unit::Rendered().images[view].clone();
    ASSERT_TRUE(Calibration::DetectPattern(id_, image));
    ASSERT_TRUE(Calibration::AddPicture(id_));
  }
  const json answer = json::parse(Calibration::Calibrate_QVX(id_, Calibrator::MODEL_CLASSIC));
  EXPECT_EQ(answer.at("op"), "calibrate");
  EXPECT_EQ(answer.at("c"), "success");
  EXPECT_EQ(answer.at("it"), "Please derive calibration computation result from infoInt.");
  EXPECT_EQ(answer.at("ni"), 6);
  ASSERT_TRUE(unit::Eventually([&] { return Calibration::GetStatus(id_) == Calibrator::STATUS_COMPLETED; }));
  EXPECT_GT(Calibration::GetError(id_), 0.0F);
  const json status = json::parse(Calibration::GetStatus_QVX(id_));
  EXPECT_EQ(status.at("ii"), Calibrator::STATUS_COMPLETED);
  EXPECT_FALSE(Calibration::GetCalibrationJSON(id_, false, "").empty());
  Calibration::ResetCalibrator(id_);
  EXPECT_EQ(Calibration::GetStatus(id_), Calibrator::STATUS_NOT_READY);
}

TEST_F(RegistryById, CalibratesAPairFromTextsAtOnceOrInTheBackground) {
  const unit::ScopedLogLevel silent(0);
  const int pair = New(Calibrator::STEREO);
  // Without snapshots neither computes; broken texts end no process.
  Calibration::CalibrateStereo(pair, "{}", "no JSON", Calibrator::MODEL_RATIONAL);
  const json answer =
      json::parse(Calibration::CalibrateStereo_QVX(pair, "{}", "no JSON", Calibrator::MODEL_RATIONAL));
  EXPECT_EQ(answer.at("op"), "calibrate");
  EXPECT_EQ(answer.at("c"), "success");
  EXPECT_EQ(json::parse(Calibration::AddStereoPicture_QVX(pair)).at("it"), "Pattern not detected.");
  EXPECT_TRUE(Calibration::DeleteCalibrator(pair));
}

TEST_F(RegistryById, SwitchesFlipAndAssistant) {
  const unit::ScopedLogLevel silent(0);
  EXPECT_FALSE(Calibration::GetFlip(id_));
  Calibration::SetFlip(id_, true);
  EXPECT_TRUE(Calibration::GetFlip(id_));
  EXPECT_TRUE(Calibration::StartAssistant(id_, VELMORA_POSES_JSON));
  EXPECT_EQ(Calibration::GetAssistantGoal(id_), 12);
  EXPECT_TRUE(Calibration::StopAssistant(id_));
  EXPECT_EQ(Calibration::GetAssistantGoal(id_), -1);
  EXPECT_TRUE(Calibration::StartAssistant(id_, "/nowhere/model.json"));
  EXPECT_EQ(Calibration::GetAssistantGoal(id_), -1);
}

TEST_F(RegistryById, HandsPushedFramesToItsCalibrator) {
  const unit::ScopedLogLevel silent(0);
  std::string text = TextOf(unit::ImageWithGrid());
  Calibration::NextFrameJpegB64(id_, text, 0, nullptr);
  EXPECT_TRUE(Calibration::AddPicture(id_));
  cv::Mat image = unit::ImageWithGrid();
  Calibration::NextFrameRGB(id_, image, 0, nullptr);
  EXPECT_TRUE(Calibration::AddPicture(id_));
}

TEST_F(RegistryById, TellsOfTheLibrarysBuild) {
  EXPECT_NE(Calibration::GetOpenCVBuildInfo().find("General configuration for OpenCV"), std::string::npos);
}

/// A gate that a thread waits at until another one opens it.
class Gate {
 public:
  void Open() {
    const std::lock_guard<std::mutex> lock(lock_);
    open_ = true;
    changed_.notify_all();
  }
  bool Await() {
    std::unique_lock<std::mutex> lock(lock_);
    return changed_.wait_for(lock, std::chrono::seconds(60), [this] { return open_; });
  }

 private:
  std::mutex lock_;
  std::condition_variable changed_;
  bool open_ = false;
};

TEST(RegistryLifetimes, LastAsLongAsACallThatIsUnderWay) {
  const unit::ScopedLogLevel silent(0);
  const int id = New();
  Gate called;
  Gate deleted;
  std::weak_ptr<Calibrator> watched = Registry::Instance().Find(id);
  watched.lock()->SetFrameListener([&](const std::vector<unsigned char>&, const std::string&) {
    called.Open();
    EXPECT_TRUE(deleted.Await());
    EXPECT_FALSE(watched.expired()) << "the call still works on it";
  });
  std::thread pushing([&] {
    cv::Mat image(480, 640, CV_8UC3, cv::Scalar::all(128));
    Calibration::NextFrameRGB(id, image, 0, nullptr);
  });
  ASSERT_TRUE(called.Await());
  EXPECT_TRUE(Calibration::DeleteCalibrator(id));
  EXPECT_FALSE(Calibration::exist(id));
  deleted.Open();
  pushing.join();
  EXPECT_TRUE(watched.expired());
}

TEST(RegistryLifetimes, EndWithADeletionByTheListenerOnAGrabbersThread) {
  const unit::ScopedLogLevel silent(0);
  const int id = New();
  Gate deleted;
  std::weak_ptr<Calibrator> watched = Registry::Instance().Find(id);
  watched.lock()->SetFrameListener([&](const std::vector<unsigned char>&, const std::string&) {
    EXPECT_TRUE(Calibration::DeleteCalibrator(id));
    deleted.Open();
  });
  Calibration::OpenRGBFrameGrabber(id);
  cv::Mat image(480, 640, CV_8UC3, cv::Scalar::all(128));
  Calibration::NextFrameRGB(id, image, 0, nullptr);
  ASSERT_TRUE(deleted.Await());
  EXPECT_TRUE(unit::Eventually([&] { return watched.expired(); }));
}

TEST(RegistryLifetimes, EndTheSourcesAtOnceEvenWhileOthersHoldTheCalibrator) {
  const unit::ScopedLogLevel silent(0);
  const int id = New();
  const auto held = Registry::Instance().Find(id);
  std::atomic<int> frames{0};
  held->SetFrameListener([&](const std::vector<unsigned char>&, const std::string&) { ++frames; });
  held->OpenRGBFrameGrabber();
  EXPECT_TRUE(Calibration::DeleteCalibrator(id));
  held->OpenRGBFrameGrabber();  // refused: its grabbers have ended and stay so
  const int before = frames;
  cv::Mat image(480, 640, CV_8UC3, cv::Scalar::all(128));
  held->NextFrameRGB(image, 0, nullptr, false);
  EXPECT_EQ(frames, before + 1) << "processed at once, on this thread";
}

TEST(RegistryConcurrency, CreatesUsesAndDeletesFromManyThreads) {
  const unit::ScopedLogLevel silent(0);
  constexpr int ROUNDS = 12;
  std::atomic<int> shared{New()};
  const auto views = unit::NoisyViews(5);
  unit::ThreadGroup threadGroup;
  for (int thread = 0; thread < 4; ++thread) {
    threadGroup.Add([&, thread] {
      for (int round = 0; round < ROUNDS; ++round) {
        const int own = New();
        for (const auto& view : views) Registry::Instance().Find(own)->AddPoints(view);
        Calibration::Calibrate(own, Calibrator::MODEL_CLASSIC);
        Calibration::GetStatus_QVX(own);
        Calibration::OpenRGBFrameGrabber(own);
        // Everybody uses, and now and then replaces, the one that all share.
        cv::Mat image(48, 64, CV_8UC3, cv::Scalar::all(10 * thread));
        Calibration::NextFrameRGB(shared, image, 0, nullptr);
        Calibration::AddPicture_QVX(shared);
        if (round % 3 == thread % 3) Calibration::DeleteCalibrator(shared.exchange(New()));
        EXPECT_TRUE(Calibration::DeleteCalibrator(own));
      }
    });
  }
  threadGroup.RunToTheEnd();
  EXPECT_TRUE(Calibration::DeleteCalibrator(shared));
}

}  // namespace
