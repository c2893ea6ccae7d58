package com.velotrix.quiverleaf.live;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.velotrix.quiverleaf.sdk.Calibrator;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import org.junit.jupiter.api.DisplayNameGeneration;
import org.junit.jupiter.api.DisplayNameGenerator;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** Which session a run has, and what it leaves behind. */
@DisplayNameGeneration(DisplayNameGenerator.ReplaceUnderscores.class)
class KeptSessionTest {
  @TempDir Path home;

  private Settings settings(String... more) {
    String[] all = new String[more.length + 2];
    all[0] = "--output";
    all[1] = home.resolve("camera").toString();
    System.arraycopy(more, 0, all, 2, more.length);
    return Settings.of(all);
  }

  /** With a snapshot in it. */
  private Path used(Settings settings) throws IOException {
    try (KeptSession kept = KeptSession.of(settings);
         Calibrator calibrator =
             Calibrator.builder().hdist(settings.hdist).frameSize(settings.width, settings.height).build()) {
      Frames.take(calibrator, new SnapshotStore(calibrator, kept.session), 1);
      return kept.session.folder();
    }
  }

  @Test
  void it_is_named_as_the_result_and_never_taken_for_granted() throws Exception {
    assertEquals(home.resolve("camera.velmora"), used(settings()));
    assertEquals(home.resolve("camera-2.velmora"), used(settings()));
  }

  @Test
  void one_in_which_nothing_was_taken_leaves_nothing_behind() throws Exception {
    KeptSession kept = KeptSession.of(settings());
    assertTrue(Files.exists(home.resolve("camera.velmora")));
    kept.close();
    kept.close();
    assertFalse(Files.exists(home.resolve("camera.velmora")));
  }

  @Test
  void further_files_are_left_alone() throws Exception {
    KeptSession kept = KeptSession.of(settings());
    Files.writeString(kept.session.pathFor("notes.txt"), "mine");
    kept.close();
    assertTrue(Files.exists(home.resolve("camera.velmora/notes.txt")));
    assertTrue(Files.exists(home.resolve("camera.velmora/session.json")));
  }

  @Test
  void one_that_is_named_is_gone_on_with_by_its_own_size_and_distance() throws Exception {
    Path folder = used(settings("--hdist", "0.35", "--size", "320x240"));
    Settings later = settings("--session", home.resolve("camera").toString());
    try (KeptSession kept = KeptSession.of(later)) {
      assertEquals(folder, kept.session.folder());
      assertEquals(1, kept.session.snapshots().size());
    }
    assertEquals(0.35, later.hdist, 1e-12);
    assertEquals(320, later.width);
    assertEquals(240, later.height);
    assertTrue(Files.exists(folder));
  }

  @Test
  void one_of_another_size_is_refused_with_both() throws Exception {
    Path folder = used(settings());
    String words = assertThrows(IOException.class,
        () -> KeptSession.of(settings("--session", folder.toString(), "--size", "320x240")))
                       .getMessage();
    assertTrue(words.contains("640 x 480, not 320 x 240"), words);
    KeptSession.of(settings("--session", folder.toString())).close();
  }

  @Test
  void one_that_is_named_and_not_there_is_begun() throws Exception {
    try (KeptSession kept = KeptSession.of(settings("--session", home.resolve("new").toString()))) {
      assertEquals(home.resolve("new.velmora"), kept.session.folder());
    }
  }

  @Test
  void what_is_no_session_is_refused() throws Exception {
    Files.createDirectory(home.resolve("folder"));
    assertThrows(
        IOException.class, () -> KeptSession.of(settings("--session", home.resolve("folder").toString())));
    assertThrows(IOException.class, () -> KeptSession.of(Settings.of("--output", home + "/no/camera")));
  }
}
