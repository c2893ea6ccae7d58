package com.velotrix.quiverleaf.sdk;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.awt.image.BufferedImage;
import java.util.List;
import org.junit.jupiter.api.DisplayNameGeneration;
import org.junit.jupiter.api.DisplayNameGenerator;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.CsvSource;

/** Whole calibrations of one camera by frames that the program pushes. */
@DisplayNameGeneration(DisplayNameGenerator.ReplaceUnderscores.class)
class PushedFramesTest {
  private static final int FEW = 6;

  private static CalibrationResult fromFrames(Views.Push push) throws Exception {
    List<BufferedImage> pictures = Footage.pictures("views").subList(0, FEW);
    try (Calibrator calibrator = Calibrator.builder().build()) {
      return Views.calibrate(calibrator, pictures, LensModel.CLASSIC, push);
    }
  }

  @Test
  void base64_frames_lead_to_the_rendered_camera() throws Exception {
    try (Calibrator calibrator = Views.calibrated()) {
      CalibratorStatus status = calibrator.status();
      assertEquals(Status.COMPLETED, status.status());
      assertEquals("Calibration completed. Results are available.", status.message());
      assertEquals(Footage.pictures("views").size(), status.snapshots());
      CalibrationResult result = status.result().get();
      Footage.expectCamera(result, Footage.file("views/truth.json"), 0.005);
      assertEquals(result.rms(), calibrator.rms().getAsDouble(), 1e-6);
      assertEquals(Kind.MONOCULAR, result.kind());
      assertEquals(640, result.imageWidth());
      assertEquals(480, result.imageHeight());
      assertEquals(5, result.distortion().columns());
    }
  }

  /**
   * A result's numbers are what Java gets to see of the centres. Principal point and focal lengths follow
   * them closely: centres of a picture that is moved by 0.2 px move the principal point by as much.
   */
  @ParameterizedTest
  @CsvSource({"I420, 640", "NV12, 640", "NV21, 640", "YV12, 640", "I420, 704", "NV12, 704", "NV21, 704",
      "YV12, 704"})
  void
  yuv_frames_lead_to_the_same_camera_as_their_rgb_pictures(FrameFormat format, int step) throws Exception {
    CalibrationResult rgb = fromFrames(
        (calibrator,
            picture) -> calibrator.push(RawFrames.of(picture, FrameFormat.RGB), 640, 480, FrameFormat.RGB));
    CalibrationResult yuv = fromFrames((calibrator, picture) -> {
      byte[] data = RawFrames.padded(RawFrames.of(picture, format), 640, step);
      assertEquals(step == 704 ? 506880 : 460800, data.length);
      calibrator.push(data, 640, 480, format);
    });
    for (int[] at : new int[][] {{0, 2}, {1, 2}, {0, 0}, {1, 1}}) {
      double tolerance = at[0] == at[1] ? 1.0 : 0.2;
      assertEquals(rgb.cameraMatrix().get(at[0], at[1]), yuv.cameraMatrix().get(at[0], at[1]), tolerance);
    }
    assertTrue(yuv.rms() < 0.2, "rms " + yuv.rms());
  }

  @Test
  void packed_frames_lead_to_the_rendered_camera() throws Exception {
    CalibrationResult result = fromFrames(
        (calibrator,
            picture) -> calibrator.push(RawFrames.of(picture, FrameFormat.RGB), 640, 480, FrameFormat.RGB));
    Footage.expectCamera(result, Footage.file("views/truth.json"), 0.005);
  }

  @Test
  void colours_come_out_as_they_went_in() throws Exception {
    BufferedImage orange = new BufferedImage(640, 480, BufferedImage.TYPE_INT_RGB);
    for (int i = 0; i < 640 * 480; ++i) {
      orange.setRGB(i % 640, i / 640, 0xE07020);
    }
    for (FrameFormat format : FrameFormat.values()) {
      Recorder recorder = new Recorder();
      try (Calibrator calibrator = Calibrator.builder().build()) {
        Calibration.nRegisterCalibrationListener(calibrator.id(), recorder, true, 0, 0);
        calibrator.push(RawFrames.of(orange, format), 640, 480, format);
      }
      BufferedImage seen = javax.imageio.ImageIO.read(new java.io.ByteArrayInputStream(recorder.jpeg()));
      int pixel = seen.getRGB(320, 400);
      assertEquals(0xE0, pixel >> 16 & 255, 12, format.code());
      assertEquals(0x70, pixel >> 8 & 255, 12, format.code());
      assertEquals(0x20, pixel & 255, 12, format.code());
    }
  }

  @Test
  void grabbers_work_on_pushed_frames_of_both_kinds() throws Exception {
    Recorder recorder = new Recorder();
    try (Calibrator calibrator = Calibrator.builder().build()) {
      Calibration.nRegisterCalibrationListener(calibrator.id(), recorder, true, 320, 240);
      calibrator.startGrabbers();
      calibrator.push(Footage.jpeg(Footage.firstView()));
      assertTrue(recorder.await(1));
      assertTrue(!recorder.thread().equals(Thread.currentThread().getName()));
      assertTrue(calibrator.isDetected());
      calibrator.push(RawFrames.of(Footage.firstView(), FrameFormat.NV21), 640, 480, FrameFormat.NV21);
      assertTrue(recorder.await(2));
      assertEquals(
          320, javax.imageio.ImageIO.read(new java.io.ByteArrayInputStream(recorder.jpeg())).getWidth());
      calibrator.stopGrabbers();
    }
  }
}
