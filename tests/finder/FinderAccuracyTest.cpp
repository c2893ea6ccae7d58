/// How near the truth both searches' centres are, scene by scene.
#include <gtest/gtest.h>

#include <opencv2/imgproc.hpp>

#include "Renderer.h"
#include "Truth.h"
#include "Views.h"
#include "finder/FinderScenes.h"
#include "finder/RobustFinder.h"
#include "finder/StandardFinder.h"
#include "unit/Collection.h"

using namespace velmora;

namespace {

using Centres = std::vector<cv::Point2d>;

/// What is true of all frames of a scene.
struct Conditions {
  const char* name;
  double blur = 0.7;
  double noise = 2.0;
  int clutter = 0;
  double tiltFrom = 0.0;
  double tiltTo = 30.0;
  double spanFrom = 0.5;
  double spanTo = 0.9;
  double lens = 0.0;  ///< the first coefficient of distortion
  int ink = 30;
  int paper = 225;
  bool negative = false;

  Conditions(const char* called, void (*change)(Conditions&)) : name(called) { change(*this); }
};

void PrintTo(const Conditions& conditions, std::ostream* out) {
  *out << conditions.name;
}

struct RenderedView {
  cv::Mat image;
  cv::Mat dark;  ///< with dark discs, all that the standard search finds
  Centres truth;
};

RenderedView Render(const Conditions& conditions, int number) {
  cv::RNG random(77001U * static_cast<unsigned>(number + 1));
  for (;;) {
    world::Scene scene;
    scene.camera = world::CameraFromFieldOfView(unit::FRAME, 60.0, {conditions.lens, 0.0, 0.0, 0.0, 0.0});
    scene.blur = conditions.blur;
    scene.noise = conditions.noise;
    scene.clutter = conditions.clutter;
    scene.light = 0.2;
    scene.inkLevel = conditions.ink;
    scene.paperLevel = conditions.paper;
    scene.seed = random.next();
    world::Appearance appearance;
    appearance.x = random.uniform(-0.7, 0.7);
    appearance.y = random.uniform(-0.7, 0.7);
    appearance.span = random.uniform(conditions.spanFrom, conditions.spanTo);
    const double direction = random.uniform(0.0, 2.0 * CV_PI);
    const double tilt = random.uniform(conditions.tiltFrom, conditions.tiltTo);
    appearance.tiltX = tilt * std::cos(direction);
    appearance.tiltY = tilt * std::sin(direction);
    appearance.roll = random.uniform(-180.0, 180.0);
    world::Pose pose;
    if (!world::PlaceGrid(scene.camera, scene.sheet, appearance, 1.0, pose)) continue;
    RenderedView rendered;
    rendered.image = world::Renderer(scene).Render(pose);
    rendered.dark = rendered.image.clone();
    if (conditions.negative) rendered.image = cv::Scalar::all(255) - rendered.image;
    rendered.truth = world::TrueCentres(scene.camera.lens, scene.sheet, pose);
    return rendered;
  }
}

/// The finds of one search, and their errors.
struct Tally {
  int found = 0;
  double squaredDistances = 0.0;  ///< of the frames that both find
  int points = 0;

  void Compare(const Centres& centres, const Centres& truth) {
    for (size_t k = 0; k < truth.size(); ++k) {
      const cv::Point2d off = centres[k] - truth[k];
      squaredDistances += off.dot(off);
    }
    points += static_cast<int>(truth.size());
  }
  double Rms() const { return std::sqrt(squaredDistances / std::max(1, points)); }
};

constexpr int FRAMES = 24;

class FinderAccuracy : public testing::TestWithParam<Conditions> {};

TEST_P(FinderAccuracy, IsNoWorseThanThatOfTheStandardSearch) {
  Tally standard;
  Tally robust;
  Tally all;
  for (int number = 0; number < FRAMES; ++number) {
    const RenderedView rendered = Render(GetParam(), number);
    Centres ofStandard;
    Centres ofRobust;
    // A find in a wrong order is none.
    const bool found =
        FindGridStandard(rendered.dark, unit::GRID, ofStandard) && unit::InOrder(ofStandard, rendered.truth);
    if (found) ++standard.found;
    if (!FindGridRobust(rendered.image, unit::GRID, ofRobust)) continue;
    ++robust.found;
    EXPECT_TRUE(unit::InOrder(ofRobust, rendered.truth)) << number;
    all.Compare(ofRobust, rendered.truth);
    if (!found) continue;
    standard.Compare(ofStandard, rendered.truth);
    robust.Compare(ofRobust, rendered.truth);
  }
  std::cout << "| " << GetParam().name
            << cv::format(" | %d | %d | %.3f | %.3f | %.3f |", standard.found, robust.found, standard.Rms(),
                          robust.Rms(), all.Rms())
            << std::endl;
  EXPECT_GE(robust.found, standard.found);
  EXPECT_GE(robust.found, FRAMES * 9 / 10);
  EXPECT_LE(robust.Rms(), 1.02 * standard.Rms() + 0.002);
  // Most of it is that the middle of a disc's image is not the image of its middle.
  EXPECT_LT(all.Rms(), 0.35);
}

INSTANTIATE_TEST_SUITE_P(
    Scenes, FinderAccuracy,
    testing::Values(Conditions("clean", [](Conditions& c) { c.noise = c.blur = 0.0; }),
                    Conditions("usual", [](Conditions&) {}),
                    Conditions("blur of 2 px", [](Conditions& c) { c.blur = 2.0; }),
                    Conditions("noise of 10 levels", [](Conditions& c) { c.noise = 10.0; }),
                    Conditions("low contrast", [](Conditions& c) { c.ink = 100, c.paper = 130; }),
                    Conditions("far", [](Conditions& c) { c.spanFrom = 0.25, c.spanTo = 0.4; }),
                    Conditions("tilt of 45 to 60 degrees",
                               [](Conditions& c) { c.tiltFrom = 45.0, c.tiltTo = 60.0; }),
                    Conditions("lens of k1 -0.3", [](Conditions& c) { c.lens = -0.3; }),
                    Conditions("clutter of 60 objects", [](Conditions& c) { c.clutter = 60; }),
                    Conditions("light on dark", [](Conditions& c) { c.negative = true; })));

}  // namespace
