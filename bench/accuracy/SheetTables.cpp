/// The tables of sheets that are not what they should be: cameras computed with a flat sheet beside those
/// computed with the shape that the views ask for.
#include <algorithm>
#include <array>
#include <cmath>
#include <iostream>
#include <memory>

#include "Calibrator.h"
#include "Cameras.h"
#include "LensError.h"
#include "Photographs.h"
#include "Seed.h"
#include "Solve.h"
#include "Tables.h"
#include "Views.h"
#include "model/TargetGeometry.h"
#include "quality/Assessment.h"
#include "quality/SheetChoice.h"

using namespace velmora;

namespace accuracy {

namespace {

constexpr double HALF_SIDE = 0.1;  // of the sheet, metres
constexpr double NOISE = 0.1;      // pixels

/// What is wrong with a sheet. Bends are what x^2, x y and y^2 come to at half the longer side, metres.
struct Fault {
  const char* name;
  cv::Vec3d bend;
  double changing = 0.0;  ///< standard deviation of each of these from view to view
  double stretch = 0.0;   ///< share of its length
  double misprint = 0.0;  ///< standard deviation of a coordinate of a disc, metres
  std::size_t views = 12;
};

const std::vector<Fault>& Faults() {
  static const std::vector<Fault> faults = {
      {"none", {}},
      {"none", {}, 0.0, 0.0, 0.0, 6},
      {"none", {}, 0.0, 0.0, 0.0, 25},
      {"bowl of 0.25 mm", {0.00025, 0.0, 0.00025}},
      {"cylinder of 0.5 mm", {0.0, 0.0, 0.0005}},
      {"cylinder of 2 mm aslant", {0.0005, 0.001, 0.0015}},
      {"twisted by 1 mm", {0.0, 0.001, 0.0}},
      {"stretched by 0.2 %", {}, 0.0, 0.002},
      {"0.5 mm + stretched by 0.2 %", {0.0, 0.0005, 0.0005}, 0.0, 0.002},
      {"discs off by 0.1 mm", {}, 0.0, 0.0, 0.0001},
      {"0.5 mm + by hand 0.3 mm", {0.0, 0.0, 0.0005}, 0.0003},
      {"by hand 0.3 mm", {}, 0.0003},
      {"0.5 mm + by hand 0.3 mm", {0.0, 0.0, 0.0005}, 0.0003, 0.0, 0.0, 6},
      {"0.5 mm + by hand 0.3 mm + discs 0.03 mm", {0.0, 0.0, 0.0005}, 0.0003, 0.0, 0.00003, 24}};
  return faults;
}

void Bend(const cv::Vec3d& bend, const cv::Point3d& middle, std::vector<cv::Point3d>& points) {
  for (cv::Point3d& point : points) {
    const double a = (point.x - middle.x) / HALF_SIDE;
    const double b = (point.y - middle.y) / HALF_SIDE;
    point.z += bend[0] * a * a + bend[1] * a * b + bend[2] * b * b;
  }
}

/// Views of such a sheet by a camera.
Points ViewsOf(const Fault& fault, const world::Camera& camera, std::uint64_t seed) {
  const world::Sheet sheet(GRID, static_cast<double>(UNIT));
  const cv::Point3d middle = sheet.GridMiddle();
  cv::RNG random(world::MixSeeds(seed, 4711));
  std::vector<cv::Point3d> points = sheet.GridPoints();
  for (cv::Point3d& point : points) {
    point.y += fault.stretch * (point.y - middle.y);
    point += cv::Point3d(random.gaussian(fault.misprint), random.gaussian(fault.misprint), 0.0);
  }
  Bend(fault.bend, middle, points);
  Points views;
  for (const world::Pose& pose : world::SampleViews(camera, static_cast<int>(fault.views), seed, sheet)) {
    std::vector<cv::Point3d> own = points;
    const double by = fault.changing;
    Bend({random.gaussian(by), random.gaussian(by), random.gaussian(by)}, middle, own);
    views.push_back(world::ProjectPoints(camera.lens, own, pose));
    for (cv::Point2d& pixel : views.back()) {
      pixel += cv::Point2d(random.gaussian(NOISE), random.gaussian(NOISE));
    }
  }
  return views;
}

SparseResult Computed(const std::vector<std::vector<cv::Point3d>>& targets, const Points& views,
                      const cv::Size& size, SheetShape shape) {
  SparseOptions options;
  options.sheet = shape;
  options.threads = 1;
  return SolveIntrinsicsWithSheet(targets, views, size, Calibrator::MODEL_CLASSIC, options);
}

/// Of a coordinate of projections where the views are, pixels.
double Apart(const world::Lens& a, const world::Lens& b, const cv::Size& size, const Points& views) {
  return world::MeanProjectionDistance(a, b, size, world::CoveredRegion(views), world::Alignment::Rotated)
             .rms /
         std::sqrt(2.0);
}

struct OneSheet {
  double flat = 0.0;    ///< the error with a flat sheet
  double best = 0.0;    ///< with the shape that was chosen
  double ideal = 0.0;   ///< of a flat board in the same poses
  double told = 0.0;    ///< what its verdict lets expect
  bool isFlat = false;  ///< whether none was
};

OneSheet TriedOn(const Fault& fault, std::uint64_t seed) {
  const world::Camera camera = MakeCamera(LensKind::Light, 60.0);
  const Points views = ViewsOf(fault, camera, seed);
  const std::vector<std::vector<cv::Point3d>> targets(views.size(), MakeObjectTemplate(GRID, UNIT));
  const SparseResult flat = Computed(targets, views, camera.size, SheetShape::Flat);
  const SparseResult best = Computed(targets, views, camera.size, SheetShape::Auto);
  OneSheet one;
  one.flat = Apart(camera.lens, world::LensFrom(flat.K, flat.D), camera.size, views);
  one.best = Apart(camera.lens, world::LensFrom(best.K, best.D), camera.size, views);
  Fault none{"none", {}};
  none.views = fault.views;
  const Points ideal = ViewsOf(none, camera, seed);
  const SparseResult board = Computed(targets, ideal, camera.size, SheetShape::Flat);
  one.ideal = Apart(camera.lens, world::LensFrom(board.K, board.D), camera.size, ideal);
  one.told = AssessIntrinsics(targets, views, camera.size, best, 0.0).ExpectedInData();
  one.isFlat = best.solution->sheet.IsFlat();
  return one;
}

Row RowOf(const Fault& fault, int trials) {
  std::vector<double> flat;
  std::vector<double> best;
  std::vector<double> ideal;
  std::vector<double> told;
  double untouched = 0.0;
  for (int seed = 1; seed <= trials; ++seed) {
    const OneSheet one = TriedOn(fault, static_cast<std::uint64_t>(seed));
    flat.push_back(one.flat);
    best.push_back(one.best);
    ideal.push_back(one.ideal);
    told.push_back(one.told);
    untouched += one.isFlat ? 1.0 : 0.0;
  }
  return {{{"sheet", fault.name}, {"views", Text(static_cast<double>(fault.views))}, {"sets", Text(trials)}},
          {{"flat", Median(flat)},
           {"with shape", Median(best)},
           {"with shape 90", Quantile(best, 0.9)},
           {"flat board", Median(ideal)},
           {"told / true", RootMeanSquare(told) / RootMeanSquare(best)},
           {"taken for flat", untouched / trials, true}}};
}

SparseResult ComputedFrom(const Photographs& photographs, SheetShape shape) {
  SparseOptions options;
  options.sheet = shape;
  options.robust = true;
  options.threads = 1;
  options.discRadius = 0.4 * static_cast<double>(UNIT);
  options.deviations = photographs.deviations;
  return SolveIntrinsicsWithSheet(photographs.targets, photographs.views, photographs.size,
                                  Calibrator::MODEL_CLASSIC, options);
}

/// How far two halves of photographs are apart as two cameras: medians with a flat sheet, and with the shape
/// that each half asks for.
std::array<double, 2> HalvesApart(const Photographs& all, int trials) {
  const std::size_t half = all.views.size() / 2;
  std::array<std::vector<double>, 2> apart;
  for (int seed = 1; seed <= trials; ++seed) {
    const std::vector<std::size_t> order =
        Shuffled(all.views.size(), world::MixSeeds(static_cast<std::uint64_t>(seed), half));
    const auto middle = order.begin() + static_cast<std::ptrdiff_t>(half);
    for (const SheetShape shape : {SheetShape::Flat, SheetShape::Auto}) {
      const SparseResult a = ComputedFrom(Chosen(all, {order.begin(), middle}), shape);
      const SparseResult b = ComputedFrom(Chosen(all, {middle, order.end()}), shape);
      apart[shape == SheetShape::Flat ? 0 : 1].push_back(
          Apart(world::LensFrom(a.K, a.D), world::LensFrom(b.K, b.D), all.size, all.views));
    }
  }
  return {Median(apart[0]), Median(apart[1])};
}

Row HalvesOf(const std::string& name, const Photographs& fine, const Photographs& plain, int trials) {
  const std::array<double, 2> apart = HalvesApart(fine, trials);
  const std::array<double, 2> plainApart = HalvesApart(plain, trials);
  return {{{"photographs", name},
           {"of", Text(static_cast<double>(fine.views.size()))},
           {"pairs of cameras", Text(trials)}},
          {{"flat", apart[0]},
           {"with shape", apart[1]},
           {"share", apart[1] / apart[0]},
           {"plain, flat", plainApart[0]},
           {"plain, with shape", plainApart[1]}}};
}

}  // namespace

Table SheetsTable(const Effort& effort) {
  Table table{
      "sheets",
      "Sheets that are not flat",
      "Projected points of sheets that are bent, stretched, badly printed or held by hand, with 0.1 px of "
      "noise: how far projections are off where there is data, with the sheet taken for flat and with the "
      "shape that the views ask for. Flat board: what an ideal one gives in the same poses. In pixels of a "
      "coordinate, after the best rotation; classic model.",
      {}};
  for (const Fault& fault : Faults()) table.rows.push_back(RowOf(fault, effort.Of(70)));
  return table;
}

Table HalvesTable(const Effort& effort) {
  Table table{
      "halves",
      "Two halves of the same photographs",
      "Two cameras, each computed from one half of the photographs of a sheet, classic model: how far they "
      "are apart where any view was, with the sheet taken for flat and with the shape that each half asks "
      "for; plain: with centres as the search gives them. In pixels of a coordinate, after the best "
      "rotation.",
      {}};
  for (const char* const name : PHOTOGRAPHS) {
    const std::unique_ptr<Photographs> fine = PhotographsAtHand(name);
    if (fine == nullptr) continue;
    table.rows.push_back(HalvesOf(name, *fine, *PhotographsAtHand(name, false), effort.Of(60)));
  }
  return table;
}

}  // namespace accuracy
