/// The calibrators that are addressed by number.
#include "binding/Registry.h"

#include <system_error>
#include <thread>
#include <utility>

#include "Log.h"
#include "calibrator/OwnThread.h"

namespace velmora {

namespace {

void Destroy(Calibrator* calibrator) {
  std::unique_ptr<Calibrator> owned(calibrator);
  if (calibrator == nullptr || !OwnThread::Of(calibrator)) return;
  try {
    // The destructor waits for this very thread.
    std::thread([ended = std::move(owned)]() mutable { ended.reset(); }).detach();
  } catch (const std::system_error& fault) {
    Log::error("A calibrator stays behind: %s", fault.what());
    static_cast<void>(owned.release());
  }
}

void ReportMissing(int id) {
  Log::error("Element %d does not exist.", id);
}

}  // namespace

Registry& Registry::Instance() {
  static auto* const registry = new Registry;
  return *registry;
}

int Registry::Add(std::unique_ptr<Calibrator> calibrator) {
  std::shared_ptr<Calibrator> shared(calibrator.release(), Destroy);
  const std::lock_guard<std::mutex> lock(lock_);
  const int id = nextId_++;
  calibrators_.emplace(id, std::move(shared));
  return id;
}

std::shared_ptr<Calibrator> Registry::Find(int id) {
  {
    const std::lock_guard<std::mutex> lock(lock_);
    const auto found = calibrators_.find(id);
    if (found != calibrators_.end()) return found->second;
  }
  ReportMissing(id);
  return nullptr;
}

std::shared_ptr<Calibrator> Registry::Remove(int id) {
  {
    const std::lock_guard<std::mutex> lock(lock_);
    const auto found = calibrators_.find(id);
    if (found != calibrators_.end()) {
      std::shared_ptr<Calibrator> removed = std::move(found->second);
      calibrators_.erase(found);
      return removed;
    }
  }
  ReportMissing(id);
  return nullptr;
}

}  // namespace velmora
