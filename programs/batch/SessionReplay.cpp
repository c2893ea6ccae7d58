/// What a session holds, as if it were searched.
#include "batch/SessionReplay.h"

#include "batch/KnownImages.h"
#include "common/RigNames.h"

namespace batch {

SessionReplay::SessionReplay(const std::vector<LoggedMoment>& moments, std::vector<cv::Size> frames,
                             bool parts)
    : moments_(moments), frames_(std::move(frames)), parts_(parts) {
  for (const LoggedMoment& moment : moments_) {
    std::vector<std::string> origins;
    std::vector<std::string> names;
    for (const LoggedImage& image : moment) {
      origins.push_back(image.origin);
      names.push_back(image.name);
    }
    byOrigin_.emplace(Key(origins, common::NameTogether(names)), &moment);
  }
}

const LoggedMoment* SessionReplay::LoggedOf(const velmora::StoredSnapshot& snapshot) const {
  const auto logged = byOrigin_.find({snapshot.origins, snapshot.name});
  return logged == byOrigin_.end() || logged->second->size() != frames_.size() ? nullptr : logged->second;
}

SearchOutcome SessionReplay::OutcomeOf(const velmora::StoredSnapshot& snapshot, size_t camera,
                                       const LoggedMoment* logged) const {
  SearchOutcome outcome;
  outcome.size = frames_[camera];
  if (!snapshot.fault.empty()) {
    outcome.fault = "damaged in the session";
  } else if (snapshot.decision != velmora::SnapshotDecision::Used) {
    outcome.fault = "excluded";
  } else if (snapshot.observations[camera].centres.empty()) {
    const bool told = logged != nullptr && !(*logged)[camera].fault.empty();
    outcome.fault = told ? (*logged)[camera].fault : "no grid found";
  } else {
    outcome.view = ViewOf(snapshot.observations[camera]);
    if (parts_ || !outcome.view.IsPart()) return outcome;
    outcome.view = {};
    outcome.fault = "a part of the grid";
  }
  return outcome;
}

SearchedImages SessionReplay::Of(const velmora::StoredSnapshot& snapshot) const {
  SearchedImages images;
  const LoggedMoment* const logged = LoggedOf(snapshot);
  for (size_t i = 0; i < frames_.size(); ++i) {
    NamedImage input;
    input.name = logged != nullptr       ? (*logged)[i].name
                 : snapshot.name.empty() ? "view " + std::to_string(snapshot.number)
                                         : snapshot.name;
    input.snapshot = snapshot.number;
    images.inputs.push_back(input);
    images.outcomes.push_back(OutcomeOf(snapshot, i, logged));
  }
  return images;
}

std::vector<SearchedImages> SessionReplay::WithoutView() const {
  std::vector<SearchedImages> all;
  for (const LoggedMoment& moment : moments_) {
    if (HasView(moment) || moment.size() != frames_.size()) continue;
    SearchedImages& images = all.emplace_back();
    for (size_t i = 0; i < moment.size(); ++i) {
      NamedImage input;
      input.name = moment[i].name;
      SearchOutcome outcome;
      outcome.fault = moment[i].fault;
      if (!moment[i].size.empty()) outcome.size = frames_[i];
      images.inputs.push_back(input);
      images.outcomes.push_back(outcome);
    }
  }
  return all;
}

}  // namespace batch
