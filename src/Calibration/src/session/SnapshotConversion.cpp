/// Snapshots of calibrators as those of sessions, and back.
#include "velmora/Session.h"

namespace velmora {

SessionSnapshot ToBeStored(const GridSnapshot& snapshot) {
  SessionSnapshot stored;
  for (const GridSnapshot::Camera& camera : snapshot.cameras) {
    stored.observations.push_back({camera.centres, camera.weights, camera.deviations, {}});
    stored.images.push_back({camera.frame, {}, false});
  }
  return stored;
}

GridSnapshot FromStored(const StoredSnapshot& snapshot) {
  GridSnapshot taken;
  for (const SessionObservation& observation : snapshot.observations)
    taken.cameras.push_back({observation.centres, observation.weights, observation.deviations, {}});
  return taken;
}

}  // namespace velmora
