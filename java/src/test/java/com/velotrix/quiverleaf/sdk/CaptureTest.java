package com.velotrix.quiverleaf.sdk;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.awt.image.BufferedImage;
import java.io.ByteArrayInputStream;
import java.util.List;
import javax.imageio.ImageIO;
import org.junit.jupiter.api.DisplayNameGeneration;
import org.junit.jupiter.api.DisplayNameGenerator;
import org.junit.jupiter.api.Test;

/** Sources that the engine reads by itself, with a listener. */
@DisplayNameGeneration(DisplayNameGenerator.ReplaceUnderscores.class)
class CaptureTest {
  private final Recorder recorder = new Recorder();

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
