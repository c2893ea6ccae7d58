/// What a session's images were found to hold.
#include "batch/SearchLog.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "common/InputError.h"

namespace batch {

namespace {

using nlohmann::json;

constexpr int FORMAT = 1;

json JsonOf(const cv::Size& size) {
  return {{"width", size.width}, {"height", size.height}};
}

cv::Size SizeOf(const json& size) {
  return {size.at("width").get<int>(), size.at("height").get<int>()};
}

/// Texts may be no UTF-8: file names are whatever bytes they are.
std::string LineOf(const json& document) {
  return document.dump(-1, ' ', false, json::error_handler_t::replace);
}

std::string LineOf(const SearchHeader& header) {
  return LineOf(json{{"format", FORMAT},
                     {"kind", header.kind},
                     {"cameras", header.cameras},
                     {"parts", header.parts},
                     {"copies", header.copies},
                     {"frame", JsonOf(header.frame)},
                     {"disc", header.disc}});
}

std::string LineOf(const LoggedMoment& moment) {
  json images = json::array();
  for (const LoggedImage& image : moment) {
    images.push_back({{"name", image.name},
                      {"origin", image.origin},
                      {"file", image.stamp},
                      {"size", JsonOf(image.size)},
                      {"fault", image.fault}});
  }
  return LineOf(json{{"images", images}});
}

SearchHeader HeaderOf(const json& document) {
  SearchHeader header;
  header.kind = document.at("kind").get<std::string>();
  header.cameras = document.at("cameras").get<std::vector<std::string>>();
  header.parts = document.at("parts").get<bool>();
  header.copies = document.at("copies").get<bool>();
  header.frame = SizeOf(document.at("frame"));
  header.disc = document.at("disc").get<double>();
  return header;
}

LoggedMoment MomentOf(const json& document) {
  LoggedMoment moment;
  for (const json& image : document.at("images")) {
    moment.push_back({image.at("name").get<std::string>(), image.at("origin").get<std::string>(),
                      image.at("file").get<std::string>(), SizeOf(image.at("size")),
                      image.at("fault").get<std::string>()});
  }
  return moment;
}

}  // namespace

bool HasView(const LoggedMoment& moment) {
  return std::any_of(moment.begin(), moment.end(),
                     [](const LoggedImage& image) { return !image.name.empty() && image.fault.empty(); });
}

SearchLog::SearchLog(const std::string& path) : path_(path) {
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    if (!file.eof()) Take(line);  // the last one is whole only with its end
  }
}

void SearchLog::Take(const std::string& line) {
  try {
    const json document = json::parse(line);
    if (document.contains("images")) {
      moments_.push_back(MomentOf(document));
      lines_.insert(line);
    } else if (document.at("format") == FORMAT) {
      header_ = HeaderOf(document);
    }
  } catch (const json::exception&) {
    // Searched again.
  }
}

void SearchLog::MoveTo(const std::string& path) {
  path_ = path;
  if (header_) Append(LineOf(*header_));
  for (const LoggedMoment& moment : moments_) Append(LineOf(moment));
}

void SearchLog::Set(const SearchHeader& header) {
  header_ = header;
  if (!path_.empty()) Append(LineOf(header));
}

void SearchLog::Add(const LoggedMoment& moment) {
  const std::string line = LineOf(moment);
  if (!lines_.insert(line).second) return;
  moments_.push_back(moment);
  if (!path_.empty()) Append(line);
}

void SearchLog::Append(const std::string& line) {
  // What is left of a line that was not written whole must not become a part of this one.
  bool cut = false;
  {
    std::ifstream before(path_, std::ios::binary | std::ios::ate);
    if (before.is_open() && before.tellg() > 0) {
      before.seekg(-1, std::ios::end);
      cut = before.get() != '\n';
    }
  }
  errno = 0;
  std::ofstream file(path_, std::ios::binary | std::ios::app);
  file << (cut ? "\n" : "") << line << "\n" << std::flush;
  if (!file) {
    throw common::InputError("'" + path_ + "' cannot be written: " + std::strerror(errno));
  }
}

}  // namespace batch
