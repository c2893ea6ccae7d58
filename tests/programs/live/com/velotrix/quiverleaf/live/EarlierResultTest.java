package com.velotrix.quiverleaf.live;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.velotrix.quiverleaf.sdk.Session;
import com.velotrix.quiverleaf.sdk.SessionSettings;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.attribute.FileTime;
import org.junit.jupiter.api.DisplayNameGeneration;
import org.junit.jupiter.api.DisplayNameGenerator;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** How far a result is said to be from the one before it. */
@DisplayNameGeneration(DisplayNameGenerator.ReplaceUnderscores.class)
class EarlierResultTest {
  private static final String FAR = "It is 1.176 px from the earlier result on average, 2.121 px at most.";

  @TempDir Path home;

  private static String common(double focal, int width) {
    return "\"error\":0.05,\"imgWidth\":" + width + ",\"imgHeight\":480,\"cameraMatrix\":{\"cols\":3,"
        + "\"rows\":3,\"type\":6,\"depth\":6,\"data\":[" + focal + ",0,319.5,0," + focal + ",239.5,0,0,1]},";
  }

  private static String plain(double focal, int width) {
    return "{\"sensor\":0," + common(focal, width)
        + "\"distCoefs\":{\"cols\":5,\"rows\":1,\"type\":6,\"depth\":6,\"data\":[0,0,0,0,0]}}";
  }

  private static String fisheye(double focal) {
    return "{\"lensModel\":\"kannala-brandt\"," + common(focal, 640)
        + "\"fisheyeCoefs\":{\"cols\":4,\"rows\":1,\"type\":6,\"depth\":6,\"data\":[0,0,0,0]}}";
  }

  private Session session() throws IOException {
    return Session.create(home.resolve("camera.velmora"), SessionSettings.of(0.02, 640, 480));
  }

  private static void write(Session session, String name, String text, int second) throws IOException {
    Path file = session.pathFor(name);
    Files.writeString(file, text);
    Files.setLastModifiedTime(file, FileTime.fromMillis(1_700_000_000_000L + 1000L * second));
  }

  @Test
  void a_session_without_a_result_has_none() throws Exception {
    try (Session session = session()) {
      assertTrue(EarlierResult.in(session, "result").isEmpty());
      write(session, "other.json", plain(550.0, 640), 1);
      assertTrue(EarlierResult.in(session, "result").isEmpty());
    }
  }

  @Test
  void the_difference_to_the_one_that_was_written_last_is_told() throws Exception {
    try (Session session = session()) {
      write(session, "result.json", plain(550.0, 640), 1);
      assertEquals(FAR, EarlierResult.in(session, "result").orElseThrow().changeTo(plain(553.0, 640)));
      write(session, "result_fisheye.json", fisheye(553.0), 2);
      assertEquals("It is 0.000 px from the earlier result on average, 0.000 px at most.",
          EarlierResult.in(session, "result").orElseThrow().changeTo(fisheye(553.0)));
      write(session, "result.json", plain(550.0, 640), 3);
      assertEquals(FAR, EarlierResult.in(session, "result").orElseThrow().changeTo(plain(553.0, 640)));
    }
  }

  @Test
  void what_cannot_be_compared_is_told_with_the_reason() throws Exception {
    try (Session session = session()) {
      write(session, "result.json", "{", 1);
      assertEquals("It cannot be compared with the earlier result: The first text is not a result file.",
          EarlierResult.in(session, "result").orElseThrow().changeTo(plain(553.0, 640)));
      write(session, "result.json", plain(550.0, 800), 2);
      String words = EarlierResult.in(session, "result").orElseThrow().changeTo(plain(553.0, 640));
      assertTrue(words.contains("800 x 480 and 640 x 480"), words);
    }
  }
}
