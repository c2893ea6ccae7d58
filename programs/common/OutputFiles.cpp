/// The files that a run writes, and what is said of them.
#include "common/OutputFiles.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

namespace common {

std::string WithoutExtension(const std::string& name) {
  const std::string extension = ".json";
  if (name.size() < extension.size()) return name;
  const size_t start = name.size() - extension.size();
  const bool ends =
      std::equal(extension.begin(), extension.end(), name.begin() + static_cast<long>(start),
                 [](char a, char b) { return a == std::tolower(static_cast<unsigned char>(b)); });
  return ends ? name.substr(0, start) : name;
}

void OutputFiles::Announce(const std::string& file) {
  std::error_code error;
  if (std::filesystem::exists(file, error)) earlier_.push_back(file);
}

void OutputFiles::Written(const std::string& file) {
  written_.push_back(file);
}

std::string OutputFiles::Text() const {
  std::string text = "Written:\n";
  for (const std::string& file : written_) {
    const bool replaced = std::find(earlier_.begin(), earlier_.end(), file) != earlier_.end();
    text += "  " + file + (replaced ? " (replaced an earlier one)" : "") + "\n";
  }
  return text;
}

}  // namespace common
