/// Calibrators addressed by number: their sources of frames, and who gets the frames.
#include "Calibration.h"
#include "binding/Registry.h"

using namespace velmora;

bool Calibration::OpenNativeCamera(const int& id, int index, int width, int height, int fps, int splitMode) {
  const auto calibrator = Registry::Instance().Find(id);
  return calibrator != nullptr && calibrator->OpenNativeCamera(index, width, height, fps, splitMode);
}

void Calibration::CloseNativeCamera(const int& id) {
  if (const auto calibrator = Registry::Instance().Find(id)) calibrator->CloseNativeCamera();
}

bool Calibration::OpenNativeStereoCamera(const int& id, int leftIndex, int rightIndex, int width, int height,
                                         int fps) {
  const auto calibrator = Registry::Instance().Find(id);
  return calibrator != nullptr &&
         calibrator->OpenNativeStereoCamera(leftIndex, rightIndex, width, height, fps);
}

void Calibration::CloseStereoNativeCamera(const int& id) {
  if (const auto calibrator = Registry::Instance().Find(id)) calibrator->CloseStereoNativeCamera();
}

bool Calibration::OpenFFmpegContent(const int& id, const std::string& content) {
  const auto calibrator = Registry::Instance().Find(id);
  return calibrator != nullptr && calibrator->OpenFFmpegContent(content);
}

void Calibration::CloseFFmpegContent(const int& id) {
  if (const auto calibrator = Registry::Instance().Find(id)) calibrator->CloseFFmpegContent();
}

bool Calibration::OpenGstreamerPipe(const int& id, const std::string& pipe) {
  const auto calibrator = Registry::Instance().Find(id);
  return calibrator != nullptr && calibrator->OpenGstreamerPipe(pipe);
}

void Calibration::CloseGstreamerPipe(const int& id) {
  if (const auto calibrator = Registry::Instance().Find(id)) calibrator->CloseGstreamerPipe();
}

void Calibration::OpenJpegB64FrameGrabber(const int& id) {
  if (const auto calibrator = Registry::Instance().Find(id)) calibrator->OpenJpegB64FrameGrabber();
}

void Calibration::CloseJpegB64FrameGrabber(const int& id) {
  if (const auto calibrator = Registry::Instance().Find(id)) calibrator->CloseJpegB64FrameGrabber();
}

void Calibration::OpenRGBFrameGrabber(const int& id) {
  if (const auto calibrator = Registry::Instance().Find(id)) calibrator->OpenRGBFrameGrabber();
}

void Calibration::CloseRGBFrameGrabber(const int& id) {
  if (const auto calibrator = Registry::Instance().Find(id)) calibrator->CloseRGBFrameGrabber();
}

void Calibration::NextFrameJpegB64(const int& id, std::string& base64Jpeg, const int& tag, JNIEnv* env) {
  if (const auto calibrator = Registry::Instance().Find(id)) {
    calibrator->NextFrameJpegB64(base64Jpeg, tag, env, false);
  }
}

void Calibration::NextFrameRGB(const int& id, cv::Mat& image, const int& tag, JNIEnv* env) {
  if (const auto calibrator = Registry::Instance().Find(id)) {
    calibrator->NextFrameRGB(image, tag, env, false);
  }
}

void Calibration::OpenPreview(const int& id) {
  if (const auto calibrator = Registry::Instance().Find(id)) calibrator->OpenPreview();
}

void Calibration::ClosePreview(const int& id) {
  if (const auto calibrator = Registry::Instance().Find(id)) calibrator->ClosePreview();
}

void Calibration::RegisterJavaVM(const int& id, JNIEnv* env) {
  if (const auto calibrator = Registry::Instance().Find(id)) calibrator->RegisterJavaVM(env);
}

bool Calibration::RegisterCalibrationListener(const int& id, JNIEnv* env, jobject listener,
                                              unsigned char sendImage, int width, int height) {
  const auto calibrator = Registry::Instance().Find(id);
  return calibrator != nullptr &&
         calibrator->RegisterCalibrationListener(env, listener, sendImage, width, height);
}
