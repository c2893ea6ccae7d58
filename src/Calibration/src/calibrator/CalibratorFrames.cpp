/// The calibrator's public face, its frames: sources, preview, grabbers and listeners.
#include "Calibrator.h"
#include "calibrator/CalibratorImpl.h"
#include "capture/ContentOptions.h"

using namespace velmora;

// ---- Sources of frames.

bool Calibrator::OpenNativeCamera(int index, int width, int height, int fps, int splitMode) {
  return impl_->flow.OpenCamera(index, {width, height, fps}, splitMode);
}

void Calibrator::CloseNativeCamera() {
  impl_->flow.CloseCamera();
}

bool Calibrator::OpenNativeStereoCamera(int leftIndex, int rightIndex, int width, int height, int fps) {
  return impl_->flow.OpenCameraPair(leftIndex, rightIndex, {width, height, fps});
}

void Calibrator::CloseStereoNativeCamera() {
  impl_->flow.CloseCameraPair();
}

bool Calibrator::OpenFFmpegContent(const std::string& content) {
  return impl_->flow.OpenContent(content);
}

void Calibrator::CloseFFmpegContent() {
  impl_->flow.CloseContent();
}

// By value, as callers of the engine are compiled against it.
bool Calibrator::OpenGstreamerPipe(std::string pipe) {  // NOLINT(performance-unnecessary-value-param)
  return impl_->flow.OpenPipe(pipe);
}

void Calibrator::CloseGstreamerPipe() {
  impl_->flow.ClosePipe();
}

void Calibrator::CloseSource() {
  impl_->flow.CloseSource();
}

bool Calibrator::HasSourceEnded() {
  return impl_->flow.HasSourceEnded();
}

void Calibrator::SetSourceEndListener(SourceEndListener listener) {
  impl_->flow.SetSourceEndListener(std::move(listener));
}

void Calibrator::OpenPreview() {
  impl_->flow.PreviewOfFrames().Open();
}

void Calibrator::ClosePreview() {
  impl_->flow.PreviewOfFrames().Close();
}

void Calibrator::EndSources() {
  impl_->flow.End();
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
  impl_->flow.ReadSource();
}

void Calibrator::jpegB64grabber() {
  impl_->flow.GrabJpegs();
}

void Calibrator::RGBgrabber() {
  impl_->flow.GrabRgb();
}

// ---- Frames pushed in, and listeners.

void Calibrator::OpenJpegB64FrameGrabber() {
  impl_->flow.OpenJpegGrabber();
}

void Calibrator::CloseJpegB64FrameGrabber() {
  impl_->flow.CloseJpegGrabber();
}

void Calibrator::NextFrameJpegB64(std::string& base64Jpeg, const int& tag, JNIEnv* env, bool fromGrabber) {
  impl_->flow.PushJpeg(base64Jpeg, tag, env, fromGrabber);
}

void Calibrator::OpenRGBFrameGrabber() {
  impl_->flow.OpenRgbGrabber();
}

void Calibrator::CloseRGBFrameGrabber() {
  impl_->flow.CloseRgbGrabber();
}

void Calibrator::NextFrameRGB(cv::Mat& image, const int& tag, JNIEnv* env, bool fromGrabber) {
  impl_->flow.PushRgb(image, tag, env, fromGrabber);
}

void Calibrator::setBypassProcessing(const bool& bypass) {
  impl_->flow.SetBypass(bypass);
}

void Calibrator::SetFrameListener(FrameListener listener) {
  impl_->flow.SetFrameListener(std::move(listener));
}

void Calibrator::RegisterJavaVM(JNIEnv* env) {
  impl_->flow.KeepJavaMachine(env);
}

bool Calibrator::RegisterCalibrationListener(JNIEnv* env, jobject listener, unsigned char sendImage,
                                             int width, int height) {
  return impl_->flow.SetJavaListener(env, listener, sendImage != 0, {width, height});
}

void Calibrator::callbackListener(cv::Mat& frame, JNIEnv* env) {
  impl_->flow.Deliver(frame, env);
}

void Calibrator::onCalibrationCallback(JNIEnv* env,
                                       std::vector<unsigned char> jpeg,  // NOLINT: the signature is fixed
                                       const std::string& json) {
  impl_->flow.TellJavaListener(env, jpeg, json);
}
