/// The native methods of com.velotrix.quiverleaf.sdk.EngineChoices, which go to the calibrators directly.
#include <jni.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <opencv2/imgcodecs.hpp>

#include "binding/JavaArguments.h"
#include "binding/Registry.h"
#include "binding/SnapshotTexts.h"
#include "jni/JavaThread.h"

using namespace velmora;

#define EXPORT(Result, name) \
  extern "C" JNIEXPORT Result JNICALL Java_com_velotrix_quiverleaf_sdk_EngineChoices_##name

namespace {

/// True when there is a calibrator of that number, which the work was done with.
template <typename Work>
jboolean With(JNIEnv* env, jint id, Work work) {
  return jni::AtBorder(env, jboolean{JNI_FALSE}, [&] {
    const auto calibrator = Registry::Instance().Find(id);
    if (calibrator == nullptr) return jboolean{JNI_FALSE};
    work(*calibrator);
    return jboolean{JNI_TRUE};
  });
}

/// What the work says of the calibrator of that number; empty when there is none.
template <typename Work>
jstring TextWith(JNIEnv* env, jint id, Work work) {
  return jni::AtBorder(env, static_cast<jstring>(nullptr), [&] {
    const auto calibrator = Registry::Instance().Find(id);
    return jni::Returned(env, jni::ToJava(env, calibrator == nullptr ? std::string() : work(*calibrator)));
  });
}

/// A java.lang.Runnable, for any thread. The class is one that is never unloaded, so its method stays.
class Task {
 public:
  Task(JNIEnv* env, jobject runnable) : machine_(JavaMachineOf(env)), runnable_(env, runnable) {
    const jni::LocalReference<jclass> type(env, env->FindClass("java/lang/Runnable"));
    jni::Check(env);
    run_ = env->GetMethodID(type.Get(), "run", "()V");
    jni::Check(env);
  }
  /// Throws jni::JavaException for what Java throws.
  void Run() const {
    const JavaThread thread(machine_);
    JNIEnv* const env = thread.Environment();
    if (env == nullptr) return;
    env->CallVoidMethod(runnable_.Get(), run_);
    jni::Check(env);
  }

 private:
  JavaVM* machine_;
  jni::GlobalReference runnable_;
  jmethodID run_ = nullptr;
};

}  // namespace

EXPORT(jboolean, nSetFinder)(JNIEnv* env, jclass, jint id, jint finder) {
  return With(env, id, [&](Calibrator& calibrator) { calibrator.SetFinder(finder); });
}

EXPORT(jboolean, nSetSolver)(JNIEnv* env, jclass, jint id, jint solver) {
  return With(env, id, [&](Calibrator& calibrator) { calibrator.SetSolver(solver); });
}

EXPORT(jboolean, nSetRobust)(JNIEnv* env, jclass, jint id, jboolean robust) {
  return With(env, id, [&](Calibrator& calibrator) { calibrator.SetRobust(robust != 0); });
}

EXPORT(jboolean, nSetSheetShape)(JNIEnv* env, jclass, jint id, jint shape) {
  return With(env, id, [&](Calibrator& calibrator) { calibrator.SetSheetShape(shape); });
}

EXPORT(jboolean, nSetPartialGrids)(JNIEnv* env, jclass, jint id, jboolean partial) {
  return With(env, id, [&](Calibrator& calibrator) { calibrator.SetPartialGrids(partial != 0); });
}

EXPORT(jboolean, nSetFineCentres)(JNIEnv* env, jclass, jint id, jboolean fine) {
  return With(env, id, [&](Calibrator& calibrator) { calibrator.SetFineCentres(fine != 0); });
}

EXPORT(jboolean, nAddSeen)(JNIEnv* env, jclass, jint id) {
  bool added = false;
  With(env, id, [&](Calibrator& calibrator) {
    std::vector<cv::Point2d> seen;
    std::vector<cv::Point2d> right;
    // A calibrator of the other kind refuses.
    added = calibrator.AddSeen(seen) || calibrator.AddSeen(seen, right);
  });
  return added ? JNI_TRUE : JNI_FALSE;
}

EXPORT(jboolean, nHasSeen)(JNIEnv* env, jclass, jint id) {
  bool seen = false;
  With(env, id, [&](Calibrator& calibrator) { seen = calibrator.HasSeen(); });
  return seen ? JNI_TRUE : JNI_FALSE;
}

EXPORT(jboolean, nSetDiscRadius)(JNIEnv* env, jclass, jint id, jdouble radius) {
  return With(env, id, [&](Calibrator& calibrator) { calibrator.SetDiscRadius(radius); });
}

EXPORT(jint, nGetFinder)(JNIEnv* env, jclass, jint id) {
  jint finder = -1;
  With(env, id, [&](Calibrator& calibrator) { finder = calibrator.GetFinder(); });
  return finder;
}

EXPORT(jint, nGetSolver)(JNIEnv* env, jclass, jint id) {
  jint solver = -1;
  With(env, id, [&](Calibrator& calibrator) { solver = calibrator.GetSolver(); });
  return solver;
}

EXPORT(jboolean, nIsComputing)(JNIEnv* env, jclass, jint id) {
  bool computing = false;
  With(env, id, [&](Calibrator& calibrator) { computing = calibrator.IsComputing(); });
  return computing ? JNI_TRUE : JNI_FALSE;
}

EXPORT(jboolean, nHasFailed)(JNIEnv* env, jclass, jint id) {
  bool failed = false;
  With(env, id, [&](Calibrator& calibrator) { failed = calibrator.HasFailed(); });
  return failed ? JNI_TRUE : JNI_FALSE;
}

EXPORT(jboolean, nCloseSource)(JNIEnv* env, jclass, jint id) {
  return With(env, id, [](Calibrator& calibrator) { calibrator.CloseSource(); });
}

EXPORT(jboolean, nHasSourceEnded)(JNIEnv* env, jclass, jint id) {
  bool ended = false;
  With(env, id, [&](Calibrator& calibrator) { ended = calibrator.HasSourceEnded(); });
  return ended ? JNI_TRUE : JNI_FALSE;
}

EXPORT(jboolean, nSetSourceEndListener)(JNIEnv* env, jclass, jint id, jobject listener) {
  return With(env, id, [&](Calibrator& calibrator) {
    if (listener == nullptr) {
      calibrator.SetSourceEndListener({});
    } else {
      const auto task = std::make_shared<const Task>(env, listener);
      calibrator.SetSourceEndListener([task] { task->Run(); });
    }
  });
}

EXPORT(jboolean, nCancelComputation)(JNIEnv* env, jclass, jint id) {
  return With(env, id, [](Calibrator& calibrator) { calibrator.CancelComputation(); });
}

EXPORT(jboolean, nCalibrateFisheye)(JNIEnv* env, jclass, jint id) {
  return With(env, id, [](Calibrator& calibrator) { calibrator.ComputeFisheyeMultithread(); });
}

EXPORT(jstring, nGetFisheyeJSON)(JNIEnv* env, jclass, jint id, jboolean save, jstring path) {
  return jni::AtBorder(env, static_cast<jstring>(nullptr), [&] {
    // Without saving the path does not matter.
    const std::string file = save != 0 ? jni::Name(env, path, "result file's path") : "";
    const auto calibrator = Registry::Instance().Find(id);
    const bool has = calibrator != nullptr && !calibrator->GetFisheye().IsEmpty();
    return jni::Returned(env, jni::ToJava(env, has ? calibrator->SaveFisheye(save != 0, file) : ""));
  });
}

EXPORT(jstring, nWhyNotFound)(JNIEnv* env, jclass, jint id) {
  return TextWith(env, id, [](Calibrator& calibrator) { return calibrator.WhyNotFound(); });
}

EXPORT(jstring, nChooseModel)(JNIEnv* env, jclass, jint id) {
  return TextWith(env, id, [](Calibrator& calibrator) {
    const ModelChoice choice = calibrator.ChooseModel();
    // Fisheyes are computed by the sparse solver alone.
    const bool fisheye = choice.prefersFisheye && calibrator.GetSolver() == Calibrator::SOLVER_SPARSE;
    const std::string name = fisheye ? "fisheye" : ModelChoice::NameOf(choice.model);
    return nlohmann::json{{"model", name}, {"reasons", choice.reasons}}.dump();
  });
}

EXPORT(jdoubleArray, nGetDeviations)(JNIEnv* env, jclass, jint id) {
  return jni::AtBorder(env, static_cast<jdoubleArray>(nullptr), [&] {
    std::vector<double> numbers;
    if (const auto calibrator = Registry::Instance().Find(id)) {
      const FisheyeResult fisheye = calibrator->GetFisheye();
      const cv::Mat deviations = fisheye.IsEmpty() ? calibrator->GetStdDevIntrinsics() : fisheye.stdDevs;
      for (const double number : cv::Mat_<double>(deviations)) numbers.push_back(number);
    }
    return jni::Returned(env, jni::ToJava(env, numbers));
  });
}

EXPORT(jstring, nGetSnapshot)(JNIEnv* env, jclass, jint id, jint number) {
  return TextWith(env, id, [&](Calibrator& calibrator) { return AnswerOf(calibrator.GetSnapshot(number)); });
}

EXPORT(jbyteArray, nGetSnapshotImage)(JNIEnv* env, jclass, jint id, jint number, jint camera) {
  return jni::AtBorder(env, static_cast<jbyteArray>(nullptr), [&] {
    std::vector<unsigned char> png;
    if (const auto calibrator = Registry::Instance().Find(id)) {
      const cv::Mat frame = calibrator->GetSnapshot(number).cameras.at(static_cast<size_t>(camera)).frame;
      if (!frame.empty()) cv::imencode(".png", frame, png);
    }
    return jni::Returned(env, jni::ToJava(env, png));
  });
}

EXPORT(jstring, nGetSnapshotFit)(JNIEnv* env, jclass, jint id, jint number) {
  return TextWith(env, id,
                  [&](Calibrator& calibrator) { return AnswerOf(calibrator.GetSnapshotFit(number)); });
}

EXPORT(jboolean, nAddSnapshot)(JNIEnv* env, jclass, jint id, jstring snapshot) {
  bool added = false;
  With(env, id, [&](Calibrator& calibrator) {
    added = calibrator.AddSnapshot(GridSnapshotFrom(jni::Text(env, snapshot, "snapshot's text")));
  });
  return added ? JNI_TRUE : JNI_FALSE;
}

EXPORT(jboolean, nRemoveSnapshot)(JNIEnv* env, jclass, jint id, jint number) {
  bool removed = false;
  With(env, id, [&](Calibrator& calibrator) { removed = calibrator.RemoveSnapshot(number); });
  return removed ? JNI_TRUE : JNI_FALSE;
}

EXPORT(jstring, nGetVerdict)(JNIEnv* env, jclass, jint id) {
  return TextWith(env, id, [](Calibrator& calibrator) { return calibrator.GetVerdict().ToJson(); });
}
