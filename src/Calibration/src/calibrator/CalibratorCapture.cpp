/// The calibrator's own sources of frames: cameras, content, pipelines, and the thread that reads them.
#include <stdexcept>

#include "Calibrator.h"
#include "calibrator/Delivery.h"
#include "calibrator/OwnThread.h"
#include "capture/CaptureReader.h"
#include "capture/ContentOptions.h"
#include "capture/Preview.h"
#include "jni/JavaThread.h"

using namespace velmora;

namespace {

constexpr ClosingWords CAMERA = {"Waiting for camera thread to finish", "Release camera", "Camera closed",
                                 "Can't close native camera. Native camera is not opened."};
constexpr ClosingWords CONTENT = {"Waiting for FFmpeg content thread to finish", "Release FFmpeg content",
                                  "FFmpeg content closed",
                                  "Can't close FFmpeg content. FFmpeg content is not opened."};
constexpr ClosingWords PIPE = {"Waiting for gstreamer pipe thread to finish", "Release gstreamer pipe",
                               "Gstreamer pipe closed", "Can't close gstreamer pipe. Pipe is not opened."};

}  // namespace

bool Calibrator::OpenNativeCamera(int index, int width, int height, int fps, int splitMode) {
  return ShowSourceIf(capture_->OpenCamera(index, {width, height, fps}, splitMode));
}

void Calibrator::CloseNativeCamera() {
  if (capture_->Close(CAMERA)) preview_->SourceClosed();
}

bool Calibrator::OpenNativeStereoCamera(int leftIndex, int rightIndex, int width, int height, int fps) {
  return ShowSourceIf(capture_->OpenCameraPair(leftIndex, rightIndex, {width, height, fps}));
}

void Calibrator::CloseStereoNativeCamera() {
  capture_->ClosePair();
  preview_->SourceClosed();
}

bool Calibrator::OpenFFmpegContent(const std::string& content) {
  return ShowSourceIf(capture_->OpenContent(content));
}

void Calibrator::CloseFFmpegContent() {
  if (capture_->Close(CONTENT)) preview_->SourceClosed();
}

// By value, as callers of the engine are compiled against it.
bool Calibrator::OpenGstreamerPipe(std::string pipe) {  // NOLINT(performance-unnecessary-value-param)
  return ShowSourceIf(capture_->OpenPipe(pipe));
}

void Calibrator::CloseGstreamerPipe() {
  if (capture_->Close(PIPE)) preview_->SourceClosed();
}

void Calibrator::CloseSource() {
  if (capture_->SecondOpened()) {
    CloseStereoNativeCamera();
  } else {
    CloseNativeCamera();
  }
}

bool Calibrator::HasSourceEnded() {
  return capture_->SourceEnded();
}

bool Calibrator::ShowSourceIf(bool opened) {
  if (opened) {
    preview_->SourceOpened();
  } else {
    capture_->NoteFailedOpen();
  }
  return opened;
}

void Calibrator::OpenPreview() {
  preview_->Open();
}

void Calibrator::ClosePreview() {
  preview_->Close();
}

std::vector<std::string> Calibrator::split(const std::string& s, char separator) {
  std::vector<std::string> pieces;
  split(s, separator, pieces);
  return pieces;
}

void Calibrator::split(const std::string& s, char separator, std::vector<std::string>& out) {
  SplitText(s, separator, out);
}

void Calibrator::cameraReader() {
  const OwnThread own(*this);
  const JavaThread thread(delivery_->javaMachine);
  capture_->Read([&](CapturedViews& views) { ProcessCaptured(views, thread.Environment()); },
                 [this] { TellSourceEnd(); });
}

/// Detection draws on the frame; what it leaves is shown and handed on.
void Calibrator::ProcessCaptured(CapturedViews& views, JNIEnv* env) {
  RequireProcessable(views.frame);
  std::vector<cv::Point2d> points;
  if (views.pair) {
    RequireProcessable(views.right);
    std::vector<cv::Point2d> rightPoints;
    DetectStereoPoints(views.frame, views.right, points, rightPoints, true);
  } else {
    DetectPoints(views.frame, points, true);
  }
  if (!capture_->StopRequested()) preview_->Show(views.frame, views.right);
  callbackListener(views.frame, env);
}

/// Raises what detection would print with each frame, for the reader to print once.
void Calibrator::RequireProcessable(const cv::Mat& frame) const {
  const std::string fault = FaultOf(frame);
  if (!fault.empty()) throw std::runtime_error(fault);
}
