/// The calibration sessions that are addressed by number.
#include "binding/SessionRegistry.h"

#include <stdexcept>
#include <string>
#include <utility>

namespace velmora {

SessionRegistry& SessionRegistry::Instance() {
  static auto* const registry = new SessionRegistry;
  return *registry;
}

int SessionRegistry::Add(std::unique_ptr<Session> session) {
  const std::lock_guard<std::mutex> lock(lock_);
  const int id = nextId_++;
  sessions_.emplace(id, std::move(session));
  return id;
}

std::shared_ptr<Session> SessionRegistry::Find(int id) const {
  const std::lock_guard<std::mutex> lock(lock_);
  const auto found = sessions_.find(id);
  if (found == sessions_.end())
    throw std::invalid_argument("There is no session " + std::to_string(id) + ".");
  return found->second;
}

std::shared_ptr<Session> SessionRegistry::Remove(int id) {
  const std::lock_guard<std::mutex> lock(lock_);
  const auto found = sessions_.find(id);
  if (found == sessions_.end()) return nullptr;
  std::shared_ptr<Session> removed = std::move(found->second);
  sessions_.erase(found);
  return removed;
}

}  // namespace velmora
