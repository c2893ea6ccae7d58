/// The window "Preview" of the process and the thread that makes its window calls.
#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <opencv2/core.hpp>
#include <set>
#include <string>
#include <thread>

namespace velmora {

/// The calls of the window library. All but IsDisplayAvailable are made on one thread.
class WindowBackend {
 public:
  virtual ~WindowBackend() = default;
  /// When it does not, one sentence for the user. Any thread.
  virtual bool IsDisplayAvailable(std::string& reason) = 0;
  virtual void Create() = 0;
  virtual void Show(const cv::Mat& picture) = 0;
  /// Lets the window take in what happened to it.
  virtual void PumpEvents() = 0;
  virtual void Destroy() = 0;
};

/// One window that all who want it share: it exists while somebody does, and shows the newest picture of any
/// of them. Window calls must all come from the same thread, so they are made on one of the window's own,
/// started when it is first needed. All functions are thread-safe, and none waits for a window call but the
/// first Open.
class PreviewWindow {
 public:
  explicit PreviewWindow(std::unique_ptr<WindowBackend> backend);
  /// Ends the thread and waits for it.
  ~PreviewWindow();
  PreviewWindow(const PreviewWindow&) = delete;
  PreviewWindow& operator=(const PreviewWindow&) = delete;

  /// The process's window on the desktop. Its thread ends when the process exits.
  static PreviewWindow& Instance();

  /// Makes the owner want the window. False, with one sentence for the user, when there can be none. The
  /// first time it returns when the window is there, or after five seconds: a process that exits while the
  /// window library sets itself up crashes.
  bool Open(const void* owner, std::string& reason);
  void Close(const void* owner);
  /// Replaces a picture not shown yet. Nobody may write into the picture afterwards. Nothing happens when the
  /// owner does not want the window.
  void Show(const void* owner, const cv::Mat& picture);

  /// Ends the thread, which is not started again. One that is stuck in a window call for longer than
  /// `patience` is left behind.
  void End(std::chrono::milliseconds patience);

 private:
  bool StartThread(std::string& reason);
  void AwaitFirstWindow(std::unique_lock<std::mutex>& lock, const void* owner);
  void Run();
  void Draw(bool wanted, const cv::Mat& picture, bool& exists);
  void AwaitWork(std::unique_lock<std::mutex>& lock, bool exists);

  const std::unique_ptr<WindowBackend> backend_;
  std::mutex lock_;  ///< guards everything below
  std::condition_variable changed_;
  std::set<const void*> owners_;
  cv::Mat pending_;                  ///< empty when everything is shown
  const void* pendingOf_ = nullptr;  ///< whose picture it is
  bool settled_ = false;             ///< the first window was made, or failed, or is not waited for any more
  bool ending_ = false;
  bool ended_ = false;
  std::thread thread_;
};

}  // namespace velmora
