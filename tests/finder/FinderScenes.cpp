/// Rendered frames for the robust search, with their truth.
#include "finder/FinderScenes.h"

#include <opencv2/imgproc.hpp>

#include "Renderer.h"
#include "Views.h"
#include "finder/Pattern.h"

using namespace velmora;

namespace unit {

namespace {

constexpr int PAPER = 235;
constexpr int INK = 25;
const cv::Size FRAME_SIZE(640, 480);

/// The library's own circles are half a pixel larger than asked for.
void PutDisc(cv::Mat& image, double x, double y, double radius) {
  const cv::Rect box(cvFloor(x - radius) - 1, cvFloor(y - radius) - 1, cvCeil(2.0 * radius) + 4,
                     cvCeil(2.0 * radius) + 4);
  const cv::Rect inside = box & cv::Rect(cv::Point(), image.size());
  for (int row = inside.y; row < inside.y + inside.height; ++row) {
    for (int column = inside.x; column < inside.x + inside.width; ++column) {
      const double share = std::min(1.0, std::max(0.0, radius + 0.5 - std::hypot(column - x, row - y)));
      unsigned char& pixel = image.at<unsigned char>(row, column);
      pixel = cv::saturate_cast<unsigned char>(pixel + share * (INK - pixel));
    }
  }
}

cv::Mat Clutter(cv::RNG& random, int most) {
  world::Scene scene;
  scene.clutter = random.uniform(0, most);
  scene.seed = random.next();
  cv::Mat grey;
  cv::cvtColor(world::Renderer(scene).RenderEmpty(), grey, cv::COLOR_BGR2GRAY);
  return grey;
}

cv::Mat Noise(cv::RNG& random) {
  cv::Mat noise(FRAME_SIZE, CV_8UC1);
  random.fill(noise, cv::RNG::NORMAL, 128.0, random.uniform(1.0, 60.0));
  const double blur = random.uniform(0.0, 6.0);
  if (blur > 0.5) cv::GaussianBlur(noise, noise, cv::Size(), blur);
  if (random.uniform(0, 2) == 1) cv::normalize(noise, noise, 0.0, 255.0, cv::NORM_MINMAX);
  return noise;
}

cv::Mat Text(cv::RNG& random) {
  cv::Mat page(700, 900, CV_8UC1, cv::Scalar(PAPER));
  const bool circles = random.uniform(0, 3) == 0;
  for (int line = 0; line < 20; ++line) {
    std::string text;
    for (int k = 0; k < 40; ++k) {
      text += circles ? "o .o"[random.uniform(0, 4)] : static_cast<char>(random.uniform(33, 126));
    }
    cv::putText(page, text, {20, 40 + line * 33}, cv::FONT_HERSHEY_SIMPLEX, 0.8, INK, 2, cv::LINE_AA);
  }
  return page;
}

cv::Mat Chessboard(cv::RNG& random) {
  constexpr int SIDE = 40;
  // Half of them have their dark squares just where the grid has its discs.
  const bool alike = random.uniform(0, 2) == 1;
  const cv::Size squares = alike ? cv::Size(8, 11) : cv::Size(random.uniform(5, 14), random.uniform(5, 14));
  cv::Mat board((squares.height + 2) * SIDE, (squares.width + 2) * SIDE, CV_8UC1, cv::Scalar(PAPER));
  for (int row = 0; row < squares.height; ++row) {
    for (int column = row % 2; column < squares.width; column += 2) {
      board(cv::Rect((column + 1) * SIDE, (row + 1) * SIDE, SIDE, SIDE)).setTo(INK);
    }
  }
  return board;
}

/// Straight rows of discs.
cv::Mat StraightDots(const cv::Size& dots, double radius) {
  constexpr int PITCH = 40;
  cv::Mat sheet((dots.height + 1) * PITCH, (dots.width + 1) * PITCH, CV_8UC1, cv::Scalar(PAPER));
  for (int row = 1; row <= dots.height; ++row) {
    for (int column = 1; column <= dots.width; ++column) PutDisc(sheet, column * PITCH, row * PITCH, radius);
  }
  return sheet;
}

cv::Mat OtherDots(cv::RNG& random) {
  const double radius = random.uniform(8.0, 15.0);
  const int kind = random.uniform(0, 3);
  if (kind == 0) return StraightDots({4, 11}, radius);
  if (kind == 1) return StraightDots({random.uniform(3, 16), random.uniform(3, 16)}, radius);
  cv::Size grid(4, 11);
  while (grid == cv::Size(4, 11)) grid = {random.uniform(2, 9), random.uniform(3, 16)};
  return FlatGrid(grid, random.uniform(0.3, 0.5), 30.0);
}

constexpr int SHAPE_PITCH = 40;

/// Shapes of that number of corners, as far from their middles, at the grid's points.
cv::Mat CorneredShapes(int corners, double radius, double rotation) {
  cv::Mat sheet(13 * SHAPE_PITCH, 10 * SHAPE_PITCH, CV_8UC1, cv::Scalar(PAPER));
  for (const cv::Point& gridIndex : finder::PatternIndices({4, 11})) {
    const cv::Point2d at(SHAPE_PITCH * (gridIndex.x + 1.5), SHAPE_PITCH * (gridIndex.y + 1.5));
    std::vector<cv::Point> outline;
    for (int corner = 0; corner < corners; ++corner) {
      const double angle = rotation + 2.0 * CV_PI * corner / corners;
      // In sixteenths of a pixel.
      outline.emplace_back(cvRound(16.0 * (at.x + radius * std::cos(angle))),
                           cvRound(16.0 * (at.y + radius * std::sin(angle))));
    }
    cv::fillConvexPoly(sheet, outline, cv::Scalar(INK), cv::LINE_AA, 4);
  }
  return sheet;
}

/// The flat image seen from somewhere, before clutter, blurred and noisy. `shrunk` becomes how much a
/// length shrinks where the sheet leans most, about.
cv::Mat ViewedFromSomewhere(const cv::Mat& flat, cv::RNG& random, double* shrunk = nullptr) {
  const double scale = std::min(static_cast<double>(FRAME_SIZE.width) / flat.cols,
                                static_cast<double>(FRAME_SIZE.height) / flat.rows) *
                       random.uniform(0.4, 1.1);
  const double rotation = random.uniform(0.0, 2.0 * CV_PI);
  const double squeeze = random.uniform(0.4, 1.0);
  if (shrunk != nullptr) *shrunk = scale * squeeze;
  const cv::Point2d middle(FRAME_SIZE.width * random.uniform(0.4, 0.6),
                           FRAME_SIZE.height * random.uniform(0.4, 0.6));
  std::vector<cv::Point2f> from;
  std::vector<cv::Point2f> to;
  for (const cv::Point2d& corner :
       {cv::Point2d(-0.5, -0.5), cv::Point2d(0.5, -0.5), cv::Point2d(0.5, 0.5), cv::Point2d(-0.5, 0.5)}) {
    const cv::Point2d p(corner.x * flat.cols * scale, corner.y * flat.rows * scale);
    const cv::Point2d turned(p.x * std::cos(rotation) - p.y * std::sin(rotation),
                             squeeze * (p.x * std::sin(rotation) + p.y * std::cos(rotation)));
    const cv::Point2d off(random.uniform(-20.0, 20.0), random.uniform(-20.0, 20.0));
    from.emplace_back((corner.x + 0.5) * flat.cols, (corner.y + 0.5) * flat.rows);
    to.emplace_back(middle + turned + off);
  }
  cv::Mat viewed = Clutter(random, 200);
  cv::warpPerspective(flat, viewed, cv::getPerspectiveTransform(from, to), FRAME_SIZE, cv::INTER_AREA,
                      cv::BORDER_TRANSPARENT);
  cv::GaussianBlur(viewed, viewed, cv::Size(), random.uniform(0.3, 2.0));
  cv::Mat noise(FRAME_SIZE, CV_16SC1);
  random.fill(noise, cv::RNG::NORMAL, 0.0, random.uniform(0.0, 8.0));
  cv::add(viewed, noise, viewed, cv::noArray(), CV_8U);
  return viewed;
}

}  // namespace

FinderFrame RandomFinderFrame(int number) {
  cv::RNG random(1000003U * static_cast<unsigned>(number + 1));
  FinderFrame frame;
  for (;;) {
    world::Scene scene;
    scene.camera = world::CameraFromFieldOfView(FRAME_SIZE, random.uniform(45.0, 75.0),
                                                {random.uniform(-0.4, 0.4), 0.0, 0.0, 0.0, 0.0});
    scene.clutter = random.uniform(0, 2) * random.uniform(0, 200);
    scene.blur = random.uniform(0.0, 2.0);
    scene.noise = random.uniform(0.0, 10.0);
    scene.light = random.uniform(0.0, 0.5);
    scene.seed = random.next();
    world::Appearance appearance;
    appearance.x = random.uniform(-1.0, 1.0);
    appearance.y = random.uniform(-1.0, 1.0);
    appearance.span = random.uniform(0.3, 0.95);
    const double direction = random.uniform(0.0, 2.0 * CV_PI);
    const double tilt = random.uniform(0.0, 75.0);
    appearance.tiltX = tilt * std::cos(direction);
    appearance.tiltY = tilt * std::sin(direction);
    appearance.roll = random.uniform(-180.0, 180.0);
    world::Pose pose;
    if (!world::PlaceGrid(scene.camera, scene.sheet, appearance, 1.0, pose)) continue;
    frame.obliqueness = world::Obliqueness(scene.sheet, pose);
    if (frame.obliqueness > 75.0) continue;
    frame.image = world::Renderer(scene).Render(pose);
    frame.centres = world::TrueCentres(scene.camera.lens, scene.sheet, pose);
    return frame;
  }
}

cv::Mat RandomForeignFrame(int number) {
  cv::RNG random(7000003U * static_cast<unsigned>(number + 1));
  switch (number % 5) {
    case 0:
      return Clutter(random, 600);
    case 1:
      return Noise(random);
    case 2:
      return ViewedFromSomewhere(Text(random), random);
    case 3:
      return ViewedFromSomewhere(Chessboard(random), random);
    default:
      return ViewedFromSomewhere(OtherDots(random), random);
  }
}

CorneredFrame RandomCorneredFrame(int number) {
  cv::RNG random(9000011U * static_cast<unsigned>(number + 1));
  CorneredFrame frame;
  frame.corners = random.uniform(3, 6);
  const double radius = SHAPE_PITCH * random.uniform(0.3, 0.7);
  const cv::Mat sheet = CorneredShapes(frame.corners, radius, random.uniform(0.0, 2.0 * CV_PI));
  double shrunk = 0.0;
  frame.image = ViewedFromSomewhere(sheet, random, &shrunk);
  frame.least = 2.0 * radius * std::cos(CV_PI / frame.corners) * shrunk;
  return frame;
}

cv::Mat FlatGrid(const cv::Size& grid, double radius, double step) {
  const int margin = cvRound(2.0 * step);
  cv::Mat sheet(cvRound((grid.height - 1) * step) + 2 * margin,
                cvRound((2 * grid.width - 1) * step) + 2 * margin, CV_8UC1, cv::Scalar(PAPER));
  for (int row = 0; row < grid.height; ++row) {
    for (int k = 0; k < grid.width; ++k) {
      PutDisc(sheet, margin + step * (2 * k + row % 2), margin + step * row, radius * step);
    }
  }
  return sheet;
}

bool InOrder(const std::vector<cv::Point2d>& found, const std::vector<cv::Point2d>& truth) {
  if (found.size() != truth.size()) return false;
  for (size_t k = 0; k < found.size(); ++k) {
    for (size_t other = 0; other < truth.size(); ++other) {
      if (other != k && cv::norm(found[k] - truth[other]) <= cv::norm(found[k] - truth[k])) return false;
    }
  }
  return true;
}

}  // namespace unit
