/// What arrives of a source, in words, and which size to work at.
#include "guided/ArrivalText.h"

namespace guided {

namespace {

std::string TextOf(const cv::Size& size) {
  return std::to_string(size.width) + "x" + std::to_string(size.height);
}

}  // namespace

bool IsBroughtToSize(const Arrival& arrival) {
  return arrival.kind != SourceKind::Camera && !arrival.asked.empty();
}

cv::Size WorkingSize(const Arrival& arrival) {
  return IsBroughtToSize(arrival) ? arrival.asked : arrival.size;
}

cv::Size WholeSize(const Arrival& arrival) {
  return {arrival.size.width * (arrival.split == common::Split::Vertical ? 2 : 1),
          arrival.size.height * (arrival.split == common::Split::Horizontal ? 2 : 1)};
}

std::string ArrivalText(const Arrival& arrival) {
  const cv::Size whole = WholeSize(arrival);
  std::string text = "Frames of " + arrival.name + ": " + TextOf(whole);
  if (arrival.split != common::Split::None) text += ", two halves of " + TextOf(arrival.size);
  if (arrival.asked.empty()) return text + ".\n";
  if (arrival.kind != SourceKind::Camera) {
    return text + (arrival.asked == arrival.size ? "" : ", brought to " + TextOf(arrival.asked)) + ".\n";
  }
  return text + (arrival.asked == whole ? "" : ", although " + TextOf(arrival.asked) + " was asked for") +
         ".\n";
}

std::string OfferText(const cv::Size& largest, const cv::Size& arriving) {
  if (largest.area() <= arriving.area()) return "";
  return "The camera offers up to " + TextOf(largest) + ": --width " + std::to_string(largest.width) +
         " --height " + std::to_string(largest.height) + ".\n";
}

std::string NothingText(const std::string& name, SourceKind kind) {
  if (kind == SourceKind::Recording) return "cannot read " + name + ".";
  const auto patience = std::chrono::duration_cast<std::chrono::seconds>(SourceWatch::START_PATIENCE);
  const std::string text = name + " has delivered no picture for " + std::to_string(patience.count()) + " s";
  return kind == SourceKind::Camera ? text + ": another program may be using it, or it needs another size."
                                    : text + ".";
}

std::string UnequalText(const std::string& name, const cv::Size& left, const cv::Size& right) {
  return name + " deliver frames of different sizes, " + TextOf(left) + " and " + TextOf(right) +
         ": ask for one that both have, with --width and --height.";
}

}  // namespace guided
