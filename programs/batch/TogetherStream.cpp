/// Images that several cameras took at the same time.
#include "batch/TogetherStream.h"

#include <algorithm>
#include <future>

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

int TogetherStream::OrientationsIgnored() const {
  int count = 0;
  for (const ImageStream& stream : streams_) count += stream.OrientationsIgnored();
  return count;
}

std::string NameTogether(const std::vector<NamedImage>& inputs) {
  std::vector<std::string> names;
  names.reserve(inputs.size());
  for (const NamedImage& input : inputs) names.push_back(input.name);
  return common::NameTogether(names);
}

std::vector<std::string> TakeTogether(std::vector<NamedImage>& inputs,
                                      const std::function<std::string(size_t camera, NamedImage&)>& take) {
  std::vector<std::future<std::string>> others;
  for (size_t i = 1; i < inputs.size(); ++i) {
    const auto launch = inputs[i].name.empty() ? std::launch::deferred : std::launch::async;
    others.push_back(
        std::async(launch, [&, i] { return inputs[i].name.empty() ? std::string() : take(i, inputs[i]); }));
  }
  std::vector<std::string> taken = {inputs.front().name.empty() ? "" : take(0, inputs.front())};
  for (auto& other : others) taken.push_back(other.get());
  return taken;
}

}  // namespace batch
