package com.velotrix.quiverleaf.live;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.nio.file.Path;
import org.junit.jupiter.api.DisplayNameGeneration;
import org.junit.jupiter.api.DisplayNameGenerator;
import org.junit.jupiter.api.Test;

/** The command line. */
@DisplayNameGeneration(DisplayNameGenerator.ReplaceUnderscores.class)
class SettingsTest {
  private static void expectRefused(String words, String... arguments) {
    assertEquals(
        words, assertThrows(IllegalArgumentException.class, () -> Settings.of(arguments)).getMessage());
  }

  @Test
  void without_arguments_nothing_is_started() {
    Settings settings = Settings.of();
    assertFalse(settings.sourceGiven);
    assertEquals(LensChoice.AUTO, settings.model);
    assertEquals(Path.of("calibration"), settings.output);
    assertEquals(0.2, settings.hdist);
    assertEquals(0.02, settings.unit(), 1e-15);
    assertTrue(settings.images);
  }

  @Test
  void options_take_values_after_a_blank_or_an_equals_sign() {
    Settings settings = Settings.of("--camera", "2", "--hdist=0.35", "--size", "1280x720", "--model=fisheye",
        "--output", "front.json", "--session", "front.velmora", "--no-images", "--push", "nv21");
    assertTrue(settings.sourceGiven);
    assertEquals(SourceKind.CAMERA, settings.source);
    assertEquals("2", settings.address);
    assertEquals(0.35, settings.hdist);
    assertEquals(1280, settings.width);
    assertEquals(720, settings.height);
    assertEquals(LensChoice.FISHEYE, settings.model);
    assertEquals(Path.of("front"), settings.output);
    assertEquals(Path.of("front.velmora"), settings.session);
    assertEquals(PushFormat.NV21, settings.push);
    assertFalse(settings.images);
  }

  @Test
  void what_is_not_understood_is_told() {
    expectRefused("there is no option --frobnicate", "--frobnicate", "7");
    expectRefused("there is no option video.avi", "video.avi");
    expectRefused("a value for --hdist is missing", "--hdist");
    expectRefused("--hdist is a distance in metres such as 0.2, not '-1'", "--hdist", "-1");
    expectRefused("--hdist is a distance in metres such as 0.2, not 'NaN'", "--hdist", "NaN");
    expectRefused("a size is written such as 640x480, not '640'", "--size", "640");
    expectRefused("a size is written such as 640x480, not '0x5'", "--size", "0x5");
    expectRefused("--model is one of auto, classic, rational, full, fisheye, not 'big'", "--model", "big");
    expectRefused("--output needs a name", "--output", ".json");
  }

  @Test
  void help_is_asked_for_in_two_ways() {
    assertTrue(Settings.of("--help").help);
    assertTrue(Settings.of("-h").help);
    assertTrue(Settings.of("--version").version);
  }
}
