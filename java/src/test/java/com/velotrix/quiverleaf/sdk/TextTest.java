package com.velotrix.quiverleaf.sdk;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.nio.file.Files;
import java.nio.file.Path;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.DisplayNameGeneration;
import org.junit.jupiter.api.DisplayNameGenerator;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** Texts between Java and the engine: unharmed, or refused. */
@DisplayNameGeneration(DisplayNameGenerator.ReplaceUnderscores.class)
class TextTest {
  private static final String FOREIGN = "caf\u00e9 \ud83d\ude00 \u6821\u6b63";
  private static final String HALF = "half\ud83d";

  @TempDir Path folder;
  private int id;

  @BeforeEach
  void create() {
    id = Calibration.nNewCalibrator(4, 11, 0.02F, 0, 640, 480);
  }

  @AfterEach
  void stillWorks() {
    assertEquals(100, Calibration.nGetStatus(id));
    assertTrue(Calibration.nDeleteCalibrator(id));
  }

  @Test
  void a_model_is_read_from_a_path_with_accents_and_emoji() throws Exception {
    Path model = Files.copy(Footage.poses(), folder.resolve(FOREIGN + ".json"));
    Calibration.nStartAssistant(id, model.toString());
    assertEquals(12, Calibration.nGetAssistantGoal(id));
  }

  @Test
  void content_is_opened_from_a_path_with_accents_and_emoji() throws Exception {
    // A blank would end the path.
    Path video = Files.copy(Footage.file("poses.avi"), folder.resolve(FOREIGN.replace(' ', '-') + ".avi"));
    assertTrue(Calibration.nOpenFFmpegContent(id, video.toString()));
    Calibration.nCloseFFmpegContent(id);
  }

  @Test
  void a_result_is_saved_to_a_path_with_accents_and_emoji() throws Exception {
    try (Calibrator calibrator = Views.calibrated()) {
      Path saved = calibrator.save(folder.resolve(FOREIGN + ".json"));
      assertEquals(folder.resolve(FOREIGN + ".json"), saved);
      assertEquals(calibrator.result().get().json(), Files.readString(saved));
    }
  }

  @Test
  void a_path_with_nul_names_nothing() throws Exception {
    Files.copy(Footage.poses(), folder.resolve("model"));
    assertFalse(Calibration.nStartAssistant(id, folder.resolve("model") + "\0.json"));
    assertEquals(-1, Calibration.nGetAssistantGoal(id));
    assertFalse(Calibration.nOpenFFmpegContent(id, Footage.file("poses.avi") + "\0.avi"));
    assertFalse(Calibration.nOpenGstreamerPipe(id, "videotestsrc ! appsink\0"));
    Calibration.nGetCalibrationJSON(id, true, folder.resolve("result") + "\0");
    assertFalse(Files.exists(folder.resolve("result.json")));
  }

  @Test
  void half_a_pair_of_surrogates_is_refused_in_words() {
    RuntimeException refusal =
        assertThrows(RuntimeException.class, () -> Calibration.nStartAssistant(id, HALF));
    assertEquals("The text holds half of a pair of surrogates.", refusal.getMessage());
    assertThrows(RuntimeException.class, () -> Calibration.nOpenFFmpegContent(id, HALF));
    assertEquals(-1, Calibration.nGetAssistantGoal(id));
  }

  @Test
  void a_picture_s_text_that_is_none_comes_back_unharmed() {
    for (String text : new String[] {FOREIGN, "a\0b", "", "\0", "plain"}) {
      assertEquals(text, Calibration.nDetectPattern(id, text, 80));
    }
  }
}
