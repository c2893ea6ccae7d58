/// The window "Preview" of the process and the thread that makes its window calls.
#include "capture/PreviewWindow.h"

#include <cstdlib>
#include <opencv2/highgui.hpp>
#include <system_error>

#include "Display.h"
#include "Log.h"
#include "capture/LogOncePerMessage.h"
#include "foundation/OneLine.h"

namespace velmora {

namespace {

constexpr char TITLE[] = "Preview";
constexpr std::chrono::milliseconds TENDING_INTERVAL{20};
constexpr std::chrono::milliseconds PATIENCE_AT_EXIT{1000};
constexpr std::chrono::milliseconds PATIENCE_AT_OPENING{5000};

class DesktopBackend final : public WindowBackend {
 public:
  bool IsDisplayAvailable(std::string& reason) override { return DisplayAvailable(&reason); }

  void Create() override {
    EndThreadBeforeLibrary();  // an exit while the library sets itself up waits for that
    OpenPictureWindow(TITLE, cv::Size());
    EndThreadBeforeLibrary();
    shown_ = false;
    tended_ = false;
    large_ = false;
  }

  void Show(const cv::Mat& picture) override {
    if (!large_ && !FitsAScreen(picture.size())) {
      cv::destroyWindow(TITLE);
      OpenPictureWindow(TITLE, picture.size());
      large_ = true;
      shown_ = false;
    }
    cv::imshow(TITLE, picture);
    if (!shown_) EndThreadBeforeLibrary();
    shown_ = true;
  }

  void PumpEvents() override {
    cv::waitKey(1);
    if (!tended_) EndThreadBeforeLibrary();
    tended_ = true;
  }

  void Destroy() override { cv::destroyWindow(TITLE); }

 private:
  /// What was registered last is run first, so this comes each time the library has set something up.
  static void EndThreadBeforeLibrary() {
    std::atexit([] { PreviewWindow::Instance().End(PATIENCE_AT_EXIT); });
  }

  // The state of the open window.
  bool shown_ = false;
  bool tended_ = false;
  bool large_ = false;  ///< it shows pictures scaled down
};

}  // namespace

PreviewWindow::PreviewWindow(std::unique_ptr<WindowBackend> backend) : backend_(std::move(backend)) {
}

PreviewWindow::~PreviewWindow() {
  End(std::chrono::hours(1));
}

PreviewWindow& PreviewWindow::Instance() {
  // Never destroyed: its thread may be stuck in a window call when the process exits.
  static PreviewWindow* const window = new PreviewWindow(std::make_unique<DesktopBackend>());
  return *window;
}

void PreviewWindow::End(std::chrono::milliseconds patience) {
  std::unique_lock<std::mutex> lock(lock_);
  ending_ = true;
  changed_.notify_all();
  if (!thread_.joinable() || thread_.get_id() == std::this_thread::get_id()) return;
  const bool ended = changed_.wait_for(lock, patience, [this] { return ended_; });
  std::thread thread = std::move(thread_);
  lock.unlock();
  if (ended) {
    thread.join();
  } else {
    thread.detach();
  }
}

bool PreviewWindow::Open(const void* owner, std::string& reason) {
  std::unique_lock<std::mutex> lock(lock_);
  if (!thread_.joinable()) {
    lock.unlock();  // the question may take seconds
    if (!backend_->IsDisplayAvailable(reason)) return false;
    lock.lock();
    if (!thread_.joinable() && !StartThread(reason)) return false;
  }
  owners_.insert(owner);
  changed_.notify_all();
  AwaitFirstWindow(lock, owner);
  return true;
}

/// The window library must not be setting itself up while the process exits: it would use what the exit takes
/// away. So nobody who opened the first window goes on before that is over.
void PreviewWindow::AwaitFirstWindow(std::unique_lock<std::mutex>& lock, const void* owner) {
  const auto isOver = [&] { return settled_ || ended_ || ending_ || owners_.count(owner) == 0; };
  if (!changed_.wait_for(lock, PATIENCE_AT_OPENING, isOver)) settled_ = true;  // stuck: not waited for again
}

bool PreviewWindow::StartThread(std::string& reason) {
  if (ending_) {
    reason = "The process is exiting.";
    return false;
  }
  try {
    thread_ = std::thread(&PreviewWindow::Run, this);
    return true;
  } catch (const std::system_error& fault) {
    reason = std::string("No thread for the window: ") + fault.what() + ".";
    return false;
  }
}

void PreviewWindow::Close(const void* owner) {
  const std::lock_guard<std::mutex> lock(lock_);
  owners_.erase(owner);
  if (pendingOf_ == owner) pending_.release();
  changed_.notify_all();
}

void PreviewWindow::Show(const void* owner, const cv::Mat& picture) {
  const std::lock_guard<std::mutex> lock(lock_);
  if (owners_.count(owner) == 0) return;
  pending_ = picture;
  pendingOf_ = owner;
  changed_.notify_all();
}

void PreviewWindow::Run() {
  bool exists = false;
  LogOncePerMessage reported;
  std::unique_lock<std::mutex> lock(lock_);
  while (!ending_) {
    const bool wanted = !owners_.empty();
    const cv::Mat picture = pending_;
    pending_.release();
    lock.unlock();
    try {
      Draw(wanted, picture, exists);
    } catch (const std::exception& fault) {
      if (reported.IsNew(fault.what())) Log::error("The preview failed: %s", OneLine(fault.what()).c_str());
    }
    lock.lock();
    if (exists && !settled_) {
      settled_ = true;
      changed_.notify_all();
    }
    AwaitWork(lock, exists);
  }
  ended_ = true;
  changed_.notify_all();
}

/// `exists` tells whether the window was asked for, so that a call that fails is not made over and over.
void PreviewWindow::Draw(bool wanted, const cv::Mat& picture, bool& exists) {
  if (wanted != exists) {
    exists = wanted;
    if (wanted) {
      backend_->Create();
    } else {
      backend_->Destroy();
    }
  }
  if (wanted && !picture.empty()) backend_->Show(picture);
  backend_->PumpEvents();
}

void PreviewWindow::AwaitWork(std::unique_lock<std::mutex>& lock, bool exists) {
  const auto work = [&] { return ending_ || !pending_.empty() || owners_.empty() == exists; };
  if (exists) {
    changed_.wait_for(lock, TENDING_INTERVAL, work);
  } else {
    changed_.wait(lock, work);
  }
}

}  // namespace velmora
