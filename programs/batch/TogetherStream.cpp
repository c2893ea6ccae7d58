/// Images that several cameras took at the same time.
#include "batch/TogetherStream.h"

#include "common/RigNames.h"

namespace batch {

TogetherStream::TogetherStream(const std::vector<std::vector<std::string>>& files,
                               const SamplingOptions& sampling) {
  for (const auto& camera : files) streams_.emplace_back(camera, sampling);
}

TogetherStream::TogetherStream(const std::vector<Moment>& moments, const SamplingOptions& sampling) {
  std::vector<std::vector<std::string>> files(moments.empty() ? 0 : moments.front().files.size());
  for (const Moment& moment : moments) {
    has_.emplace_back();
    for (size_t i = 0; i < files.size(); ++i) {
      has_.back().push_back(!moment.files[i].empty());
      if (has_.back().back()) files[i].push_back(moment.files[i]);
    }
  }
  for (const auto& camera : files) streams_.emplace_back(camera, sampling);
}

bool TogetherStream::Next(std::vector<NamedImage>& inputs) {
  if (!has_.empty() && next_ == has_.size()) return false;
  inputs.assign(streams_.size(), {});
  for (size_t i = 0; i < streams_.size(); ++i) {
    if (!has_.empty() && !has_[next_][i]) continue;
    if (!streams_[i].Next(inputs[i])) return false;
  }
  ++next_;
  return true;
}

std::string NameTogether(const std::vector<NamedImage>& inputs) {
  std::vector<std::string> names;
  names.reserve(inputs.size());
  for (const NamedImage& input : inputs) names.push_back(input.name);
  return common::NameTogether(names);
}

}  // namespace batch
