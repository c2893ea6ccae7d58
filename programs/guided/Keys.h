/// The line that says what the keys do.
#pragma once

#include <opencv2/core.hpp>
#include <string>
#include <vector>

#include "guided/Lettering.h"

namespace guided {

struct Key {
  std::string name;   ///< what is on the key: "Space", "u"
  std::string does;   ///< what it does: "take this view"
  bool works = true;  ///< false: grey, now it does nothing
};

/// Where a key and its words are.
struct PlacedKey {
  cv::Rect cap;
  cv::Rect words;
  Lettering name;
  Lettering does;
  bool works = true;
};

/// The keys side by side in the place, in letters of at most that size: in one line, or in more when it would
/// be too small to read.
std::vector<PlacedKey> PlaceKeys(const std::vector<Key>& keys, const cv::Rect& place, double largest);
void DrawKeys(const std::vector<PlacedKey>& keys, cv::Mat& picture);

}  // namespace guided
