/// Rendered frames that show a part of the grid, with their truth.
#include "finder/PartialScenes.h"

#include <algorithm>
#include <cmath>
#include <opencv2/calib3d.hpp>
#include <opencv2/imgproc.hpp>

#include "Renderer.h"
#include "Views.h"
#include "finder/Ambiguity.h"
#include "finder/DiscView.h"
#include "unit/Collection.h"

namespace unit {

namespace {

const cv::Size FRAME_SIZE(640, 480);
constexpr int FEWEST = 33;
/// A disc is seen wholly when its rim is this many pixels from the outermost ones; one that is cut is
/// anywhere else.
constexpr double CLEAR = 3.5;

world::Scene RandomScene(cv::RNG& random, const cv::Size& grid) {
  world::Scene scene;
  scene.sheet = world::Sheet(grid);
  scene.camera = world::CameraFromFieldOfView(FRAME_SIZE, random.uniform(45.0, 75.0),
                                              {random.uniform(-0.25, 0.25), 0.0, 0.0, 0.0, 0.0});
  scene.clutter = random.uniform(0, 2) * random.uniform(0, 60);
  scene.blur = random.uniform(0.0, 1.5);
  scene.noise = random.uniform(0.0, 6.0);
  scene.light = random.uniform(0.0, 0.4);
  scene.seed = random.next();
  return scene;
}

/// A pose with all discs inside; the border is where the grid's sides run when `along`.
bool RandomPose(cv::RNG& random, const world::Scene& scene, bool along, world::Pose& pose) {
  world::Appearance appearance;
  appearance.x = random.uniform(-1.0, 1.0);
  appearance.y = random.uniform(-1.0, 1.0);
  appearance.span = random.uniform(0.4, 0.9);
  const double direction = random.uniform(0.0, 2.0 * CV_PI);
  const double tilt = random.uniform(0.0, along ? 35.0 : 50.0);
  appearance.tiltX = tilt * std::cos(direction);
  appearance.tiltY = tilt * std::sin(direction);
  appearance.roll =
      along ? 90.0 * random.uniform(0, 4) + random.uniform(-6.0, 6.0) : random.uniform(-180.0, 180.0);
  return world::PlaceGrid(scene.camera, scene.sheet, appearance, 1.0, pose) &&
         world::Obliqueness(scene.sheet, pose) < 60.0;
}

/// Moves the pose sideways, to a side of the grid (unit steps), until `enough` says so.
template <typename Enough>
bool MoveOut(world::Pose& pose, const world::Scene& scene, const cv::Point2d& side, Enough enough) {
  cv::Matx33d R;
  cv::Rodrigues(pose.rvec, R);
  const cv::Vec3d outwards = R * cv::Vec3d(side.x, side.y, 0.0);
  // In the image only: nearer or farther it would change its size.
  const cv::Vec3d step = 0.1 * scene.sheet.Unit() * cv::Vec3d(outwards[0], outwards[1], 0.0);
  for (int k = 0; k < 400; ++k) {
    if (enough()) return true;
    pose.tvec += step;
  }
  return false;
}

/// The discs of a side that should be beyond the border.
bool IsLacking(Lack lack, bool first, const cv::Point& gridIndex) {
  if (lack == Lack::OneColumn) return first ? gridIndex.x == 0 : gridIndex.x == 7;
  const int rows = lack == Lack::OneRow ? 1 : 2;
  return first ? gridIndex.y < rows : gridIndex.y > 10 - rows;
}

std::vector<bool> WholeIn(const DiscView& view, double margin) {
  std::vector<bool> seen;
  for (const cv::Point& gridIndex : Places({4, 11})) seen.push_back(view.Inside(gridIndex, margin));
  return seen;
}

/// Cuts what should be cut, and nothing else; false when that pose cannot be.
bool CutByBorder(cv::RNG& random, Lack lack, const world::Scene& scene, world::Pose& pose) {
  const std::vector<cv::Point> gridIndices = Places({4, 11});
  const DiscView view(scene, pose);
  if (lack == Lack::Corner) {
    const double direction = random.uniform(0.0, 2.0 * CV_PI);
    const int missing = random.uniform(1, 12);
    return MoveOut(pose, scene, {std::cos(direction), std::sin(direction)}, [&] {
      const std::vector<bool> seen = WholeIn(view, 0.0);
      return 44 - std::count(seen.begin(), seen.end(), true) >= missing;
    });
  }
  const bool first = random.uniform(0, 2) == 1;
  const double sign = first ? -1.0 : 1.0;
  const cv::Point2d side = lack == Lack::OneColumn ? cv::Point2d(sign, 0.0) : cv::Point2d(0.0, sign);
  const bool gone = MoveOut(pose, scene, side, [&] {
    return std::none_of(gridIndices.begin(), gridIndices.end(), [&](const cv::Point& gridIndex) {
      return IsLacking(lack, first, gridIndex) && view.Inside(gridIndex, -1.0);
    });
  });
  return gone && std::all_of(gridIndices.begin(), gridIndices.end(), [&](const cv::Point& gridIndex) {
           return IsLacking(lack, first, gridIndex) || view.Inside(gridIndex, CLEAR);
         });
}

/// Something in front of the discs, of no straight outline, in some tone.
struct Obstacle {
  std::vector<cv::Point> outline;  ///< sixteenths of a pixel
  cv::Scalar tone;
};

Obstacle RandomObstacle(cv::RNG& random, const cv::Point2d& middle, double radius) {
  Obstacle obstacle;
  const double turn = random.uniform(0.0, 2.0 * CV_PI);
  const double longer = random.uniform(1.0, 2.0);
  std::vector<double> wave = {random.uniform(0.0, 6.3), random.uniform(0.0, 6.3)};
  for (int k = 0; k < 60; ++k) {
    const double angle = 2.0 * CV_PI * k / 60;
    const double r =
        radius * (1.0 + 0.15 * std::sin(2.0 * angle + wave[0]) + 0.1 * std::sin(3.0 * angle + wave[1]));
    const cv::Point2d p(longer * r * std::cos(angle), r * std::sin(angle));
    const cv::Point2d at = middle + cv::Point2d(p.x * std::cos(turn) - p.y * std::sin(turn),
                                                p.x * std::sin(turn) + p.y * std::cos(turn));
    obstacle.outline.emplace_back(cvRound(16.0 * at.x), cvRound(16.0 * at.y));
  }
  switch (random.uniform(0, 4)) {
    case 0:
      obstacle.tone = {130, 150, 200};  // a hand
      break;
    case 1:
      obstacle.tone = cv::Scalar::all(255);  // a reflection
      break;
    case 2:
      obstacle.tone = cv::Scalar::all(40);
      break;
    default:
      obstacle.tone = cv::Scalar::all(random.uniform(60, 215));
      break;
  }
  return obstacle;
}

/// The pixels that the obstacle, blurred, changes.
cv::Mat Put(cv::Mat& image, const Obstacle& obstacle) {
  cv::Mat share(image.size(), CV_8UC1, cv::Scalar(0));
  cv::fillPoly(share, std::vector<std::vector<cv::Point>>{obstacle.outline}, cv::Scalar(255), cv::LINE_AA, 4);
  cv::GaussianBlur(share, share, {}, 1.0);
  for (int y = 0; y < image.rows; ++y) {
    for (int x = 0; x < image.cols; ++x) {
      const double s = share.at<unsigned char>(y, x) / 255.0;
      cv::Vec3b& pixel = image.at<cv::Vec3b>(y, x);
      for (int c = 0; c < 3; ++c)
        pixel[c] = cv::saturate_cast<unsigned char>((1.0 - s) * pixel[c] + s * obstacle.tone[c]);
    }
  }
  return share > 0;
}

bool Touches(const cv::Mat& mask, const DiscView& view, const cv::Point& gridIndex) {
  std::vector<cv::Point2d> points = view.Rim(gridIndex);
  points.push_back(view.Centre(gridIndex));
  return std::any_of(points.begin(), points.end(), [&](const cv::Point2d& p) {
    const cv::Rect around(cvRound(p.x) - 1, cvRound(p.y) - 1, 3, 3);
    const cv::Rect inside = around & cv::Rect({}, mask.size());
    return inside.area() > 0 && cv::countNonZero(mask(inside)) > 0;
  });
}

/// The grid indices of one more row or column at each side.
std::vector<cv::Point> RoundAbout(const cv::Size& grid) {
  std::vector<cv::Point> around;
  for (int x = -1; x <= 2 * grid.width; ++x) {
    around.emplace_back(x, -1);
    around.emplace_back(x, grid.height);
  }
  for (int y = 0; y < grid.height; ++y) {
    around.emplace_back(-1, y);
    around.emplace_back(2 * grid.width, y);
  }
  return around;
}

cv::RNG Random(int number, unsigned kind) {
  return cv::RNG(5000011U * static_cast<unsigned>(number + 1) + kind);
}

}  // namespace

int PartialFrame::Whole() const {
  return static_cast<int>(std::count(whole.begin(), whole.end(), true));
}

std::string NameOf(Lack lack) {
  switch (lack) {
    case Lack::OneRow:
      return "OneRow";
    case Lack::TwoRows:
      return "TwoRows";
    case Lack::OneColumn:
      return "OneColumn";
    case Lack::Corner:
      return "Corner";
    case Lack::Bite:
      return "Bite";
    case Lack::Nothing:
      break;
  }
  return "Nothing";
}

PartialFrame RandomPartialFrame(Lack lack, int number) {
  cv::RNG random = Random(number, 7919U * static_cast<unsigned>(lack));
  for (;;) {
    const world::Scene scene = RandomScene(random, GRID);
    const bool bite = lack == Lack::Bite;
    world::Pose pose;
    if (!RandomPose(random, scene, lack < Lack::Corner, pose)) continue;
    if (!bite && lack != Lack::Nothing && !CutByBorder(random, lack, scene, pose)) continue;
    const DiscView view(scene, pose);
    PartialFrame frame;
    frame.whole = WholeIn(view, CLEAR);
    frame.centres = world::TrueCentres(scene.camera.lens, scene.sheet, pose);
    if (frame.Whole() < FEWEST) continue;
    for (const cv::Point& gridIndex : Places(GRID)) frame.middles.push_back(view.Middle(gridIndex));
    frame.image = world::Renderer(scene).Render(pose);
    cv::Mat hidden(frame.image.size(), CV_8UC1, cv::Scalar(0));
    const std::vector<cv::Point> gridIndices = Places(GRID);
    if (bite) {
      const size_t middle = static_cast<size_t>(random.uniform(0, 44));
      const double step = cv::norm(frame.centres[0] - frame.centres[8]) / 2.0;
      hidden =
          Put(frame.image, RandomObstacle(random, frame.centres[middle], random.uniform(0.5, 1.6) * step));
      for (size_t k = 0; k < gridIndices.size(); ++k) {
        if (Touches(hidden, view, gridIndices[k])) frame.whole[k] = false;
      }
    }
    if (frame.Whole() < FEWEST || (frame.Whole() == 44) != (lack == Lack::Nothing)) continue;
    for (const cv::Point& gridIndex : gridIndices) frame.cut.push_back(!view.Inside(gridIndex, 0.0));
    frame.telling = Tells(frame.whole, [&](const cv::Point& gridIndex) {
      return view.Inside(gridIndex, CLEAR) && view.OnPaper(gridIndex) && !Touches(hidden, view, gridIndex);
    });
    return frame;
  }
}

OtherSheet RandomOtherSheet(const cv::Size& grid, bool cut, int number) {
  cv::RNG random = Random(number, static_cast<unsigned>(97 * grid.width + grid.height + (cut ? 31 : 0)));
  OtherSheet sheet;
  sheet.gridIndices = Places(grid);
  for (;;) {
    const world::Scene scene = RandomScene(random, grid);
    world::Pose pose;
    if (!RandomPose(random, scene, random.uniform(0, 2) == 1, pose)) continue;
    const DiscView view(scene, pose);
    const auto isInside = [&](const cv::Point& gridIndex) {
      return view.Inside(gridIndex, cut ? 0.0 : CLEAR);
    };
    if (cut) {
      const double direction = random.uniform(0.0, 2.0 * CV_PI);
      const int missing = random.uniform(1, 12);
      const bool gone = MoveOut(pose, scene, {std::cos(direction), std::sin(direction)}, [&] {
        return sheet.gridIndices.size() -
                   static_cast<size_t>(
                       std::count_if(sheet.gridIndices.begin(), sheet.gridIndices.end(), isInside)) >=
               static_cast<size_t>(missing);
      });
      if (!gone) continue;
    } else if (const std::vector<cv::Point> around = RoundAbout(grid);
               !std::all_of(around.begin(), around.end(), isInside)) {
      continue;
    }
    sheet.image = world::Renderer(scene).Render(pose);
    for (const cv::Point& gridIndex : sheet.gridIndices) sheet.middles.push_back(view.Middle(gridIndex));
    return sheet;
  }
}

}  // namespace unit
