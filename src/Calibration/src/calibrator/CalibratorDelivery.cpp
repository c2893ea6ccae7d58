/// The calibrator's frames that are pushed in, and the annotated frames that it hands out.
#include <system_error>

#include "Log.h"
#include "calibrator/BusyScope.h"
#include "calibrator/Delivery.h"
#include "calibrator/OwnThread.h"
#include "capture/CaptureReader.h"
#include "capture/Preview.h"
#include "foundation/OneLine.h"
#include "imaging/FrameCodec.h"
#include "imaging/FrameKind.h"
#include "jni/JavaListener.h"
#include "jni/JavaThread.h"

using namespace velmora;

namespace {

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

}  // namespace

void Calibrator::OpenJpegB64FrameGrabber() {
  OpenGrabber(delivery_->jpegGrabber);
}

void Calibrator::CloseJpegB64FrameGrabber() {
  delivery_->jpegGrabber.Close();
}

void Calibrator::OpenRGBFrameGrabber() {
  if (!OpenGrabber(delivery_->rgbGrabber)) Log::warn("Frame grabber already running.");
}

void Calibrator::CloseRGBFrameGrabber() {
  delivery_->rgbGrabber.Close();
}

void Calibrator::EndSources() {
  capture_->Stop();
  delivery_->jpegGrabber.End();
  delivery_->rgbGrabber.End();
}

void Calibrator::setBypassProcessing(const bool& bypass) {
  delivery_->bypass = bypass;
}

void Calibrator::NextFrameJpegB64(std::string& base64Jpeg, const int& tag, JNIEnv* env, bool fromGrabber) {
  capture_->ForgetEnd();
  if (!fromGrabber && delivery_->jpegGrabber.Offer(base64Jpeg, tag)) return;
  const BusyScope busy(delivery_->jpegBusy);
  if (!busy.Entered()) return;
  cv::Mat frame;
  Guarded("Decoding a frame", [&] { frame = DecodeJpegB64(base64Jpeg); });
  if (frame.empty()) Log::error("Cannot convert B64 data to an image.");
  ProcessPushed(frame, env);
}

void Calibrator::NextFrameRGB(cv::Mat& image, const int& tag, JNIEnv* env, bool fromGrabber) {
  capture_->ForgetEnd();
  if (!fromGrabber && delivery_->rgbGrabber.Offer(image, tag)) return;
  const BusyScope busy(delivery_->rgbBusy);
  if (!busy.Entered()) return;
  if (image.empty()) Log::error("Cannot process an image without data.");
  ProcessPushed(image, env);
}

/// A frame that is none was reported; its listener is told the status all the same.
void Calibrator::ProcessPushed(cv::Mat& frame, JNIEnv* env) {
  cv::Mat nothing;
  const bool usable = !frame.empty() && IsSupportedFrame(frame);
  if (!usable && !frame.empty()) {
    Log::error("Cannot process an image of OpenCV type %d: 8 bits and 1, 3 or 4 channels are needed.",
               frame.type());
  }
  if (usable) {
    Guarded("Processing a frame", [&] {
      std::vector<cv::Point2d> points;
      if (!delivery_->bypass) DetectPoints(frame, points, true);
      if (!capture_->StopRequested()) preview_->Show(frame);
    });
  }
  callbackListener(usable ? frame : nothing, env);
}

void Calibrator::jpegB64grabber() {
  if (!delivery_->jpegGrabber.RunsHere()) return;
  {
    const OwnThread own(*this);
    const JavaThread thread(delivery_->javaMachine);
    Log::info("Base64 JPEG grabber started.");
    std::string text;
    int tag = 0;
    while (delivery_->jpegGrabber.Take(text, tag)) {
      if (!text.empty()) NextFrameJpegB64(text, tag, thread.Environment(), true);
    }
  }
  Log::info("Base64 JPEG grabber exited.");
}

void Calibrator::RGBgrabber() {
  if (!delivery_->rgbGrabber.RunsHere()) return;
  {
    const OwnThread own(*this);
    const JavaThread thread(delivery_->javaMachine);
    Log::info("RGB frame grabber started.");
    cv::Mat image;
    int tag = 0;
    while (delivery_->rgbGrabber.Take(image, tag)) {
      if (!image.empty()) NextFrameRGB(image, tag, thread.Environment(), true);
      image.release();  // not held while waiting: the caller may want its memory back
    }
  }
  Log::info("RGB frame grabber exited.");
}

void Calibrator::SetFrameListener(FrameListener listener) {
  delivery_->listeners.SetNative(
      listener == nullptr ? nullptr : std::make_shared<const FrameListener>(std::move(listener)));
}

void Calibrator::SetSourceEndListener(SourceEndListener listener) {
  delivery_->listeners.SetSourceEnd(
      listener == nullptr ? nullptr : std::make_shared<const SourceEndListener>(std::move(listener)));
}

void Calibrator::TellSourceEnd() {
  const auto listener = delivery_->listeners.Current().sourceEnd;
  if (listener != nullptr) Guarded("The source's listener", [&] { (*listener)(); });
}

void Calibrator::RegisterJavaVM(JNIEnv* env) {
  JavaVM* machine = JavaMachineOf(env);
  if (machine != nullptr) delivery_->javaMachine = machine;
}

bool Calibrator::RegisterCalibrationListener(JNIEnv* env, jobject listener, unsigned char sendImage,
                                             int width, int height) {
  auto registered =
      listener == nullptr ? nullptr : JavaListener::Make(env, listener, sendImage != 0, {width, height});
  const bool success = registered != nullptr;
  delivery_->listeners.SetJava(std::move(registered));
  return success;
}

void Calibrator::callbackListener(cv::Mat& frame, JNIEnv* env) {
  const FrameListeners::Registered listeners = delivery_->listeners.Current();
  if (listeners.native != nullptr) {
    Guarded("The frame listener", [&] {
      std::vector<unsigned char> jpeg;
      Guarded("Encoding a frame", [&] { jpeg = EncodeJpeg(frame, cv::Size()); });
      (*listeners.native)(jpeg, GetStatus_QVX());
    });
  }
  if (listeners.java == nullptr || env == nullptr) return;
  Guarded("The calibration listener", [&] {
    std::vector<unsigned char> jpeg;
    if (listeners.java->SendsImage()) {
      Guarded("Encoding a frame", [&] { jpeg = EncodeJpeg(frame, listeners.java->ImageSize()); });
      Log::trace("JPEG response encoded and processed, ready to be passed to JNI callback.");
    }
    listeners.java->OnFrame(env, jpeg, GetStatus_QVX());
    Log::trace("JNI callback called.");
  });
}

void Calibrator::onCalibrationCallback(JNIEnv* env,
                                       std::vector<unsigned char> jpeg,  // NOLINT: the signature is fixed
                                       const std::string& json) {
  const auto listener = delivery_->listeners.Current().java;
  if (listener != nullptr && env != nullptr) listener->OnFrame(env, jpeg, json);
}
