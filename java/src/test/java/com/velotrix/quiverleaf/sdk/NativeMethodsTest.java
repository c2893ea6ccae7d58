package com.velotrix.quiverleaf.sdk;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.google.gson.JsonObject;
import com.google.gson.JsonParser;
import java.lang.reflect.Method;
import java.lang.reflect.Modifier;
import java.util.Base64;
import java.util.Set;
import java.util.TreeSet;
import org.junit.jupiter.api.DisplayNameGeneration;
import org.junit.jupiter.api.DisplayNameGenerator;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.function.Executable;

/** Every native method on a known number and on an unknown one. */
@DisplayNameGeneration(DisplayNameGenerator.ReplaceUnderscores.class)
class NativeMethodsTest {
  private static final int UNKNOWN = 1_000_000;

  private static void expectNotFound(String answer, String operation) {
    JsonObject json = JsonParser.parseString(answer).getAsJsonObject();
    assertEquals(UNKNOWN, json.get("id").getAsInt());
    assertEquals(operation, json.get("op").getAsString());
    assertEquals("error", json.get("c").getAsString());
    assertEquals("ID not found.", json.get("it").getAsString());
    assertEquals(Set.of("id", "op", "c", "it"), json.keySet());
  }

  private static void expectAnswer(
      String answer, String operation, String outcome, String words, int status) {
    JsonObject json = JsonParser.parseString(answer).getAsJsonObject();
    assertEquals(operation, json.get("op").getAsString());
    assertEquals(outcome, json.get("c").getAsString());
    assertEquals(words, json.get("it").getAsString());
    assertEquals(status, json.get("ii").getAsInt());
    assertEquals(0, json.get("ni").getAsInt());
  }

  private static Set<String> functionsOf(Class<?> type) {
    Set<String> declared = new TreeSet<>();
    for (Method method : type.getDeclaredMethods()) {
      if (Modifier.isNative(method.getModifiers())) {
        declared.add("Java_com_velotrix_quiverleaf_sdk_" + type.getSimpleName() + "_" + method.getName());
      }
    }
    return declared;
  }

  @Test
  void the_46_native_methods_and_those_beside_them_are_the_functions_that_the_library_exports()
      throws Exception {
    Set<String> declared = functionsOf(Calibration.class);
    assertEquals(46, declared.size());
    Set<String> choices = functionsOf(EngineChoices.class);
    assertEquals(28, choices.size());
    declared.addAll(choices);
    Set<String> sessions = functionsOf(Sessions.class);
    assertEquals(22, sessions.size());
    declared.addAll(sessions);
    Set<String> results = functionsOf(Results.class);
    assertEquals(3, results.size());
    declared.addAll(results);
    Process nm =
        new ProcessBuilder("nm", "-D", "--defined-only", System.getProperty("velmora.test.library")).start();
    Set<String> exported = new TreeSet<>();
    for (String line : new String(nm.getInputStream().readAllBytes()).split("\n")) {
      String name = line.substring(line.lastIndexOf(' ') + 1);
      if (name.startsWith("Java_")) {
        exported.add(name);
      }
    }
    assertEquals(0, nm.waitFor());
    assertEquals(declared, exported);
  }

  @Test
  void values_for_an_unknown_number_are_those_that_the_methods_name() {
    assertFalse(Calibration.nDeleteCalibrator(UNKNOWN));
    assertEquals("abcd", Calibration.nDetectPattern(UNKNOWN, "abcd", 80));
    assertFalse(Calibration.nIsDetected(UNKNOWN));
    assertFalse(Calibration.nGetFlip(UNKNOWN));
    assertFalse(Calibration.nStartAssistant(UNKNOWN, Footage.poses().toString()));
    assertFalse(Calibration.nStopAssistant(UNKNOWN));
    assertFalse(Calibration.nAddPicture(UNKNOWN));
    assertFalse(Calibration.nAddStereoPicture(UNKNOWN));
    assertEquals(-1, Calibration.nGetStatus(UNKNOWN));
    assertEquals(-2, Calibration.nGetPictureCount(UNKNOWN));
    assertEquals(-3, Calibration.nGetAssistantGoal(UNKNOWN));
    assertEquals(-2.0F, Calibration.nGetError(UNKNOWN));
    assertEquals("", Calibration.nGetCalibrationJSON(UNKNOWN, false, ""));
    assertFalse(Calibration.nRegisterCalibrationListener(UNKNOWN, new Recorder(), true, 0, 0));
  }

  @Test
  void choices_and_snapshots_of_an_unknown_number_are_those_that_the_methods_name() {
    assertFalse(EngineChoices.nHasSeen(UNKNOWN));
    assertEquals("", EngineChoices.nWhyNotFound(UNKNOWN));
    assertEquals("", EngineChoices.nChooseModel(UNKNOWN));
    assertEquals(0, EngineChoices.nGetDeviations(UNKNOWN).length);
    assertEquals("", EngineChoices.nGetSnapshot(UNKNOWN, 0));
    assertEquals(0, EngineChoices.nGetSnapshotImage(UNKNOWN, 0, 0).length);
    assertEquals("", EngineChoices.nGetSnapshotFit(UNKNOWN, 0));
    assertFalse(EngineChoices.nAddSnapshot(UNKNOWN, "{}"));
    assertFalse(EngineChoices.nRemoveSnapshot(UNKNOWN, 0));
  }

  @Test
  void native_methods_of_an_unknown_session_say_that_there_is_none() {
    assertFalse(Sessions.nClose(UNKNOWN));
    for (Executable call : new Executable[] {()
                                                 -> Sessions.nDescribe(UNKNOWN),
             ()
                 -> Sessions.nAdd(UNKNOWN, "{}", null, null),
             ()
                 -> Sessions.nSnapshots(UNKNOWN),
             () -> Sessions.nUndo(UNKNOWN), () -> Sessions.nDecide(UNKNOWN, 0, new int[] {1})}) {
      assertEquals(
          "There is no session 1000000.", assertThrows(IllegalArgumentException.class, call).getMessage());
    }
    assertThrows(IllegalArgumentException.class, () -> Sessions.nFolderOf(null));
    assertThrows(IllegalArgumentException.class, () -> Sessions.nOpen(null, null, true));
    assertThrows(IllegalArgumentException.class, () -> Sessions.nCreate("x", "no settings"));
  }

  @Test
  void native_methods_on_results_say_what_is_wrong_with_a_text() {
    String usual = Lenses.usual();
    String options = "{\"step\":0,\"area\":[]}";
    String[] sentences = {"The first text is null.", "The second text is null.", "The options' text is null.",
        "The text of the options is cut off or no JSON text.", "The text of the options lacks \"step\".",
        "The text of the options has another type of \"area\"."};
    String[][] calls = {{null, usual, options}, {usual, null, options}, {usual, usual, null},
        {usual, usual, "{"}, {usual, usual, "{}"}, {usual, usual, "{\"step\":0,\"area\":[[1]]}"}};
    for (int i = 0; i < calls.length; ++i) {
      String[] given = calls[i];
      for (Executable call : new Executable[] {()
                                                   -> Results.nCompare(given[0], given[1], given[2]),
               () -> Results.nDrawComparison(given[0], given[1], given[2])}) {
        assertEquals(sentences[i], assertThrows(IllegalArgumentException.class, call).getMessage());
      }
    }
    assertEquals("The text of the result is null.",
        assertThrows(IllegalArgumentException.class, () -> Results.nCheck(null, null, "{}")).getMessage());
    assertEquals("The request's text is null.",
        assertThrows(IllegalArgumentException.class, () -> Results.nCheck(usual, null, null)).getMessage());
    assertEquals("The text of the request lacks \"images\".",
        assertThrows(IllegalArgumentException.class, () -> Results.nCheck(usual, null, "{}")).getMessage());
    assertThrows(IllegalArgumentException.class, () -> Results.nCheck(usual, "no verdict", "{}"));
  }

  @Test
  void json_answers_for_an_unknown_number_say_that_it_was_not_found() {
    expectNotFound(Calibration.nAddPictureQVX(UNKNOWN), "snapshot");
    expectNotFound(Calibration.nAddStereoPictureQVX(UNKNOWN), "snapshot");
    expectNotFound(Calibration.nCalibrateQVX(UNKNOWN, 10), "calibrate");
    expectNotFound(Calibration.nCalibrateStereoQVX(UNKNOWN, "{}", "{}", 10), "calibrate");
    expectNotFound(Calibration.nGetStatusQVX(UNKNOWN), "cs");
  }

  @Test
  void sources_are_not_opened_for_an_unknown_number() {
    assertFalse(Calibration.nOpenNativeCamera(UNKNOWN, 0, 640, 480, 30, 0));
    assertFalse(Calibration.nOpenNativeStereoCamera(UNKNOWN, 0, 1, 640, 480, 30));
    assertFalse(Calibration.nOpenFFmpegContent(UNKNOWN, Footage.file("poses.avi").toString()));
    assertFalse(Calibration.nOpenGstreamerPipe(UNKNOWN, "videotestsrc ! appsink"));
  }

  /** Those without a result: that they return, and change no other calibrator, is what there is to see. */
  @Test
  void calls_without_a_result_do_nothing_for_an_unknown_number() {
    int known = Calibration.nNewCalibrator(4, 11, 0.02F, 0, 640, 480);
    Calibration.nSetFlip(UNKNOWN, true);
    callAllWithoutResult(UNKNOWN);
    assertFalse(Calibration.nGetFlip(known));
    assertEquals(100, Calibration.nGetStatus(known));
    assertTrue(Calibration.nDeleteCalibrator(known));
  }

  private static void callAllWithoutResult(int id) {
    Calibration.nCalibrate(id, 10);
    Calibration.nCalibrateStereo(id, "{}", "{}", 10);
    Calibration.nCloseNativeCamera(id);
    Calibration.nCloseStereoNativeCamera(id);
    Calibration.nCloseFFmpegContent(id);
    Calibration.nCloseGstreamerPipe(id);
    Calibration.nOpenJpegB64FrameGrabber(id);
    Calibration.nCloseJpegB64FrameGrabber(id);
    Calibration.nNextFrameJpegB64(id, "abcd", 1);
    Calibration.nOpenRGBFrameGrabber(id);
    Calibration.nCloseRGBFrameGrabber(id);
    Calibration.nNextFrame(id, new byte[48], 4, 4, "8BPS", 1);
    Calibration.nOpenPreview(id);
    Calibration.nClosePreview(id);
    Calibration.nRegisterJavaVM(id);
    Calibration.nResetCalibrator(id);
  }

  @Test
  void a_fresh_calibrator_answers_every_method() {
    int id = Calibration.nNewCalibrator(4, 11, 0.02F, 0, 640, 480);
    assertFalse(Calibration.nIsDetected(id));
    Calibration.nSetFlip(id, true);
    assertTrue(Calibration.nGetFlip(id));
    assertEquals(-1, Calibration.nGetAssistantGoal(id));
    assertTrue(Calibration.nStartAssistant(id, Footage.poses().toString()));
    assertEquals(12, Calibration.nGetAssistantGoal(id));
    assertTrue(Calibration.nStopAssistant(id));
    assertEquals(-1, Calibration.nGetAssistantGoal(id));
    assertFalse(Calibration.nAddPicture(id));
    assertFalse(Calibration.nAddStereoPicture(id));
    assertEquals(100, Calibration.nGetStatus(id));
    assertEquals(0, Calibration.nGetPictureCount(id));
    assertEquals(-1.0F, Calibration.nGetError(id));
    assertEquals("", Calibration.nGetCalibrationJSON(id, false, ""));
    callAllWithoutResult(id);
    assertEquals(100, Calibration.nGetStatus(id));
    assertTrue(Calibration.nDeleteCalibrator(id));
    assertFalse(Calibration.nDeleteCalibrator(id));
  }

  @Test
  void a_fresh_calibrator_gives_every_json_answer() {
    int id = Calibration.nNewCalibrator(4, 11, 0.02F, 0, 640, 480);
    String derive = "Please derive calibration computation result from infoInt.";
    expectAnswer(Calibration.nAddPictureQVX(id), "snapshot", "error", "Pattern not detected.", 100);
    expectAnswer(Calibration.nAddStereoPictureQVX(id), "snapshot", "error", "Pattern not detected.", 100);
    expectAnswer(Calibration.nCalibrateQVX(id, 10), "calibrate", "success", derive, 100);
    expectAnswer(Calibration.nCalibrateStereoQVX(id, "{}", "{}", 10), "calibrate", "success", derive, 100);
    expectAnswer(Calibration.nGetStatusQVX(id), "cs", "success",
        "Calibration not ready to be performed yet. Not enough snapshots have been collected.", 100);
    assertTrue(Calibration.nDeleteCalibrator(id));
  }

  @Test
  void a_detection_is_answered_by_the_annotated_picture() throws Exception {
    int id = Calibration.nNewCalibrator(4, 11, 0.02F, 0, 640, 480);
    String pushed = Base64.getEncoder().encodeToString(Footage.jpeg(Footage.firstView()));
    String answer = Calibration.nDetectPattern(id, pushed, 60);
    assertFalse(answer.equals(pushed));
    assertEquals(640,
        javax.imageio.ImageIO.read(new java.io.ByteArrayInputStream(Base64.getDecoder().decode(answer)))
            .getWidth());
    assertTrue(Calibration.nIsDetected(id));
    assertTrue(Calibration.nAddPicture(id));
    assertEquals(1, Calibration.nGetPictureCount(id));
    assertEquals("no picture", Calibration.nDetectPattern(id, "no picture", 60));
    Calibration.nResetCalibrator(id);
    assertEquals(0, Calibration.nGetPictureCount(id));
    assertTrue(Calibration.nDeleteCalibrator(id));
  }

  @Test
  void numbers_are_never_given_again() {
    int first = Calibration.nNewCalibrator(4, 11, 0.02F, 0, 640, 480);
    assertTrue(Calibration.nDeleteCalibrator(first));
    int second = Calibration.nNewCalibrator(4, 11, 0.02F, 0, 640, 480);
    assertEquals(first + 1, second);
    assertTrue(Calibration.nDeleteCalibrator(second));
  }

  @Test
  void services_of_the_process_answer() {
    assertEquals("5.1.0", Calibration.nGetVersion());
    assertTrue(Calibration.nGetOpenCVBuildInfo().contains("General configuration for OpenCV"));
    Calibration.nDisableConsoleLogger();
    Calibration.nDisableFileLogger();
    Calibration.nSetLogLevel(1);
  }
}
