package com.velotrix.quiverleaf.sdk;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.awt.image.BufferedImage;
import java.io.ByteArrayInputStream;
import java.util.concurrent.CountDownLatch;
import java.util.concurrent.TimeUnit;
import java.util.concurrent.atomic.AtomicInteger;
import java.util.concurrent.atomic.AtomicReference;
import javax.imageio.ImageIO;
import org.junit.jupiter.api.DisplayNameGeneration;
import org.junit.jupiter.api.DisplayNameGenerator;
import org.junit.jupiter.api.Test;

/** Frames handed to a Java program. */
@DisplayNameGeneration(DisplayNameGenerator.ReplaceUnderscores.class)
class ListenerTest {
  private static final int RED_CORNER = 0xFF0000;

  private static void pushSmall(Calibrator calibrator) {
    calibrator.push(new byte[640 * 480 * 3], 640, 480, FrameFormat.RGB);
  }

  @Test
  void a_frame_comes_as_a_picture_with_the_status() throws Exception {
    AtomicReference<AnnotatedFrame> seen = new AtomicReference<>();
    try (Calibrator calibrator = Calibrator.builder().build()) {
      calibrator.onFrames(seen::set);
      calibrator.push(Footage.jpeg(Footage.firstView()));
    }
    assertTrue(seen.get().hasPicture());
    BufferedImage picture = ImageIO.read(new ByteArrayInputStream(seen.get().jpeg()));
    assertEquals(640, picture.getWidth());
    assertEquals(480, picture.getHeight());
    assertEquals(Status.NOT_READY, seen.get().status().status());
    assertEquals(0, seen.get().status().snapshots());
    assertFalse(seen.get().status().result().isPresent());
  }

  @Test
  void pictures_come_in_the_size_asked_for() throws Exception {
    AtomicReference<AnnotatedFrame> seen = new AtomicReference<>();
    try (Calibrator calibrator = Calibrator.builder().build()) {
      calibrator.onFrames(seen::set, 160, 100);
      pushSmall(calibrator);
    }
    BufferedImage picture = ImageIO.read(new ByteArrayInputStream(seen.get().jpeg()));
    assertEquals(160, picture.getWidth());
    assertEquals(100, picture.getHeight());
  }

  @Test
  void without_images_one_zero_byte_comes() {
    Recorder recorder = new Recorder();
    AtomicReference<AnnotatedFrame> seen = new AtomicReference<>();
    try (Calibrator calibrator = Calibrator.builder().build()) {
      assertTrue(Calibration.nRegisterCalibrationListener(calibrator.id(), recorder, false, 0, 0));
      pushSmall(calibrator);
      calibrator.onStatus(seen::set);
      pushSmall(calibrator);
    }
    assertArrayEquals(new byte[] {0}, recorder.jpeg());
    assertFalse(seen.get().hasPicture());
    assertEquals(0, seen.get().jpeg().length);
  }

  @Test
  void a_listener_that_throws_gets_the_next_frame() {
    AtomicInteger calls = new AtomicInteger();
    try (Calibrator calibrator = Calibrator.builder().build()) {
      calibrator.onFrames(frame -> {
        calls.incrementAndGet();
        throw new IllegalStateException("not today");
      });
      for (int i = 1; i <= 3; ++i) {
        pushSmall(calibrator);
        assertEquals(i, calls.get());
      }
    }
  }

  @Test
  void a_listener_that_throws_ends_no_grabber() throws Exception {
    CountDownLatch calls = new CountDownLatch(3);
    try (Calibrator calibrator = Calibrator.builder().build()) {
      calibrator.onFrames(frame -> {
        calls.countDown();
        throw new AssertionError("not today either");
      });
      calibrator.startGrabbers();
      // A frame that comes while another waits replaces it, so there is one more after each call.
      while (calls.getCount() > 0) {
        long before = calls.getCount();
        pushSmall(calibrator);
        assertTrue(Views.eventually(() -> calls.getCount() < before));
      }
      assertEquals(Status.NOT_READY, calibrator.status().status());
    }
  }

  @Test
  void a_removed_listener_is_called_no_more() {
    AtomicInteger calls = new AtomicInteger();
    try (Calibrator calibrator = Calibrator.builder().build()) {
      calibrator.onFrames(frame -> calls.incrementAndGet());
      pushSmall(calibrator);
      calibrator.removeListener();
      pushSmall(calibrator);
    }
    assertEquals(1, calls.get());
  }

  @Test
  void a_listener_may_close_its_calibrator_on_the_caller_s_thread() {
    Calibrator calibrator = Calibrator.builder().build();
    calibrator.onFrames(frame -> calibrator.close());
    pushSmall(calibrator);
    assertThrows(IllegalStateException.class, calibrator::status);
  }

  @Test
  void a_listener_may_close_its_calibrator_on_a_grabber_s_thread() throws Exception {
    CountDownLatch closed = new CountDownLatch(1);
    Calibrator calibrator = Calibrator.builder().build();
    calibrator.onFrames(frame -> {
      calibrator.close();
      closed.countDown();
    });
    calibrator.startGrabbers();
    pushSmall(calibrator);
    assertTrue(closed.await(60, TimeUnit.SECONDS));
    assertThrows(IllegalStateException.class, calibrator::status);
  }

  @Test
  void a_mirrored_frame_is_mirrored() throws Exception {
    BufferedImage half = new BufferedImage(640, 480, BufferedImage.TYPE_INT_RGB);
    half.getGraphics().setColor(java.awt.Color.BLACK);
    for (int y = 0; y < 480; ++y) {
      for (int x = 0; x < 320; ++x) {
        half.setRGB(x, y, RED_CORNER);
      }
    }
    AtomicReference<AnnotatedFrame> seen = new AtomicReference<>();
    try (Calibrator calibrator = Calibrator.builder().build()) {
      calibrator.setFlip(true);
      assertTrue(calibrator.isFlipped());
      calibrator.onFrames(seen::set);
      calibrator.push(RawFrames.of(half, FrameFormat.RGB), 640, 480, FrameFormat.RGB);
    }
    BufferedImage picture = ImageIO.read(new ByteArrayInputStream(seen.get().jpeg()));
    assertTrue((picture.getRGB(500, 400) >> 16 & 255) > 200);
    assertTrue((picture.getRGB(140, 400) >> 16 & 255) < 50);
  }
}
