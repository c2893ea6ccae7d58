/// Brings frames in, from sources or pushed ones, and hands what was made of them to those who listen.
#include "calibrator/FrameFlow.h"

#include <stdexcept>
#include <system_error>

#include "Log.h"
#include "calibrator/BusyScope.h"
#include "calibrator/OwnThread.h"
#include "foundation/OneLine.h"
#include "imaging/FrameCodec.h"
#include "imaging/FrameKind.h"
#include "jni/JavaListener.h"
#include "jni/JavaThread.h"

namespace velmora {

namespace {

constexpr CloseMessages CAMERA = {"Waiting for camera thread to finish", "Release camera", "Camera closed",
                                  "Can't close native camera. Native camera is not opened."};
constexpr CloseMessages CONTENT = {"Waiting for FFmpeg content thread to finish", "Release FFmpeg content",
                                   "FFmpeg content closed",
                                   "Can't close FFmpeg content. FFmpeg content is not opened."};
constexpr CloseMessages PIPE = {"Waiting for gstreamer pipe thread to finish", "Release gstreamer pipe",
                                "Gstreamer pipe closed", "Can't close gstreamer pipe. Pipe is not opened."};

/// Runs the action; what it throws is logged. Nothing that happens to one frame may end the flow of frames.
template <typename Action>
void Guarded(const char* what, Action action) {
  try {
    action();
  } catch (const std::exception& fault) {
    Log::error("%s failed: %s", what, OneLine(fault.what()).c_str());
  } catch (...) {
    Log::error("%s failed.", what);
  }
}

/// False when it is open already; with an error line when there is no thread for it.
template <typename Grabber>
bool OpenGrabber(Grabber& grabber) {
  try {
    return grabber.Open();
  } catch (const std::system_error& fault) {
    Log::error("Cannot start a frame grabber: %s", fault.what());
    return true;
  }
}

template <typename Listener>
std::shared_ptr<const Listener> Shared(Listener listener) {
  return listener == nullptr ? nullptr : std::make_shared<const Listener>(std::move(listener));
}

}  // namespace

FrameFlow::FrameFlow(FrameWork work, const void* owner, CaptureReader::NewSource newSource)
    : work_(std::move(work)),
      owner_(owner),
      jpegGrabber_([this] { GrabJpegs(); }),
      rgbGrabber_([this] { GrabRgb(); }),
      capture_([this] { ReadSource(); }, std::move(newSource)) {
}

FrameFlow::~FrameFlow() {
  End();
}

bool FrameFlow::OpenCamera(int index, const FrameFormat& asked, int splitMode) {
  return ShowSourceIf(capture_.OpenCamera(index, asked, splitMode));
}

bool FrameFlow::OpenCameraPair(int leftIndex, int rightIndex, const FrameFormat& asked) {
  return ShowSourceIf(capture_.OpenCameraPair(leftIndex, rightIndex, asked));
}

bool FrameFlow::OpenContent(const std::string& content) {
  return ShowSourceIf(capture_.OpenContent(content));
}

bool FrameFlow::OpenPipe(const std::string& pipe) {
  return ShowSourceIf(capture_.OpenPipe(pipe));
}

bool FrameFlow::ShowSourceIf(bool opened) {
  if (opened) {
    preview_.SourceOpened();
  } else {
    capture_.NoteFailedOpen();
  }
  return opened;
}

void FrameFlow::CloseOne(const CloseMessages& words) {
  if (capture_.Close(words)) preview_.SourceClosed();
}

void FrameFlow::CloseCamera() {
  CloseOne(CAMERA);
}

void FrameFlow::CloseContent() {
  CloseOne(CONTENT);
}

void FrameFlow::ClosePipe() {
  CloseOne(PIPE);
}

void FrameFlow::CloseCameraPair() {
  capture_.ClosePair();
  preview_.SourceClosed();
}

void FrameFlow::CloseSource() {
  if (capture_.SecondOpened()) {
    CloseCameraPair();
  } else {
    CloseCamera();
  }
}

void FrameFlow::End() {
  capture_.Stop();
  jpegGrabber_.End();
  rgbGrabber_.End();
}

void FrameFlow::ReadSource() {
  const OwnThread own(owner_);
  const JavaThread thread(javaMachine_);
  capture_.Read([&](CapturedViews& views) { ProcessCaptured(views, thread.Environment()); },
                [this] { TellSourceEnd(); });
}

/// Processing draws on the frame; what it leaves is shown and handed on.
void FrameFlow::ProcessCaptured(CapturedViews& views, JNIEnv* env) {
  RequireProcessable(views.frame);
  if (views.pair) RequireProcessable(views.right);
  work_.process(views);
  if (!capture_.StopRequested()) preview_.Show(views.frame, views.right);
  Deliver(views.frame, env);
}

/// Raises what processing would print with each frame, for the reader to print once.
void FrameFlow::RequireProcessable(const cv::Mat& frame) const {
  const std::string fault = work_.faultOf(frame);
  if (!fault.empty()) throw std::runtime_error(fault);
}

void FrameFlow::TellSourceEnd() {
  const auto listener = listeners_.Current().sourceEnd;
  if (listener != nullptr) Guarded("The source's listener", [&] { (*listener)(); });
}

void FrameFlow::OpenJpegGrabber() {
  OpenGrabber(jpegGrabber_);
}

void FrameFlow::CloseJpegGrabber() {
  jpegGrabber_.Close();
}

void FrameFlow::OpenRgbGrabber() {
  if (!OpenGrabber(rgbGrabber_)) Log::warn("Frame grabber already running.");
}

void FrameFlow::CloseRgbGrabber() {
  rgbGrabber_.Close();
}

void FrameFlow::PushJpeg(std::string& base64Jpeg, int tag, JNIEnv* env, bool fromGrabber) {
  capture_.ForgetEnd();
  if (!fromGrabber && jpegGrabber_.Offer(base64Jpeg, tag)) return;
  const BusyScope busy(jpegBusy_);
  if (!busy.Entered()) return;
  cv::Mat frame;
  Guarded("Decoding a frame", [&] { frame = DecodeJpegB64(base64Jpeg); });
  if (frame.empty()) Log::error("Cannot convert B64 data to an image.");
  ProcessPushed(frame, env);
}

void FrameFlow::PushRgb(cv::Mat& image, int tag, JNIEnv* env, bool fromGrabber) {
  capture_.ForgetEnd();
  if (!fromGrabber && rgbGrabber_.Offer(image, tag)) return;
  const BusyScope busy(rgbBusy_);
  if (!busy.Entered()) return;
  if (image.empty()) Log::error("Cannot process an image without data.");
  ProcessPushed(image, env);
}

/// A frame that is none was reported; its listener is told the status all the same.
void FrameFlow::ProcessPushed(cv::Mat& frame, JNIEnv* env) {
  const bool usable = !frame.empty() && IsSupportedFrame(frame);
  if (!usable && !frame.empty()) {
    Log::error("Cannot process an image of OpenCV type %d: 8 bits and 1, 3 or 4 channels are needed.",
               frame.type());
  }
  if (usable) {
    CapturedViews views;
    views.frame = frame;
    Guarded("Processing a frame", [&] {
      if (!bypass_) work_.process(views);
      if (!capture_.StopRequested()) preview_.Show(views.frame);
    });
    frame = views.frame;
  }
  Deliver(usable ? frame : cv::Mat(), env);
}

void FrameFlow::GrabJpegs() {
  if (!jpegGrabber_.RunsHere()) return;
  {
    const OwnThread own(owner_);
    const JavaThread thread(javaMachine_);
    Log::info("Base64 JPEG grabber started.");
    std::string text;
    int tag = 0;
    while (jpegGrabber_.Take(text, tag)) {
      if (!text.empty()) PushJpeg(text, tag, thread.Environment(), true);
    }
  }
  Log::info("Base64 JPEG grabber exited.");
}

void FrameFlow::GrabRgb() {
  if (!rgbGrabber_.RunsHere()) return;
  {
    const OwnThread own(owner_);
    const JavaThread thread(javaMachine_);
    Log::info("RGB frame grabber started.");
    cv::Mat image;
    int tag = 0;
    while (rgbGrabber_.Take(image, tag)) {
      if (!image.empty()) PushRgb(image, tag, thread.Environment(), true);
      image.release();  // not held while waiting: the caller may want its memory back
    }
  }
  Log::info("RGB frame grabber exited.");
}

void FrameFlow::SetFrameListener(FrameListener listener) {
  listeners_.SetNative(Shared(std::move(listener)));
}

void FrameFlow::SetSourceEndListener(SourceEndListener listener) {
  listeners_.SetSourceEnd(Shared(std::move(listener)));
}

void FrameFlow::KeepJavaMachine(JNIEnv* env) {
  JavaVM* machine = JavaMachineOf(env);
  if (machine != nullptr) javaMachine_ = machine;
}

bool FrameFlow::SetJavaListener(JNIEnv* env, jobject listener, bool sendImage, const cv::Size& imageSize) {
  auto registered = listener == nullptr ? nullptr : JavaListener::Make(env, listener, sendImage, imageSize);
  const bool success = registered != nullptr;
  listeners_.SetJava(std::move(registered));
  return success;
}

void FrameFlow::Deliver(const cv::Mat& frame, JNIEnv* env) {
  const FrameListeners::Registered listeners = listeners_.Current();
  if (listeners.native != nullptr) {
    Guarded("The frame listener", [&] {
      std::vector<unsigned char> jpeg;
      Guarded("Encoding a frame", [&] { jpeg = EncodeJpeg(frame, cv::Size()); });
      (*listeners.native)(jpeg, work_.status());
    });
  }
  if (listeners.java == nullptr || env == nullptr) return;
  Guarded("The calibration listener", [&] {
    std::vector<unsigned char> jpeg;
    if (listeners.java->SendsImage()) {
      Guarded("Encoding a frame", [&] { jpeg = EncodeJpeg(frame, listeners.java->ImageSize()); });
      Log::trace("JPEG response encoded and processed, ready to be passed to JNI callback.");
    }
    listeners.java->OnFrame(env, jpeg, work_.status());
    Log::trace("JNI callback called.");
  });
}

void FrameFlow::TellJavaListener(JNIEnv* env, const std::vector<unsigned char>& jpeg,
                                 const std::string& status) {
  const auto listener = listeners_.Current().java;
  if (listener != nullptr && env != nullptr) listener->OnFrame(env, jpeg, status);
}

}  // namespace velmora
