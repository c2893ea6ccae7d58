package com.velotrix.quiverleaf.sdk;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import org.junit.jupiter.api.DisplayNameGeneration;
import org.junit.jupiter.api.DisplayNameGenerator;
import org.junit.jupiter.api.Test;

/** The choice of search and solver, the verdict, and which result is waited for. */
@DisplayNameGeneration(DisplayNameGenerator.ReplaceUnderscores.class)
class SolvingTest {
  private static final int UNKNOWN = 1_000_000;

  @Test
  void choices_reach_the_engine() {
    try (Calibrator calibrator = Calibrator.builder().build()) {
      int id = calibrator.id();
      assertEquals(Finder.STANDARD.code(), EngineChoices.nGetFinder(id));
      assertEquals(Solver.OPENCV.code(), EngineChoices.nGetSolver(id));
      calibrator.setFinder(Finder.ROBUST);
      calibrator.setSolver(Solver.SPARSE);
      calibrator.setRobust(true);
      calibrator.setDiscRadius(0.008);
      assertEquals(Finder.ROBUST.code(), EngineChoices.nGetFinder(id));
      assertEquals(Solver.SPARSE.code(), EngineChoices.nGetSolver(id));
      for (double radius : new double[] {-1.0, Double.NaN, Double.POSITIVE_INFINITY}) {
        assertThrows(IllegalArgumentException.class, () -> calibrator.setDiscRadius(radius));
      }
      assertThrows(NullPointerException.class, () -> calibrator.setFinder(null));
      assertThrows(NullPointerException.class, () -> calibrator.setSolver(null));
    }
  }

  @Test
  void an_unknown_number_is_answered_by_defaults() {
    Calibrator.setLogLevel(LogLevel.SILENT);
    try {
      assertFalse(EngineChoices.nSetFinder(UNKNOWN, 1));
      assertFalse(EngineChoices.nSetSolver(UNKNOWN, 1));
      assertFalse(EngineChoices.nSetRobust(UNKNOWN, true));
      assertFalse(EngineChoices.nSetDiscRadius(UNKNOWN, 0.01));
      assertFalse(EngineChoices.nIsComputing(UNKNOWN));
      assertEquals(-1, EngineChoices.nGetFinder(UNKNOWN));
      assertEquals(-1, EngineChoices.nGetSolver(UNKNOWN));
      assertEquals("", EngineChoices.nGetVerdict(UNKNOWN));
    } finally {
      Calibrator.setLogLevel(LogLevel.TRACE);
    }
  }

  @Test
  void the_sparse_solvers_result_has_a_verdict() throws Exception {
    try (Calibrator calibrator = Calibrator.builder().build()) {
      assertEquals(Verdict.Grade.NONE, calibrator.verdict().grade());
      calibrator.setFinder(Finder.ROBUST);
      calibrator.setSolver(Solver.SPARSE);
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
  void a_pair_and_a_closed_calibrator_have_no_verdict() {
    try (Calibrator pair = Calibrator.builder().kind(Kind.STEREO).build()) {
      assertThrows(IllegalStateException.class, pair::verdict);
    }
    Calibrator closed = Calibrator.builder().build();
    closed.close();
    assertThrows(IllegalStateException.class, closed::verdict);
    assertThrows(IllegalStateException.class, () -> closed.setSolver(Solver.SPARSE));
  }

  @Test
  void the_result_of_the_computation_that_was_just_started_is_waited_for() throws Exception {
    try (Calibrator calibrator = Views.calibrated()) {
      calibrator.setSolver(Solver.SPARSE);
      // The results tell the models apart: 5 coefficients or 14.
      for (int i = 0; i < 50; ++i) {
        LensModel model = i % 2 == 0 ? LensModel.RATIONAL : LensModel.CLASSIC;
        calibrator.calibrate(model);
        CalibrationResult result = calibrator.awaitResult(Views.PATIENCE);
        assertEquals(model == LensModel.CLASSIC ? 5 : 14, result.distortion().columns(), "round " + i);
      }
      assertFalse(EngineChoices.nIsComputing(calibrator.id()));
    }
  }

  @Test
  void without_a_computation_the_result_is_there_at_once() throws Exception {
    try (Calibrator calibrator = Views.calibrated()) {
      CalibrationResult result = calibrator.awaitResult(Views.PATIENCE);
      assertEquals(result.json(), calibrator.awaitResult(Views.PATIENCE).json());
    }
  }
}
