package com.velotrix.quiverleaf.live;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.velotrix.quiverleaf.sdk.Calibrator;
import com.velotrix.quiverleaf.sdk.Session;
import com.velotrix.quiverleaf.sdk.SessionSettings;
import com.velotrix.quiverleaf.sdk.StoredSnapshot;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.stream.Collectors;
import org.junit.jupiter.api.AfterEach;
import org.junit.jupiter.api.BeforeEach;
import org.junit.jupiter.api.DisplayNameGeneration;
import org.junit.jupiter.api.DisplayNameGenerator;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** Snapshots of a calibrator, kept in a session. */
@DisplayNameGeneration(DisplayNameGenerator.ReplaceUnderscores.class)
class SnapshotStoreTest {
  @TempDir Path home;
  private Session session;
  private Calibrator calibrator;
  private SnapshotStore store;

  @BeforeEach
  void open() throws IOException {
    session = Session.create(home.resolve("a.velmora"), SessionSettings.of(0.02, 640, 480));
    calibrator = Calibrator.builder().build();
    store = new SnapshotStore(calibrator, session);
  }

  @AfterEach
  void close() {
    calibrator.close();
    session.close();
  }

  private List<Integer> used() {
    return session.snapshots()
        .stream()
        .filter(StoredSnapshot::isUsed)
        .map(StoredSnapshot::number)
        .collect(Collectors.toList());
  }

  /** The first abscissa of a snapshot tells which view it is. */
  private double view(int number) { return calibrator.observations(number).get(0).centres()[0][0]; }

  @Test
  void what_is_taken_is_in_the_session() throws Exception {
    Frames.take(calibrator, store, 3);
    assertEquals(3, store.stored());
    assertEquals(0, store.unstored());
    assertEquals(List.of(1, 2, 3), used());
    Frames.push(calibrator, 1);
    assertEquals(SnapshotStore.Taking.SAME_AS_BEFORE, store.take());
    assertEquals(3, calibrator.snapshots());
    assertEquals("by hand", session.snapshot(1).name());
    assertEquals(SnapshotStore.Taking.NOTHING_IN_VIEW, store.take()); // there is no new frame
    assertEquals(3, store.stored());
  }

  @Test
  void the_last_one_is_taken_back_and_brought_back() throws Exception {
    Frames.take(calibrator, store, 3);
    double last = view(2);
    assertTrue(store.takeBack());
    assertEquals(2, calibrator.snapshots());
    assertEquals(List.of(1, 2), used());
    assertEquals(1, store.canBringBack());
    assertEquals(1, store.bringBack());
    assertEquals(List.of(1, 2, 3), used());
    assertEquals(last, view(2));
    assertEquals(0, store.canBringBack());
    assertEquals(0, store.bringBack());
  }

  @Test
  void what_was_taken_back_is_not_brought_back_behind_a_newer_one() throws Exception {
    Frames.take(calibrator, store, 2);
    assertTrue(store.takeBack());
    Frames.push(calibrator, 2);
    assertEquals(SnapshotStore.Taking.TAKEN, store.take());
    assertEquals(0, store.canBringBack());
    assertEquals(List.of(1, 3), used());
  }

  @Test
  void starting_over_takes_all_back_at_once() throws Exception {
    Frames.take(calibrator, store, 3);
    assertTrue(store.startOver());
    assertEquals(0, calibrator.snapshots());
    assertEquals(0, store.stored());
    assertTrue(used().isEmpty());
    assertEquals(3, store.canBringBack());
    assertEquals(3, store.bringBack());
    assertEquals(3, calibrator.snapshots());
    assertEquals(List.of(1, 2, 3), used());
    assertFalse(store.takeBack() && store.takeBack() && store.takeBack() && store.takeBack());
  }

  @Test
  void a_session_is_gone_on_with() throws Exception {
    Frames.take(calibrator, store, 3);
    double second = view(1);
    session.exclude(1);
    calibrator.close();
    session.close();
    session = Session.open(home.resolve("a.velmora"));
    calibrator = Calibrator.builder().build();
    store = new SnapshotStore(calibrator, session);
    assertEquals(2, store.stored());
    assertEquals(2, calibrator.snapshots());
    assertEquals(second, view(0));
    assertTrue(store.takeBack());
    assertEquals(List.of(2), used());
  }

  @Test
  void what_is_just_being_taken_is_not_stored_by_a_retry() throws Exception {
    Frames.push(calibrator, 0);
    assertTrue(calibrator.takeSnapshot());
    assertEquals(0, store.retry());
    assertEquals(0, store.stored());
    assertEquals(1, store.keepNew("pose"));
    assertEquals("pose", session.snapshot(1).name());
  }

  @Test
  void what_the_disk_refuses_is_told_and_stored_later() throws Exception {
    Path snapshots = session.folder().resolve("snapshots");
    Path away = home.resolve("away");
    Frames.take(calibrator, store, 1);
    Files.move(snapshots, away);
    Files.createFile(snapshots); // where no folder can be made then
    for (int view : new int[] {1, 2}) {
      Frames.push(calibrator, view);
      assertEquals(SnapshotStore.Taking.TAKEN, store.take());
    }
    assertEquals(1, store.stored());
    assertEquals(2, store.unstored());
    assertFalse(store.fault().isEmpty());
    assertTrue(store.takeBack()); // one that is not on the disk
    assertEquals(1, store.unstored());
    assertEquals(0, store.retry());
    Files.delete(snapshots);
    Files.move(away, snapshots);
    assertEquals(1, store.retry());
    assertEquals(0, store.retry());
    assertEquals("", store.fault());
    assertEquals(2, used().size());
    assertEquals(0, store.unstored());
  }
}
