/// What the bytes of an image file tell beside its pixels.
#include "batch/ImageHeaders.h"

#include <algorithm>
#include <string_view>

namespace batch {

namespace {

using Bytes = std::string_view;

constexpr unsigned ORIENTATION = 0x0112;
constexpr unsigned SHORT = 3;
const Bytes JPEG_START("\xFF\xD8", 2);
const Bytes PNG_START("\x89PNG\r\n\x1A\n", 8);
const Bytes EXIF_START("Exif\0\0", 6);

bool StartsWith(Bytes bytes, Bytes start) {
  return bytes.substr(0, start.size()) == start;
}

unsigned Byte(Bytes bytes, std::size_t at) {
  return static_cast<unsigned char>(bytes[at]);
}

/// The number at that place, 0 when the bytes end before.
std::size_t Number(Bytes bytes, std::size_t at, std::size_t size, bool bigEndian) {
  if (at > bytes.size() || bytes.size() - at < size) return 0;
  std::size_t number = 0;
  for (std::size_t i = 0; i < size; ++i) {
    number = number << 8 | Byte(bytes, at + (bigEndian ? i : size - 1 - i));
  }
  return number;
}

bool IsTiffHeader(Bytes bytes) {
  return StartsWith(bytes, Bytes("II*\0", 4)) || StartsWith(bytes, Bytes("MM\0*", 4));
}

/// Where the low byte of the orientation is in the first directory of a TIFF structure; 0: nowhere.
std::size_t PlaceOfOrientation(Bytes tiff) {
  if (!IsTiffHeader(tiff)) return 0;
  const bool bigEndian = tiff[0] == 'M';
  const std::size_t directory = Number(tiff, 4, 4, bigEndian);
  const std::size_t count = Number(tiff, directory, 2, bigEndian);
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t entry = directory + 2 + 12 * i;
    if (entry + 12 > tiff.size()) return 0;
    if (Number(tiff, entry, 2, bigEndian) != ORIENTATION) continue;
    return Number(tiff, entry + 2, 2, bigEndian) == SHORT ? entry + (bigEndian ? 9 : 8) : 0;
  }
  return 0;
}

int OrientationIn(Bytes tiff) {
  const std::size_t place = PlaceOfOrientation(tiff);
  const int orientation = place == 0 ? UPRIGHT : static_cast<int>(Byte(tiff, place));
  return orientation >= 1 && orientation <= 8 ? orientation : UPRIGHT;
}

/// Goes through the segments of a JPEG file up to its pixels.
class JpegSegments {
 public:
  explicit JpegSegments(Bytes bytes) : bytes_(bytes) {}

  /// False at the end, and where the pixels begin.
  bool Next() {
    while (at_ + 1 < bytes_.size() && Byte(bytes_, at_) == 0xFF && Byte(bytes_, at_ + 1) == 0xFF) ++at_;
    if (at_ + 4 > bytes_.size() || Byte(bytes_, at_) != 0xFF) return false;
    marker_ = Byte(bytes_, at_ + 1);
    const std::size_t length = Number(bytes_, at_ + 2, 2, true);
    if (marker_ == START_OF_SCAN || length < 2) return false;
    content_ = bytes_.substr(at_ + 4, length - 2);
    at_ += 2 + length;
    return true;
  }

  unsigned Marker() const { return marker_; }
  Bytes Content() const { return content_; }
  /// What was not gone through.
  Bytes Rest() const { return bytes_.substr(std::min(at_, bytes_.size())); }

 private:
  static constexpr unsigned START_OF_SCAN = 0xDA;

  Bytes bytes_;
  std::size_t at_ = 2;
  unsigned marker_ = 0;
  Bytes content_;
};

int JpegOrientation(Bytes bytes) {
  constexpr unsigned APPLICATION_1 = 0xE1;
  for (JpegSegments segments(bytes); segments.Next();) {
    if (segments.Marker() == APPLICATION_1 && StartsWith(segments.Content(), EXIF_START)) {
      return OrientationIn(segments.Content().substr(EXIF_START.size()));
    }
  }
  return UPRIGHT;
}

/// The content of a PNG file's chunk of that type; `found` tells an empty one from none.
Bytes PngChunk(Bytes bytes, Bytes type, bool& found) {
  found = false;
  for (std::size_t at = PNG_START.size(); at + 12 <= bytes.size();) {
    const std::size_t length = Number(bytes, at, 4, true);
    if (length > bytes.size() - at - 12) return {};
    found = bytes.substr(at + 4, 4) == type;
    if (found) return bytes.substr(at + 8, length);
    at += 12 + length;
  }
  return {};
}

}  // namespace

bool HasKnownHeader(const std::string& bytes) {
  return StartsWith(bytes, JPEG_START) || StartsWith(bytes, PNG_START) || IsTiffHeader(bytes);
}

bool IsTiff(const std::string& bytes) {
  return IsTiffHeader(bytes);
}

std::size_t PlaceOfTiffOrientation(const std::string& bytes) {
  return PlaceOfOrientation(bytes);
}

int OrientationOf(const std::string& bytes) {
  if (StartsWith(bytes, JPEG_START)) return JpegOrientation(bytes);
  bool found = false;
  if (StartsWith(bytes, PNG_START)) return OrientationIn(PngChunk(bytes, "eXIf", found));
  return OrientationIn(bytes);
}

bool EndsTooEarly(const std::string& bytes) {
  if (StartsWith(bytes, JPEG_START)) {
    JpegSegments segments(bytes);
    while (segments.Next()) {
    }
    // Pixels never hold this marker by chance: a byte of 255 is followed by 0 among them.
    return segments.Rest().find(Bytes("\xFF\xD9", 2)) == Bytes::npos;
  }
  bool found = true;
  if (StartsWith(bytes, PNG_START)) PngChunk(bytes, "IEND", found);
  return !found;
}

}  // namespace batch
