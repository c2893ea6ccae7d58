/// What tables and files call the cameras of a rig and their images.
#include "common/RigNames.h"

#include <algorithm>
#include <regex>

namespace common {

std::string RigNames::Image(size_t moment, size_t camera) const {
  return cameras[camera] + "/" + images[moment][camera];
}

std::vector<std::string> RigNames::AllImages() const {
  std::vector<std::string> all;
  for (size_t moment = 0; moment < images.size(); ++moment) {
    for (size_t camera = 0; camera < cameras.size(); ++camera) {
      if (!images[moment][camera].empty()) all.push_back(Image(moment, camera));
    }
  }
  return all;
}

std::vector<std::string> RigNames::Moments() const {
  std::vector<std::string> moments;
  for (const auto& together : images) moments.push_back(NameTogether(together));
  return moments;
}

std::string NameTogether(const std::vector<std::string>& names) {
  std::string joined;
  for (auto name = names.begin(); name != names.end(); ++name) {
    if (name->empty() || std::find(names.begin(), name, *name) != name) continue;
    joined += (joined.empty() ? "" : "+") + *name;
  }
  return joined;
}

std::string WithCameraNames(const std::string& text, const std::vector<std::string>& names) {
  static const std::regex camera("\\b([Cc]amera) ([0-9]{1,6})\\b");
  std::string named;
  auto from = text.begin();
  for (std::sregex_iterator found(text.begin(), text.end(), camera), end; found != end; ++found) {
    const size_t number = std::stoul((*found)[2]);
    named.append(from, (*found)[0].first);
    named += number < names.size() ? (*found)[1].str() + " '" + names[number] + "'" : (*found)[0].str();
    from = (*found)[0].second;
  }
  return named.append(from, text.end());
}

}  // namespace common
