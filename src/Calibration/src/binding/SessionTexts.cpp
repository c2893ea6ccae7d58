/// What programs on numbers exchange with a session, as JSON.
#include "binding/SessionTexts.h"

#include <nlohmann/json.hpp>

#include "binding/GivenText.h"
#include "session/JsonFields.h"
#include "session/SettingsFile.h"
#include "session/SnapshotDocument.h"

namespace velmora {

namespace {

using nlohmann::json;

const char* WordOf(StoredImage::Kind kind) {
  switch (kind) {
    case StoredImage::Kind::Png:
      return "png";
    case StoredImage::Kind::Copy:
      return "copy";
    case StoredImage::Kind::Reference:
      return "reference";
    default:
      return "none";
  }
}

const char* WordOf(SnapshotDecision decision) {
  switch (decision) {
    case SnapshotDecision::Excluded:
      return "excluded";
    case SnapshotDecision::Removed:
      return "removed";
    default:
      return "used";
  }
}

const char* WordOf(SessionStep::Kind kind) {
  switch (kind) {
    case SessionStep::Kind::Exclude:
      return "exclude";
    case SessionStep::Kind::Include:
      return "include";
    case SessionStep::Kind::Remove:
      return "remove";
    case SessionStep::Kind::BringBack:
      return "bring back";
    default:
      return "add";
  }
}

json FullJsonOf(const StoredSnapshot& snapshot) {
  json object = JsonOf(snapshot);
  object["number"] = snapshot.number;
  object["decision"] = WordOf(snapshot.decision);
  object["fault"] = snapshot.fault;
  json& cameras = object["cameras"];
  for (size_t i = 0; i < cameras.size(); ++i) {
    const StoredImage& image = snapshot.images.at(i);
    if (image.kind == StoredImage::Kind::None) continue;
    json& told = cameras[i]["image"];
    told["kind"] = WordOf(image.kind);
    told["path"] = image.path;
    told["fault"] = image.fault;
  }
  return object;
}

}  // namespace

SessionSettings SettingsFrom(const std::string& text) {
  return FromGiven(text, "the settings", SettingsIn);
}

std::string AnswerOf(const Session& session) {
  return JsonText({{"folder", session.Folder()},
                   {"settings", JsonOf(session.Settings())},
                   {"warnings", session.Warnings()}});
}

SessionSnapshot SnapshotFrom(const std::string& text) {
  return FromGiven(text, "the snapshot", [](const json& document) {
    SessionSnapshot snapshot;
    snapshot.name = FieldOf<std::string>(document, "name");
    snapshot.takenAt = FieldOf<std::string>(document, "takenAt");
    if (!FieldOf(document, "score").is_null()) snapshot.score = FieldOf<double>(document, "score");
    for (const json& camera : FieldOf(document, "cameras")) {
      snapshot.observations.push_back(ObservationIn(camera));
      SessionImage image;
      if (camera.contains("path")) {
        image.path = FieldOf<std::string>(camera, "path");
        image.copy = FieldOf<bool>(camera, "copy");
      }
      snapshot.images.push_back(image);
    }
    return snapshot;
  });
}

std::string AnswerOf(const StoredSnapshot& snapshot) {
  return JsonText(FullJsonOf(snapshot));
}

std::string AnswerOf(const std::vector<StoredSnapshot>& snapshots) {
  json list = json::array();
  for (const StoredSnapshot& snapshot : snapshots) list.push_back(FullJsonOf(snapshot));
  return JsonText(list);
}

std::string AnswerOf(const std::optional<SessionStep>& step) {
  return step ? JsonText({{"kind", WordOf(step->kind)}, {"numbers", step->numbers}}) : "";
}

}  // namespace velmora
