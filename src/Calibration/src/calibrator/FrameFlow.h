/// Brings frames in, from sources or pushed ones, and hands what was made of them to those who listen.
#pragma once

#include <atomic>
#include <functional>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "JavaTypes.h"
#include "calibrator/FrameListeners.h"
#include "capture/CaptureReader.h"
#include "capture/LatestFrameGrabber.h"
#include "capture/Preview.h"

namespace velmora {

/// What is done with a frame. Called on the thread that brings it, on several at once when there are several.
struct FrameWork {
  /// Searches the grid and draws on what is to be shown.
  std::function<void(CapturedViews& views)> process;
  /// Why a frame cannot be processed, empty when it can: of a source that is said once and not with each
  /// frame.
  std::function<std::string(const cv::Mat& frame)> faultOf;
  /// What listeners are told beside the frame.
  std::function<std::string()> status;
};

/// One source at a time, read on a thread of its own, and the grabbers of pushed frames with theirs; the
/// preview; the listeners. Nothing that happens to one frame ends the flow, and no lock is held while a
/// listener is called. All functions are thread-safe; see Calibrator for what each means. The destructor ends
/// the threads; it must not be called on one of them.
class FrameFlow {
 public:
  /// `owner` marks the threads: see OwnThread.
  FrameFlow(FrameWork work, const void* owner, CaptureReader::NewSource newSource = NewVideoSource);
  ~FrameFlow();
  FrameFlow(const FrameFlow&) = delete;
  FrameFlow& operator=(const FrameFlow&) = delete;

  bool OpenCamera(int index, const FrameFormat& asked, int splitMode);
  bool OpenCameraPair(int leftIndex, int rightIndex, const FrameFormat& asked);
  bool OpenContent(const std::string& content);
  bool OpenPipe(const std::string& pipe);
  void CloseCamera();
  void CloseCameraPair();
  void CloseContent();
  void ClosePipe();
  void CloseSource();
  bool HasSourceEnded() const { return capture_.SourceEnded(); }
  /// Ends source and grabbers, which cannot be opened again, and waits for their threads.
  void End();

  Preview& PreviewOfFrames() { return preview_; }

  void OpenJpegGrabber();
  void CloseJpegGrabber();
  void OpenRgbGrabber();
  void CloseRgbGrabber();
  void SetBypass(bool bypass) { bypass_ = bypass; }
  void PushJpeg(std::string& base64Jpeg, int tag, JNIEnv* env, bool fromGrabber);
  void PushRgb(cv::Mat& image, int tag, JNIEnv* env, bool fromGrabber);

  /// The bodies of the threads; each returns at once on any other thread.
  void ReadSource();
  void GrabJpegs();
  void GrabRgb();

  void SetFrameListener(FrameListener listener);
  void SetSourceEndListener(SourceEndListener listener);
  void KeepJavaMachine(JNIEnv* env);
  /// True when a Java listener is registered now.
  bool SetJavaListener(JNIEnv* env, jobject listener, bool sendImage, const cv::Size& imageSize);
  /// Hands a processed frame, or none, to the listeners; to the Java one only with an environment.
  void Deliver(const cv::Mat& frame, JNIEnv* env);
  void TellJavaListener(JNIEnv* env, const std::vector<unsigned char>& jpeg, const std::string& status);

 private:
  bool ShowSourceIf(bool opened);
  void CloseOne(const CloseMessages& words);
  void ProcessCaptured(CapturedViews& views, JNIEnv* env);
  void ProcessPushed(cv::Mat& frame, JNIEnv* env);
  void RequireProcessable(const cv::Mat& frame) const;
  void TellSourceEnd();

  const FrameWork work_;
  const void* const owner_;
  std::atomic<bool> bypass_{false};
  std::atomic<bool> jpegBusy_{false};
  std::atomic<bool> rgbBusy_{false};
  std::atomic<JavaVM*> javaMachine_{nullptr};
  FrameListeners listeners_;
  Preview preview_;
  // Last, so that their threads end before what they use.
  LatestFrameGrabber<std::string> jpegGrabber_;
  LatestFrameGrabber<cv::Mat> rgbGrabber_;
  CaptureReader capture_;
};

}  // namespace velmora
