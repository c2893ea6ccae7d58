/// The images that a session has seen, by their content.
#include "batch/KnownImages.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

namespace batch {

namespace {

/// Empty when there is none: what cannot be read, a pipe, which gives its content once.
std::string KeyOf(const std::string& file) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error)) return "";
  try {
    return velmora::Session::ContentKey(file);
  } catch (const std::runtime_error&) {
    return "";
  }
}

}  // namespace

GridView ViewOf(const velmora::SessionObservation& observation) {
  GridView view{observation.centres, observation.weights, observation.deviations};
  if (view.weights.empty()) view.weights.assign(view.points.size(), 1.0);
  return view;
}

KnownImages::KnownImages(const std::vector<velmora::StoredSnapshot>& snapshots, const SearchLog& log) {
  std::map<std::string, GridView> views;
  for (const velmora::StoredSnapshot& snapshot : snapshots) {
    if (!snapshot.fault.empty()) continue;
    for (size_t i = 0; i < snapshot.origins.size(); ++i) {
      const velmora::SessionObservation& seen = snapshot.observations[i];
      if (!seen.centres.empty()) views[snapshot.origins[i]] = ViewOf(seen);
    }
  }
  for (const LoggedMoment& moment : log.Moments()) {
    for (const LoggedImage& image : moment) {
      if (image.origin.empty()) continue;
      SearchOutcome outcome;
      outcome.fault = image.fault;
      outcome.size = image.size;
      if (image.fault.empty()) {
        const auto view = views.find(image.origin);
        if (view == views.end()) continue;  // the end came between the log and the snapshot
        outcome.view = view->second;
      }
      outcomes_[image.origin] = outcome;
    }
  }
}

std::optional<SearchOutcome> KnownImages::Find(const std::string& origin) const {
  const auto known = outcomes_.find(origin);
  return origin.empty() || known == outcomes_.end() ? std::nullopt
                                                    : std::optional<SearchOutcome>(known->second);
}

UnmatchedSnapshots::UnmatchedSnapshots(const std::vector<velmora::StoredSnapshot>& snapshots) {
  for (auto snapshot = snapshots.rbegin(); snapshot != snapshots.rend(); ++snapshot) {
    if (snapshot->fault.empty()) numbers_[snapshot->origins].push_back(snapshot->number);
  }
}

int UnmatchedSnapshots::Take(const std::vector<std::string>& origins) {
  const bool none =
      std::all_of(origins.begin(), origins.end(), [](const std::string& origin) { return origin.empty(); });
  const auto found = numbers_.find(origins);
  if (none || found == numbers_.end() || found->second.empty()) return 0;
  const int number = found->second.back();
  found->second.pop_back();
  return number;
}

void ImageOrigins::NoteFiles(std::vector<NamedImage>& inputs) {
  for (NamedImage& input : inputs) {
    if (input.frame < 0 && !input.file.empty()) input.origin = KeyOf(input.file);
  }
}

void ImageOrigins::NoteFrames(std::vector<NamedImage>& inputs) {
  for (NamedImage& input : inputs) {
    if (input.frame < 0 || input.file.empty()) continue;
    auto video = videos_.find(input.file);
    if (video == videos_.end()) video = videos_.emplace(input.file, KeyOf(input.file)).first;
    if (!video->second.empty()) input.origin = video->second + "#" + std::to_string(input.frame);
  }
}

}  // namespace batch
