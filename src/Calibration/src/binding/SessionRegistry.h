/// The calibration sessions that are addressed by number.
#pragma once

#include <map>
#include <memory>
#include <mutex>

#include "velmora/Session.h"

namespace velmora {

/// Numbers are given in order from 0 and never again. A session that is removed while somebody holds it stays
/// open until he lets go. All functions are thread-safe.
class SessionRegistry {
 public:
  /// The one of the process, which never ends.
  static SessionRegistry& Instance();

  int Add(std::unique_ptr<Session> session);
  /// Raises std::invalid_argument when there is none of that number.
  std::shared_ptr<Session> Find(int id) const;
  /// Takes a session out of the registry; null when there is none of that number.
  std::shared_ptr<Session> Remove(int id);

 private:
  mutable std::mutex lock_;
  int nextId_ = 0;
  std::map<int, std::shared_ptr<Session>> sessions_;
};

}  // namespace velmora
