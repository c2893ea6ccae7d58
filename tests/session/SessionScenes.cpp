/// Sessions for tests: settings, snapshots that differ, and whether two are the same.
#include "session/SessionScenes.h"

#include <algorithm>
#include <filesystem>
#include <random>

namespace unit {

using namespace velmora;

SessionSettings SettingsOfCameras(size_t cameras) {
  SessionSettings settings;
  settings.grid = {4, 3};
  settings.unit = 0.02;
  for (size_t i = 0; i < cameras; ++i) settings.imageSizes.emplace_back(40 + 10 * static_cast<int>(i), 30);
  settings.lensModel = "auto";
  settings.finder = "robust";
  settings.solver = "sparse";
  settings.discRadius = 0.0075;
  settings.sheetShape = "flat";
  settings.fineCentres = true;
  settings.source = "cam:0 --split vertical";
  return settings;
}

SessionSnapshot SnapshotOfSeed(int seed, const SessionSettings& settings) {
  std::mt19937 random(static_cast<unsigned>(seed));
  std::uniform_real_distribution<double> number(0.0, 1.0);
  SessionSnapshot snapshot;
  for (size_t i = 0; i < settings.imageSizes.size(); ++i) {
    SessionObservation seen;
    const bool blind = i > 0 && seed % 3 == 0;
    for (int point = 0; !blind && point < settings.grid.area(); ++point) {
      seen.centres.emplace_back(40.0 * number(random), 30.0 * number(random));
      seen.weights.push_back(point % 5 == 0 ? 0.0 : 1.0);
      seen.deviations.push_back(0.01 * number(random));
      seen.radii.push_back(3.0 + number(random));
    }
    snapshot.observations.push_back(seen);
    cv::Mat noise(settings.imageSizes[i], seed % 2 == 0 ? CV_8UC3 : CV_8UC1);
    cv::RNG generator(static_cast<std::uint64_t>(seed) * 97 + i);
    generator.fill(noise, cv::RNG::UNIFORM, 0, 256);
    SessionImage image;
    image.pixels = noise;
    snapshot.images.push_back(image);
  }
  snapshot.name = "view" + std::to_string(seed) + ".png";
  for (size_t i = 0; i < snapshot.images.size() && seed % 4 != 0; ++i) {
    snapshot.origins.push_back("image " + std::to_string(seed) + " of camera " + std::to_string(i));
  }
  snapshot.takenAt = "2026-05-04T12:30:" + std::to_string(10 + seed % 50) + ".250Z";
  if (seed % 2 == 1) snapshot.score = number(random);
  return snapshot;
}

namespace {

bool SameObservations(const std::vector<SessionObservation>& a, const std::vector<SessionObservation>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto& first, const auto& second) {
    return first.centres == second.centres && first.weights == second.weights &&
           first.deviations == second.deviations && first.radii == second.radii;
  });
}

bool SameImages(const std::vector<StoredImage>& a, const std::vector<StoredImage>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto& first, const auto& second) {
    return first.kind == second.kind && first.source == second.source && first.bytes == second.bytes &&
           first.hash == second.hash && first.fault == second.fault;
  });
}

}  // namespace

::testing::AssertionResult Holds(const Session& session, int number, const SessionSnapshot& given) {
  const StoredSnapshot stored = session.Snapshot(number);
  if (!stored.fault.empty()) return ::testing::AssertionFailure() << number << ": " << stored.fault;
  if (!SameObservations(stored.observations, given.observations)) {
    return ::testing::AssertionFailure() << number << " has other observations";
  }
  if (stored.name != given.name || stored.takenAt != given.takenAt || stored.score != given.score) {
    return ::testing::AssertionFailure() << number << " is " << stored.name << " of " << stored.takenAt;
  }
  if (!given.origins.empty() && stored.origins != given.origins) {
    return ::testing::AssertionFailure() << number << " has other origins";
  }
  for (size_t i = 0; i < given.images.size(); ++i) {
    const cv::Mat image = session.LoadImage(number, static_cast<int>(i));
    const cv::Mat& pixels = given.images[i].pixels;
    if (image.size() != pixels.size() || image.type() != pixels.type() ||
        cv::norm(image, pixels, cv::NORM_INF) > 0.0) {
      return ::testing::AssertionFailure() << number << " has another image of camera " << i;
    }
  }
  return ::testing::AssertionSuccess();
}

::testing::AssertionResult Same(const StoredSnapshot& actual, const StoredSnapshot& expected) {
  if (actual.number == expected.number && SameObservations(actual.observations, expected.observations) &&
      SameImages(actual.images, expected.images) && actual.name == expected.name &&
      actual.takenAt == expected.takenAt && actual.score == expected.score &&
      actual.origins == expected.origins && actual.decision == expected.decision &&
      actual.fault == expected.fault) {
    return ::testing::AssertionSuccess();
  }
  return ::testing::AssertionFailure()
         << "snapshot " << actual.number << " (" << actual.name << ", decision "
         << static_cast<int>(actual.decision) << ", " << actual.fault << ") differs from " << expected.number
         << " (" << expected.name << ", decision " << static_cast<int>(expected.decision) << ")";
}

::testing::AssertionResult Same(const std::vector<StoredSnapshot>& actual,
                                const std::vector<StoredSnapshot>& expected) {
  if (actual.size() != expected.size()) {
    return ::testing::AssertionFailure() << actual.size() << " snapshots, not " << expected.size();
  }
  for (size_t i = 0; i < actual.size(); ++i) {
    if (const auto same = Same(actual[i], expected[i]); !same) return same;
  }
  return ::testing::AssertionSuccess();
}

std::vector<std::string> NamesIn(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace unit
