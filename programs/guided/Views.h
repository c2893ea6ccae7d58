/// The views of a guided calibration.
#pragma once

#include <string>
#include <vector>

#include "guided/Collector.h"
#include "guided/Outcome.h"
#include "velmora/Guide.h"
#include "velmora/Session.h"

namespace guided {

/// Keeps what is taken in the engine, on the disk and in the guide, which agree after every call. Used by one
/// thread.
class Views {
 public:
  Views(Collector& collector, velmora::Session& session, velmora::Guide& guide)
      : collector_(collector), session_(session), guide_(guide) {}

  /// Takes up what the session holds; what reached a target counts for it.
  void Resume();

  /// Keeps what the collector's last search saw, on the disk when this returns. A view of the guide's target
  /// leads to the next one. Why it could not be kept, as a sentence, or an empty text; nothing is kept then.
  std::string Keep(bool reachesTarget);

  /// Takes the last step back: a view that was taken, or having begun again. When there is none since the
  /// session was opened, takes back the last view of an earlier time. In words what came of it, without a
  /// full stop.
  std::string TakeBack();
  bool CanTakeBack() const { return !all_.empty() || steps_ > 0; }

  /// Sets all views aside, and asks for all targets again. Why that could not be done, as a sentence, or an
  /// empty text; all is as before then.
  std::string BeginAgain();

  /// Those that computations take, in the order of taking.
  const std::vector<NamedSnapshot>& All() const { return all_; }
  size_t Count() const { return all_.size(); }

 private:
  std::string NameOfNext(bool reachesTarget) const;
  std::string UndoStep();
  std::string RemoveEarlier();
  void ForgetLast();

  Collector& collector_;
  velmora::Session& session_;
  velmora::Guide& guide_;
  std::vector<NamedSnapshot> all_;
  /// How many of the session's last steps are views that were taken, or beginnings. Below them are views of
  /// an earlier time that were taken back, which no further taking back brings back.
  int steps_ = 0;
};

}  // namespace guided
