package com.velotrix.quiverleaf.sdk;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.awt.image.BufferedImage;
import java.util.List;
import java.util.Optional;
import org.junit.jupiter.api.DisplayNameGeneration;
import org.junit.jupiter.api.DisplayNameGenerator;
import org.junit.jupiter.api.Test;

/** Single snapshots of a calibrator, and what its result makes of them. */
@DisplayNameGeneration(DisplayNameGenerator.ReplaceUnderscores.class)
class SnapshotsTest {
  private static final int CIRCLES = 44;

  private static Calibrator withViews() {
    Calibrator calibrator = Calibrator.builder().build();
    for (BufferedImage view : Footage.pictures("views")) {
      calibrator.push(Footage.jpeg(view));
      assertTrue(calibrator.takeSnapshot());
    }
    return calibrator;
  }

  @Test
  void a_snapshot_is_handed_out_with_what_computations_take() throws Exception {
    try (Calibrator calibrator = withViews()) {
      List<Observation> seen = calibrator.observations(0);
      assertEquals(1, seen.size());
      assertTrue(seen.get(0).isSeen());
      assertEquals(CIRCLES, seen.get(0).centres().length);
      assertEquals(CIRCLES, seen.get(0).deviations().length);
      BufferedImage picture = calibrator.snapshotImage(0, 0).orElseThrow();
      assertEquals(640, picture.getWidth());
      assertEquals(480, picture.getHeight());
    }
  }

  @Test
  void a_snapshot_is_taken_out_and_those_after_it_move_up() {
    try (Calibrator calibrator = withViews()) {
      int count = calibrator.snapshots();
      double[][] second = calibrator.observations(1).get(0).centres();
      assertTrue(calibrator.removeSnapshot(0));
      assertEquals(count - 1, calibrator.snapshots());
      assertArrayEquals(second, calibrator.observations(0).get(0).centres());
    }
  }

  @Test
  void a_number_that_there_is_not_is_refused() {
    try (Calibrator calibrator = Calibrator.builder().build()) {
      assertThrows(IndexOutOfBoundsException.class, () -> calibrator.removeSnapshot(0));
      assertThrows(IndexOutOfBoundsException.class, () -> calibrator.observations(-1));
      assertThrows(IndexOutOfBoundsException.class, () -> calibrator.snapshotImage(0, 0));
      assertThrows(IndexOutOfBoundsException.class, () -> calibrator.snapshotFit(7));
    }
  }

  @Test
  void observations_that_are_added_to_another_calibrator_give_the_same_result() throws Exception {
    try (Calibrator first = withViews(); Calibrator second = Calibrator.builder().build()) {
      for (int i = 0; i < first.snapshots(); ++i) {
        assertTrue(second.addSnapshot(first.observations(i).get(0)));
      }
      assertEquals(Optional.empty(), second.snapshotImage(0, 0));
      first.calibrate(LensModel.CLASSIC);
      second.calibrate(LensModel.CLASSIC);
      double[] expected = first.awaitResult(Views.PATIENCE).cameraMatrix().toArray();
      assertArrayEquals(expected, second.awaitResult(Views.PATIENCE).cameraMatrix().toArray(), 1e-12);
    }
  }

  @Test
  void observations_of_another_grid_are_not_added() {
    try (Calibrator calibrator = Calibrator.builder().build()) {
      Calibrator.setLogLevel(LogLevel.SILENT);
      assertFalse(calibrator.addSnapshot(Observation.of(new double[][] {{1.0, 2.0}})));
      assertFalse(calibrator.addSnapshot());
      Calibrator.setLogLevel(LogLevel.ERROR);
      assertEquals(0, calibrator.snapshots());
      assertThrows(IllegalArgumentException.class,
          () -> calibrator.addSnapshot(Observation.of(new double[][] {{Double.NaN, 2.0}})));
    }
  }

  @Test
  void a_result_says_how_it_agrees_with_each_snapshot() throws Exception {
    try (Calibrator calibrator = withViews()) {
      assertEquals(0, calibrator.snapshotFit(0).cameras());
      assertEquals(0, calibrator.deviations().length);
      calibrator.calibrate(LensModel.CLASSIC);
      double rms = calibrator.awaitResult(Views.PATIENCE).rms();
      double sum = 0.0;
      for (int i = 0; i < calibrator.snapshots(); ++i) {
        SnapshotFit fit = calibrator.snapshotFit(i);
        assertFalse(fit.isRejected());
        assertEquals("", fit.reason());
        assertEquals(CIRCLES, fit.residuals(0).length);
        assertEquals(0, fit.outliers(0).length);
        sum += fit.rms(0) * fit.rms(0);
      }
      assertEquals(rms, Math.sqrt(sum / calibrator.snapshots()), 1e-6);
      double[] deviations = calibrator.deviations();
      assertEquals(18, deviations.length);
      assertTrue(deviations[0] > 0.0 && deviations[0] < 10.0, "of fx: " + deviations[0]);
      assertEquals(0.0, deviations[17]);
    }
  }

  @Test
  void the_model_that_the_snapshots_ask_for_is_told_with_reasons() {
    try (Calibrator calibrator = Calibrator.builder().build()) {
      assertEquals(Optional.empty(), calibrator.chooseModel());
    }
    try (Calibrator calibrator = withViews()) {
      ModelChoice choice = calibrator.chooseModel().orElseThrow();
      assertEquals(LensModel.CLASSIC, choice.model());
      assertFalse(choice.reasons().isEmpty());
    }
  }

  @Test
  void what_can_be_taken_is_known_beforehand() {
    try (Calibrator calibrator = Calibrator.builder().build()) {
      assertFalse(calibrator.canTakeSnapshot());
      calibrator.push(Footage.jpeg(Footage.firstView()));
      assertTrue(calibrator.canTakeSnapshot());
      assertTrue(calibrator.takeSnapshot());
      assertFalse(calibrator.canTakeSnapshot());
    }
  }

  @Test
  void a_frame_without_the_grid_is_told_why() {
    try (Calibrator calibrator = Calibrator.builder().build()) {
      calibrator.push(Footage.jpeg(new BufferedImage(640, 480, BufferedImage.TYPE_3BYTE_BGR)));
      assertTrue(calibrator.whyNotFound().isPresent());
      calibrator.push(Footage.jpeg(Footage.firstView()));
      assertEquals(Optional.empty(), calibrator.whyNotFound());
    }
  }
}
