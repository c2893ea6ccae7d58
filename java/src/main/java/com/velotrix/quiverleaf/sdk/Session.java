package com.velotrix.quiverleaf.sdk;

import com.google.gson.JsonObject;
import java.awt.image.BufferedImage;
import java.io.ByteArrayInputStream;
import java.io.IOException;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.Optional;
import java.util.concurrent.locks.ReadWriteLock;
import java.util.concurrent.locks.ReentrantReadWriteLock;
import javax.imageio.ImageIO;

/**
 * A calibration session: a folder with what was taken, what was decided of it, and what came of it. What
 * {@link #add} or {@link #store} returned for is on the disk, whole, and outlasts an end of the process at
 * any moment.
 *
 * <pre>{@code
 * try (Session session = Session.create(Session.freeFolder(Path.of("camera")), settings)) {
 *   if (calibrator.takeSnapshot()) {
 *     session.store(calibrator, calibrator.snapshots() - 1, "by hand");
 *   }
 * }
 * }</pre>
 *
 * <p>One process at a time has a session open. Any thread may call any method. Arguments that make no sense
 * are refused with {@link IllegalArgumentException}, what the disk refuses comes as {@link IOException}, with
 * the engine's sentences; everything is then as it was. After {@link #close} every method but close throws
 * {@link IllegalStateException}.
 */
public final class Session implements AutoCloseable {
  private enum Decided { EXCLUDE, INCLUDE, REMOVE, BRING_BACK }

  /** Something that the engine does with the session of that number. */
  private interface Work<T> {
    T on(int id) throws IOException;
  }

  private final int id;
  private final Path folder;
  private final SessionSettings settings;
  private final List<String> warnings;
  /** Calls read; close writes, so that the folder is free when it returns. */
  private final ReadWriteLock use = new ReentrantReadWriteLock();
  private boolean closed;

  private Session(int id) {
    this.id = id;
    JsonObject document = Documents.parse(Sessions.nDescribe(id));
    folder = Path.of(Documents.text(document, "folder"));
    settings = new SessionSettings(document.getAsJsonObject("settings"));
    warnings = List.copyOf(Documents.texts(document, "warnings"));
  }

  /** The folder of the session of that name: with ".velmora" appended, unless it ends so. */
  public static Path folderOf(Path name) { return Path.of(Sessions.nFolderOf(name.toString())); }

  /** The first of NAME.velmora, NAME-2.velmora, NAME-3.velmora and so on that does not exist. */
  public static Path freeFolder(Path name) { return Path.of(Sessions.nFreeFolder(name.toString())); }

  /** Creates the folder, whose parent must exist and which must not, and opens it. */
  public static Session create(Path folder, SessionSettings settings) throws IOException {
    return new Session(Sessions.nCreate(folder.toString(), settings.json()));
  }

  /** Opens a session; every image is compared with what was stored. */
  public static Session open(Path folder) throws IOException {
    return new Session(Sessions.nOpen(folder.toString(), null, true));
  }

  /**
   * Opens a session that has the same grid, unit, number of cameras and image sizes; refuses others with
   * IOException, which names both.
   */
  public static Session open(Path folder, SessionSettings expected) throws IOException {
    return new Session(Sessions.nOpen(folder.toString(), expected.json(), true));
  }

  /** Lets other processes open it, once calls under way have ended. Closing again does nothing. */
  @Override
  public void close() {
    use.writeLock().lock();
    try {
      if (!closed) {
        closed = true;
        Sessions.nClose(id);
      }
    } finally {
      use.writeLock().unlock();
    }
  }

  private <T> T with(Work<T> work) throws IOException {
    use.readLock().lock();
    try {
      if (closed) {
        throw new IllegalStateException("the session is closed");
      }
      return work.on(id);
    } finally {
      use.readLock().unlock();
    }
  }

  /** As with, for what never looks at the disk. */
  private <T> T ask(Work<T> work) {
    try {
      return with(work);
    } catch (IOException e) {
      throw new IllegalStateException(e);
    }
  }

  /** Its folder, absolute. */
  public Path folder() { return folder; }

  /** What it goes by. */
  public SessionSettings settings() { return settings; }

  /** What was found damaged besides snapshots when it was opened, as sentences. */
  public List<String> warnings() { return warnings; }

  /** The path of a further file in its folder, such as a result. */
  public Path pathFor(String name) {
    String path = ask(session -> Sessions.nPathFor(session, name));
    return Path.of(path);
  }

  // ---- Snapshots.

  /** Stores a snapshot, which is used, and returns its number. Takes as long as the disk needs. */
  public int add(SessionSnapshot snapshot) throws IOException {
    return with(session -> Sessions.nAdd(session, snapshot.json(), snapshot.pixels(), snapshot.shapes()));
  }

  /**
   * Stores a calibrator's snapshot (from 0) with its pictures, and returns its number in the session.
   *
   * @throws IndexOutOfBoundsException when the calibrator has none of that number
   */
  public int store(Calibrator calibrator, int number, String name) throws IOException {
    return with(session -> Sessions.nStore(session, calibrator.id(), number, name));
  }

  /**
   * Adds a stored snapshot to a calibrator: a computation from the same snapshots in the same order is the
   * same. False when the calibrator takes none: during a computation, or, with a line in its log, where its
   * grid is another.
   */
  public boolean restore(int number, Calibrator calibrator) throws IOException {
    return with(session -> Sessions.nRestore(session, number, calibrator.id()));
  }

  /** All snapshots, removed and damaged ones too, in the order of their numbers. */
  public List<StoredSnapshot> snapshots() {
    List<StoredSnapshot> all = new ArrayList<>();
    for (JsonObject snapshot : Documents.list(ask(Sessions::nSnapshots))) {
      all.add(new StoredSnapshot(snapshot));
    }
    return all;
  }

  /** The snapshot of that number. */
  public StoredSnapshot snapshot(int number) {
    return new StoredSnapshot(Documents.parse(ask(session -> Sessions.nSnapshot(session, number))));
  }

  /**
   * The image of a camera (from 0).
   *
   * @throws IllegalArgumentException when none is kept
   * @throws IOException when its file is missing, or not what was stored
   */
  public BufferedImage image(int number, int camera) throws IOException {
    return ImageIO.read(
        new ByteArrayInputStream(with(session -> Sessions.nLoadImage(session, number, camera))));
  }

  // ---- Decisions, on the disk before the methods return.

  /** Keeps snapshots that computations are not to take. */
  public void exclude(int... numbers) throws IOException { decide(Decided.EXCLUDE, numbers); }

  /** Has computations take them again. */
  public void include(int... numbers) throws IOException { decide(Decided.INCLUDE, numbers); }

  /** Makes snapshots as if they had never been taken, until they are brought back or purged. */
  public void remove(int... numbers) throws IOException { decide(Decided.REMOVE, numbers); }

  /** Brings removed snapshots back as they were. */
  public void bringBack(int... numbers) throws IOException { decide(Decided.BRING_BACK, numbers); }

  private void decide(Decided decision, int... numbers) throws IOException {
    with(session -> {
      Sessions.nDecide(session, decision.ordinal(), numbers);
      return null;
    });
  }

  /** Takes back what was done last since it was opened; what that was, empty when there is nothing. */
  public Optional<SessionStep> undo() throws IOException { return step(with(Sessions::nUndo)); }

  /** Does again what was taken back last; what that was, empty when there is nothing. */
  public Optional<SessionStep> redo() throws IOException { return step(with(Sessions::nRedo)); }

  private static Optional<SessionStep> step(String json) {
    return json.isEmpty() ? Optional.empty() : Optional.of(new SessionStep(Documents.parse(json)));
  }

  /** Whether there is something to take back. */
  public boolean canUndo() { return ask(Sessions::nCanUndo); }

  /** Whether there is something to do again. */
  public boolean canRedo() { return ask(Sessions::nCanRedo); }

  /** Deletes the files of removed snapshots; how many there were. Nothing can be undone afterwards. */
  public int purge() throws IOException { return with(Sessions::nPurge); }

  // ---- The disk.

  /** The bytes of all files in the folder. */
  public long bytesTaken() throws IOException { return with(Sessions::nBytesTaken); }

  /** The bytes that are free on its disk. */
  public long bytesFree() throws IOException { return with(Sessions::nBytesFree); }

  /** A warning, as a sentence, when less is free than that number of further snapshots will need. */
  public Optional<String> diskWarning(int snapshots) throws IOException {
    String warning = with(session -> Sessions.nDiskWarning(session, snapshots));
    return warning.isEmpty() ? Optional.empty() : Optional.of(warning);
  }
}
