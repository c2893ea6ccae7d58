/// The numbers by which programs name finders, solvers and states. Class Calibrator publishes the same ones.
#pragma once

namespace velmora {

constexpr int FINDER_STANDARD = 0;
constexpr int FINDER_ROBUST = 1;

constexpr int SOLVER_OPENCV = 0;
constexpr int SOLVER_SPARSE = 1;

constexpr int SHEET_FLAT = 0;
constexpr int SHEET_BENT = 1;
constexpr int SHEET_FREE = 2;
constexpr int SHEET_AUTO = 3;

constexpr int STATUS_NOT_READY = 100;
constexpr int STATUS_READY = 200;
constexpr int STATUS_COMPLETED = 300;
constexpr int STATUS_PROGRESS = 400;

}  // namespace velmora
