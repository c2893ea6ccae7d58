package com.velotrix.quiverleaf.live;

import com.velotrix.quiverleaf.sdk.Session;
import java.io.IOException;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Collection;
import java.util.LinkedHashSet;
import java.util.List;
import java.util.Set;

/** What a run leaves on the disk, in words. */
final class RunFiles {
  private static final int SNAPSHOTS_AHEAD = 30;

  private final Session session;
  private final SnapshotStore store;
  private final Set<Path> written = new LinkedHashSet<>();
  private volatile String kept = "";
  private volatile String warning = "";

  RunFiles(Session session, SnapshotStore store) {
    this.session = session;
    this.store = store;
  }

  /** Looks how much there is, and how much fits. */
  void look() {
    try {
      kept = session.folder().getFileName() + ": " + snapshotsInWords() + ", "
          + Bytes.inWords(session.bytesTaken());
      warning = session.diskWarning(SNAPSHOTS_AHEAD).orElse("");
    } catch (IOException e) {
      warning = e.getMessage();
    }
  }

  /** Further files, outside of the session. */
  synchronized void add(Collection<Path> files) { written.addAll(files); }

  void tell(Situation now) {
    now.kept = kept;
    now.diskWarning = warning;
  }

  /** A line for each. */
  synchronized List<String> inWords() {
    List<String> lines = new ArrayList<>();
    if (store.stored() > 0) {
      lines.add(
          session.folder() + " (" + snapshotsInWords() + "; go on with --session " + session.folder() + ")");
    }
    written.forEach(file -> lines.add(file.toString()));
    return lines;
  }

  private String snapshotsInWords() {
    return store.stored() + (store.stored() == 1 ? " snapshot" : " snapshots");
  }
}
