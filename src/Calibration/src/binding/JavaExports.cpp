/// The native methods of com.velotrix.quiverleaf.sdk.Calibration: each converts its arguments, calls the
/// engine, and converts the result.
#include <jni.h>

#include "Calibration.h"
#include "binding/JavaArguments.h"
#include "binding/RawFrame.h"

using namespace velmora;

#define EXPORT(Result, name) \
  extern "C" JNIEXPORT Result JNICALL Java_com_velotrix_quiverleaf_sdk_Calibration_##name

namespace {

constexpr jboolean NO = JNI_FALSE;
constexpr char LEFT[] = "left result";
constexpr char RIGHT[] = "right result";

jboolean ToJava(bool value) {
  return value ? JNI_TRUE : JNI_FALSE;
}

/// The text that the work gives, as a Java string; null when there is none.
template <typename Work>
jstring TextOf(JNIEnv* env, Work work) {
  return jni::AtBorder(env, static_cast<jstring>(nullptr),
                       [&] { return jni::Returned(env, jni::ToJava(env, work())); });
}

}  // namespace

// ---- Lifecycle.

EXPORT(jint, nNewCalibrator)(JNIEnv* env, jclass, jint a, jint b, jfloat c, jint d, jint e, jint f) {
  return jni::AtBorder(env, jint{-1}, [&] {
    const jint id = Calibration::NewCalibrator(a, b, c, d, e, f);
    if (id >= 0) Calibration::RegisterJavaVM(id, env);
    return id;
  });
}

EXPORT(jboolean, nDeleteCalibrator)(JNIEnv* env, jclass, jint id) {
  return jni::AtBorder(env, NO, [&] { return ToJava(Calibration::DeleteCalibrator(id)); });
}

EXPORT(void, nResetCalibrator)(JNIEnv* env, jclass, jint id) {
  jni::AtBorder(env, [&] { Calibration::ResetCalibrator(id); });
}

// ---- Detection.

EXPORT(jstring, nDetectPattern)(JNIEnv* env, jclass, jint id, jstring base64Jpeg, jint quality) {
  return TextOf(env, [&] {
    std::string text = jni::Text(env, base64Jpeg, "picture's text");
    Calibration::DetectPattern(id, text, quality);
    return text;
  });
}

EXPORT(jboolean, nIsDetected)(JNIEnv* env, jclass, jint id) {
  return jni::AtBorder(env, NO, [&] { return ToJava(Calibration::IsDetected(id)); });
}

EXPORT(void, nSetFlip)(JNIEnv* env, jclass, jint id, jboolean flip) {
  jni::AtBorder(env, [&] { Calibration::SetFlip(id, flip != 0); });
}

EXPORT(jboolean, nGetFlip)(JNIEnv* env, jclass, jint id) {
  return jni::AtBorder(env, NO, [&] { return ToJava(Calibration::GetFlip(id)); });
}

// ---- Assistant.

EXPORT(jboolean, nStartAssistant)(JNIEnv* env, jclass, jint id, jstring modelPath) {
  return jni::AtBorder(env, NO, [&] {
    return ToJava(Calibration::StartAssistant(id, jni::Name(env, modelPath, "model path")));
  });
}

EXPORT(jboolean, nStopAssistant)(JNIEnv* env, jclass, jint id) {
  return jni::AtBorder(env, NO, [&] { return ToJava(Calibration::StopAssistant(id)); });
}

EXPORT(jint, nGetAssistantGoal)(JNIEnv* env, jclass, jint id) {
  return jni::AtBorder(env, jint{-3}, [&] { return jint{Calibration::GetAssistantGoal(id)}; });
}

// ---- Snapshots and computations.

EXPORT(jboolean, nAddPicture)(JNIEnv* env, jclass, jint id) {
  return jni::AtBorder(env, NO, [&] { return ToJava(Calibration::AddPicture(id)); });
}

EXPORT(jstring, nAddPictureQVX)(JNIEnv* env, jclass, jint id) {
  return TextOf(env, [&] { return Calibration::AddPicture_QVX(id); });
}

EXPORT(void, nCalibrate)(JNIEnv* env, jclass, jint id, jint model) {
  jni::AtBorder(env, [&] { Calibration::Calibrate(id, model); });
}

EXPORT(jstring, nCalibrateQVX)(JNIEnv* env, jclass, jint id, jint model) {
  return TextOf(env, [&] { return Calibration::Calibrate_QVX(id, model); });
}

EXPORT(jboolean, nAddStereoPicture)(JNIEnv* env, jclass, jint id) {
  return jni::AtBorder(env, NO, [&] { return ToJava(Calibration::AddStereoPicture(id)); });
}

EXPORT(jstring, nAddStereoPictureQVX)(JNIEnv* env, jclass, jint id) {
  return TextOf(env, [&] { return Calibration::AddStereoPicture_QVX(id); });
}

EXPORT(void, nCalibrateStereo)(JNIEnv* env, jclass, jint id, jstring left, jstring right, jint model) {
  jni::AtBorder(env, [&] {
    Calibration::CalibrateStereo(id, jni::Text(env, left, LEFT), jni::Text(env, right, RIGHT), model);
  });
}

EXPORT(jstring, nCalibrateStereoQVX)(JNIEnv* env, jclass, jint id, jstring left, jstring right, jint model) {
  return TextOf(env, [&] {
    return Calibration::CalibrateStereo_QVX(id, jni::Text(env, left, LEFT), jni::Text(env, right, RIGHT),
                                            model);
  });
}

EXPORT(jint, nGetStatus)(JNIEnv* env, jclass, jint id) {
  return jni::AtBorder(env, jint{-1}, [&] { return jint{Calibration::GetStatus(id)}; });
}

EXPORT(jstring, nGetStatusQVX)(JNIEnv* env, jclass, jint id) {
  return TextOf(env, [&] { return Calibration::GetStatus_QVX(id); });
}

EXPORT(jint, nGetPictureCount)(JNIEnv* env, jclass, jint id) {
  return jni::AtBorder(env, jint{-2}, [&] { return jint{Calibration::GetPictureCount(id)}; });
}

EXPORT(jfloat, nGetError)(JNIEnv* env, jclass, jint id) {
  return jni::AtBorder(env, jfloat{-2.0F}, [&] { return jfloat{Calibration::GetError(id)}; });
}

EXPORT(jstring, nGetCalibrationJSON)(JNIEnv* env, jclass, jint id, jboolean save, jstring path) {
  return TextOf(env, [&] {
    // Without saving the path does not matter.
    const std::string file = save != 0 ? jni::Name(env, path, "result file's path") : "";
    return Calibration::GetCalibrationJSON(id, save != 0, file);
  });
}

// ---- Sources of frames.

EXPORT(jboolean, nOpenNativeCamera)
(JNIEnv* env, jclass, jint id, jint index, jint width, jint height, jint fps, jint splitMode) {
  return jni::AtBorder(env, NO, [&] {
    return ToJava(Calibration::OpenNativeCamera(id, index, width, height, fps, splitMode));
  });
}

EXPORT(void, nCloseNativeCamera)(JNIEnv* env, jclass, jint id) {
  jni::AtBorder(env, [&] { Calibration::CloseNativeCamera(id); });
}

EXPORT(jboolean, nOpenNativeStereoCamera)
(JNIEnv* env, jclass, jint id, jint leftIndex, jint rightIndex, jint width, jint height, jint fps) {
  return jni::AtBorder(env, NO, [&] {
    return ToJava(Calibration::OpenNativeStereoCamera(id, leftIndex, rightIndex, width, height, fps));
  });
}

// Closes the left camera only, as it always has: the right one stays open until the calibrator is deleted.
EXPORT(void, nCloseStereoNativeCamera)(JNIEnv* env, jclass, jint id) {
  jni::AtBorder(env, [&] { Calibration::CloseNativeCamera(id); });
}

EXPORT(jboolean, nOpenFFmpegContent)(JNIEnv* env, jclass, jint id, jstring content) {
  return jni::AtBorder(env, NO, [&] {
    return ToJava(Calibration::OpenFFmpegContent(id, jni::Name(env, content, "content")));
  });
}

EXPORT(void, nCloseFFmpegContent)(JNIEnv* env, jclass, jint id) {
  jni::AtBorder(env, [&] { Calibration::CloseFFmpegContent(id); });
}

EXPORT(jboolean, nOpenGstreamerPipe)(JNIEnv* env, jclass, jint id, jstring pipe) {
  return jni::AtBorder(
      env, NO, [&] { return ToJava(Calibration::OpenGstreamerPipe(id, jni::Name(env, pipe, "pipeline"))); });
}

EXPORT(void, nCloseGstreamerPipe)(JNIEnv* env, jclass, jint id) {
  jni::AtBorder(env, [&] { Calibration::CloseGstreamerPipe(id); });
}

// ---- Frames pushed in, preview, listener.

EXPORT(void, nOpenJpegB64FrameGrabber)(JNIEnv* env, jclass, jint id) {
  jni::AtBorder(env, [&] { Calibration::OpenJpegB64FrameGrabber(id); });
}

EXPORT(void, nCloseJpegB64FrameGrabber)(JNIEnv* env, jclass, jint id) {
  jni::AtBorder(env, [&] { Calibration::CloseJpegB64FrameGrabber(id); });
}

EXPORT(void, nNextFrameJpegB64)(JNIEnv* env, jclass, jint id, jstring base64Jpeg, jint tag) {
  jni::AtBorder(env, [&] {
    std::string text = jni::Text(env, base64Jpeg, "picture's text");
    Calibration::NextFrameJpegB64(id, text, tag, env);
  });
}

EXPORT(void, nOpenRGBFrameGrabber)(JNIEnv* env, jclass, jint id) {
  jni::AtBorder(env, [&] { Calibration::OpenRGBFrameGrabber(id); });
}

EXPORT(void, nCloseRGBFrameGrabber)(JNIEnv* env, jclass, jint id) {
  jni::AtBorder(env, [&] { Calibration::CloseRGBFrameGrabber(id); });
}

EXPORT(void, nNextFrame)
(JNIEnv* env, jclass, jint id, jbyteArray data, jint width, jint height, jstring format, jint tag) {
  jni::AtBorder(env, [&] {
    if (data == nullptr) throw jni::BadArgument("The frame's data is null.");
    std::vector<unsigned char> bytes = jni::FromJava(env, data);
    cv::Mat image = DecodeRawFrame(bytes, width, height, jni::Text(env, format, "frame's format"));
    if (!image.empty()) Calibration::NextFrameRGB(id, image, tag, env);
  });
}

EXPORT(void, nOpenPreview)(JNIEnv* env, jclass, jint id) {
  jni::AtBorder(env, [&] { Calibration::OpenPreview(id); });
}

EXPORT(void, nClosePreview)(JNIEnv* env, jclass, jint id) {
  jni::AtBorder(env, [&] { Calibration::ClosePreview(id); });
}

EXPORT(void, nRegisterJavaVM)(JNIEnv* env, jclass, jint id) {
  jni::AtBorder(env, [&] { Calibration::RegisterJavaVM(id, env); });
}

EXPORT(jboolean, nRegisterCalibrationListener)
(JNIEnv* env, jclass, jint id, jobject listener, jboolean sendImage, jint width, jint height) {
  return jni::AtBorder(env, NO, [&] {
    return ToJava(Calibration::RegisterCalibrationListener(id, env, listener, sendImage, width, height));
  });
}

// ---- Services of the process.

EXPORT(void, nDisableConsoleLogger)(JNIEnv* env, jclass) {
  jni::AtBorder(env, [&] { Calibration::DisableConsoleLogger(); });
}

EXPORT(void, nDisableFileLogger)(JNIEnv* env, jclass) {
  jni::AtBorder(env, [&] { Calibration::DisableFileLogger(); });
}

EXPORT(void, nSetLogLevel)(JNIEnv* env, jclass, jint level) {
  jni::AtBorder(env, [&] { Calibration::SetLogLevel(level); });
}

EXPORT(jstring, nGetVersion)(JNIEnv* env, jclass) {
  return TextOf(env, [&] { return Calibration::GetVersion(); });
}

EXPORT(jstring, nGetOpenCVBuildInfo)(JNIEnv* env, jclass) {
  return TextOf(env, [&] { return Calibration::GetOpenCVBuildInfo(); });
}
