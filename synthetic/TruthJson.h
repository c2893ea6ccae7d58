/// The parts that truth files of cameras and of rigs have in common, as JSON.
#pragma once

#include <functional>
#include <nlohmann/json.hpp>
#include <string>

#include "Truth.h"

namespace world {

nlohmann::json ToJson(const Pose& pose);
nlohmann::json ToJson(const Camera& camera);
nlohmann::json ToJson(const RigCamera& camera);
nlohmann::json ToJson(const TruthView& view);

// Reading throws std::runtime_error that names the fault.

const nlohmann::json& Member(const nlohmann::json& object, const char* key);
int Integer(const nlohmann::json& object, const char* key);
/// A list of `count` elements; any number of them when `count` is negative.
const nlohmann::json& List(const nlohmann::json& value, const char* key, int count = -1);
/// An object's image size and lens.
Camera CameraFrom(const nlohmann::json& object);
/// Reads a camera with its R and T.
RigCamera RigCameraFrom(const nlohmann::json& object);
Pose PoseFrom(const nlohmann::json& object);
TruthView ViewFrom(const nlohmann::json& object, int discs);
/// What `unit` and `grid` say of the sheet.
Sheet SheetFrom(const nlohmann::json& object);
std::uint64_t SeedFrom(const nlohmann::json& object);
/// Adds what SheetFrom and SeedFrom read.
void AddSheetAndSeed(nlohmann::json& object, const Sheet& sheet, std::uint64_t seed);

/// Throws std::runtime_error, naming the file, when it cannot be written.
void WriteDocument(const nlohmann::json& document, const std::string& path);
/// Passes on what the file holds. Throws std::runtime_error that names the file and the fault, whatever the
/// reading throws.
void ReadDocument(const std::string& path, const std::function<void(const nlohmann::json&)>& read);

}  // namespace world
