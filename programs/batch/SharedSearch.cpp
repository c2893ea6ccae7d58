/// The search of the grid in the images of all cameras, which threads share.
#include "batch/SharedSearch.h"

#include <algorithm>
#include <iostream>

#include "batch/InOrder.h"
#include "batch/Progress.h"
#include "batch/TogetherStream.h"

namespace batch {

namespace {

/// While it lives, OpenCV starts no threads of its own: each image has one already.
class OneThreadEach {
 public:
  OneThreadEach() : before_(cv::getNumThreads()) { cv::setNumThreads(1); }
  ~OneThreadEach() { cv::setNumThreads(before_); }
  OneThreadEach(const OneThreadEach&) = delete;
  OneThreadEach& operator=(const OneThreadEach&) = delete;

 private:
  const int before_;
};

int OrientationsIgnored(const std::vector<NamedImage>& inputs) {
  return static_cast<int>(std::count_if(inputs.begin(), inputs.end(),
                                        [](const NamedImage& input) { return input.orientationIgnored; }));
}

}  // namespace

void SearchShared(const Arguments& arguments, Wanted wanted, const SearchSteps& steps) {
  Progress progress;
  int done = 0;
  int orientationsIgnored = 0;
  const auto look = [&](SearchedImages& images) {
    const SearchOutcome prepared = OutcomeOf([&](SearchOutcome& /*outcome*/) {
      if (steps.prepare) steps.prepare(images.inputs);
    });
    for (NamedImage& input : images.inputs) {
      const bool fit = !input.name.empty() && prepared.fault.empty();
      images.outcomes.push_back(fit ? SearchImage(input, arguments, wanted) : prepared);
    }
  };
  const auto take = [&](SearchedImages& images) {
    orientationsIgnored += OrientationsIgnored(images.inputs);
    const std::string name = NameTogether(images.inputs);
    progress.Step(++done, steps.expected(), name + ": " + steps.take(images));
  };
  {
    const OneThreadEach alone;
    InOrder<SearchedImages>(
        static_cast<size_t>(arguments.Threads()),
        [&](SearchedImages& images) { return steps.next(images.inputs); }, look, take);
  }
  progress.Finish();
  std::cerr << OrientationsText(orientationsIgnored);
}

}  // namespace batch
