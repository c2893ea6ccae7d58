/// The native methods of com.velotrix.quiverleaf.sdk.Results, which compare and check results.
#include <jni.h>

#include "Verdict.h"
#include "binding/JavaAnswers.h"
#include "binding/JavaArguments.h"
#include "binding/ResultTexts.h"

using namespace velmora;

#define EXPORT(Result, name) \
  extern "C" JNIEXPORT Result JNICALL Java_com_velotrix_quiverleaf_sdk_Results_##name

namespace {

/// No disk has part in this: what fails but for arguments is no IOException.
constexpr const char* FAILURE = "java/lang/RuntimeException";

CameraResult ResultOf(JNIEnv* env, jstring text, const char* what) {
  return ResultFrom(jni::Text(env, text, what), what);
}

/// Compared with these results and options, as Java has them.
struct Comparison {
  CameraResult first;
  CameraResult second;
  ResultComparison outcome;
};

Comparison Compared(JNIEnv* env, jstring first, jstring second, jstring options) {
  Comparison comparison{ResultOf(env, first, "first text"), ResultOf(env, second, "second text"), {}};
  comparison.outcome = CompareResults(comparison.first, comparison.second,
                                      ComparisonOptionsFrom(jni::Text(env, options, "options' text")));
  return comparison;
}

}  // namespace

EXPORT(jstring, nCompare)(JNIEnv* env, jclass, jstring first, jstring second, jstring options) {
  return jni::TextTold(
      env, [&] { return AnswerOf(Compared(env, first, second, options).outcome); }, FAILURE);
}

EXPORT(jbyteArray, nDrawComparison)(JNIEnv* env, jclass, jstring first, jstring second, jstring options) {
  return jni::Told(
      env, static_cast<jbyteArray>(nullptr),
      [&] {
        const Comparison comparison = Compared(env, first, second, options);
        return jni::PngOf(env, comparison.outcome.Picture(comparison.first.imageSize));
      },
      FAILURE);
}

EXPORT(jstring, nCheck)(JNIEnv* env, jclass, jstring result, jstring verdict, jstring request) {
  return jni::TextTold(
      env,
      [&] {
        const CameraResult camera = ResultOf(env, result, "text of the result");
        const CalibrationVerdict known = verdict == nullptr
                                             ? CalibrationVerdict()
                                             : CalibrationVerdict::FromJson(jni::FromJava(env, verdict));
        const CheckRequest asked = CheckRequestFrom(jni::Text(env, request, "request's text"));
        return AnswerOf(CheckResult(camera, known, asked.images, asked.options));
      },
      FAILURE);
}
