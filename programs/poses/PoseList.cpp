/// The list of poses that a model of the assistant is made from.
#include "poses/PoseList.h"

#include <cmath>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace poses {

namespace {

constexpr double STEEPEST = 60.0;

bool InRange(const world::Appearance& pose) {
  return std::abs(pose.x) <= 1.0 && std::abs(pose.y) <= 1.0 && pose.span > 0.05 && pose.span <= 1.0 &&
         std::abs(pose.tiltX) <= STEEPEST && std::abs(pose.tiltY) <= STEEPEST && std::abs(pose.roll) <= 180.0;
}

}  // namespace

std::vector<world::Appearance> ReadPoseList(std::istream& text) {
  std::vector<world::Appearance> list;
  std::string line;
  for (int number = 1; std::getline(text, line); ++number) {
    const auto start = line.find_first_not_of(" \t\r");
    if (start == std::string::npos || line[start] == '#') continue;
    std::istringstream words(line);
    world::Appearance pose;
    const bool complete =
        static_cast<bool>(words >> pose.x >> pose.y >> pose.span >> pose.tiltY >> pose.tiltX >> pose.roll);
    if (!complete) throw std::runtime_error("line " + std::to_string(number) + " does not hold six numbers");
    if (!InRange(pose)) {
      throw std::runtime_error("line " + std::to_string(number) +
                               ": x and y are -1 to 1, span 0.05 to 1, tilts -60 to 60, roll -180 to 180");
    }
    list.push_back(pose);
  }
  if (list.empty()) throw std::runtime_error("it holds no pose");
  return list;
}

std::vector<world::Appearance> ReadPoseList(const std::string& path) {
  std::ifstream file(path);
  if (!file.is_open()) throw std::runtime_error("'" + path + "' cannot be read");
  try {
    return ReadPoseList(file);
  } catch (const std::runtime_error& fault) {
    throw std::runtime_error("'" + path + "': " + fault.what());
  }
}

}  // namespace poses
