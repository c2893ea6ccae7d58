/// Which files the inputs of the headless tool stand for.
#include "batch/InputFiles.h"

#include <glob.h>

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <set>

namespace batch {

namespace {

namespace fs = std::filesystem;

std::string ExtensionOf(const fs::path& file) {
  std::string extension = file.extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return extension;
}

bool IsHidden(const fs::directory_entry& entry) {
  return entry.path().filename().string().front() == '.';
}

/// Systems keep a folder's look in hidden files, which nobody misses.
bool IsWorthAWord(const fs::directory_entry& entry) {
  return !IsHidden(entry) || HasImageExtension(entry.path().string());
}

/// Why a folder's entry is no image to take; empty when it is one.
std::string KindUnlessImage(const fs::directory_entry& entry) {
  std::error_code error;
  const bool image = HasImageExtension(entry.path().string());
  if (entry.is_directory(error)) return "folder";
  if (!entry.exists(error)) return "broken link";
  if (IsHidden(entry)) return "hidden";
  if (image && entry.is_regular_file(error)) return "";
  const std::string extension = ExtensionOf(entry.path());
  return extension.empty() ? "without an extension" : extension;
}

std::vector<std::string> ImagesIn(const std::string& folder, SkippedFiles& all) {
  std::vector<std::string> images;
  SkippedFiles here;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
    const std::string kind = KindUnlessImage(entry);
    if (kind.empty()) {
      images.push_back(entry.path().string());
    } else if (IsWorthAWord(entry)) {
      here.Add(kind);
      all.Add(kind);
    }
  }
  if (images.empty()) {
    const std::string skipped = here.Text();
    throw InputError("no image in folder '" + folder + "'" + (skipped.empty() ? "" : " (" + skipped + ")"));
  }
  std::sort(images.begin(), images.end());
  return images;
}

std::vector<std::string> Matches(const std::string& pattern) {
  glob_t found{};
  std::vector<std::string> files;
  if (glob(pattern.c_str(), GLOB_TILDE, nullptr, &found) == 0) {
    files.assign(found.gl_pathv, found.gl_pathv + found.gl_pathc);
  }
  globfree(&found);
  if (files.empty()) throw InputError("nothing matches '" + pattern + "'");
  return files;
}

void Append(std::vector<std::string>& all, const std::vector<std::string>& more) {
  all.insert(all.end(), more.begin(), more.end());
}

std::vector<std::string> Expand(const std::string& input, SkippedFiles& skipped) {
  if (IsUrl(input)) return {input};
  std::error_code error;
  if (fs::is_directory(input, error)) return ImagesIn(input, skipped);
  if (fs::exists(input, error)) return {input};
  if (input.find_first_of("*?[") == std::string::npos) throw InputError("'" + input + "' does not exist");
  std::vector<std::string> files;
  for (const std::string& match : Matches(input)) {
    Append(files,
           fs::is_directory(match, error) ? ImagesIn(match, skipped) : std::vector<std::string>{match});
  }
  return files;
}

}  // namespace

std::string SkippedFiles::Text() const {
  std::vector<std::pair<std::string, int>> kinds(kinds_.begin(), kinds_.end());
  std::stable_sort(kinds.begin(), kinds.end(),
                   [](const auto& a, const auto& b) { return a.second > b.second; });
  int count = 0;
  std::string list;
  for (const auto& [kind, number] : kinds) {
    count += number;
    list += (list.empty() ? "" : ", ") + std::to_string(number) + " " + kind;
  }
  return count == 0 ? "" : std::to_string(count) + (count == 1 ? " file" : " files") + " skipped: " + list;
}

bool IsUrl(const std::string& input) {
  return input.find("://") != std::string::npos;
}

bool HasImageExtension(const std::string& file) {
  static const std::set<std::string> extensions = {".png", ".jpg", ".jpeg", ".bmp",  ".tif", ".tiff",
                                                   ".pgm", ".ppm", ".pbm",  ".webp", ".jp2"};
  return extensions.count(ExtensionOf(file)) > 0;
}

std::vector<std::string> ExpandInputs(const std::vector<std::string>& inputs, SkippedFiles& skipped) {
  std::vector<std::string> files;
  for (const std::string& input : inputs) Append(files, Expand(input, skipped));
  return files;
}

std::vector<std::string> ExpandInputs(const std::vector<std::string>& inputs) {
  SkippedFiles skipped;
  return ExpandInputs(inputs, skipped);
}

std::vector<std::string> ExpandInputsAloud(const std::vector<std::string>& inputs) {
  SkippedFiles skipped;
  std::vector<std::string> files = ExpandInputs(inputs, skipped);
  const std::string text = skipped.Text();
  if (!text.empty()) std::cerr << text << "\n";
  return files;
}

}  // namespace batch
