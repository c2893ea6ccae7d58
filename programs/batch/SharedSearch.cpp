/// The search of the grid in the images of all cameras, which threads share.
#include "batch/SharedSearch.h"

#include <algorithm>
#include <iostream>

#include "batch/InOrder.h"
#include "batch/KeptSession.h"
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

/// What is seen in the images of one time; called on several threads.
void Look(SearchedImages& images, const Arguments& arguments, Wanted wanted, const SearchSteps& steps,
          const KeptSession* session) {
  if (session != nullptr) session->NoteFiles(images.inputs);
  const SearchOutcome prepared = OutcomeOf([&](SearchOutcome& /*outcome*/) {
    if (steps.prepare) steps.prepare(images.inputs);
  });
  for (NamedImage& input : images.inputs) {
    const bool fit = !input.name.empty() && prepared.fault.empty();
    const auto known = fit && session != nullptr ? session->Known(input) : std::nullopt;
    input.known = known.has_value();
    images.outcomes.push_back(known ? *known : fit ? SearchImage(input, arguments, wanted) : prepared);
  }
}

}  // namespace

void SearchShared(const Arguments& given, Wanted wanted, const SearchSteps& steps,
                  const RunContext& context) {
  KeptSession* const session = context.session;
  const Arguments& arguments = session != nullptr ? session->SearchArguments() : given;
  Progress progress;
  int done = 0;
  int orientationsIgnored = 0;
  const auto next = [&](SearchedImages& images) {
    if (context.IsInterrupted() || !steps.next(images.inputs)) return false;
    if (session != nullptr) session->NoteFrames(images.inputs);
    return true;
  };
  const auto take = [&](SearchedImages& images) {
    orientationsIgnored += OrientationsIgnored(images.inputs);
    const std::string name = NameTogether(images.inputs);
    const std::string what = session != nullptr ? session->Take(images, steps) : steps.take(images);
    progress.Step(++done, steps.expected(), name + ": " + what);
    if (session != nullptr) progress.Tell(session->News());
  };
  {
    const OneThreadEach alone;
    InOrder<SearchedImages>(
        static_cast<size_t>(arguments.Threads()), next,
        [&](SearchedImages& images) { Look(images, arguments, wanted, steps, session); }, take);
  }
  progress.Finish();
  std::cerr << OrientationsText(orientationsIgnored);
  context.EndIfAsked();
  if (session == nullptr) return;
  session->Conclude();
  session->Replay(steps.take);
}

}  // namespace batch
