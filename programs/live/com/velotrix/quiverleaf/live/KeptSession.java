package com.velotrix.quiverleaf.live;

import com.velotrix.quiverleaf.sdk.Session;
import com.velotrix.quiverleaf.sdk.SessionSettings;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Set;
import java.util.stream.Collectors;
import java.util.stream.Stream;

/** The session of a run: a new one, or one that is gone on with. */
final class KeptSession implements AutoCloseable {
  private static final Set<String> EMPTY = Set.of("session.json", "lock", "snapshots");
  private static final double DISC_SHARE = 0.4;

  final Session session;
  /** What the user is told of it. */
  final String words;
  private final boolean isNew;
  private boolean closed;

  private KeptSession(Session session, boolean isNew, String words) {
    this.session = session;
    this.isNew = isNew;
    this.words = words;
  }

  /**
   * Opens the session that the settings name or, where there is none, makes it. The settings take over its
   * size and distance, unless they were given: then they have to be the same.
   */
  static KeptSession of(Settings settings) throws IOException {
    if (settings.session != null) {
      for (Path folder : new Path[] {settings.session, Session.folderOf(settings.session)}) {
        if (Files.exists(folder)) {
          return opened(folder, settings);
        }
      }
      return created(Session.folderOf(settings.session), settings);
    }
    return created(Session.freeFolder(settings.output), settings);
  }

  private static KeptSession created(Path folder, Settings settings) throws IOException {
    Session session = Session.create(folder, asked(settings));
    return new KeptSession(session, true, "Snapshots are kept in " + folder + ".");
  }

  private static KeptSession opened(Path folder, Settings settings) throws IOException {
    SessionSettings there;
    try (Session session = Session.open(folder)) {
      there = session.settings();
    }
    if (!settings.sizeGiven) {
      settings.width = there.imageWidth(0);
      settings.height = there.imageHeight(0);
    }
    if (!settings.hdistGiven) {
      settings.hdist = there.unit() * Settings.ROW_INTERVALS;
    }
    Session session = Session.open(folder, asked(settings));
    StringBuilder words = new StringBuilder("Going on with " + folder + ".");
    session.warnings().forEach(warning -> words.append(' ').append(warning));
    session.snapshots()
        .stream()
        .filter(snapshot -> !snapshot.fault().isEmpty())
        .forEach(snapshot
            -> words.append(" Snapshot ")
                   .append(snapshot.number())
                   .append(" is not used: ")
                   .append(snapshot.fault()));
    return new KeptSession(session, false, words.toString());
  }

  private static SessionSettings asked(Settings settings) {
    String source = settings.sourceGiven ? FrameSource.nameOf(settings.source, settings.address) : "";
    return SessionSettings.of(settings.unit(), settings.width, settings.height)
        .withLensModel(settings.model.word())
        .withDiscRadius(discRadius(settings))
        .withSource(source)
        .withImages(settings.images);
  }

  /** That of the supplied sheet, as a share of the distance of its rows. */
  static double discRadius(Settings settings) { return DISC_SHARE * settings.unit(); }

  /** A session of this run in which nothing was ever taken leaves nothing behind. */
  @Override
  public synchronized void close() throws IOException {
    if (closed) {
      return;
    }
    closed = true;
    boolean unused = isNew && session.snapshots().isEmpty();
    session.close();
    if (!unused) {
      return;
    }
    Set<String> files;
    try (Stream<Path> list = Files.list(session.folder())) {
      files = list.map(file -> file.getFileName().toString()).collect(Collectors.toSet());
    }
    if (EMPTY.containsAll(files)) {
      for (String file : files) {
        Files.delete(session.folder().resolve(file));
      }
      Files.delete(session.folder());
    }
  }
}
