/// The native methods of com.velotrix.quiverleaf.sdk.Sessions, which go to calibration sessions by number.
#include <jni.h>

#include "binding/JavaAnswers.h"
#include "binding/JavaArguments.h"
#include "binding/Registry.h"
#include "binding/SessionRegistry.h"
#include "binding/SessionTexts.h"

using namespace velmora;

#define EXPORT(Result, name) \
  extern "C" JNIEXPORT Result JNICALL Java_com_velotrix_quiverleaf_sdk_Sessions_##name

namespace {

using jni::PngOf;
using jni::TextTold;
using jni::Told;

/// As Told, with the session of that number.
template <typename Result, typename Work>
Result With(JNIEnv* env, jint id, Result neutral, Work work) {
  return Told(env, neutral, [&]() -> Result { return work(*SessionRegistry::Instance().Find(id)); });
}

template <typename Work>
jstring TextWith(JNIEnv* env, jint id, Work work) {
  return TextTold(env, [&] { return work(*SessionRegistry::Instance().Find(id)); });
}

jboolean ToJava(bool value) {
  return value ? JNI_TRUE : JNI_FALSE;
}

/// Pixels of 8 bits, row by row, as an image of that many channels.
cv::Mat ImageOf(const std::vector<unsigned char>& pixels, int width, int height, int channels) {
  const bool sensible = width > 0 && height > 0 && (channels == 1 || channels == 3 || channels == 4);
  const auto needed =
      static_cast<size_t>(width) * static_cast<size_t>(height) * static_cast<size_t>(channels);
  if (!sensible || pixels.size() != needed) {
    throw jni::BadArgument("These " + std::to_string(pixels.size()) + " bytes are no image of " +
                           std::to_string(width) + " x " + std::to_string(height) + " pixels with " +
                           std::to_string(channels) + " channels.");
  }
  cv::Mat image(height, width, CV_8UC(channels));
  std::copy(pixels.begin(), pixels.end(), image.data);
  return image;
}

/// Gives the snapshot's images those pixels that are not null; `shapes` has width, height and channels of
/// each.
void AddPixels(JNIEnv* env, jobjectArray pixels, jintArray shapes, SessionSnapshot& snapshot) {
  if (pixels == nullptr) return;
  const std::vector<int> shape = jni::Integers(env, shapes, "shapes of the images");
  const auto cameras = static_cast<size_t>(env->GetArrayLength(pixels));
  if (cameras != snapshot.images.size() || shape.size() != 3 * cameras) {
    throw jni::BadArgument("There are not as many images as cameras.");
  }
  for (size_t i = 0; i < cameras; ++i) {
    const jni::LocalReference<jbyteArray> bytes(
        env, static_cast<jbyteArray>(env->GetObjectArrayElement(pixels, static_cast<jsize>(i))));
    jni::Check(env);
    if (bytes.Get() == nullptr) continue;
    snapshot.images[i].pixels =
        ImageOf(jni::FromJava(env, bytes.Get()), shape[3 * i], shape[3 * i + 1], shape[3 * i + 2]);
  }
}

std::shared_ptr<Calibrator> CalibratorOf(int number) {
  auto calibrator = Registry::Instance().Find(number);
  if (calibrator == nullptr) {
    throw jni::BadArgument("There is no calibrator " + std::to_string(number) + ".");
  }
  return calibrator;
}

/// The picture as it was searched; files may have another size, and are left where they are.
cv::Mat FrameOf(Session& session, const StoredSnapshot& snapshot, size_t camera) {
  if (snapshot.images[camera].kind != StoredImage::Kind::Png) return {};
  return session.LoadImage(snapshot.number, static_cast<int>(camera));
}

/// With frames, as far as the session has them.
GridSnapshot Taken(Session& session, const StoredSnapshot& snapshot) {
  if (!snapshot.fault.empty()) throw std::runtime_error(snapshot.fault);
  GridSnapshot taken = FromStored(snapshot);
  for (size_t i = 0; i < taken.cameras.size(); ++i) taken.cameras[i].frame = FrameOf(session, snapshot, i);
  return taken;
}

}  // namespace

EXPORT(jstring, nFolderOf)(JNIEnv* env, jclass, jstring name) {
  return TextTold(env, [&] { return Session::FolderOf(jni::Name(env, name, "session's name")); });
}

EXPORT(jstring, nFreeFolder)(JNIEnv* env, jclass, jstring name) {
  return TextTold(env, [&] { return Session::FreeFolder(jni::Name(env, name, "session's name")); });
}

EXPORT(jint, nCreate)(JNIEnv* env, jclass, jstring folder, jstring settings) {
  return Told(env, jint{-1}, [&] {
    return SessionRegistry::Instance().Add(
        Session::Create(jni::Name(env, folder, "session's folder"),
                        SettingsFrom(jni::Text(env, settings, "settings' text"))));
  });
}

EXPORT(jint, nOpen)(JNIEnv* env, jclass, jstring folder, jstring expected, jboolean checkImages) {
  return Told(env, jint{-1}, [&] {
    const std::string path = jni::Name(env, folder, "session's folder");
    const SessionOptions options{checkImages != 0};
    return SessionRegistry::Instance().Add(
        expected == nullptr ? Session::Open(path, options)
                            : Session::Open(path, SettingsFrom(jni::FromJava(env, expected)), options));
  });
}

EXPORT(jboolean, nClose)(JNIEnv* env, jclass, jint id) {
  return Told(env, jboolean{JNI_FALSE},
              [&] { return ToJava(SessionRegistry::Instance().Remove(id) != nullptr); });
}

EXPORT(jstring, nDescribe)(JNIEnv* env, jclass, jint id) {
  return TextWith(env, id, [](Session& session) { return AnswerOf(session); });
}

EXPORT(jstring, nPathFor)(JNIEnv* env, jclass, jint id, jstring name) {
  return TextWith(env, id,
                  [&](Session& session) { return session.PathFor(jni::Name(env, name, "file's name")); });
}

EXPORT(jint, nAdd)
(JNIEnv* env, jclass, jint id, jstring snapshot, jobjectArray pixels, jintArray shapes) {
  return With(env, id, jint{-1}, [&](Session& session) {
    SessionSnapshot added = SnapshotFrom(jni::Text(env, snapshot, "snapshot's text"));
    AddPixels(env, pixels, shapes, added);
    return jint{session.Add(added)};
  });
}

EXPORT(jstring, nSnapshots)(JNIEnv* env, jclass, jint id) {
  return TextWith(env, id, [](Session& session) { return AnswerOf(session.Snapshots()); });
}

EXPORT(jstring, nSnapshot)(JNIEnv* env, jclass, jint id, jint number) {
  return TextWith(env, id, [number](Session& session) { return AnswerOf(session.Snapshot(number)); });
}

EXPORT(jbyteArray, nLoadImage)(JNIEnv* env, jclass, jint id, jint number, jint camera) {
  return With(env, id, static_cast<jbyteArray>(nullptr),
              [&](Session& session) { return PngOf(env, session.LoadImage(number, camera)); });
}

EXPORT(jint, nStore)(JNIEnv* env, jclass, jint id, jint calibrator, jint number, jstring name) {
  return With(env, id, jint{-1}, [&](Session& session) {
    SessionSnapshot stored = ToBeStored(CalibratorOf(calibrator)->GetSnapshot(number));
    stored.name = jni::Text(env, name, "snapshot's name");
    return jint{session.Add(stored)};
  });
}

EXPORT(jboolean, nRestore)(JNIEnv* env, jclass, jint id, jint number, jint calibrator) {
  return With(env, id, jboolean{JNI_FALSE}, [&](Session& session) {
    return ToJava(CalibratorOf(calibrator)->AddSnapshot(Taken(session, session.Snapshot(number))));
  });
}

EXPORT(void, nDecide)(JNIEnv* env, jclass, jint id, jint decision, jintArray numbers) {
  using Decide = void (Session::*)(const std::vector<int>&);
  constexpr Decide DECISIONS[] = {&Session::Exclude, &Session::Include, &Session::Remove,
                                  &Session::BringBack};
  With(env, id, 0, [&](Session& session) {
    if (decision < 0 || decision > 3) {
      throw jni::BadArgument("There is no decision " + std::to_string(decision) + ".");
    }
    (session.*DECISIONS[decision])(jni::Integers(env, numbers, "numbers of the snapshots"));
    return 0;
  });
}

EXPORT(jstring, nUndo)(JNIEnv* env, jclass, jint id) {
  return TextWith(env, id, [](Session& session) { return AnswerOf(session.Undo()); });
}

EXPORT(jstring, nRedo)(JNIEnv* env, jclass, jint id) {
  return TextWith(env, id, [](Session& session) { return AnswerOf(session.Redo()); });
}

EXPORT(jboolean, nCanUndo)(JNIEnv* env, jclass, jint id) {
  return With(env, id, jboolean{JNI_FALSE}, [](Session& session) { return ToJava(session.CanUndo()); });
}

EXPORT(jboolean, nCanRedo)(JNIEnv* env, jclass, jint id) {
  return With(env, id, jboolean{JNI_FALSE}, [](Session& session) { return ToJava(session.CanRedo()); });
}

EXPORT(jint, nPurge)(JNIEnv* env, jclass, jint id) {
  return With(env, id, jint{0}, [](Session& session) { return jint{session.Purge()}; });
}

EXPORT(jlong, nBytesTaken)(JNIEnv* env, jclass, jint id) {
  return With(env, id, jlong{0}, [](Session& session) { return static_cast<jlong>(session.BytesTaken()); });
}

EXPORT(jlong, nBytesFree)(JNIEnv* env, jclass, jint id) {
  return With(env, id, jlong{0}, [](Session& session) { return static_cast<jlong>(session.BytesFree()); });
}

EXPORT(jstring, nDiskWarning)(JNIEnv* env, jclass, jint id, jint snapshots) {
  return TextWith(env, id, [snapshots](Session& session) { return session.DiskWarning(snapshots); });
}
