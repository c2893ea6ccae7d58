package com.velotrix.quiverleaf.sdk;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTimeout;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.awt.image.BufferedImage;
import java.io.ByteArrayInputStream;
import java.io.IOException;
import java.io.RandomAccessFile;
import java.io.UncheckedIOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.time.Duration;
import java.util.Arrays;
import java.util.List;
import java.util.concurrent.atomic.AtomicInteger;
import javax.imageio.ImageIO;
import org.junit.jupiter.api.DisplayNameGeneration;
import org.junit.jupiter.api.DisplayNameGenerator;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** Sources that the engine reads by itself, with a listener. */
@DisplayNameGeneration(DisplayNameGenerator.ReplaceUnderscores.class)
class CaptureTest {
  private final Recorder recorder = new Recorder();
  @TempDir Path folder;

  private void listen(Calibrator calibrator) {
    assertTrue(Calibration.nRegisterCalibrationListener(calibrator.id(), recorder, true, 0, 0));
  }

  private void expectPictures() throws Exception {
    assertTrue(recorder.await(recorder.calls() + 3));
    BufferedImage picture = ImageIO.read(new ByteArrayInputStream(recorder.jpeg()));
    assertEquals(640, picture.getWidth());
    assertEquals(480, picture.getHeight());
  }

  @Test
  void a_file_is_read_to_its_end_frame_by_frame() throws Exception {
    try (Calibrator calibrator = Calibrator.builder().build()) {
      listen(calibrator);
      calibrator.startAssistant(Footage.poses());
      assertTrue(calibrator.openContent(Footage.file("poses.avi").toString()));
      expectPictures();
      // The sheet goes through the poses in the video, so that the assistant comes to a result.
      CalibrationResult result = calibrator.awaitResult(Views.PATIENCE);
      calibrator.closeSource();
      assertEquals(12, calibrator.snapshots());
      Footage.expectCamera(result, Footage.file("poses.truth.json"), 0.005);
    }
  }

  @Test
  void a_file_that_is_none_is_not_opened() {
    try (Calibrator calibrator = Calibrator.builder().build()) {
      assertFalse(calibrator.openContent("/nowhere/video.avi"));
      assertFalse(calibrator.openCamera(0, 640, 480, 30));
      assertFalse(calibrator.openPipeline("no pipeline at all"));
    }
  }

  @Test
  void waiting_for_a_result_ends_with_the_source() throws Exception {
    try (Calibrator calibrator = Calibrator.builder().build()) {
      AtomicInteger ends = new AtomicInteger();
      calibrator.onSourceEnded(ends::incrementAndGet);
      calibrator.startAssistant(Footage.poses());
      // The sheet is in none of its pictures long enough for all of the poses.
      assertTrue(calibrator.openContent(Footage.file("poses.avi") + " startingFrame=200"));
      IllegalStateException end =
          assertThrows(IllegalStateException.class, () -> calibrator.awaitResult(Views.PATIENCE));
      assertTrue(end.getMessage().contains("the source has ended"), end.getMessage());
      assertTrue(calibrator.sourceEnded());
      assertTrue(Views.eventually(() -> ends.get() == 1));
      calibrator.closeSource();
      assertFalse(calibrator.sourceEnded());
    }
  }

  @Test
  void waiting_for_a_result_of_a_source_that_did_not_open_ends_at_once() {
    try (Calibrator calibrator = Calibrator.builder().build()) {
      assertFalse(calibrator.openContent("/nowhere/video.avi"));
      assertTrue(calibrator.sourceEnded());
      IllegalStateException end =
          assertThrows(IllegalStateException.class, () -> calibrator.awaitResult(Views.PATIENCE));
      assertTrue(end.getMessage().contains("could not be opened"), end.getMessage());
    }
  }

  @Test
  void a_listener_of_the_source_s_end_may_throw_or_close_the_calibrator() throws Exception {
    String video = Footage.file("poses.avi") + " startingFrame=250";
    Calibrator calibrator = Calibrator.builder().build();
    calibrator.onSourceEnded(() -> { throw new IllegalStateException("not today"); });
    assertTrue(calibrator.openContent(video));
    assertTrue(Views.eventually(calibrator::sourceEnded));
    calibrator.closeSource();
    calibrator.onSourceEnded(calibrator::close);
    int id = calibrator.id();
    assertTrue(calibrator.openContent(video));
    assertTrue(Views.eventually(() -> Calibration.nGetStatus(id) == -1));
  }

  @Test
  void a_stream_that_stalls_holds_nobody_up_who_closes() throws Exception {
    Path pipe = folder.resolve("stream.avi");
    assertEquals(0, new ProcessBuilder("mkfifo", pipe.toString()).start().waitFor());
    byte[] beginning = Arrays.copyOf(Files.readAllBytes(Footage.file("poses.avi")), 2_000_000);
    Calibrator calibrator = Calibrator.builder().build();
    listen(calibrator);
    try (RandomAccessFile end = new RandomAccessFile(pipe.toFile(), "rw")) { // waits for no reader
      Thread sender = new Thread(() -> send(end, beginning));
      sender.start();
      assertTrue(calibrator.openContent(pipe.toString()));
      sender.join();
      assertTrue(recorder.await(1));
      recorder.awaitQuiet(300);
      assertTimeout(Duration.ofSeconds(3), calibrator::close);
    }
  }

  private static void send(RandomAccessFile end, byte[] bytes) {
    try {
      end.write(bytes);
    } catch (IOException e) {
      throw new UncheckedIOException(e);
    }
  }

  @Test
  void a_pair_is_opened_again_and_leaves_no_camera_to_the_next_source() throws Exception {
    try (Cameras cameras = new Cameras();
         Calibrator calibrator = Calibrator.builder().kind(Kind.STEREO).build()) {
      cameras.provide(0, Footage.pictures("pairs/left").subList(0, 1));
      cameras.provide(1, Footage.pictures("pairs/right").subList(0, 1));
      for (int round = 1; round <= 2; ++round) {
        assertTrue(calibrator.openCameras(0, 1, 640, 480, 30));
        assertEquals(2, cameras.open());
        assertTrue(Views.eventually(calibrator::takeSnapshot));
        calibrator.closeSource();
        assertEquals(0, cameras.open());
      }
      calibrator.takeSnapshot(); // the pair's last frames may be none yet
      assertTrue(calibrator.openContent(Footage.file("poses.avi").toString()));
      listen(calibrator);
      expectPictures();
      assertFalse(calibrator.takeSnapshot());
    }
  }

  @Test
  void a_pipeline_is_read() throws Exception {
    try (Calibrator calibrator = Calibrator.builder().build()) {
      listen(calibrator);
      assertTrue(calibrator.openPipeline(
          "videotestsrc ! video/x-raw,format=BGR,width=640,height=480,framerate=30/1 ! appsink"));
      expectPictures();
      Calibration.nCloseGstreamerPipe(calibrator.id());
    }
  }

  @Test
  void a_camera_is_read_until_it_is_closed() throws Exception {
    try (Cameras cameras = new Cameras(); Calibrator calibrator = Calibrator.builder().build()) {
      cameras.provide(0, Footage.pictures("views"));
      listen(calibrator);
      assertTrue(calibrator.openCamera(0, 640, 480, 30));
      assertEquals(1, cameras.open());
      expectPictures();
      assertFalse(recorder.thread().equals(Thread.currentThread().getName()));
      calibrator.closeSource();
      assertEquals(0, cameras.open());
      int calls = recorder.calls();
      assertTrue(calibrator.openCamera(0, 640, 480, 30));
      assertTrue(recorder.await(calls + 1));
    }
  }

  @Test
  void closing_a_pair_closes_the_left_camera_only_and_deleting_both() throws Exception {
    try (Cameras cameras = new Cameras()) {
      int id = Calibration.nNewCalibrator(4, 11, 0.02F, 1, 640, 480);
      List<BufferedImage> pictures = Footage.pictures("pairs/left").subList(0, 1);
      cameras.provide(0, pictures);
      cameras.provide(1, pictures);
      assertTrue(Calibration.nRegisterCalibrationListener(id, recorder, true, 0, 0));
      assertTrue(Calibration.nOpenNativeStereoCamera(id, 0, 1, 640, 480, 30));
      assertEquals(2, cameras.open());
      assertTrue(recorder.await(1));
      Calibration.nCloseStereoNativeCamera(id);
      assertEquals(1, cameras.open());
      int calls = recorder.calls();
      assertEquals(100, Calibration.nGetStatus(id));
      assertEquals(calls, recorder.calls(), "the reader still runs");
      assertTrue(Calibration.nDeleteCalibrator(id));
      assertEquals(0, cameras.open());
    }
  }

  @Test
  void deleting_with_an_open_camera_stops_it() throws Exception {
    try (Cameras cameras = new Cameras()) {
      cameras.provide(0, Footage.pictures("views").subList(0, 1));
      Calibrator calibrator = Calibrator.builder().build();
      listen(calibrator);
      assertTrue(calibrator.openCamera(0, 640, 480, 30));
      assertTrue(recorder.await(1));
      calibrator.close();
      assertEquals(0, cameras.open());
    }
  }
}
