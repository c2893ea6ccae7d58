/// Opening and closing the sources of a reader.
#include <algorithm>
#include <limits>
#include <opencv2/videoio.hpp>

#include "Log.h"
#include "capture/CaptureReader.h"
#include "capture/ContentOptions.h"
#include "foundation/OneLine.h"

namespace velmora {

namespace {

constexpr CloseMessages LEFT_CAMERA = {"Waiting for camera thread to finish", "Release left camera",
                                       "Left camera closed",
                                       "Can't close left native camera. Left camera is not opened."};

/// Truncated toward zero, within the range of the type.
int Truncated(double value) {
  constexpr double MOST = std::numeric_limits<int>::max();
  if (!(value > -MOST)) return value < 0.0 ? std::numeric_limits<int>::min() : 0;
  return static_cast<int>(std::min(value, MOST));
}

void SetMotionJpeg(FrameSource& source) {
  source.Set(cv::CAP_PROP_FOURCC, cv::VideoWriter::fourcc('M', 'J', 'P', 'G'));
}

void SetSizeAndRate(FrameSource& source, const FrameFormat& format) {
  source.Set(cv::CAP_PROP_FRAME_WIDTH, format.width);
  source.Set(cv::CAP_PROP_FRAME_HEIGHT, format.height);
  source.Set(cv::CAP_PROP_FPS, format.rate);
}

/// Single precision is part of the test: a frame exactly twice as wide counts as two views.
bool HoldsTwoViews(const FrameFormat& delivered, const FrameFormat& asked) {
  const float ratio = static_cast<float>(delivered.width) / static_cast<float>(delivered.height);
  const float askedRatio = static_cast<float>(asked.width) / static_cast<float>(asked.height);
  return !(ratio < 2.0F * askedRatio);
}

void ReleaseSource(FrameSource* source) {
  if (source == nullptr) return;
  try {
    source->Release();
  } catch (const std::exception& fault) {
    Log::error("The capture library failed: %s", OneLine(fault.what()).c_str());
  }
}

}  // namespace

/// Waits for other operations, except on the reader's own thread, which they may be waiting for. The sources
/// are that thread's then.
CaptureReader::OperationLock CaptureReader::BeginOperation() {
  return OnReaderThread() ? OperationLock() : OperationLock(operationLock_);
}

FrameFormat CaptureReader::Format() {
  const auto operation = BeginOperation();
  return format_;
}

/// With the operation begun. Afterwards no thread runs and the sources exist.
bool CaptureReader::MayOpen(const char* alreadyOpened, const char* rightAlreadyOpened) {
  const char* refusal = nullptr;
  if (primaryOpened_) {
    refusal = alreadyOpened;
  } else if (rightAlreadyOpened != nullptr && secondOpened_) {
    refusal = rightAlreadyOpened;
  } else if (OnReaderThread()) {
    refusal = "A source cannot be opened on the reader's own thread.";
  }
  if (refusal != nullptr) {
    Log::error("%s", refusal);
    return false;
  }
  JoinThread();  // it has ended, or ends, by itself
  if (primary_ == nullptr) primary_ = newSource_();
  if (rightAlreadyOpened != nullptr && second_ == nullptr) second_ = newSource_();
  return true;
}

/// Runs the steps of opening; true when the first source is open then. Failures of the library are logged.
bool CaptureReader::OpenSource(const std::function<void()>& open) {
  try {
    open();
    primaryOpened_ = primary_->IsOpened();
  } catch (const std::exception& fault) {
    Log::error("The capture library failed: %s", OneLine(fault.what()).c_str());
    ReleasePrimary();
  }
  return primaryOpened_;
}

void CaptureReader::ReadFormat() {
  format_ = {Truncated(primary_->Get(cv::CAP_PROP_FRAME_WIDTH)),
             Truncated(primary_->Get(cv::CAP_PROP_FRAME_HEIGHT)), Truncated(primary_->Get(cv::CAP_PROP_FPS))};
}

bool CaptureReader::OpenCamera(int index, const FrameFormat& asked, int splitMode) {
  const auto operation = BeginOperation();
  if (!MayOpen("Native camera is already opened.")) return false;
  const int device = std::max(index, 0);
  splitMode_ = splitMode;
  endsEmpty_ = false;
  if (!OpenSource([&] { OpenMonoOrConcatenated(device, asked); })) {
    Log::error("Could not open camera %d", device);
    return false;
  }
  return Start();
}

void CaptureReader::OpenMonoOrConcatenated(int device, const FrameFormat& asked) {
  const auto open = [&](const FrameFormat& format) {
    primary_->Open(device);
    SetMotionJpeg(*primary_);
    SetSizeAndRate(*primary_, format);
    ReadFormat();
    return primary_->IsOpened();
  };
  if (!open(asked)) return;
  if (!HoldsTwoViews(format_, asked)) {
    concatenated_ = false;
    return;
  }
  Log::warn(
      "The camera has been detected as a concatenated frame stereo camera. Will be reopened as stereo.");
  primary_->Release();
  if (open({Truncated(2.0 * asked.width), asked.height, asked.rate})) concatenated_ = true;
}

bool CaptureReader::OpenCameraPair(int leftIndex, int rightIndex, const FrameFormat& asked) {
  const auto operation = BeginOperation();
  if (!MayOpen("Native left camera is already opened.", "Native right camera is already opened."))
    return false;
  const int left = std::max(leftIndex, 0);
  const int right = std::max(rightIndex, 0);
  endsEmpty_ = false;
  if (!OpenSource([&] {
        primary_->Open(left);
        SetMotionJpeg(*primary_);
        SetSizeAndRate(*primary_, asked);
      })) {
    Log::error("Could not open left camera %d", left);
    return false;
  }
  if (!OpenSource([&] { OpenRight(right, asked); }) || !secondOpened_) {
    ReleasePrimary();
    ReleaseSecond();
    Log::error("Could not open right camera %d", right);
    return false;
  }
  concatenated_ = false;
  return Start();
}

void CaptureReader::OpenRight(int device, const FrameFormat& asked) {
  second_->Open(device);
  SetMotionJpeg(*primary_);  // the left one once more: the right one keeps its own coding
  SetSizeAndRate(*second_, asked);
  secondOpened_ = second_->IsOpened();
  if (secondOpened_) ReadFormat();
}

// Content and pipelines leave concatenated_ as it is: after a side-by-side camera they are split as well.
bool CaptureReader::OpenContent(const std::string& content) {
  const auto operation = BeginOperation();
  if (!MayOpen("FFmpeg content is already opened.")) return false;
  const Content parsed = ParseContent(content);
  endsEmpty_ = true;
  const bool opened = OpenSource([&] {
    primary_->Open(parsed.source, cv::CAP_ANY);
    ReadFormat();
    if (parsed.startFrame) primary_->Set(cv::CAP_PROP_POS_FRAMES, *parsed.startFrame);
  });
  if (!opened) {
    Log::error("Could not open content %s", content.c_str());
    return false;
  }
  return Start();
}

bool CaptureReader::OpenPipe(const std::string& pipe) {
  const auto operation = BeginOperation();
  if (!MayOpen("Gstreamer pipe is already opened.")) return false;
  endsEmpty_ = true;
  const bool opened = OpenSource([&] {
    primary_->Open(pipe, cv::CAP_GSTREAMER);
    ReadFormat();
  });
  if (!opened) {
    Log::error("Could not open pipe %s", pipe.c_str());
    return false;
  }
  return Start();
}

bool CaptureReader::Close(const CloseMessages& words) {
  const auto operation = BeginOperation();
  const bool closed = primary_ != nullptr && ClosePrimary(words);
  ended_ = false;
  return closed;
}

/// With the operation begun.
bool CaptureReader::ClosePrimary(const CloseMessages& words) {
  if (!primaryOpened_) {
    Log::error("%s", words.notOpened);
    return false;
  }
  Log::trace("%s", words.waiting);
  StopThread();
  Log::debug("%s", words.releasing);
  ReleasePrimary();
  Log::debug("%s", words.closed);
  return true;
}

void CaptureReader::ClosePair() {
  const auto operation = BeginOperation();
  const bool secondOpened = secondOpened_;  // before it may be left behind together with the first
  if (!ClosePrimary(LEFT_CAMERA)) JoinThread();
  ended_ = false;
  if (!secondOpened) {
    Log::error("Can't close right native camera. Right camera is not opened.");
    return;
  }
  Log::debug("Release right camera");
  ReleaseSecond();
  Log::debug("Right camera closed");
}

void CaptureReader::Stop() {
  const auto operation = BeginOperation();
  StopThread();
  ReleasePrimary();
  ReleaseSecond();
  ended_ = false;
}

void CaptureReader::ReleasePrimary() {
  ReleaseSource(primary_.get());
  primaryOpened_ = false;
}

void CaptureReader::ReleaseSecond() {
  ReleaseSource(second_.get());
  secondOpened_ = false;
}

}  // namespace velmora
