/// Runs computations on threads of their own, and waits for them.
#include "calibrator/BackgroundTasks.h"

#include <system_error>
#include <thread>

#include "Log.h"
#include "foundation/OneLine.h"

namespace velmora {

void BackgroundTasks::Run(const char* name, std::function<void()> task, const std::function<void()>& ended) {
  {
    const std::lock_guard<std::mutex> lock(lock_);
    ++tasks_;
  }
  try {
    std::thread([this, name, task = std::move(task), ended] {
      try {
        task();
      } catch (const std::exception& fault) {
        Log::error("%s failed: %s", name, OneLine(fault.what()).c_str());
      } catch (...) {  // a progress listener may throw anything
        Log::error("%s failed.", name);
      }
      Finish(ended);
    }).detach();
  } catch (const std::system_error& fault) {
    Log::error("%s failed: %s", name, fault.what());
    Finish(ended);
  }
}

void BackgroundTasks::Finish(const std::function<void()>& ended) {
  ended();
  // Notified under the lock: whoever waits may end this object as soon as the lock is free.
  const std::lock_guard<std::mutex> lock(lock_);
  --tasks_;
  done_.notify_all();
}

bool BackgroundTasks::Busy() const {
  const std::lock_guard<std::mutex> lock(lock_);
  return tasks_ > 0;
}

void BackgroundTasks::AwaitAll() {
  std::unique_lock<std::mutex> lock(lock_);
  done_.wait(lock, [this] { return tasks_ == 0; });
}

}  // namespace velmora
