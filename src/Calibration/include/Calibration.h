/// Calibrators addressed by number, and process-wide services: the engine as one class of static functions.
#pragma once

#include <opencv2/core.hpp>
#include <string>

#include "Export.h"
#include "JavaTypes.h"

/// Owns the calibrators that are created through it. Each function looks its number up and calls the
/// Calibrator function of the same or a similar name, where arguments, results and errors are described; for
/// a number that does not exist it prints an error line and returns the default given here.
///
/// All functions are thread-safe. Calls on different calibrators run side by side. A call keeps its
/// calibrator alive: one that is deleted meanwhile ends with the last call on it. A listener may delete the
/// calibrator that calls it.
class VELMORA_API Calibration {
 public:
  // ---- Lifecycle.

  /// Circles per row, rows, unit (metres), kind, frame width and height as in Calibrator's constructor. The
  /// number of the new calibrator; numbers count from 0 and are never given again. -1, with an error line,
  /// for sizes that are not positive or beyond all use, or a unit that is no number.
  static int NewCalibrator(const int& a, const int& b, const float& c, const int& d, const int& e,
                           const int& f);
  /// Closes its source, ends its grabbers and waits for them. False for a number that does not exist.
  static bool DeleteCalibrator(const int& id);
  static bool exist(const int& id);
  static void ResetCalibrator(const int& id);

  // ---- Detection. False for a number that does not exist.

  /// A frame of OpenCV type `type` at `data`, rows without padding. It is read only: what is drawn goes to a
  /// copy, as does the scaling.
  static bool DetectPattern(const int& id, const int& width, const int& height, const int& type,
                            unsigned char* data);
  static bool DetectPattern(const int& id, cv::Mat& image);
  /// The Base64 text of a JPEG picture; replaced by that of the annotated picture, of this JPEG quality (0 to
  /// 100). A text that is no picture is left as it is, with an error line.
  static bool DetectPattern(const int& id, std::string& base64Jpeg, const int& quality);
  static bool IsDetected(const int& id);
  static void SetFlip(const int& id, const bool& flip);
  static bool GetFlip(const int& id);

  // ---- Assistant. True for every number that exists, whether or not the model could be used.

  static bool StartAssistant(const int& id, const std::string& modelPath);
  static bool StopAssistant(const int& id);
  /// -3 for a number that does not exist.
  static int GetAssistantGoal(const int& id);

  // ---- Snapshots and computations.

  static bool AddPicture(const int& id);
  static bool AddStereoPicture(const int& id);
  /// On a thread of the calibrator's own.
  static void Calibrate(const int& id, const int& model);
  /// At once, from the texts of two result documents.
  static void CalibrateStereo(const int& id, const std::string& left, const std::string& right,
                              const int& model);
  /// -1 for a number that does not exist.
  static int GetStatus(const int& id);
  /// -2 for a number that does not exist.
  static int GetPictureCount(const int& id);
  /// -2.0 for a number that does not exist.
  static float GetError(const int& id);
  /// Empty for a number that does not exist.
  static std::string GetCalibrationJSON(const int& id, const bool& save, const std::string& path);

  // ---- The same with JSON answers: "id", "op" (the operation), "c" ("success" or "error"), "it" (a
  // sentence), "ii" (the status afterwards), "ni" (the number of snapshots). Without the last two for a
  // number that does not exist.

  static std::string AddPicture_QVX(const int& id);
  static std::string AddStereoPicture_QVX(const int& id);
  static std::string Calibrate_QVX(const int& id, const int& model);
  /// On a thread of the calibrator's own.
  static std::string CalibrateStereo_QVX(const int& id, const std::string& left, const std::string& right,
                                         const int& model);
  /// The calibrator's own answer, see Calibrator::GetStatus_QVX.
  static std::string GetStatus_QVX(const int& id);

  // ---- Sources of frames. False for a number that does not exist.

  static bool OpenNativeCamera(const int& id, int index, int width, int height, int fps, int splitMode);
  static void CloseNativeCamera(const int& id);
  static bool OpenNativeStereoCamera(const int& id, int leftIndex, int rightIndex, int width, int height,
                                     int fps);
  static void CloseStereoNativeCamera(const int& id);
  static bool OpenFFmpegContent(const int& id, const std::string& content);
  static void CloseFFmpegContent(const int& id);
  static bool OpenGstreamerPipe(const int& id, const std::string& pipe);
  static void CloseGstreamerPipe(const int& id);

  // ---- Frames pushed in, preview, listener.

  static void OpenJpegB64FrameGrabber(const int& id);
  static void CloseJpegB64FrameGrabber(const int& id);
  static void OpenRGBFrameGrabber(const int& id);
  static void CloseRGBFrameGrabber(const int& id);
  static void NextFrameJpegB64(const int& id, std::string& base64Jpeg, const int& tag, JNIEnv* env);
  static void NextFrameRGB(const int& id, cv::Mat& image, const int& tag, JNIEnv* env);
  static void OpenPreview(const int& id);
  static void ClosePreview(const int& id);
  static void RegisterJavaVM(const int& id, JNIEnv* env);
  static bool RegisterCalibrationListener(const int& id, JNIEnv* env, jobject listener,
                                          unsigned char sendImage, int width, int height);

  // ---- Services of the process.

  /// Sets the verbosity of the log: 0 (silent) to 5 (trace). Any other value sets 3 (information).
  static void SetLogLevel(int level);

  /// Kept for callers of builds that logged through an external library: prints a warning, changes nothing.
  static void DisableConsoleLogger();

  /// Kept for callers of builds that logged through an external library: prints a warning, changes nothing.
  static void DisableFileLogger();

  /// The version of the engine, "5.1.0".
  static std::string GetVersion();

  /// What OpenCV says of its build.
  static std::string GetOpenCVBuildInfo();
};
