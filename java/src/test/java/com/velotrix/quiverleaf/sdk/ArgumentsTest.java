package com.velotrix.quiverleaf.sdk;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertNull;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.DisplayNameGeneration;
import org.junit.jupiter.api.DisplayNameGenerator;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.EnumSource;
import org.junit.jupiter.params.provider.ValueSource;

/** Arguments that cannot be worked with: nothing reaches the calibrator, which goes on working. */
@DisplayNameGeneration(DisplayNameGenerator.ReplaceUnderscores.class)
class ArgumentsTest {
  private final Recorder recorder = new Recorder();
  private int id;

  @BeforeEach
  void create() {
    id = Calibration.nNewCalibrator(4, 11, 0.02F, 0, 64, 48);
    assertTrue(Calibration.nRegisterCalibrationListener(id, recorder, true, 0, 0));
  }

  @AfterEach
  void stillWorks() {
    int before = recorder.calls();
    Calibration.nNextFrame(id, new byte[64 * 48 * 3], 64, 48, "8BPS", 0);
    assertEquals(before + 1, recorder.calls());
    assertTrue(Calibration.nDeleteCalibrator(id));
  }

  private void push(byte[] data, int width, int height, String format) {
    Calibration.nNextFrame(id, data, width, height, format, 0);
    assertEquals(0, recorder.calls(), format + " " + width + " x " + height);
  }

  @ParameterizedTest
  @EnumSource(FrameFormat.class)
  void frames_shorter_than_their_size_needs_are_refused(FrameFormat format) {
    push(new byte[format.bytes(64, 48) - 1], 64, 48, format.code());
    push(new byte[1], 64, 48, format.code());
    push(new byte[0], 64, 48, format.code());
  }

  @ParameterizedTest
  @EnumSource(FrameFormat.class)
  void sizes_that_are_not_positive_or_beyond_all_use_are_refused(FrameFormat format) {
    byte[] data = new byte[64 * 48 * 3];
    for (int[] size : new int[][] {{0, 48}, {64, 0}, {-64, 48}, {64, -48}, {-64, -48}, {Integer.MIN_VALUE, 2},
             {Integer.MAX_VALUE, Integer.MAX_VALUE}, {2, Integer.MAX_VALUE}, {65536, 65536}}) {
      push(data, size[0], size[1], format.code());
    }
  }

  @ParameterizedTest
  @EnumSource(value = FrameFormat.class, mode = EnumSource.Mode.EXCLUDE, names = "RGB")
  void odd_sizes_are_refused_where_colours_are_halved(FrameFormat format) {
    push(new byte[64 * 48 * 3], 63, 48, format.code());
    push(new byte[64 * 48 * 3], 64, 47, format.code());
  }

  @Test
  void packed_frames_may_have_odd_sizes() {
    Calibration.nNextFrame(id, new byte[63 * 47 * 3], 63, 47, "8BPS", 0);
    assertEquals(1, recorder.calls());
  }

  @ParameterizedTest
  @ValueSource(strings = {"RGBA", "i420", "NV21 ", "NV2", "", "I420\0", "\u00e9\ud83d\ude00"})
  void other_format_names_are_refused(String format) {
    push(new byte[64 * 48 * 4], 64, 48, format);
  }

  @Test
  void null_is_refused() {
    push(null, 64, 48, "I420");
    push(new byte[64 * 48 * 3], 64, 48, null);
    Calibration.nNextFrameJpegB64(id, null, 0);
    assertEquals(0, recorder.calls());
    assertNull(Calibration.nDetectPattern(id, null, 80));
    assertFalse(Calibration.nStartAssistant(id, null));
    assertFalse(Calibration.nOpenFFmpegContent(id, null));
    assertFalse(Calibration.nOpenGstreamerPipe(id, null));
    Calibration.nCalibrateStereo(id, null, "{}", 10);
    Calibration.nCalibrateStereo(id, "{}", null, 10);
    assertNull(Calibration.nCalibrateStereoQVX(id, null, null, 10));
    assertNull(Calibration.nGetCalibrationJSON(id, true, null));
    assertEquals("", Calibration.nGetCalibrationJSON(id, false, null));
    assertEquals(100, Calibration.nGetStatus(id));
  }

  @Test
  void null_as_a_listener_ends_the_earlier_one() {
    assertFalse(Calibration.nRegisterCalibrationListener(id, null, true, 0, 0));
    push(new byte[64 * 48 * 3], 64, 48, "8BPS");
    assertTrue(Calibration.nRegisterCalibrationListener(id, recorder, true, 0, 0));
  }

  @Test
  void calibrators_of_impossible_sizes_are_not_made() {
    assertEquals(-1, Calibration.nNewCalibrator(0, 11, 0.02F, 0, 640, 480));
    assertEquals(-1, Calibration.nNewCalibrator(4, -11, 0.02F, 0, 640, 480));
    assertEquals(-1, Calibration.nNewCalibrator(4, 11, Float.NaN, 0, 640, 480));
    assertEquals(-1, Calibration.nNewCalibrator(4, 11, 0.02F, 0, 0, 480));
    assertEquals(-1, Calibration.nNewCalibrator(4, 11, 0.02F, 0, 640, Integer.MIN_VALUE));
    assertThrows(IllegalArgumentException.class,
        () -> Calibrator.builder().frameSize(Integer.MAX_VALUE, Integer.MAX_VALUE).build());
  }

  @Test
  void jpeg_qualities_outside_of_the_scale_do_no_harm() {
    String text = java.util.Base64.getEncoder().encodeToString(Footage.jpeg(Footage.firstView()));
    for (int quality : new int[] {Integer.MIN_VALUE, -1, 0, 101, Integer.MAX_VALUE}) {
      assertFalse(Calibration.nDetectPattern(id, text, quality).isEmpty());
    }
  }
}
