package com.velotrix.quiverleaf.live;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.google.gson.JsonArray;
import com.google.gson.JsonParser;
import com.velotrix.quiverleaf.sdk.CalibrationResult;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
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
      assertTrue(UiRobot.await(() -> user.canPress("stop")));
      user.press("stop");
      assertTrue(user.sees("message", "Poses.avi is closed."));
      user.press("start"); // from its first pose on
      assertTrue(user.sees("snapshots", "7 snapshots, pose 7 of 12"), user.read("message"));
      assertTrue(user.read("next").startsWith("Hold the sheet where the drawn one is (pose 8 of 12)."));
      user.photograph(SCREENSHOT);
      assertTrue(user.sees("verdict", "Verdict: good"), user.read("message"));
      assertEquals("12 snapshots", user.read("snapshots"));
      assertTrue(user.sees("next", "The result is good: press Save."));
      double focal = user.number("fx", 1);
      assertTrue(user.number("fx", 2) > 0.0 && user.number("fx", 2) < 0.01 * focal);
      user.press("save");
      assertTrue(user.sees("message", "Written: " + output + ", camera_verdict.json"));
      assertTrue(user.sees("next", "The result is saved."));
      expectCamera(output, FOOTAGE.resolve("poses.truth.json"));
      assertTrue(user.read("kept").startsWith("camera.velmora: 12 snapshots, "));
    }
  }

  @ParameterizedTest
  @ValueSource(strings = {"base64", "nv21"})
  void pictures_of_a_folder_are_pushed_and_calibrated_by_hand(String format) throws Exception {
    Path output = folder.resolve("camera");
    try (UiRobot user = new UiRobot("--folder", FOOTAGE.resolve("views").toString(), "--push", format,
             "--output", output.toString())) {
      assertTrue(UiRobot.await(() -> {
        user.press("snapshot");
        return snapshots(user) >= WANTED;
      }));
      user.press("stop");
      assertTrue(user.sees("message", "The folder views is closed."));
      int count = snapshots(user);
      user.press("takeBack");
      assertTrue(user.sees("snapshots", count - 1 + " snapshots"));
      user.press("bringBack");
      assertTrue(user.sees("snapshots", count + " snapshots"));
      assertTrue(user.sees("message", "One snapshot is brought back."));
      user.press("calibrate");
      assertTrue(user.sees("verdict", "Verdict: "), user.read("message"));
      assertTrue(UiRobot.await(() -> user.canPress("save")));
      user.press("save");
      assertTrue(user.sees("message", "Written: " + output));
      assertTrue(CalibrationResult.read(folder.resolve("camera.json")).rms() < 0.3);
      user.press("takeBack");
      assertTrue(user.sees("verdict", "Before the last change: "));
      assertTrue(UiRobot.await(() -> !user.canPress("save")));
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
  void what_cannot_be_done_is_told_or_grey() throws Exception {
    try (UiRobot user = new UiRobot("--file", "/nowhere/video.avi", "--poses", "/nowhere/poses.json",
             "--output", folder.resolve("camera").toString())) {
      assertTrue(user.sees("message", "The video '/nowhere/video.avi' cannot be opened."));
      assertTrue(user.sees(
          "next", "The video '/nowhere/video.avi' cannot be opened. Choose a source and press Start."));
      user.press("assistant");
      assertTrue(user.sees("message", "/nowhere/poses.json"));
      for (String name :
          new String[] {"stop", "snapshot", "takeBack", "bringBack", "startOver", "calibrate", "save"}) {
        assertFalse(user.canPress(name), name);
      }
    }
    // Nothing was taken.
    assertTrue(UiRobot.await(() -> !Files.exists(folder.resolve("camera.velmora"))));
  }

  /** What the launcher writes to standard output and to standard error, and its exit status. */
  private String[] launched(String... arguments) throws Exception {
    List<String> command = new ArrayList<>(List.of(System.getProperty("velmora.test.launcher")));
    command.addAll(List.of(arguments));
    Path errors = folder.resolve("errors.txt");
    Process process = new ProcessBuilder(command).redirectError(errors.toFile()).start();
    String output = new String(process.getInputStream().readAllBytes(), StandardCharsets.UTF_8);
    return new String[] {output, Files.readString(errors), Integer.toString(process.waitFor())};
  }

  @Test
  void the_launcher_says_what_it_does_not_understand() throws Exception {
    assertArrayEquals(new String[] {"",
                          "ERROR: there is no option --frobnicate\nUsage: velmora-live [OPTIONS]\n"
                              + "Run with --help for more information.\n",
                          "2"},
        launched("--frobnicate", "7"));
  }

  @Test
  void the_launcher_tells_what_is_wrong_with_a_session() throws Exception {
    String[] told = launched("--session", folder.toString());
    assertTrue(told[1].startsWith("ERROR: ") && told[1].contains(folder.toString()), told[1]);
    assertEquals("2", told[2]);
  }

  @Test
  void the_launcher_prints_help_and_version() throws Exception {
    assertArrayEquals(new String[] {"5.1.0\n", "", "0"}, launched("--version"));
    String[] help = launched("--help");
    assertTrue(help[0].contains("\nUsage: velmora-live [OPTIONS]\n"), help[0]);
    assertArrayEquals(new String[] {"", "0"}, new String[] {help[1], help[2]});
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
