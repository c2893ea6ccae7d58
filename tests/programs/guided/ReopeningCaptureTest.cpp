/// Cameras that are unplugged and come back.
#include "guided/ReopeningCapture.h"

#include <gtest/gtest.h>

#include <opencv2/videoio.hpp>
#include <stdexcept>

#include "ManualClock.h"

using std::chrono::milliseconds;

namespace {

/// The machine's only camera, and what happened to it.
struct Machine {
  bool present = true;
  bool opens = true;
  bool delivers = true;
  bool raises = false;
  int open = 0;  ///< captures that hold it now
  std::vector<std::string> journal;
};

class MachineCapture final : public common::Capture {
 public:
  explicit MachineCapture(Machine& machine) : machine_(machine) {}
  ~MachineCapture() override { Close(); }

  bool Open(const common::CaptureRequest& request) override {
    Close();
    machine_.journal.push_back("open " + request.name);
    open_ = machine_.present && machine_.opens;
    if (open_) ++machine_.open;
    return open_;
  }
  void Set(int property, double value) override {
    machine_.journal.push_back("set " + std::to_string(property) + " to " +
                               std::to_string(static_cast<int>(value)));
  }
  double Get(int) override { return 7.0; }
  bool Read(cv::Mat& frame) override {
    if (machine_.raises) throw std::runtime_error("no such device");
    if (!open_ || !machine_.present || !machine_.delivers) return false;
    frame = cv::Mat::zeros(2, 2, CV_8UC1);
    return true;
  }
  bool Skip() override { return true; }

 private:
  void Close() {
    if (open_) --machine_.open;
    open_ = false;
  }

  Machine& machine_;
  bool open_ = false;
};

class ReopeningCaptureTest : public testing::Test {
 protected:
  bool Read() {
    cv::Mat frame;
    return capture_.Read(frame) && !frame.empty();
  }
  void OpenCamera() {
    ASSERT_TRUE(capture_.Open({2, cv::CAP_ANY, {}, "webcam 2"}));
    capture_.Set(cv::CAP_PROP_FPS, 25);
    ASSERT_TRUE(Read());
    machine_.journal.clear();
  }

  Machine machine_;
  guided_test::ManualClock clock_;
  std::vector<std::string> told_;
  guided::ReopeningCapture capture_{
      [this] { return std::make_unique<MachineCapture>(machine_); },
      {[this](int camera) { return camera == 2 && machine_.present; },
       [this](const std::string& name, bool gone) { told_.push_back(name + (gone ? " gone" : " there")); },
       [this](int camera) { told_.push_back("reopened " + std::to_string(camera)); }},
      clock_};
};

TEST_F(ReopeningCaptureTest, ACameraThatIsGoneIsLetGoOfAndTold) {
  OpenCamera();
  EXPECT_EQ(machine_.open, 1);
  machine_.present = false;
  EXPECT_FALSE(Read());
  EXPECT_EQ(machine_.open, 0) << "it would get another number when it comes back";
  EXPECT_EQ(told_, (std::vector<std::string>{"webcam 2 gone"}));
  EXPECT_EQ(machine_.journal, (std::vector<std::string>{}));
}

TEST_F(ReopeningCaptureTest, ACameraThatIsBackIsOpenedAsBefore) {
  OpenCamera();
  machine_.present = false;
  EXPECT_FALSE(Read());
  machine_.present = true;
  EXPECT_FALSE(Read());
  EXPECT_TRUE(Read());
  EXPECT_EQ(machine_.journal, (std::vector<std::string>{"open webcam 2", "set 5 to 25"}));
  EXPECT_EQ(told_, (std::vector<std::string>{"webcam 2 gone", "webcam 2 there", "reopened 2"}));
}

TEST_F(ReopeningCaptureTest, ACameraThatDoesNotOpenYetIsTriedOnceASecond) {
  OpenCamera();
  machine_.present = false;
  EXPECT_FALSE(Read());
  machine_.present = true;
  machine_.opens = false;
  for (int i = 0; i < 20; ++i) {
    EXPECT_FALSE(Read());
    clock_.Advance(milliseconds(100));
  }
  EXPECT_EQ(machine_.journal, (std::vector<std::string>{"open webcam 2", "open webcam 2"}));
  machine_.opens = true;
  EXPECT_FALSE(Read());
  EXPECT_TRUE(Read());
}

TEST_F(ReopeningCaptureTest, ACameraThatFailsForThreeSecondsIsOpenedAgain) {
  OpenCamera();
  machine_.delivers = false;
  EXPECT_FALSE(Read());
  clock_.Advance(milliseconds(2999));
  EXPECT_FALSE(Read());
  EXPECT_EQ(machine_.journal, (std::vector<std::string>{}));
  clock_.Advance(milliseconds(1));
  EXPECT_FALSE(Read());
  EXPECT_EQ(machine_.journal, (std::vector<std::string>{"open webcam 2", "set 5 to 25"}));
}

TEST_F(ReopeningCaptureTest, AFrameBetweenFailuresStartsTheirTimeAnew) {
  OpenCamera();
  for (int i = 0; i < 3; ++i) {
    machine_.delivers = false;
    EXPECT_FALSE(Read());
    clock_.Advance(milliseconds(2000));
    EXPECT_FALSE(Read());
    machine_.delivers = true;
    EXPECT_TRUE(Read());
  }
  EXPECT_EQ(machine_.journal, (std::vector<std::string>{}));
}

TEST_F(ReopeningCaptureTest, AnExceptionIsAReadThatFailed) {
  OpenCamera();
  machine_.raises = true;
  machine_.present = false;
  EXPECT_FALSE(Read());
  EXPECT_EQ(told_, (std::vector<std::string>{"webcam 2 gone"}));
}

TEST_F(ReopeningCaptureTest, AFileIsOpenedOnce) {
  ASSERT_TRUE(capture_.Open({std::string("a.avi"), cv::CAP_ANY, {}, "video 'a.avi'"}));
  machine_.delivers = false;
  for (int i = 0; i < 10; ++i) {
    EXPECT_FALSE(Read());
    clock_.Advance(milliseconds(1000));
  }
  EXPECT_EQ(machine_.journal, (std::vector<std::string>{"open video 'a.avi'"}));
  EXPECT_EQ(told_, (std::vector<std::string>{}));
  EXPECT_EQ(capture_.Get(0), 7.0);
}

}  // namespace
