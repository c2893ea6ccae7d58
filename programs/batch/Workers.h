/// Threads that do pieces of work.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace batch {

/// Does tasks in the order in which they were begun, as many at a time as there are threads. A thread is
/// started when there is a task for it. All functions are called by one thread, that of the owner.
class Workers {
 public:
  /// A piece of work and its end. It stays where it is until it is done, or its workers are gone.
  class Task {
   public:
    Task() = default;
    Task(const Task&) = delete;
    Task& operator=(const Task&) = delete;

   private:
    friend class Workers;

    std::function<void()> work_;
    std::exception_ptr fault_;
    bool done_ = false;  ///< under the workers' lock, as long as these have the task
  };

  /// At least one thread.
  explicit Workers(size_t threads);
  /// Waits for the tasks under way; those that no thread has taken up are left undone.
  ~Workers();
  Workers(const Workers&) = delete;
  Workers& operator=(const Workers&) = delete;

  /// Where the system starts no thread at all, the work is done before this returns.
  void Begin(Task& task, std::function<void()> work);
  bool IsDone(const Task& task) const;
  /// Waits for a task that was begun, and raises what its work raised.
  void Finish(Task& task);

 private:
  void Serve();
  static void Do(Task& task);

  const size_t most_;
  mutable std::mutex lock_;  ///< of all below but the threads; never held during work
  std::condition_variable begun_;
  std::condition_variable done_;
  std::deque<Task*> waiting_;
  bool ending_ = false;
  std::vector<std::thread> threads_;
};

}  // namespace batch
