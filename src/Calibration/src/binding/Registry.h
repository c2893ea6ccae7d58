/// The calibrators that are addressed by number.
#pragma once

#include <map>
#include <memory>
#include <mutex>

#include "Calibrator.h"

namespace velmora {

/// Numbers are given in order from 0 and never again. A calibrator that is removed while somebody holds it
/// lives until he lets go. Destroying is safe on any thread: where it would have to wait for the thread that
/// it runs on, another one does it. All functions are thread-safe.
class Registry {
 public:
  /// The one of the process, which never ends: threads of calibrators may outlive everything else.
  static Registry& Instance();

  int Add(std::unique_ptr<Calibrator> calibrator);
  /// Null, with an error line, when there is none of that number.
  std::shared_ptr<Calibrator> Find(int id);
  /// Takes a calibrator out of the registry; null, with an error line, when there is none of that number.
  std::shared_ptr<Calibrator> Remove(int id);

 private:
  std::mutex lock_;
  int nextId_ = 0;
  std::map<int, std::shared_ptr<Calibrator>> calibrators_;
};

}  // namespace velmora
