package com.velotrix.quiverleaf.sdk;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.NoSuchFileException;
import java.nio.file.Path;
import java.time.Duration;
import java.util.List;
import java.util.concurrent.TimeoutException;
import org.junit.jupiter.api.DisplayNameGeneration;
import org.junit.jupiter.api.DisplayNameGenerator;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.function.Executable;
import org.junit.jupiter.api.io.TempDir;

/** The calibrator that programs work with. */
@DisplayNameGeneration(DisplayNameGenerator.ReplaceUnderscores.class)
class CalibratorTest {
  private static final CalibrationResult SOME_RESULT = CalibrationResult.parse(ResultsTest.MONOCULAR);

  @TempDir Path folder;

  @Test
  void closing_twice_does_nothing() {
    Calibrator calibrator = Calibrator.builder().build();
    int id = calibrator.id();
    assertTrue(Calibration.nGetStatus(id) == 100);
    calibrator.close();
    assertEquals(-1, Calibration.nGetStatus(id));
    calibrator.close();
  }

  @Test
  void every_use_after_close_is_refused() {
    Calibrator calibrator = Calibrator.builder().build();
    calibrator.close();
    byte[] frame = new byte[48];
    List<Executable> uses = List.of(calibrator::id, calibrator::kind, calibrator::status,
        calibrator::snapshots, calibrator::isDetected, calibrator::rms, calibrator::reset,
        ()
            -> calibrator.setFlip(true),
        calibrator::isFlipped,
        ()
            -> calibrator.onFrames(f -> {}),
        ()
            -> calibrator.onStatus(f -> {}),
        calibrator::removeListener, calibrator::openPreview, calibrator::closePreview,
        ()
            -> calibrator.startAssistant(Footage.poses()),
        calibrator::stopAssistant, calibrator::assistantGoal, calibrator::takeSnapshot,
        ()
            -> calibrator.calibrate(LensModel.CLASSIC),
        ()
            -> calibrator.calibratePair(SOME_RESULT, SOME_RESULT, LensModel.FULL),
        ()
            -> calibrator.awaitResult(Views.PATIENCE),
        calibrator::result,
        ()
            -> calibrator.save(folder.resolve("a")),
        ()
            -> calibrator.openCamera(0, 640, 480, 30),
        ()
            -> calibrator.openCameras(0, 1, 640, 480, 30),
        ()
            -> calibrator.openContent("a"),
        ()
            -> calibrator.openPipeline("a"),
        calibrator::closeSource, calibrator::sourceEnded,
        ()
            -> calibrator.onSourceEnded(() -> {}),
        calibrator::startGrabbers, calibrator::stopGrabbers,
        ()
            -> calibrator.push(frame),
        () -> calibrator.push("text"), () -> calibrator.push(frame, 4, 4, FrameFormat.RGB));
    for (Executable use : uses) {
      assertEquals("the calibrator is closed", assertThrows(IllegalStateException.class, use).getMessage());
    }
  }

  @Test
  void null_is_refused() {
    try (Calibrator calibrator = Calibrator.builder().build()) {
      List<Executable> uses = List.of(()
                                          -> calibrator.onFrames(null),
          ()
              -> calibrator.onStatus(null),
          ()
              -> calibrator.startAssistant(null),
          ()
              -> calibrator.calibrate(null),
          ()
              -> calibrator.save(null),
          ()
              -> calibrator.openContent(null),
          ()
              -> calibrator.openPipeline(null),
          ()
              -> calibrator.push((String) null),
          ()
              -> calibrator.push((byte[]) null),
          ()
              -> calibrator.push(null, 4, 4, FrameFormat.RGB),
          ()
              -> calibrator.push(new byte[48], 4, 4, null),
          () -> Calibrator.builder().kind(null), () -> Calibrator.setLogLevel(null));
      for (Executable use : uses) {
        assertThrows(NullPointerException.class, use);
      }
    }
  }

  @Test
  void settings_that_make_no_sense_are_refused() {
    List<Executable> settings = List.of(()
                                            -> Calibrator.builder().grid(0, 11),
        ()
            -> Calibrator.builder().grid(4, 1),
        ()
            -> Calibrator.builder().unit(0.0),
        ()
            -> Calibrator.builder().unit(Double.NaN),
        ()
            -> Calibrator.builder().hdist(-0.2),
        ()
            -> Calibrator.builder().hdist(Double.POSITIVE_INFINITY),
        () -> Calibrator.builder().frameSize(640, 0), () -> Calibrator.builder().frameSize(-1, 480));
    for (Executable setting : settings) {
      assertThrows(IllegalArgumentException.class, setting);
    }
  }

  @Test
  void frames_that_are_none_are_refused() {
    try (Calibrator calibrator = Calibrator.builder().build()) {
      for (FrameFormat format : FrameFormat.values()) {
        byte[] data = new byte[format.bytes(64, 48)];
        calibrator.push(data, 64, 48, format);
        for (int[] size : new int[][] {{64, 50}, {0, 48}, {64, -48}, {40000, 40000}, {100000, 100000},
                 {Integer.MAX_VALUE - 1, Integer.MAX_VALUE - 1}}) {
          assertThrows(IllegalArgumentException.class, () -> calibrator.push(data, size[0], size[1], format));
        }
      }
      assertThrows(
          IllegalArgumentException.class, () -> calibrator.push(new byte[9999], 63, 48, FrameFormat.NV21));
    }
  }

  @Test
  void a_calibrator_of_one_kind_refuses_the_computation_of_the_other() {
    try (Calibrator one = Calibrator.builder().build();
         Calibrator pair = Calibrator.builder().kind(Kind.STEREO).build()) {
      assertEquals(Kind.STEREO, pair.kind());
      assertThrows(
          IllegalStateException.class, () -> one.calibratePair(SOME_RESULT, SOME_RESULT, LensModel.FULL));
      assertThrows(IllegalStateException.class, () -> pair.calibrate(LensModel.FULL));
    }
  }

  @Test
  void waiting_for_a_result_that_does_not_come_ends_in_time() {
    try (Calibrator calibrator = Calibrator.builder().build()) {
      TimeoutException late =
          assertThrows(TimeoutException.class, () -> calibrator.awaitResult(Duration.ofMillis(1)));
      assertTrue(late.getMessage().contains("NOT_READY, 0 snapshots"), late.getMessage());
      assertFalse(calibrator.result().isPresent());
      assertFalse(calibrator.rms().isPresent());
    }
  }

  @Test
  void a_wait_may_be_for_ever() throws Exception {
    try (Calibrator calibrator = Views.calibrated()) {
      assertTrue(calibrator.awaitResult(Duration.ofSeconds(Long.MAX_VALUE)).rms() > 0.0);
      calibrator.reset();
      assertThrows(TimeoutException.class, () -> calibrator.awaitResult(Duration.ofSeconds(Long.MIN_VALUE)));
      Thread waiting = new Thread(() -> {
        try {
          calibrator.awaitResult(Duration.ofSeconds(Long.MAX_VALUE));
        } catch (InterruptedException | TimeoutException e) {
          // as it shall end
        }
      });
      waiting.start();
      assertTrue(Views.eventually(() -> waiting.getState() == Thread.State.TIMED_WAITING));
      waiting.interrupt();
      waiting.join();
    }
  }

  @Test
  void a_result_without_a_name_is_not_saved_anywhere() throws Exception {
    try (Calibrator calibrator = Views.calibrated()) {
      String[] before = new java.io.File(".").list();
      for (String path : new String[] {"", ".json"}) {
        assertThrows(IllegalArgumentException.class, () -> calibrator.save(Path.of(path)));
      }
      assertEquals(before.length, new java.io.File(".").list().length);
    }
  }

  @Test
  void a_result_is_saved_under_the_name_given() throws Exception {
    try (Calibrator calibrator = Views.calibrated()) {
      assertEquals(folder.resolve("camera.json"), calibrator.save(folder.resolve("camera")));
      CalibrationResult read = CalibrationResult.read(calibrator.save(folder.resolve("camera.json")));
      assertEquals(calibrator.result().get().cameraMatrix(), read.cameraMatrix());
      assertFalse(Files.exists(folder.resolve("camera.json.json")));
      assertThrows(IOException.class, () -> calibrator.save(folder.resolve("absent").resolve("camera")));
      calibrator.reset();
      assertEquals(Status.NOT_READY, calibrator.status().status());
      assertThrows(IllegalStateException.class, () -> calibrator.save(folder.resolve("camera")));
    }
  }

  @Test
  void an_assistant_needs_its_file_of_poses() throws Exception {
    try (Calibrator calibrator = Calibrator.builder().build()) {
      assertThrows(NoSuchFileException.class, () -> calibrator.startAssistant(folder.resolve("absent")));
      assertFalse(calibrator.assistantGoal().isPresent());
      Path none = Files.writeString(folder.resolve("none.json"), "{}");
      IllegalArgumentException refusal =
          assertThrows(IllegalArgumentException.class, () -> calibrator.startAssistant(none));
      assertTrue(refusal.getMessage().startsWith(none.toString()), refusal.getMessage());
      assertFalse(calibrator.assistantGoal().isPresent());
      calibrator.startAssistant(Footage.poses());
      assertEquals(12, calibrator.assistantGoal().getAsInt());
      calibrator.stopAssistant();
      assertFalse(calibrator.assistantGoal().isPresent());
    }
  }
}
