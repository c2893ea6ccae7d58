/// A frame pushed by a Java program, with the answer handed to its listener, beside the same work called from
/// C++.
#include <jni.h>

#include <cstdlib>
#include <iostream>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "Calibrator.h"
#include "Frames.h"
#include "Ratio.h"
#include "base64.h"

namespace {

const cv::Size GRID(4, 11);
const cv::Size PROCESSING(640, 480);

/// The thread that starts the virtual machine; it ends with the process.
JNIEnv* Environment() {
  static JNIEnv* env = [] {
    std::string classPath = "-Djava.class.path=" VELMORA_CLASS_PATH;
    JavaVMOption options[] = {{classPath.data(), nullptr}};
    JavaVMInitArgs arguments{};
    arguments.version = JNI_VERSION_1_6;
    arguments.nOptions = 1;
    arguments.options = options;
    JavaVM* machine = nullptr;
    void* made = nullptr;
    if (JNI_CreateJavaVM(&machine, &made, &arguments) != JNI_OK) {
      std::cerr << "cannot start a Java virtual machine\n";
      std::exit(1);
    }
    return static_cast<JNIEnv*>(made);
  }();
  return env;
}

std::string Base64Of(const cv::Mat& image) {
  std::vector<unsigned char> bytes;
  cv::imencode(".jpg", image, bytes, {cv::IMWRITE_JPEG_QUALITY, 90});
  return base64_encode(bytes.data(), static_cast<unsigned>(bytes.size()));
}

/// I420's planes of colour, mixed.
std::vector<unsigned char> Nv21Of(const cv::Mat& image) {
  cv::Mat planes;
  cv::cvtColor(image, planes, cv::COLOR_BGR2YUV_I420);
  std::vector<unsigned char> data(planes.begin<unsigned char>(), planes.end<unsigned char>());
  const size_t luminance = image.total();
  const std::vector<unsigned char> colours(data.begin() + static_cast<std::ptrdiff_t>(luminance), data.end());
  for (size_t i = 0; i < colours.size() / 2; ++i) {
    data[luminance + 2 * i] = colours[colours.size() / 2 + i];
    data[luminance + 2 * i + 1] = colours[i];
  }
  return data;
}

/// The Java program; what it throws ends the benchmark.
class Program {
 public:
  Program(const std::string& base64, const std::vector<unsigned char>& nv21)
      : type_(env_->FindClass("com/velotrix/quiverleaf/sdk/PushedFrames")) {
    Check();
    const auto length = static_cast<jsize>(nv21.size());
    const jbyteArray bytes = env_->NewByteArray(length);
    env_->SetByteArrayRegion(bytes, 0, length, reinterpret_cast<const jbyte*>(nv21.data()));
    object_ = env_->NewObject(type_, env_->GetMethodID(type_, "<init>", "(Ljava/lang/String;[B)V"),
                              env_->NewStringUTF(base64.c_str()), bytes);
    Check();
  }

  void Call(const char* method) {
    env_->CallVoidMethod(object_, env_->GetMethodID(type_, method, "()V"));
    Check();
  }

  long Received() {
    const jlong received = env_->CallLongMethod(object_, env_->GetMethodID(type_, "received", "()J"));
    Check();
    return static_cast<long>(received);
  }

 private:
  void Check() {
    if (!env_->ExceptionCheck()) return;
    env_->ExceptionDescribe();
    std::exit(1);
  }

  JNIEnv* const env_ = Environment();
  const jclass type_;
  jobject object_ = nullptr;
};

/// The frames and the answers of the benchmark without Java.
class Native {
 public:
  Native() {
    calibrator_.SetFrameListener([this](const std::vector<unsigned char>& jpeg, const std::string&) {
      received_ += jpeg.empty() ? 0 : 1;
    });
  }

  void PushBase64(std::string text) { calibrator_.NextFrameJpegB64(text, 0, nullptr, false); }

  void PushNv21(std::vector<unsigned char> data) {
    cv::Mat bgr;
    cv::cvtColor(cv::Mat(PROCESSING.height * 3 / 2, PROCESSING.width, CV_8UC1, data.data()), bgr,
                 cv::COLOR_YUV2BGR_NV21);
    calibrator_.NextFrameRGB(bgr, 0, nullptr, false);
  }

  /// The number of images handed out.
  long Received() const { return received_; }

 private:
  Calibrator calibrator_{GRID, 0.02F, Calibrator::MONOCULAR, PROCESSING.width, PROCESSING.height};
  long received_ = 0;
};

void FromJava(benchmark::State& state, bool base64) {
  const cv::Mat image = bench::GridFrame(PROCESSING);
  const std::string text = Base64Of(image);
  const std::vector<unsigned char> data = Nv21Of(image);
  Program java(text, data);
  Native native;
  bench::Ratio().Run(
      state, [&] { java.Call(base64 ? "pushBase64" : "pushNv21"); },
      [&] { base64 ? native.PushBase64(text) : native.PushNv21(data); });
  if (native.Received() == 0 || java.Received() != native.Received()) {
    state.SkipWithError("not every frame was answered");
  }
}

}  // namespace

BENCHMARK_CAPTURE(FromJava, base64_640x480, true)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(FromJava, nv21_640x480, false)->UseManualTime()->Unit(benchmark::kMillisecond);
