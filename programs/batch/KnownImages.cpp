/// The images that a session has seen, by their content.
#include "batch/KnownImages.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <stdexcept>

namespace batch {

namespace {

constexpr size_t HASH_DIGITS = 16;

/// Size in bytes, time of change in nanoseconds, absolute path. Empty for what is no file that can be read
/// again, such as a pipe.
std::string StampOf(const std::string& file) {
  struct stat status {};
  if (stat(file.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return "";
  constexpr long long NANOSECONDS = 1000000000;
  const long long changed = status.st_mtim.tv_sec * NANOSECONDS + status.st_mtim.tv_nsec;
  return std::to_string(status.st_size) + " " + std::to_string(changed) + " " +
         std::filesystem::absolute(file).lexically_normal().string();
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

ImageOrigins::ImageOrigins(const SearchLog& log) {
  for (const LoggedMoment& moment : log.Moments()) {
    for (const LoggedImage& image : moment) {
      if (!image.stamp.empty()) hashes_[image.stamp] = image.origin.substr(0, HASH_DIGITS);
    }
  }
}

ImageOrigins::File ImageOrigins::Look(const std::string& file) const {
  const std::string stamp = StampOf(file);
  if (stamp.empty()) return {};
  const auto known = hashes_.find(stamp);
  if (known != hashes_.end()) return {known->second, stamp};
  try {
    return {velmora::Session::ContentKey(file), stamp};
  } catch (const std::runtime_error&) {
    return {};  // whoever reads the image will say so
  }
}

void ImageOrigins::NoteFiles(std::vector<NamedImage>& inputs) const {
  for (NamedImage& input : inputs) {
    if (input.frame >= 0 || input.file.empty()) continue;
    const File file = Look(input.file);
    input.origin = file.hash;
    input.stamp = file.stamp;
  }
}

void ImageOrigins::NoteFrames(std::vector<NamedImage>& inputs) {
  for (NamedImage& input : inputs) {
    if (input.frame < 0 || input.file.empty()) continue;
    auto video = videos_.find(input.file);
    if (video == videos_.end()) video = videos_.emplace(input.file, Look(input.file)).first;
    if (video->second.hash.empty()) continue;
    input.origin = video->second.hash + "#" + std::to_string(input.frame);
    input.stamp = video->second.stamp;
  }
}

}  // namespace batch
