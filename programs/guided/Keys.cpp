/// The line that says what the keys do.
#include "guided/Keys.h"

#include <algorithm>

#include "guided/Shapes.h"

namespace guided {

namespace {

constexpr double CAP_HEIGHT = 2.0;  ///< all in heights of capital letters
constexpr double CAP_MARGIN = 0.55;
constexpr double TO_WORDS = 0.45;
constexpr double TO_NEXT_KEY = 1.3;
constexpr double ROW = 2.5;
constexpr double READABLE = 11.0;  ///< pixels

int InPixels(double share, double size) {
  return cvRound(share * size);
}

Lettering InOneLine(const std::string& text, double size) {
  return FitText(text, {1 << 20, 1 << 20}, {size, size, size});
}

struct KeyRow {
  std::vector<PlacedKey> keys;
  int width = 0;
};

/// The key with its places from the left edge on.
PlacedKey Measured(const Key& key, double size) {
  PlacedKey placed;
  placed.name = InOneLine(key.name, size);
  placed.does = InOneLine(key.does, size);
  placed.works = key.works;
  const int height = InPixels(CAP_HEIGHT, size);
  const int wide = std::max(height, placed.name.extent.width + 2 * InPixels(CAP_MARGIN, size));
  placed.cap = {0, 0, wide, height};
  placed.words = {wide + InPixels(TO_WORDS, size), 0, placed.does.extent.width, height};
  return placed;
}

std::vector<KeyRow> Rows(const std::vector<Key>& keys, double size, int width) {
  std::vector<KeyRow> rows(1);
  const int gap = InPixels(TO_NEXT_KEY, size);
  for (const Key& key : keys) {
    PlacedKey placed = Measured(key, size);
    const int wide = placed.words.br().x;
    if (!rows.back().keys.empty() && rows.back().width + gap + wide > width) rows.emplace_back();
    KeyRow& row = rows.back();
    if (!row.keys.empty()) row.width += gap;
    placed.cap.x += row.width;
    placed.words.x += row.width;
    row.width += wide;
    row.keys.push_back(std::move(placed));
  }
  return rows;
}

bool FitIn(const std::vector<KeyRow>& rows, double size, const cv::Rect& place) {
  if (static_cast<int>(rows.size()) * InPixels(ROW, size) > place.height) return false;
  return std::all_of(rows.begin(), rows.end(), [&](const KeyRow& row) { return row.width <= place.width; });
}

/// In the middle of the place.
std::vector<PlacedKey> Centred(std::vector<KeyRow> rows, double size, const cv::Rect& place) {
  std::vector<PlacedKey> keys;
  const int pitch = InPixels(ROW, size);
  int y = place.y + (place.height - static_cast<int>(rows.size()) * pitch) / 2;
  for (KeyRow& row : rows) {
    const cv::Point shift(place.x + (place.width - row.width) / 2,
                          y + (pitch - InPixels(CAP_HEIGHT, size)) / 2);
    for (PlacedKey& key : row.keys) {
      key.cap += shift;
      key.words += shift;
      keys.push_back(std::move(key));
    }
    y += pitch;
  }
  return keys;
}

}  // namespace

std::vector<PlacedKey> PlaceKeys(const std::vector<Key>& keys, const cv::Rect& place, double largest) {
  if (keys.empty() || place.empty()) return {};
  constexpr double STEP = 0.97;
  for (double size = largest; size >= std::min(READABLE, largest); size *= STEP) {
    std::vector<KeyRow> rows = Rows(keys, size, place.width);
    if (rows.size() == 1 && FitIn(rows, size, place)) return Centred(std::move(rows), size, place);
  }
  for (double size = largest; size > 1.0; size *= STEP) {
    std::vector<KeyRow> rows = Rows(keys, size, place.width);
    if (FitIn(rows, size, place)) return Centred(std::move(rows), size, place);
  }
  return {};
}

void DrawKeys(const std::vector<PlacedKey>& keys, cv::Mat& picture) {
  for (const PlacedKey& key : keys) {
    const cv::Scalar& ink = key.works ? palette::TEXT : palette::OFF;
    const cv::Scalar& cap = key.works ? palette::LINE : palette::PANEL;
    FillBox(key.cap, key.cap.height / 4, cap, 1.0, picture);
    WriteText(key.name, key.cap, Align::Centre, {ink, cap}, picture);
    WriteText(key.does, key.words, Align::Left, {ink, palette::BACK}, picture);
  }
}

}  // namespace guided
