/// Finds, by their names, the images of several cameras that were taken at the same time.
#include "batch/NameMatching.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <map>

#include "batch/InputFiles.h"

namespace batch {

namespace {

std::string NameOf(const std::string& file) {
  const std::filesystem::path path = file;
  return (HasImageExtension(file) ? path.stem() : path.filename()).string();
}

/// 0 for what parts numbers and words. Letters beyond ASCII have several bytes, all of which are of a word.
int KindOf(char c) {
  const auto byte = static_cast<unsigned char>(c);
  if (std::isdigit(byte) != 0) return 1;
  return std::isalpha(byte) != 0 || byte >= 0x80U ? 2 : 0;
}

/// Whether a number or a word goes on from the character before the place to that at it.
bool IsInside(const std::string& text, size_t place) {
  return place > 0 && place < text.size() && KindOf(text[place]) != 0 &&
         KindOf(text[place]) == KindOf(text[place - 1]);
}

/// Brings the length of the common beginning to an end of a number or a word in each of the texts.
size_t CommonLength(const std::vector<std::string>& texts) {
  size_t length = texts.front().size();
  for (const std::string& text : texts) {
    const size_t most = std::min(length, text.size());
    size_t same = 0;
    while (same < most && text[same] == texts.front()[same]) ++same;
    length = same;
  }
  const auto cuts = [&](const std::string& text) { return IsInside(text, length); };
  while (length > 0 && std::any_of(texts.begin(), texts.end(), cuts)) --length;
  return length;
}

/// From each text the beginning that all have.
void RemoveCommonBeginning(std::vector<std::string>& texts) {
  const size_t length = CommonLength(texts);
  for (std::string& text : texts) text.erase(0, length);
}

void Reverse(std::vector<std::string>& texts) {
  for (std::string& text : texts) std::reverse(text.begin(), text.end());
}

using FilesByKey = std::map<std::string, std::string>;

FilesByKey ByKey(const CameraFiles& camera) {
  const std::vector<std::string> keys = DifferingParts(camera.files);
  FilesByKey files;
  for (size_t i = 0; i < keys.size(); ++i) {
    const std::string& file = camera.files[i];
    if (IsUrl(file) || !HasImageExtension(file)) {
      throw InputError("--match names needs images: '" + file + "' is none, and frames have no names");
    }
    const auto [earlier, isNew] = files.emplace(keys[i], file);
    if (!isNew) {
      throw InputError("two images of camera '" + camera.camera + "' cannot be told apart by '" + keys[i] +
                       "': '" + earlier->second + "' and '" + file + "'");
    }
  }
  return files;
}

bool HaveCommonKey(const FilesByKey& one, const FilesByKey& other) {
  return std::any_of(one.begin(), one.end(), [&](const auto& file) { return other.count(file.first) > 0; });
}

void RequireCommonKeys(const std::vector<CameraFiles>& cameras, const std::vector<FilesByKey>& files) {
  for (size_t i = 0; i < files.size(); ++i) {
    bool common = false;
    for (size_t k = 0; k < files.size(); ++k)
      common = common || (k != i && HaveCommonKey(files[i], files[k]));
    if (common) continue;
    const FilesByKey& other = files[i == 0 ? 1 : 0];
    throw InputError("no image of camera '" + cameras[i].camera +
                     "' belongs to one of another camera by its name: its images differ by parts such as '" +
                     files[i].begin()->first + "', those of '" + cameras[i == 0 ? 1 : 0].camera +
                     "' by such as '" + other.begin()->first + "'");
  }
}

}  // namespace

std::vector<std::string> DifferingParts(const std::vector<std::string>& files) {
  std::vector<std::string> parts;
  parts.reserve(files.size());
  for (const std::string& file : files) parts.push_back(NameOf(file));
  if (parts.size() < 2) return parts;
  RemoveCommonBeginning(parts);
  Reverse(parts);
  RemoveCommonBeginning(parts);
  Reverse(parts);
  return parts;
}

std::vector<Moment> MatchByNames(const std::vector<CameraFiles>& cameras) {
  std::vector<FilesByKey> files;
  std::map<std::string, Moment> moments;
  for (size_t i = 0; i < cameras.size(); ++i) {
    files.push_back(ByKey(cameras[i]));
    for (const auto& [key, file] : files.back()) {
      Moment& moment = moments[key];
      moment.key = key;
      moment.files.resize(cameras.size());
      moment.files[i] = file;
    }
  }
  RequireCommonKeys(cameras, files);
  std::vector<Moment> inOrder;
  inOrder.reserve(moments.size());
  for (auto& entry : moments) inOrder.push_back(std::move(entry.second));
  return inOrder;
}

}  // namespace batch
