/// Runs computations on threads of their own, and waits for them.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>

namespace velmora {

/// Thread-safe. The destructor waits for all tasks; it must not be called by one of them.
class BackgroundTasks {
 public:
  BackgroundTasks() = default;
  ~BackgroundTasks() { AwaitAll(); }
  BackgroundTasks(const BackgroundTasks&) = delete;
  BackgroundTasks& operator=(const BackgroundTasks&) = delete;

  /// Runs `task` on a thread of its own and then `ended` there, also when the task throws, which is logged
  /// with the name; without a thread to be had `ended` is called at once. `ended` throws nothing.
  void Run(const char* name, std::function<void()> task, const std::function<void()>& ended);
  /// True from a Run until its `ended` has returned.
  bool Busy() const;
  void AwaitAll();

 private:
  void Finish(const std::function<void()>& ended);

  mutable std::mutex lock_;
  std::condition_variable done_;
  int tasks_ = 0;
};

}  // namespace velmora
