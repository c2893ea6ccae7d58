/// What the bytes of an image file tell beside its pixels.
#pragma once

#include <cstddef>
#include <string>

namespace batch {

/// The upright orientation, which needs no rotation.
constexpr int UPRIGHT = 1;

/// The orientation that a JPEG (Exif), PNG (eXIf) or TIFF file asks to be shown in: 1 to 8 as in the Exif
/// standard. 1 for a file that asks for none, is broken, or is of another format. Never reads past the bytes.
int OrientationOf(const std::string& bytes);

/// Where in a TIFF file the low byte of the orientation is; 0 when there is none.
std::size_t PlaceOfTiffOrientation(const std::string& bytes);

/// True of the first bytes of a JPEG, PNG or TIFF file, of which the other functions can tell something.
bool HasKnownHeader(const std::string& bytes);

bool IsTiff(const std::string& bytes);

/// True of JPEG and PNG files whose end is missing, as after a copy that was interrupted.
bool EndsTooEarly(const std::string& bytes);

}  // namespace batch
