/// Tells whether a thread is one that a calibrator runs for itself.
#pragma once

namespace velmora {

/// Marks the current thread as the owner's until the end of the scope. A calibrator cannot wait for a thread
/// on that thread: whoever destroys calibrators asks here first. The owner is only compared with.
class OwnThread {
 public:
  explicit OwnThread(const void* owner) : earlier_(owner_) { owner_ = owner; }
  ~OwnThread() { owner_ = earlier_; }
  OwnThread(const OwnThread&) = delete;
  OwnThread& operator=(const OwnThread&) = delete;

  static bool Of(const void* owner) { return owner_ == owner; }

 private:
  static inline thread_local const void* owner_ = nullptr;

  const void* const earlier_;
};

}  // namespace velmora
