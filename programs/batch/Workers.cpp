/// Threads that do pieces of work.
#include "batch/Workers.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace batch {

Workers::Workers(size_t threads) : most_(std::max<size_t>(threads, 1)) {
  threads_.reserve(most_);
}

Workers::~Workers() {
  {
    const std::lock_guard<std::mutex> lock(lock_);
    ending_ = true;
    waiting_.clear();
  }
  begun_.notify_all();
  for (std::thread& thread : threads_) thread.join();
}

void Workers::Begin(Task& task, std::function<void()> work) {
  task.work_ = std::move(work);
  try {
    if (threads_.size() < most_) threads_.emplace_back([this] { Serve(); });
  } catch (const std::system_error&) {
    // The system starts no more threads: those that there are do the work.
    if (threads_.empty()) {
      Do(task);
      task.done_ = true;
      return;
    }
  }
  {
    const std::lock_guard<std::mutex> lock(lock_);
    waiting_.push_back(&task);
  }
  begun_.notify_one();
}

bool Workers::IsDone(const Task& task) const {
  const std::lock_guard<std::mutex> lock(lock_);
  return task.done_;
}

void Workers::Finish(Task& task) {
  {
    std::unique_lock<std::mutex> lock(lock_);
    done_.wait(lock, [&] { return task.done_; });
  }
  if (task.fault_) std::rethrow_exception(std::exchange(task.fault_, nullptr));
}

void Workers::Serve() {
  std::unique_lock<std::mutex> lock(lock_);
  while (true) {
    begun_.wait(lock, [this] { return ending_ || !waiting_.empty(); });
    if (ending_) return;
    Task& task = *waiting_.front();
    waiting_.pop_front();
    lock.unlock();
    Do(task);
    lock.lock();
    task.done_ = true;
    done_.notify_one();
  }
}

void Workers::Do(Task& task) {
  try {
    task.work_();
  } catch (...) {
    task.fault_ = std::current_exception();
  }
}

}  // namespace batch
