/// Threads that do things at once.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <exception>
#include <functional>
#include <thread>
#include <utility>
#include <vector>

namespace unit {

/// Threads that start together. What one of them throws is reported as a failure.
class ThreadGroup {
 public:
  void Add(std::function<void()> task) {
    threads_.emplace_back([this, task = std::move(task)] {
      while (!started_) std::this_thread::yield();
      try {
        task();
      } catch (const std::exception& fault) {
        ADD_FAILURE() << "a thread ended with: " << fault.what();
      }
    });
  }
  void RunToTheEnd() {
    started_ = true;
    for (std::thread& thread : threads_) thread.join();
  }

 private:
  std::atomic<bool> started_{false};
  std::vector<std::thread> threads_;
};

}  // namespace unit
