package com.velotrix.quiverleaf.sdk;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.awt.Color;
import java.awt.Graphics2D;
import java.awt.image.BufferedImage;
import java.nio.file.Files;
import java.nio.file.Path;
import org.junit.jupiter.api.DisplayNameGeneration;
import org.junit.jupiter.api.DisplayNameGenerator;
import org.junit.jupiter.api.Test;

/** The choice of search and solver, and the verdict. */
@DisplayNameGeneration(DisplayNameGenerator.ReplaceUnderscores.class)
class SolvingTest {
  private static final int UNKNOWN = 1_000_000;

  @Test
  void choices_reach_the_engine() {
    try (Calibrator calibrator = Calibrator.builder().build()) {
      int id = calibrator.id();
      calibrator.setRobust(true);
      calibrator.setDiscRadius(0.008);
      calibrator.setFinder(Finder.STANDARD);
      calibrator.setSolver(Solver.OPENCV);
      assertEquals(Finder.STANDARD.code(), EngineChoices.nGetFinder(id));
      assertEquals(Solver.OPENCV.code(), EngineChoices.nGetSolver(id));
      calibrator.setFinder(Finder.ROBUST);
      calibrator.setSolver(Solver.SPARSE);
      assertEquals(Finder.ROBUST.code(), EngineChoices.nGetFinder(id));
      assertEquals(Solver.SPARSE.code(), EngineChoices.nGetSolver(id));
      for (double radius : new double[] {-1.0, Double.NaN, Double.POSITIVE_INFINITY}) {
        assertThrows(IllegalArgumentException.class, () -> calibrator.setDiscRadius(radius));
      }
      assertThrows(NullPointerException.class, () -> calibrator.setFinder(null));
      assertThrows(NullPointerException.class, () -> calibrator.setSolver(null));
      assertThrows(NullPointerException.class, () -> calibrator.setSheetShape(null));
    }
  }

  @Test
  void a_calibrator_begins_with_the_robust_search_and_the_sparse_solver() {
    for (Kind kind : Kind.values()) {
      try (Calibrator calibrator = Calibrator.builder().kind(kind).build()) {
        assertEquals(Finder.ROBUST.code(), EngineChoices.nGetFinder(calibrator.id()));
        assertEquals(Solver.SPARSE.code(), EngineChoices.nGetSolver(calibrator.id()));
      }
    }
  }

  @Test
  void the_native_methods_begin_with_those_of_opencv() {
    int id = Calibration.nNewCalibrator(4, 11, 0.02F, Kind.MONOCULAR.code(), 640, 480);
    try {
      assertEquals(Finder.STANDARD.code(), EngineChoices.nGetFinder(id));
      assertEquals(Solver.OPENCV.code(), EngineChoices.nGetSolver(id));
    } finally {
      Calibration.nDeleteCalibrator(id);
    }
  }

  @Test
  void an_unknown_number_is_answered_by_defaults() {
    Calibrator.setLogLevel(LogLevel.SILENT);
    try {
      assertFalse(EngineChoices.nSetFinder(UNKNOWN, 1));
      assertFalse(EngineChoices.nSetSolver(UNKNOWN, 1));
      assertFalse(EngineChoices.nSetRobust(UNKNOWN, true));
      assertFalse(EngineChoices.nSetSheetShape(UNKNOWN, 3));
      assertFalse(EngineChoices.nSetDiscRadius(UNKNOWN, 0.01));
      assertFalse(EngineChoices.nSetPartialGrids(UNKNOWN, true));
      assertFalse(EngineChoices.nSetFineCentres(UNKNOWN, true));
      assertFalse(EngineChoices.nAddSeen(UNKNOWN));
      assertFalse(EngineChoices.nCalibrateFisheye(UNKNOWN));
      assertEquals("", EngineChoices.nGetFisheyeJSON(UNKNOWN, false, ""));
      assertFalse(EngineChoices.nIsComputing(UNKNOWN));
      assertFalse(EngineChoices.nHasFailed(UNKNOWN));
      assertFalse(EngineChoices.nCancelComputation(UNKNOWN));
      assertFalse(EngineChoices.nCloseSource(UNKNOWN));
      assertFalse(EngineChoices.nHasSourceEnded(UNKNOWN));
      assertFalse(EngineChoices.nSetSourceEndListener(UNKNOWN, () -> {}));
      assertEquals(-1, EngineChoices.nGetFinder(UNKNOWN));
      assertEquals(-1, EngineChoices.nGetSolver(UNKNOWN));
      assertEquals("", EngineChoices.nGetVerdict(UNKNOWN));
    } finally {
      Calibrator.setLogLevel(LogLevel.TRACE);
    }
  }

  /** The picture moved to the right, over white. */
  private static BufferedImage moved(BufferedImage picture, int pixels) {
    BufferedImage moved =
        new BufferedImage(picture.getWidth(), picture.getHeight(), BufferedImage.TYPE_3BYTE_BGR);
    Graphics2D graphics = moved.createGraphics();
    graphics.setColor(Color.WHITE);
    graphics.fillRect(0, 0, moved.getWidth(), moved.getHeight());
    graphics.drawImage(picture, pixels, 0, null);
    graphics.dispose();
    return moved;
  }

  @Test
  void parts_of_the_grid_are_taken_unless_that_is_not_wanted() throws Exception {
    BufferedImage picture = Footage.pictures("views").get(0);
    for (boolean wanted : new boolean[] {true, false}) {
      try (Calibrator calibrator = Calibrator.builder().build()) {
        if (!wanted) {
          calibrator.setPartialGrids(false);
        }
        int parts = 0;
        for (int pixels = 0; pixels < picture.getWidth(); pixels += 6) {
          Views.pushJpeg(calibrator, moved(picture, pixels));
          if (!calibrator.isDetected() && calibrator.takeSnapshot()) {
            ++parts;
          }
        }
        assertEquals(wanted, parts > 0);
        assertEquals(parts, calibrator.snapshots());
      }
    }
  }

  private static double focalLength(boolean fine) throws Exception {
    try (Calibrator calibrator = Calibrator.builder().build()) {
      if (!fine) {
        calibrator.setFineCentres(false);
      }
      CalibrationResult result =
          Views.calibrate(calibrator, Footage.pictures("views"), LensModel.CLASSIC, Views::pushJpeg);
      return result.cameraMatrix().get(0, 0);
    }
  }

  @Test
  void centres_are_measured_anew_unless_that_is_not_wanted() throws Exception {
    double moved = Math.abs(focalLength(true) - focalLength(false));
    assertTrue(moved > 1e-4 && moved < 5.0, "moved by " + moved);
  }

  @Test
  void the_sparse_solvers_result_has_a_verdict() throws Exception {
    try (Calibrator calibrator = Calibrator.builder().build()) {
      assertEquals(Verdict.Grade.NONE, calibrator.verdict().grade());
      calibrator.setRobust(true);
      calibrator.setDiscRadius(0.008);
      CalibrationResult result =
          Views.calibrate(calibrator, Footage.pictures("views"), LensModel.RATIONAL, Views::pushJpeg);
      assertTrue(result.rms() < 0.2, result.json());
      Verdict verdict = calibrator.verdict();
      assertTrue(verdict.grade() == Verdict.Grade.GOOD || verdict.grade() == Verdict.Grade.WITH_CARE,
          verdict.json());
      assertEquals(8, verdict.views());
      assertTrue(verdict.deviationInData() > 0.0 && verdict.deviationInData() < 1.0, verdict.json());
      calibrator.push(Footage.jpeg(Footage.pictures("views").get(0)));
      assertTrue(calibrator.takeSnapshot());
      assertEquals(Verdict.Grade.NONE, calibrator.verdict().grade());
    }
  }

  @Test
  void a_fisheye_has_a_result_and_a_file_of_its_own() throws Exception {
    Path folder = Files.createTempDirectory("fisheye");
    try (Calibrator calibrator = Calibrator.builder().build()) {
      assertTrue(calibrator.fisheye().isEmpty());
      assertThrows(IllegalStateException.class, () -> calibrator.saveFisheye(folder.resolve("camera")));
      for (BufferedImage picture : Footage.pictures("views")) {
        Views.pushJpeg(calibrator, picture);
        assertTrue(calibrator.takeSnapshot());
      }
      calibrator.calibrate(LensModel.FISHEYE);
      FisheyeResult result = calibrator.awaitFisheye(Views.PATIENCE);
      assertTrue(result.rms() < 0.3, result.json());
      assertEquals(4, result.coefficients().columns());
      assertTrue(calibrator.result().isEmpty());
      assertEquals(8, calibrator.verdict().views());
      Path file = calibrator.saveFisheye(folder.resolve("camera.json"));
      assertEquals("camera_fisheye.json", file.getFileName().toString());
      assertEquals(result.json(), FisheyeResult.read(file).json());
      assertThrows(IllegalArgumentException.class, () -> CalibrationResult.read(file));
      Files.delete(file);
    } finally {
      Files.delete(folder);
    }
  }

  @Test
  void a_pair_has_no_fisheyes() {
    try (Calibrator pair = Calibrator.builder().kind(Kind.STEREO).build()) {
      assertThrows(IllegalStateException.class, () -> pair.calibrate(LensModel.FISHEYE));
      assertThrows(IllegalArgumentException.class, () -> pair.calibratePair(null, null, LensModel.FISHEYE));
    }
  }

  @Test
  void a_pair_and_a_closed_calibrator_have_no_verdict() {
    try (Calibrator pair = Calibrator.builder().kind(Kind.STEREO).build()) {
      assertThrows(IllegalStateException.class, pair::verdict);
    }
    Calibrator closed = Calibrator.builder().build();
    closed.close();
    assertThrows(IllegalStateException.class, closed::verdict);
    assertThrows(IllegalStateException.class, () -> closed.setSolver(Solver.SPARSE));
  }
}
