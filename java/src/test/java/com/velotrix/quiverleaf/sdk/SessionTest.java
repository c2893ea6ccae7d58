package com.velotrix.quiverleaf.sdk;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.awt.image.BufferedImage;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.time.Instant;
import java.util.Optional;
import javax.imageio.ImageIO;
import org.junit.jupiter.api.DisplayNameGeneration;
import org.junit.jupiter.api.DisplayNameGenerator;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.function.Executable;
import org.junit.jupiter.api.io.TempDir;

/** Calibration sessions on the disk. */
@DisplayNameGeneration(DisplayNameGenerator.ReplaceUnderscores.class)
class SessionTest {
  private static final SessionSettings SETTINGS = SessionSettings.of(0.02, 640, 480).withSource("a test");

  @TempDir Path home;

  private Path folder() { return home.resolve("camera.velmora"); }

  private Session created() throws IOException { return Session.create(folder(), SETTINGS); }

  private static Observation grid(double shift) {
    double[][] centres = new double[44][];
    for (int i = 0; i < centres.length; ++i) {
      centres[i] = new double[] {shift + 10.0 * (i % 4), 20.0 * (i / 4)};
    }
    return Observation.of(centres);
  }

  /** The sentence with which the call is refused. */
  private static String refusal(Class<? extends Exception> type, Executable call) {
    return assertThrows(type, call).getMessage();
  }

  @Test
  void a_session_is_found_again_with_its_settings_and_snapshots() throws Exception {
    Observation seen = grid(3.5).withWeights(new double[44]).withDeviations(new double[44]);
    try (Session session = created()) {
      assertEquals(1,
          session.add(new SessionSnapshot(seen).name("first").score(0.5).takenAt(
              Instant.parse("2026-05-04T12:30:00Z"))));
      assertEquals(2, session.add(new SessionSnapshot(grid(0.0))));
    }
    try (Session session = Session.open(folder())) {
      assertEquals(4, session.settings().columns());
      assertEquals(11, session.settings().rows());
      assertEquals(0.02, session.settings().unit());
      assertEquals(1, session.settings().cameras());
      assertEquals(640, session.settings().imageWidth(0));
      assertEquals("auto", session.settings().lensModel());
      assertEquals("a test", session.settings().source());
      assertTrue(session.warnings().isEmpty());
      assertEquals(2, session.snapshots().size());
      StoredSnapshot first = session.snapshots().get(0);
      assertEquals("first", first.name());
      assertEquals(0.5, first.score().orElseThrow());
      assertEquals(Optional.of(Instant.parse("2026-05-04T12:30:00Z")), first.takenAt());
      assertArrayEquals(seen.centres(), first.observations().get(0).centres());
      assertEquals(44, first.observations().get(0).weights().length);
      assertTrue(first.isUsed());
      assertEquals(Optional.empty(), first.image(0));
    }
  }

  @Test
  void names_of_sessions_are_free_ones() throws Exception {
    Path name = home.resolve("camera");
    assertEquals(folder(), Session.folderOf(name));
    assertEquals(folder(), Session.freeFolder(name));
    created().close();
    assertEquals(home.resolve("camera-2.velmora"), Session.freeFolder(name));
  }

  @Test
  void decisions_are_undone_and_done_again() throws Exception {
    try (Session session = created()) {
      for (int i = 0; i < 3; ++i) {
        session.add(new SessionSnapshot(grid(i)));
      }
      session.exclude(1, 2);
      assertEquals(StoredSnapshot.Decision.EXCLUDED, session.snapshot(2).decision());
      session.include(2);
      session.remove(3);
      assertFalse(session.snapshot(3).isUsed());
      assertTrue(session.canUndo());
      SessionStep step = session.undo().orElseThrow();
      assertEquals(SessionStep.Kind.REMOVE, step.kind());
      assertArrayEquals(new int[] {3}, step.numbers());
      assertTrue(session.canRedo());
      assertEquals(SessionStep.Kind.REMOVE, session.redo().orElseThrow().kind());
      assertFalse(session.canRedo());
      session.bringBack(3);
      assertTrue(session.snapshot(3).isUsed());
      assertEquals(SessionStep.Kind.BRING_BACK, session.undo().orElseThrow().kind());
    }
    try (Session session = Session.open(folder())) {
      assertEquals(StoredSnapshot.Decision.EXCLUDED, session.snapshot(1).decision());
      assertEquals(StoredSnapshot.Decision.USED, session.snapshot(2).decision());
      assertEquals(StoredSnapshot.Decision.REMOVED, session.snapshot(3).decision());
      assertEquals(Optional.empty(), session.undo());
      assertEquals(1, session.purge());
      assertEquals(2, session.snapshots().size());
    }
  }

  @Test
  void images_come_back_as_they_were_given() throws Exception {
    BufferedImage view = Footage.firstView();
    BufferedImage grey = new BufferedImage(640, 480, BufferedImage.TYPE_BYTE_GRAY);
    grey.getRaster().setSample(7, 9, 0, 201);
    Path file = home.resolve("view.png");
    ImageIO.write(view, "png", file.toFile());
    try (Session session = created()) {
      session.add(new SessionSnapshot(grid(0.0)).image(0, view));
      session.add(new SessionSnapshot(grid(0.0)).image(0, grey));
      session.add(new SessionSnapshot(grid(0.0)).imageFile(0, file, true));
      session.add(new SessionSnapshot(grid(0.0)).imageFile(0, file, false));
      for (int number : new int[] {1, 3, 4}) {
        BufferedImage image = session.image(number, 0);
        assertEquals(view.getRGB(320, 240), image.getRGB(320, 240), "of " + number);
        assertEquals(view.getRGB(1, 470), image.getRGB(1, 470), "of " + number);
      }
      assertEquals(201, session.image(2, 0).getRaster().getSample(7, 9, 0));
      assertEquals(StoredSnapshot.Image.Kind.PNG, session.snapshot(1).image(0).orElseThrow().kind());
      StoredSnapshot.Image copy = session.snapshot(3).image(0).orElseThrow();
      assertEquals(StoredSnapshot.Image.Kind.COPY, copy.kind());
      assertTrue(copy.path().startsWith(folder()));
      assertEquals(Files.size(file), copy.bytes());
      assertEquals(StoredSnapshot.Image.Kind.REFERENCE, session.snapshot(4).image(0).orElseThrow().kind());
    }
    Files.delete(file);
    try (Session session = Session.open(folder())) {
      assertTrue(session.snapshot(4).image(0).orElseThrow().fault().endsWith("is missing."));
      assertThrows(IOException.class, () -> session.image(4, 0));
    }
  }

  @Test
  void what_a_calibrator_took_computes_the_same_from_the_session() throws Exception {
    double[] expected;
    try (Session session = created(); Calibrator calibrator = Calibrator.builder().build()) {
      for (BufferedImage view : Footage.pictures("views")) {
        calibrator.push(Footage.jpeg(view));
        assertTrue(calibrator.takeSnapshot());
        assertEquals(calibrator.snapshots(), session.store(calibrator, calibrator.snapshots() - 1, "live"));
      }
      assertThrows(IndexOutOfBoundsException.class, () -> session.store(calibrator, 99, "none"));
      calibrator.calibrate(LensModel.RATIONAL);
      expected = calibrator.awaitResult(Views.PATIENCE).cameraMatrix().toArray();
    }
    try (Session session = Session.open(folder()); Calibrator calibrator = Calibrator.builder().build()) {
      for (StoredSnapshot snapshot : session.snapshots()) {
        assertEquals("live", snapshot.name());
        assertTrue(session.restore(snapshot.number(), calibrator));
      }
      assertEquals(480, calibrator.snapshotImage(0, 0).orElseThrow().getHeight());
      calibrator.calibrate(LensModel.RATIONAL);
      assertArrayEquals(expected, calibrator.awaitResult(Views.PATIENCE).cameraMatrix().toArray(), 1e-12);
    }
  }

  @Test
  void a_snapshot_is_taken_back_and_brought_back() throws Exception {
    try (Calibrator calibrator = Calibrator.builder().build()) {
      calibrator.push(Footage.jpeg(Footage.firstView()));
      // camera.velmora, or with a number where that exists
      Path folder = Session.freeFolder(home.resolve("camera"));
      try (Session session = Session.create(folder, SessionSettings.of(0.02, 640, 480))) {
        if (calibrator.takeSnapshot()) {
          session.store(calibrator, calibrator.snapshots() - 1, "by hand"); // on the disk when this returns
        }
        session.remove(1); // and session.undo() brings it back
        assertFalse(session.snapshot(1).isUsed());
        session.undo();
        assertTrue(session.snapshot(1).isUsed());
      }
    }
  }

  @Test
  void what_makes_no_sense_is_refused_with_a_sentence_and_changes_nothing() throws Exception {
    assertEquals("A grid of 0 x 11 circles is none.",
        refusal(IllegalArgumentException.class, () -> Session.create(folder(), SETTINGS.withGrid(0, 11))));
    assertFalse(Files.exists(folder()));
    try (Session session = created()) {
      assertEquals("There are 1 centres of camera 0, where the grid has 44.",
          refusal(IllegalArgumentException.class,
              () -> session.add(new SessionSnapshot(Observation.of(new double[][] {{1.0, 2.0}})))));
      assertEquals("No camera saw the grid.",
          refusal(
              IllegalArgumentException.class, () -> session.add(new SessionSnapshot(Observation.none()))));
      assertEquals("The image of camera 0 has 5 x 4 pixels, not 640 x 480.",
          refusal(IllegalArgumentException.class,
              ()
                  -> session.add(new SessionSnapshot(grid(0.0)).image(
                      0, new BufferedImage(5, 4, BufferedImage.TYPE_INT_RGB)))));
      assertEquals(
          "There is no snapshot 7.", refusal(IllegalArgumentException.class, () -> session.exclude(7)));
      assertThrows(IllegalArgumentException.class, () -> session.pathFor("../elsewhere"));
      assertTrue(session.snapshots().isEmpty());
    }
  }

  @Test
  void what_the_disk_refuses_is_an_exception_with_a_sentence() throws Exception {
    assertTrue(refusal(IOException.class, () -> Session.open(home.resolve("nowhere"))).contains("nowhere"));
    assertThrows(IOException.class, () -> Session.create(home.resolve("no/folder.velmora"), SETTINGS));
    try (Session session = created()) {
      assertTrue(refusal(IOException.class, () -> Session.open(folder())).contains(" is in use by process "));
      assertEquals(folder(), session.folder());
    }
    String other =
        refusal(IOException.class, () -> Session.open(folder(), SessionSettings.of(0.03, 640, 480)));
    assertTrue(other.contains("a unit of 0.02 m, not 0.03 m"), other);
    Session.open(folder(), SETTINGS).close();
  }

  @Test
  void a_closed_session_answers_nothing_more_and_can_be_opened_again() throws Exception {
    Session session = created();
    session.close();
    session.close();
    assertThrows(IllegalStateException.class, session::snapshots);
    assertThrows(IllegalStateException.class, () -> session.add(new SessionSnapshot(grid(0.0))));
    assertThrows(IllegalStateException.class, session::bytesTaken);
    Session.open(folder()).close();
  }

  @Test
  void the_disk_is_told() throws Exception {
    try (Session session = created()) {
      long before = session.bytesTaken();
      session.add(new SessionSnapshot(grid(0.0)).image(0, Footage.firstView()));
      assertTrue(session.bytesTaken() > before + 1000);
      assertTrue(session.bytesFree() > 0);
      assertEquals(Optional.empty(), session.diskWarning(1));
      assertTrue(session.diskWarning(Integer.MAX_VALUE).isPresent());
      Path result = session.pathFor("result.json");
      assertEquals(folder().resolve("result.json"), result);
    }
  }
}
