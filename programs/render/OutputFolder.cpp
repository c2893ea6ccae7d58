/// The folders that rendered pictures go to.
#include "render/OutputFolder.h"

#include <algorithm>
#include <cctype>
#include <set>
#include <stdexcept>
#include <system_error>

#include "render/Files.h"

namespace render {

namespace {

namespace fs = std::filesystem;

using Names = std::vector<std::string>;

bool IsImage(const fs::path& file) {
  static const std::set<std::string> extensions = {".png", ".jpg", ".jpeg", ".bmp",  ".tif", ".tiff",
                                                   ".pgm", ".ppm", ".pbm",  ".webp", ".jp2"};
  std::string extension = file.extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return extensions.count(extension) > 0;
}

/// The number in a name such as view007.png; -1 for any other name.
int NumberOf(const std::string& name) {
  const std::string digits = name.size() > 8 && name.size() < 17 ? name.substr(4, name.size() - 8) : "";
  const bool number = !digits.empty() && std::all_of(digits.begin(), digits.end(),
                                                     [](unsigned char c) { return std::isdigit(c) != 0; });
  const int value = number ? std::stoi(digits) : -1;
  return value >= 0 && name == PictureName(value) ? value : -1;
}

Names ImagesIn(const fs::path& folder) {
  Names names;
  std::error_code fault;
  for (fs::directory_iterator entry(folder, fault), end; !fault && entry != end; entry.increment(fault)) {
    if (entry->is_regular_file(fault) && IsImage(entry->path()))
      names.push_back(entry->path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

/// What a folder holds.
struct Contents {
  Names same;     ///< of a name that will be written anew
  Names earlier;  ///< of other names that the program gives
  Names foreign;
};

Contents ContentsOf(const fs::path& folder, int pictures) {
  Contents contents;
  for (const std::string& name : ImagesIn(folder)) {
    const int number = NumberOf(name);
    if (number >= 0 && number < pictures) contents.same.push_back(name);
    if (number >= pictures) contents.earlier.push_back(name);
    if (number < 0) contents.foreign.push_back(name);
  }
  return contents;
}

std::string List(const Names& names) {
  return names.size() == 1 ? names.front() : names.front() + " to " + names.back();
}

std::string Count(const Names& names, const std::string& kind) {
  return std::to_string(names.size()) + kind + (names.size() == 1 ? " picture" : " pictures") + " (" +
         List(names) + ")";
}

void CheckFolder(const fs::path& folder, int pictures) {
  const Contents contents = ContentsOf(folder, pictures);
  const bool rendered = fs::exists(folder / "truth.json");
  Names others = rendered ? contents.earlier : ImagesIn(folder);
  if (rendered) others.insert(others.end(), contents.foreign.begin(), contents.foreign.end());
  if (others.empty()) return;
  std::sort(others.begin(), others.end());
  throw std::invalid_argument(
      "\"" + folder.string() + "\" holds " + Count(others, " other") +
      ": give another folder, or --overwrite, which replaces or removes pictures named viewNNN.png");
}

std::string ClearFolder(const fs::path& folder, int pictures) {
  const Contents contents = ContentsOf(folder, pictures);
  for (const std::string& name : contents.earlier) {
    std::error_code fault;
    if (!fs::remove(folder / name, fault)) {
      throw std::runtime_error("cannot remove \"" + (folder / name).string() + "\": " + fault.message());
    }
  }
  std::string told;
  const std::string place = "\"" + folder.string() + "\": ";
  if (!contents.same.empty()) told += place + Count(contents.same, " earlier") + " replaced\n";
  if (!contents.earlier.empty()) told += place + Count(contents.earlier, " earlier") + " removed\n";
  if (!contents.foreign.empty())
    told += place + Count(contents.foreign, " other") + " left, which were not rendered here\n";
  return told;
}

}  // namespace

std::string PrepareFolders(const std::vector<fs::path>& folders, int pictures, bool overwrite,
                           const std::vector<fs::path>& further) {
  std::string told;
  if (!overwrite) {
    for (const fs::path& folder : folders) CheckFolder(folder, pictures);
    for (const fs::path& folder : further) CheckFolder(folder, 0);
  }
  for (const fs::path& folder : folders) {
    MakeFolder(folder);
    if (overwrite) told += ClearFolder(folder, pictures);
  }
  for (const fs::path& folder : further) {
    if (overwrite) told += ClearFolder(folder, 0);
  }
  return told;
}

}  // namespace render
