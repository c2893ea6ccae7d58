package com.velotrix.quiverleaf.sdk;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.awt.image.BufferedImage;
import java.util.ArrayList;
import java.util.List;
import org.junit.jupiter.api.DisplayNameGeneration;
import org.junit.jupiter.api.DisplayNameGenerator;
import org.junit.jupiter.api.Test;

/** Two cameras: a side-by-side one delivers their pictures. */
@DisplayNameGeneration(DisplayNameGenerator.ReplaceUnderscores.class)
class PairTest {
  private static final int SNAPSHOTS = 8;
  private static final double BASELINE = 0.1;
  /** Moved by as many pixels, the first right picture shows all rows but the outermost. */
  private static final int RIGHT_ROW_BEYOND = 236;
  private static final String FOREIGN = "caf\u00e9 \ud83d\ude00";

  private final Recorder recorder = new Recorder();

  private static CalibrationResult alone(String side) throws Exception {
    try (Calibrator calibrator = Calibrator.builder().build()) {
      return Views.calibrate(
          calibrator, Footage.pictures("pairs/" + side), LensModel.RATIONAL, Views::pushJpeg);
    }
  }

  /** The right pictures are moved by as many pixels to the right, over white. */
  private static List<BufferedImage> sideBySide(int pixels) {
    List<BufferedImage> left = Footage.pictures("pairs/left");
    List<BufferedImage> right = Footage.pictures("pairs/right");
    List<BufferedImage> both = new ArrayList<>();
    for (int i = 0; i < left.size(); ++i) {
      BufferedImage picture = new BufferedImage(1280, 480, BufferedImage.TYPE_3BYTE_BGR);
      picture.getGraphics().fillRect(0, 0, 1280, 480);
      picture.getGraphics().drawImage(left.get(i), 0, 0, null);
      picture.getGraphics().drawImage(right.get(i), 640 + pixels, 0, null);
      both.add(picture);
    }
    return both;
  }

  private static List<BufferedImage> sideBySide() { return sideBySide(0); }

  /** A calibrator with a snapshot of each pair of pictures. */
  private Calibrator collected() throws Exception {
    Calibrator calibrator = Calibrator.builder().kind(Kind.STEREO).build();
    try (Cameras cameras = new Cameras()) {
      cameras.provide(0, sideBySide());
      assertTrue(Calibration.nRegisterCalibrationListener(calibrator.id(), recorder, false, 0, 0));
      assertTrue(calibrator.openCamera(0, 640, 480, 30));
      assertTrue(recorder.await(() -> calibrator.takeSnapshot() && calibrator.snapshots() == SNAPSHOTS));
      calibrator.closeSource();
    }
    return calibrator;
  }

  @Test
  void parts_of_the_grid_are_taken_unless_that_is_not_wanted() throws Exception {
    try (Calibrator calibrator = Calibrator.builder().kind(Kind.STEREO).build();
         Cameras cameras = new Cameras()) {
      cameras.provide(0, sideBySide(RIGHT_ROW_BEYOND).subList(0, 1));
      assertTrue(Calibration.nRegisterCalibrationListener(calibrator.id(), recorder, false, 0, 0));
      calibrator.setPartialGrids(false);
      assertTrue(calibrator.openCamera(0, 640, 480, 30));
      assertTrue(recorder.await(3));
      assertFalse(calibrator.takeSnapshot());
      calibrator.setPartialGrids(true);
      assertTrue(recorder.await(calibrator::takeSnapshot));
      assertFalse(Calibration.nAddStereoPicture(calibrator.id()));
      assertEquals(1, calibrator.snapshots());
      calibrator.closeSource();
    }
  }

  private static void expectBaseline(CalibrationResult result) {
    assertEquals(Kind.STEREO, result.kind());
    assertEquals(BASELINE, result.baseline(), 0.003);
    assertTrue(result.translation().get(0, 0) < 0.0);
    assertEquals(1.0, result.rotation().get(0, 0), 0.01);
    assertTrue(result.rms() < 0.3, "rms " + result.rms());
    assertEquals(14, result.rightDistortion().columns());
  }

  @Test
  void a_pair_is_calibrated_from_two_texts_on_the_engine_s_own_thread() throws Exception {
    CalibrationResult left = alone("left");
    CalibrationResult right = alone("right");
    try (Calibrator pair = collected()) {
      assertFalse(pair.isDetected());
      pair.calibratePair(left, right, LensModel.RATIONAL);
      CalibrationResult result = pair.awaitResult(Views.PATIENCE);
      expectBaseline(result);
      assertEquals(left.cameraMatrix(), result.cameraMatrix());
      assertEquals(right.cameraMatrix(), result.rightCameraMatrix());
    }
  }

  @Test
  void the_same_on_the_caller_s_thread_is_there_when_the_call_returns() throws Exception {
    String left = alone("left").json();
    String right = alone("right").json();
    try (Calibrator pair = collected()) {
      // A text of the caller's own in a result does no harm.
      Calibration.nCalibrateStereo(
          pair.id(), left.replaceFirst("\\{", "{\"" + FOREIGN + "\":\"a\\\\u0000b\","), right, 20);
      expectBaseline(pair.result().get());
    }
  }

  @Test
  void broken_results_change_nothing_and_are_told() throws Exception {
    String good = alone("left").json();
    List<String> broken = List.of("", "{", "nonsense", "[]", "null", "{}", "7", FOREIGN,
        "{\"cameraMatrix\":7}", good.substring(0, good.length() / 2), good.replaceFirst("\\{", "{\0"),
        good.replace("\"rows\"", "\"row\""), good.replace("\"data\": [", "\"data\": [\"x\","));
    try (Calibrator pair = collected()) {
      for (String text : broken) {
        for (String[] texts : new String[][] {{text, good}, {good, text}}) {
          callBoth(pair, texts[0], texts[1]);
          // The worker thread may be at it still.
          assertTrue(Views.eventually(() -> pair.status().status() == Status.READY), text);
          assertEquals(SNAPSHOTS, pair.snapshots());
        }
      }
      Calibration.nCalibrateStereo(pair.id(), good, alone("right").json(), 20);
      expectBaseline(pair.result().get());
    }
  }

  @Test
  void a_refused_result_of_one_camera_is_a_failure_beside_the_earlier_result() throws Exception {
    CalibrationResult left = alone("left");
    CalibrationResult right = alone("right");
    CalibrationResult classic = CalibrationResult.parse(ResultsTest.MONOCULAR); // needs 14 coefficients
    try (Calibrator pair = collected()) {
      pair.calibratePair(left, right, LensModel.RATIONAL);
      double baseline = pair.awaitResult(Views.PATIENCE).baseline();
      pair.calibratePair(left, classic, LensModel.RATIONAL);
      assertThrows(IllegalStateException.class, () -> pair.awaitResult(Views.PATIENCE));
      pair.calibratePair(left, right, LensModel.RATIONAL);
      assertEquals(baseline, pair.awaitResult(Views.PATIENCE).baseline(), 1e-9);
    }
  }

  /** What is broken is answered by an error line or an exception; deleting waits for the worker thread. */
  private static void callBoth(Calibrator pair, String left, String right) {
    try {
      Calibration.nCalibrateStereo(pair.id(), left, right, 20);
    } catch (RuntimeException e) {
      assertFalse(e.getMessage().isEmpty());
    }
    assertTrue(Calibration.nCalibrateStereoQVX(pair.id(), left, right, 20).contains("\"c\": \"success\""));
  }

  @Test
  void half_a_pair_of_surrogates_in_a_result_is_refused() throws Exception {
    try (Calibrator pair = Calibrator.builder().kind(Kind.STEREO).build()) {
      assertThrows(RuntimeException.class, () -> Calibration.nCalibrateStereo(pair.id(), "\ud83d", "{}", 20));
      assertThrows(
          RuntimeException.class, () -> Calibration.nCalibrateStereoQVX(pair.id(), "{}", "\ud83d", 20));
      assertEquals(Status.NOT_READY, pair.status().status());
    }
  }

  @Test
  void a_pair_s_frames_are_not_pushed() {
    try (Calibrator pair = Calibrator.builder().kind(Kind.STEREO).build()) {
      pair.push(Footage.jpeg(Footage.firstView()));
      assertFalse(pair.takeSnapshot());
    }
  }
}
