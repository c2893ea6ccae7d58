/// The text of a snapshot's snapshot.json.
#include "session/SnapshotDocument.h"

#include <filesystem>

#include "session/ContentHash.h"
#include "session/JsonFields.h"

namespace velmora {

namespace {

using Kind = StoredImage::Kind;

nlohmann::json JsonOf(const std::vector<cv::Point2d>& centres) {
  nlohmann::json list = nlohmann::json::array();
  for (const cv::Point2d& centre : centres) list.push_back({centre.x, centre.y});
  return list;
}

nlohmann::json JsonOf(const StoredImage& image) {
  if (image.kind == Kind::None) return nullptr;
  nlohmann::json object = {{"bytes", image.bytes}, {"fnv1a64", HexOf(image.hash)}};
  if (image.kind == Kind::Reference) {
    object["path"] = image.path;
  } else {
    object["file"] = std::filesystem::path(image.path).filename().string();
  }
  if (image.kind == Kind::Copy) object["copyOf"] = image.source;
  return object;
}

std::vector<cv::Point2d> CentresOf(const nlohmann::json& camera) {
  std::vector<cv::Point2d> centres;
  for (const auto& [x, y] : FieldOf<std::vector<std::pair<double, double>>>(camera, "centres")) {
    centres.emplace_back(x, y);
  }
  return centres;
}

StoredImage ImageOf(const nlohmann::json& camera, const std::string& folder) {
  StoredImage image;
  const nlohmann::json& object = FieldOf(camera, "image");
  if (object.is_null()) return image;
  image.bytes = FieldOf<std::uint64_t>(object, "bytes");
  const auto hash = FromHex(FieldOf<std::string>(object, "fnv1a64"));
  if (!hash) throw std::runtime_error("has a hash that is none");
  image.hash = *hash;
  if (object.contains("path")) {
    image.kind = Kind::Reference;
    image.path = FieldOf<std::string>(object, "path");
    return image;
  }
  image.kind = object.contains("copyOf") ? Kind::Copy : Kind::Png;
  if (image.kind == Kind::Copy) image.source = FieldOf<std::string>(object, "copyOf");
  const std::filesystem::path name(FieldOf<std::string>(object, "file"));
  if (name.empty() || name.has_parent_path()) throw std::runtime_error("names a file that is not beside it");
  image.path = folder + "/" + name.string();
  return image;
}

}  // namespace

nlohmann::json JsonOf(const StoredSnapshot& snapshot) {
  nlohmann::json cameras = nlohmann::json::array();
  for (size_t i = 0; i < snapshot.observations.size(); ++i) {
    const SessionObservation& seen = snapshot.observations[i];
    cameras.push_back({{"centres", JsonOf(seen.centres)},
                       {"weights", seen.weights},
                       {"deviations", seen.deviations},
                       {"radii", seen.radii},
                       {"image", JsonOf(snapshot.images[i])},
                       {"origin", snapshot.origins[i]}});
  }
  nlohmann::json score;
  if (snapshot.score) score = *snapshot.score;
  return {{"name", snapshot.name}, {"takenAt", snapshot.takenAt}, {"score", score}, {"cameras", cameras}};
}

std::string TextOf(const StoredSnapshot& snapshot) {
  return JsonText(JsonOf(snapshot));
}

SessionObservation ObservationIn(const nlohmann::json& camera) {
  return {CentresOf(camera), FieldOf<std::vector<double>>(camera, "weights"),
          FieldOf<std::vector<double>>(camera, "deviations"), FieldOf<std::vector<double>>(camera, "radii")};
}

StoredSnapshot SnapshotOf(const std::string& text, const std::string& folder) {
  const nlohmann::json document = ParsedJson(text);
  StoredSnapshot snapshot;
  snapshot.name = FieldOf<std::string>(document, "name");
  snapshot.takenAt = FieldOf<std::string>(document, "takenAt");
  if (!FieldOf(document, "score").is_null()) snapshot.score = FieldOf<double>(document, "score");
  for (const nlohmann::json& camera : FieldOf(document, "cameras")) {
    snapshot.observations.push_back(ObservationIn(camera));
    snapshot.images.push_back(ImageOf(camera, folder));
    snapshot.origins.push_back(camera.contains("origin") ? FieldOf<std::string>(camera, "origin") : "");
  }
  return snapshot;
}

}  // namespace velmora
