/// The live picture of a guided calibration, drawn from values.
#pragma once

#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

#include "guided/Keys.h"
#include "guided/Lettering.h"

namespace guided {

enum class Tone { Neutral, Warning, Good };

/// One camera's image and what is drawn over it. All points are in pixels of `image`, whatever its size;
/// those that are not finite are left out.
struct CameraPicture {
  cv::Mat image;             ///< 8 bits, grey or BGR; empty: none has come yet
  std::string name;          ///< "left camera", in its corner; may be empty
  bool undistorted = false;  ///< the image is shown without distortion, and a label says so
  bool mirrored = false;     ///< the image and all points are shown as in a mirror

  /// The centres to reach, in the order of the grid: row by row, the grid's first one first. The outline of
  /// the sheet is drawn around a whole grid; of another number of centres the discs only.
  std::vector<cv::Point2d> target;
  std::vector<cv::Point2d> found;  ///< centres that were found, in the same order
  std::vector<double> weights;     ///< of `found`; 0: not observed, not drawn. Empty: all are observed
  std::vector<std::vector<cv::Point2d>> kept;  ///< the centres of each view that is kept
};

enum class MapPlace { None, Inset, Whole };

/// All that the window shows at one moment. Texts may be empty: then their place is.
struct Picture {
  cv::Size window{1280, 800};  ///< pixels; of the result. At least 160 x 120
  cv::Size grid{4, 11};        ///< centres in a row, and rows, every other one shifted by half a distance
  std::vector<CameraPicture> cameras;  ///< one, or two side by side

  std::string instruction;  ///< what to do now
  Tone tone = Tone::Neutral;
  std::optional<double> closeness;  ///< 0 to 1: how near the sheet is to the target
  int view = 0;                     ///< which view is to be taken, from 1; 0: not shown
  int goal = 0;                     ///< how many there are to be; 0: that is not known
  std::string precision;            ///< "known to 0.42 px, goal 0.30 px"

  std::string notice;            ///< replaces everything but the keys: "The recording has ended"
  std::string message;           ///< fades: "View 3 taken back"
  double messageStrength = 1.0;  ///< 1: fresh, 0: gone
  double flash = 0.0;            ///< 1 when a view was taken this moment, 0: long ago
  std::vector<Key> keys;

  cv::Mat map;  ///< of uncertainty: any picture, BGR
  MapPlace mapPlace = MapPlace::None;
};

/// A text and where it is.
struct PlacedText {
  std::string what;  ///< "instruction", "view", "precision", ...
  Lettering text;
  cv::Rect box;
  Align align = Align::Left;
};

/// Where things are in the picture. Empty rectangles stand for what is not shown.
struct PictureLayout {
  cv::Size picture;
  cv::Rect head;                 ///< the panel of the instruction
  cv::Rect icon;                 ///< of its tone
  cv::Rect bar;                  ///< the closeness, all of it
  std::vector<cv::Rect> halves;  ///< places of the cameras' images, each with the shape of its image
  cv::Rect side;                 ///< the panel of view and precision
  cv::Rect steps;                ///< one mark for each view
  cv::Rect map;
  std::vector<PlacedText> texts;  ///< none over another, all in the picture
  std::vector<PlacedKey> keys;
};

PictureLayout LayoutOf(const Picture& picture);

/// Draws it; BGR, 8 bits, of the window's size. The images are not changed.
cv::Mat Draw(const Picture& picture);

}  // namespace guided
