/// Shapes of sheets in verdict files.
#include "common/SheetFile.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "PairVerdict.h"
#include "Process.h"
#include "Verdict.h"

namespace {

constexpr float UNIT = 0.02F;
const cv::Size GRID(4, 11);

CalibrationVerdict::Sheet Measured() {
  CalibrationVerdict::Sheet sheet;
  sheet.model = "bent";
  sheet.points = common::GridPoints(GRID, UNIT);
  for (size_t k = 0; k < 8; ++k) sheet.points[k].z = 0.002;
  return sheet;
}

std::string FaultOfFile(const std::string& path) {
  try {
    common::SheetPointsOf(path);
  } catch (const std::invalid_argument& fault) {
    return fault.what();
  }
  return "";
}

TEST(SheetFile, IsTheVerdictOnACameraOrAPair) {
  const support::TemporaryFolder folder;
  CalibrationVerdict camera;
  camera.sheet = Measured();
  support::WriteText(folder.File("camera.json"), camera.ToJson());
  EXPECT_EQ(common::SheetPointsOf(folder.File("camera.json")), Measured().points);
  PairVerdict pair;
  pair.sheet = Measured();
  support::WriteText(folder.File("pair.json"), pair.ToJson());
  EXPECT_EQ(common::SheetPointsOf(folder.File("pair.json")), Measured().points);
}

TEST(SheetFile, SaysWhyItHasNoShape) {
  const support::TemporaryFolder folder;
  const std::string none = "is no verdict on a calibration that measured the shape of its sheet";
  EXPECT_EQ(FaultOfFile(folder.File("missing.json")), "cannot be read");
  EXPECT_EQ(FaultOfFile(folder.Path()), "cannot be read");
  support::WriteText(folder.File("flat.json"), CalibrationVerdict().ToJson());
  EXPECT_EQ(FaultOfFile(folder.File("flat.json")), none);
  for (const std::string text : {"", "[]", "7", "{\"sheet\": 3}", "{\"sheet\": {\"points\": [[1]]}}"}) {
    support::WriteText(folder.File("broken.json"), text);
    EXPECT_EQ(FaultOfFile(folder.File("broken.json")), none) << text;
  }
}

TEST(SheetFile, IsThatOfTheGridInUse) {
  EXPECT_EQ(common::FaultOfSheet(Measured().points, GRID, UNIT), "");
  EXPECT_EQ(common::FaultOfSheet(Measured().points, GRID, 1.01F * UNIT), "")
      << "a distance measured again is that of the same sheet";
  EXPECT_EQ(common::FaultOfSheet(Measured().points, GRID, 2.0F * UNIT),
            "has the shape of another sheet, or of one with another --hdist");
  EXPECT_EQ(common::FaultOfSheet(Measured().points, {4, 9}, UNIT), "has a sheet of 44 circles, not of 36");
}

}  // namespace
