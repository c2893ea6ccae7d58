package com.velotrix.quiverleaf.sdk;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.time.Duration;
import java.util.concurrent.TimeoutException;
import java.util.concurrent.atomic.AtomicReference;
import org.junit.jupiter.api.DisplayNameGeneration;
import org.junit.jupiter.api.DisplayNameGenerator;
import org.junit.jupiter.api.Test;

/** What waiting for a result ends with. */
@DisplayNameGeneration(DisplayNameGenerator.ReplaceUnderscores.class)
class AwaitResultTest {
  @Test
  void the_result_of_the_computation_that_was_just_started_is_waited_for() throws Exception {
    try (Calibrator calibrator = Views.calibrated()) {
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

  /**
   * Starts computations and cancels them until one ends without a result, which is a matter of chance; the
   * result before that one.
   */
  private static String cancelOne(Calibrator calibrator) {
    int id = calibrator.id();
    AtomicReference<String> earlier = new AtomicReference<>();
    assertTrue(Views.eventually(() -> {
      earlier.set(calibrator.result().get().json());
      calibrator.calibrate(LensModel.FULL);
      while (EngineChoices.nIsComputing(id)) {
        calibrator.cancelComputation();
      }
      return EngineChoices.nHasFailed(id);
    }));
    return earlier.get();
  }

  @Test
  void a_cancelled_computation_is_a_failure_beside_the_earlier_result() throws Exception {
    try (Calibrator calibrator = Views.calibrated()) {
      String earlier = cancelOne(calibrator);
      for (int i = 0; i < 2; ++i) {
        IllegalStateException failure =
            assertThrows(IllegalStateException.class, () -> calibrator.awaitResult(Views.PATIENCE));
        assertTrue(failure.getMessage().contains("failed"), failure.getMessage());
      }
      assertEquals(earlier, calibrator.result().get().json());
    }
  }

  @Test
  void the_next_result_follows_a_failure() throws Exception {
    try (Calibrator calibrator = Views.calibrated()) {
      cancelOne(calibrator);
      calibrator.calibrate(LensModel.RATIONAL);
      assertEquals(14, calibrator.awaitResult(Views.PATIENCE).distortion().columns());
    }
  }

  @Test
  void too_few_snapshots_are_a_failure_however_early_it_comes() {
    try (Calibrator calibrator = Calibrator.builder().build()) {
      for (int i = 0; i < 50; ++i) {
        calibrator.calibrate(LensModel.CLASSIC);
        assertThrows(IllegalStateException.class, () -> calibrator.awaitResult(Views.PATIENCE));
      }
      calibrator.reset();
      assertThrows(TimeoutException.class, () -> calibrator.awaitResult(Duration.ZERO));
    }
  }

  @Test
  void a_new_assistant_makes_a_failure_the_past() throws Exception {
    try (Calibrator calibrator = Calibrator.builder().build()) {
      calibrator.calibrate(LensModel.CLASSIC);
      assertThrows(IllegalStateException.class, () -> calibrator.awaitResult(Views.PATIENCE));
      calibrator.startAssistant(Footage.poses());
      assertThrows(TimeoutException.class, () -> calibrator.awaitResult(Duration.ZERO));
    }
  }

  @Test
  void a_computation_that_takes_too_long_is_not_waited_for() throws Exception {
    try (Calibrator calibrator = Views.calibrated()) {
      calibrator.setSolver(Solver.OPENCV);
      calibrator.calibrate(LensModel.FULL); // about a second
      assertThrows(TimeoutException.class, () -> calibrator.awaitResult(Duration.ZERO));
      assertTrue(EngineChoices.nIsComputing(calibrator.id()));
      assertEquals(14, calibrator.awaitResult(Views.PATIENCE).distortion().columns());
    }
  }
}
