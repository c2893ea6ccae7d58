/// The views of a guided calibration.
#include "guided/Views.h"

#include <algorithm>
#include <stdexcept>

namespace guided {

namespace {

using velmora::SessionStep;

const char* const POSE = "pose ";
const char* const BY_HAND = "by hand ";

NamedSnapshot WithoutFrames(int number, std::string name, velmora::GridSnapshot snapshot) {
  for (velmora::GridSnapshot::Camera& camera : snapshot.cameras) camera.frame = cv::Mat();
  return {number, std::move(name), std::move(snapshot)};
}

std::string WithoutStop(std::string sentence) {
  if (!sentence.empty() && sentence.back() == '.') sentence.pop_back();
  return sentence;
}

}  // namespace

void Views::Resume() {
  collector_.Clear();
  guide_.Restart();
  all_.clear();
  std::vector<std::vector<cv::Point2d>> centres;
  for (const velmora::StoredSnapshot& stored : session_.Snapshots()) {
    if (!stored.IsUsed()) continue;
    const velmora::GridSnapshot snapshot = velmora::FromStored(stored);
    const bool seenByAll = std::none_of(snapshot.cameras.begin(), snapshot.cameras.end(),
                                        [](const auto& camera) { return camera.centres.empty(); });
    if (!seenByAll) continue;  // no view of this kind of calibration
    collector_.Add(snapshot);
    guide_.Kept(snapshot.cameras.front().centres);
    centres.push_back(snapshot.cameras.front().centres);
    all_.push_back(WithoutFrames(stored.number, stored.name, snapshot));
  }
  guide_.SetReached(guide_.ReachedBy(centres));
}

std::string Views::NameOfNext(bool reachesTarget) const {
  const std::string kind = reachesTarget ? POSE : BY_HAND;
  // Poses that are chosen one at a time all are the first target of their guide.
  if (reachesTarget && guide_.Targets() > 1) return kind + std::to_string(guide_.TargetNumber());
  const auto before = std::count_if(all_.begin(), all_.end(), [&kind](const NamedSnapshot& view) {
    return view.name.compare(0, kind.size(), kind) == 0;
  });
  return kind + std::to_string(before + 1);
}

std::string Views::Keep(bool reachesTarget) {
  if (!collector_.Keep()) return "Not taken: most of the circles must be in view.";
  const velmora::GridSnapshot snapshot = collector_.Last();
  velmora::SessionSnapshot stored = velmora::ToBeStored(snapshot);
  stored.name = NameOfNext(reachesTarget);
  int number = 0;
  try {
    number = session_.Add(stored);
  } catch (const std::exception& fault) {
    collector_.RemoveLast();
    return std::string("Not taken. ") + fault.what();
  }
  ++steps_;
  all_.push_back(WithoutFrames(number, stored.name, snapshot));
  // The pictures are in the session, and would fill the memory.
  collector_.RemoveLast();
  collector_.Add(all_.back().snapshot);
  guide_.Kept(snapshot.cameras.front().centres);
  if (reachesTarget) guide_.Advance();
  return "";
}

void Views::ForgetLast() {
  collector_.RemoveLast();
  guide_.TakenBack();
  all_.pop_back();
}

std::string Views::TakeBack() {
  if (!CanTakeBack()) return "There is no view to take back";
  try {
    return steps_ > 0 ? UndoStep() : RemoveEarlier();
  } catch (const std::exception& fault) {
    return "Not taken back. " + WithoutStop(fault.what());
  }
}

std::string Views::UndoStep() {
  const size_t before = Count();
  const auto step = session_.Undo();
  --steps_;
  const bool isLast = step && step->kind == SessionStep::Kind::Add && step->numbers.size() == 1 &&
                      before > 0 && step->numbers.front() == all_.back().number;
  if (isLast) {
    ForgetLast();
    return "View " + std::to_string(before) + " taken back";
  }
  Resume();
  return "As it was before: " + std::to_string(Count()) + (Count() == 1 ? " view" : " views");
}

std::string Views::RemoveEarlier() {
  const size_t before = Count();
  session_.Remove({all_.back().number});
  Resume();
  return "View " + std::to_string(before) + " taken back";
}

std::string Views::BeginAgain() {
  std::vector<int> numbers;
  numbers.reserve(all_.size());
  for (const NamedSnapshot& view : all_) numbers.push_back(view.number);
  try {
    if (!numbers.empty()) {
      session_.Remove(numbers);
      ++steps_;
    }
  } catch (const std::exception& fault) {
    return std::string("Not begun again. ") + fault.what();
  }
  Resume();
  return "";
}

}  // namespace guided
