/// What the last result says of each view of a session.
#include "batch/ViewNotes.h"

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "common/InputError.h"

namespace batch {

using nlohmann::json;

void WriteNotes(const std::map<int, ViewNote>& notes, const std::string& path) {
  json views = json::array();
  for (const auto& [number, note] : notes) {
    views.push_back({{"snapshot", number},
                     {"rms", note.rms < 0.0 ? json(nullptr) : json(note.rms)},
                     {"reason", note.reason}});
  }
  // Beside its place first: an earlier one stays whole until this one is.
  const std::string beside = path + ".new";
  {
    std::ofstream file(beside);
    file << json{{"views", views}}.dump(4, ' ', false, json::error_handler_t::replace) << std::endl;
    if (!file) throw common::InputError("'" + path + "' cannot be written");
  }
  std::error_code error;
  std::filesystem::rename(beside, path, error);
  if (error) throw common::InputError("'" + path + "' cannot be written");
}

std::map<int, ViewNote> ReadNotes(const std::string& path) {
  std::map<int, ViewNote> notes;
  try {
    std::ifstream file(path);
    const json document = json::parse(file);
    for (const json& view : document.at("views")) {
      ViewNote& note = notes[view.at("snapshot").get<int>()];
      if (!view.at("rms").is_null()) note.rms = view.at("rms").get<double>();
      note.reason = view.at("reason").get<std::string>();
    }
  } catch (const json::exception&) {
    notes.clear();
  }
  return notes;
}

}  // namespace batch
