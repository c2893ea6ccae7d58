package com.velotrix.quiverleaf.live;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.google.gson.JsonArray;
import com.google.gson.JsonParser;
import com.velotrix.quiverleaf.sdk.CalibrationResult;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import org.junit.jupiter.api.DisplayNameGeneration;
import org.junit.jupiter.api.DisplayNameGenerator;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;
import org.junit.jupiter.params.ParameterizedTest;
import org.junit.jupiter.params.provider.ValueSource;

/** The live application on a desktop, as its user works with it. */
@DisplayNameGeneration(DisplayNameGenerator.ReplaceUnderscores.class)
class LiveWindowTest {
  private static final Path FOOTAGE = Path.of(System.getProperty("velmora.test.footage"));
  private static final String POSES = System.getProperty("velmora.test.poses");
  private static final Path SCREENSHOT = Path.of(System.getProperty("velmora.test.screenshot"));

  private static final int WANTED = 8;

  @TempDir Path folder;

  private static void expectCamera(Path file, Path truth) throws Exception {
    CalibrationResult result = CalibrationResult.read(file);
    JsonArray rows = JsonParser.parseString(Files.readString(truth)).getAsJsonObject().getAsJsonArray("K");
    double focal = rows.get(0).getAsJsonArray().get(0).getAsDouble();
    assertEquals(focal, result.cameraMatrix().get(0, 0), 0.005 * focal);
    assertTrue(result.rms() < 0.2, "rms " + result.rms());
  }

  @Test
  void a_video_leads_by_the_assistant_to_a_saved_result() throws Exception {
    Path output = folder.resolve("camera.json");
    try (UiRobot user = new UiRobot("--file", relative(FOOTAGE.resolve("poses.avi")), "--poses", POSES,
             "--output", output.toString())) {
      user.press("assistant");
      assertTrue(user.sees("message", "Bring the sheet to the drawn one, 12 times."));
      user.press("start");
      assertTrue(user.sees("snapshots", "7 of 12"), user.read("message"));
      user.photograph(SCREENSHOT);
      assertTrue(user.sees("state", "Completed"), user.read("message"));
      assertEquals("12 snapshots", user.read("snapshots").replace(" of 12", ""));
      user.press("save");
      assertTrue(user.sees("message", "Written: " + output));
      expectCamera(output, FOOTAGE.resolve("poses.truth.json"));
    }
  }

  @ParameterizedTest
  @ValueSource(strings = {"base64", "nv21"})
  void pictures_of_a_folder_are_pushed_and_calibrated_by_hand(String format) throws Exception {
    Path output = folder.resolve("camera.json");
    try (UiRobot user = new UiRobot("--folder", FOOTAGE.resolve("views").toString(), "--push", format,
             "--output", output.toString())) {
      user.press("start");
      assertTrue(UiRobot.await(() -> {
        user.press("snapshot");
        return snapshots(user) >= WANTED;
      }));
      user.press("stop");
      assertTrue(user.sees("message", "The source is closed."));
      user.press("calibrate");
      assertTrue(user.sees("state", "Completed"), user.read("message"));
      user.press("save");
      assertTrue(user.sees("message", "Written: " + output));
      assertTrue(CalibrationResult.read(output).rms() < 0.3);
    }
  }

  private static String relative(Path file) {
    return Path.of("").toAbsolutePath().relativize(file).toString();
  }

  private static int snapshots(UiRobot user) {
    String text = user.read("snapshots");
    return Integer.parseInt(text.substring(0, text.indexOf(' ')));
  }

  @Test
  void what_cannot_be_done_is_told_in_the_window() throws Exception {
    try (UiRobot user = new UiRobot("--file", "/nowhere/video.avi", "--poses", "/nowhere/poses.json")) {
      user.press("start");
      assertTrue(user.sees("message", "Video file /nowhere/video.avi cannot be opened."));
      user.press("assistant");
      assertTrue(user.sees("message", "/nowhere/poses.json"));
      user.press("snapshot");
      assertTrue(user.sees("message", "The grid is not in view."));
      user.press("save");
      assertTrue(user.sees("message", "Nothing to save yet: calibrate first."));
    }
  }

  @Test
  void the_launcher_says_what_it_does_not_understand() throws Exception {
    Path errors = folder.resolve("errors.txt");
    Process process = new ProcessBuilder(System.getProperty("velmora.test.launcher"), "--frobnicate", "7")
                          .redirectError(errors.toFile())
                          .start();
    assertEquals(2, process.waitFor());
    assertTrue(
        Files.readString(errors).startsWith("ERROR: there is no option --frobnicate\nusage: velmora-live "));
  }

  /**
   * What the launcher has Java run with as the level of OpenCV's log, when that is set as given, or not at
   * all.
   */
  private String libraryLogLevel(String given) throws Exception {
    Path stub = folder.resolve("java");
    Files.writeString(stub, "#!/bin/sh\nprintf %s \"$OPENCV_LOG_LEVEL\"\n");
    assertTrue(stub.toFile().setExecutable(true));
    ProcessBuilder launcher = new ProcessBuilder(System.getProperty("velmora.test.launcher"));
    launcher.environment().put("PATH", folder + ":" + System.getenv("PATH"));
    launcher.environment().remove("OPENCV_LOG_LEVEL");
    if (given != null) {
      launcher.environment().put("OPENCV_LOG_LEVEL", given);
    }
    Process process = launcher.start();
    String level = new String(process.getInputStream().readAllBytes(), StandardCharsets.UTF_8);
    assertEquals(0, process.waitFor());
    return level;
  }

  @Test
  void the_launcher_keeps_warnings_of_the_video_library_to_itself_unless_they_are_wanted() throws Exception {
    assertEquals("ERROR", libraryLogLevel(null));
    assertEquals("WARNING", libraryLogLevel("WARNING"));
  }
}
