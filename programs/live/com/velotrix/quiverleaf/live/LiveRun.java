package com.velotrix.quiverleaf.live;

import com.velotrix.quiverleaf.sdk.AnnotatedFrame;
import com.velotrix.quiverleaf.sdk.Calibrator;
import com.velotrix.quiverleaf.sdk.Status;
import java.awt.image.BufferedImage;
import java.io.ByteArrayInputStream;
import java.io.IOException;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.LinkedHashSet;
import java.util.List;
import java.util.Locale;
import java.util.Set;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.TimeUnit;
import javax.imageio.ImageIO;
import javax.swing.SwingUtilities;

/**
 * A live calibration: the calibrator, its source, the session in which snapshots are kept, and what is
 * computed. The window asks on Swing's thread and is answered there; what takes time is done on threads of
 * the run's own: what belongs to the source on one, the rest on another, one thing after the other.
 */
final class LiveRun implements AutoCloseable {
  /** What a run tells; on Swing's thread. */
  interface View {
    void showFrame(BufferedImage picture);

    void show(Situation now);

    /** Of the last computation; null: there is none. */
    void show(Outcome outcome);

    void showMessage(String message);
  }

  private static final long PATIENCE_MINUTES = 10;
  private static final int SNAPSHOTS_AHEAD = 30;

  private final Settings settings;
  private final View view;
  private final Calibrator calibrator;
  private final KeptSession kept;
  private final SnapshotStore store;
  private final FrameSource source;
  private final Computation computation;
  private final ExecutorService work = Executors.newSingleThreadExecutor();
  /** A thread for the source alone, which can so be stopped during a computation. */
  private final ExecutorService sourceWork = Executors.newSingleThreadExecutor();
  private final LatestOnly<BufferedImage> frames;
  private final LatestOnly<Situation> situations;
  private final Set<Path> written = new LinkedHashSet<>();

  private volatile Situation.Source sourceState = Situation.Source.NONE;
  private volatile String sourceName = "";
  private volatile String sourceFault = "";
  private volatile Sighting sighting = Sighting.NONE;
  private volatile int goal = -1;
  private volatile int reached;
  /** How many snapshots do not come from the assistant that is on. */
  private volatile int before;
  private volatile boolean computing;
  private volatile Outcome outcome;
  private volatile boolean saved;
  private volatile LensChoice choice;
  private volatile String disk = "";
  private volatile String diskWarning = "";

  /** The session belongs to the run, which closes it. */
  LiveRun(Settings settings, KeptSession kept, View view) throws IOException {
    this.settings = settings;
    this.kept = kept;
    this.view = view;
    choice = settings.model;
    frames = new LatestOnly<>(view::showFrame);
    situations = new LatestOnly<>(view::show);
    calibrator =
        Calibrator.builder().hdist(settings.hdist).frameSize(settings.width, settings.height).build();
    calibrator.setRobust(true);
    calibrator.setDiscRadius(KeptSession.discRadius(settings));
    source = new FrameSource(calibrator, settings.width, settings.height);
    store = new SnapshotStore(calibrator, kept.session);
    computation = new Computation(calibrator, kept.session);
    calibrator.onFrames(this::onFrame);
    calibrator.onSourceEnded(() -> {
      sourceState = Situation.Source.ENDED;
      publish();
    });
  }

  /** Tells the window how things stand, and opens the source if one was named. */
  void begin() {
    work.execute(() -> tell(() -> {
      lookAtDisk();
      return kept.words;
    }));
    if (settings.sourceGiven) {
      start(settings.source, settings.address, settings.push);
    }
  }

  /** On a thread of the engine, or the one that pushes. */
  private void onFrame(AnnotatedFrame frame) throws IllegalStateException {
    // What the picture says of snapshots is true only once they are on the disk.
    store.keepNew("pose");
    followAssistant();
    sighting =
        sighting.then(calibrator.canTakeSnapshot(), calibrator.whyNotFound().orElse(""), System.nanoTime());
    publish();
    if (!frame.hasPicture()) {
      return;
    }
    try {
      frames.put(ImageIO.read(new ByteArrayInputStream(frame.jpeg())));
    } catch (IOException e) {
      throw new IllegalStateException(e);
    }
  }

  /**
   * The assistant takes snapshots by itself, nobody else does meanwhile, and computes after its last pose.
   */
  private void followAssistant() {
    int now = calibrator.snapshots() - before;
    if (goal < 0 || now <= reached) {
      return;
    }
    reached = now;
    work.execute(this::lookAtDisk);
    say(store.unstored() > 0 ? "Pose " + reached + " is not on the disk yet: " + store.fault()
            : reached < goal ? "Pose " + reached + " is taken."
                             : "All poses are taken.");
    if (reached >= goal && calibrator.assistantGoal().isEmpty()) {
      goal = -1;
      computing = true;
      work.execute(() -> tell(() -> {
        computation.awaitAssistants();
        return compute();
      }));
    }
  }

  // ---- What the user asks for.

  void start(SourceKind kind, String address, PushFormat format) {
    sourceName = FrameSource.nameOf(kind, address);
    sourceState = Situation.Source.OPENING;
    sighting = Sighting.NONE;
    publish();
    sourceWork.execute(() -> tell(() -> {
      try {
        source.open(kind, address, format);
        // A short one may have come to its end by now.
        sourceState = calibrator.sourceEnded() ? Situation.Source.ENDED : Situation.Source.OPEN;
        return sentence(sourceName) + " is open.";
      } catch (IOException e) {
        sourceFault = e.getMessage();
        sourceState = Situation.Source.FAILED;
        return sourceFault;
      }
    }));
  }

  void stop() {
    sourceWork.execute(() -> tell(() -> {
      source.close();
      sourceState = Situation.Source.NONE;
      return sentence(sourceName) + " is closed.";
    }));
  }

  void setAssistant(boolean wanted) {
    work.execute(() -> tell(() -> {
      calibrator.stopAssistant();
      goal = -1;
      if (!wanted) {
        return "The assistant is off.";
      }
      reached = 0;
      before = calibrator.snapshots();
      calibrator.startAssistant(settings.poses);
      goal = calibrator.assistantGoal().orElse(-1);
      return "Bring the sheet to the drawn one, " + goal + " times.";
    }));
  }

  void setMirror(boolean mirror) { calibrator.setFlip(mirror); }

  void choose(LensChoice wanted) { choice = wanted; }

  void takeSnapshot() {
    work.execute(() -> tell(() -> {
      SnapshotStore.Taking taking = store.take();
      if (taking == SnapshotStore.Taking.SAME_AS_BEFORE) {
        return "Not taken: the sheet is where it was in an earlier snapshot. Move or tilt it.";
      }
      if (taking == SnapshotStore.Taking.NOTHING_IN_VIEW) {
        return sighting.whyNot.isEmpty() ? "This view is taken already: move the sheet."
                                         : "No snapshot: " + sighting.whyNot + ".";
      }
      lookAtDisk();
      return store.unstored() == 0 ? "Snapshot " + store.stored() + " is taken."
                                   : "The snapshot is not on the disk: " + store.fault();
    }));
  }

  void takeBack() {
    work.execute(() -> tell(() -> {
      boolean back = store.takeBack();
      before -= back ? 1 : 0;
      lookAtDisk();
      return back ? "The last snapshot is taken back." : "Nothing is taken back.";
    }));
  }

  void bringBack() {
    work.execute(() -> tell(() -> {
      int count = store.bringBack();
      before += count;
      lookAtDisk();
      return count == 1 ? "One snapshot is brought back." : count + " snapshots are brought back.";
    }));
  }

  void startOver() {
    work.execute(() -> tell(() -> {
      if (!store.startOver()) {
        return "The snapshots are still needed.";
      }
      outcome = null;
      if (goal > 0) {
        calibrator.startAssistant(settings.poses);
        before = 0;
        reached = 0;
      }
      lookAtDisk();
      return "All snapshots are taken back. Bring back undoes that.";
    }));
  }

  void calibrate() {
    computing = true;
    publish();
    work.execute(() -> tell(this::compute));
  }

  private String compute() throws Exception {
    try {
      computing = true;
      saved = false;
      goal = -1; // a computation ends the assistant
      outcome = computation.run(choice);
    } finally {
      computing = false;
    }
    return "Computed with the " + outcome.model.name().toLowerCase(Locale.ROOT) + " model from "
        + outcome.verdict.views() + " snapshots.";
  }

  void save() {
    work.execute(() -> tell(() -> {
      Outcome now = outcome;
      if (now == null) {
        return "There is nothing to save yet.";
      }
      List<Path> files = ResultFiles.write(calibrator, now, settings.output);
      synchronized (written) {
        written.addAll(files);
      }
      saved = true;
      return "Written: " + files.get(0) + ", " + files.get(1).getFileName();
    }));
  }

  // ---- What is told.

  /** Something that may fail, in words. */
  private interface Task {
    String run() throws Exception;
  }

  private void tell(Task task) {
    String words;
    try {
      words = task.run();
    } catch (Exception e) {
      words = e.getMessage() == null ? e.toString() : e.getMessage();
    }
    say(words);
    Outcome told = outcome;
    SwingUtilities.invokeLater(() -> view.show(told));
    publish();
  }

  private void say(String words) { SwingUtilities.invokeLater(() -> view.showMessage(words)); }

  private static String sentence(String words) {
    return words.isEmpty() ? words : Character.toUpperCase(words.charAt(0)) + words.substring(1);
  }

  private void lookAtDisk() {
    try {
      disk = kept.session.folder().getFileName() + ": " + store.stored()
          + (store.stored() == 1 ? " snapshot, " : " snapshots, ") + Bytes.inWords(kept.session.bytesTaken());
      diskWarning = kept.session.diskWarning(SNAPSHOTS_AHEAD).orElse("");
    } catch (IOException e) {
      diskWarning = e.getMessage();
    }
  }

  private void publish() { situations.put(situation()); }

  /** How things stand. */
  Situation situation() {
    Situation now = new Situation();
    now.source = sourceState;
    now.sourceName = sourceName;
    now.sourceFault = sourceFault;
    sighting.tell(now, System.nanoTime());
    now.snapshots = store.stored();
    now.unstored = store.unstored();
    now.storeFault = store.fault();
    now.takenBack = store.canBringBack();
    now.goal = goal;
    now.reached = reached;
    now.computing = computing;
    Outcome result = outcome;
    now.result = result != null;
    now.upToDate = calibrator.status().status() == Status.COMPLETED;
    now.saved = saved;
    now.grade = result == null ? now.grade : result.verdict.grade();
    now.kept = disk;
    now.diskWarning = diskWarning;
    return now;
  }

  /** Has it told once more, for much changes without a frame; tries again to store what could not be. */
  void refresh() {
    work.execute(() -> {
      if (store.retry() > 0) {
        lookAtDisk();
      }
      publish();
    });
  }

  /** What is there when the run ends, a line for each. */
  List<String> filesInWords() {
    List<String> lines = new ArrayList<>();
    if (store.stored() > 0) {
      lines.add(kept.session.folder() + " (" + store.stored()
          + (store.stored() == 1 ? " snapshot" : " snapshots") + "; go on with --session "
          + kept.session.folder() + ")");
    }
    synchronized (written) {
      written.forEach(file -> lines.add(file.toString()));
    }
    return lines;
  }

  /** Ends the run; a computation under way is cut short. */
  @Override
  public void close() {
    calibrator.cancelComputation();
    sourceWork.execute(source::close);
    sourceWork.execute(() -> work.execute(this::end));
    sourceWork.shutdown();
  }

  private void end() {
    calibrator.close();
    try {
      kept.close();
    } catch (IOException e) {
      System.err.println("ERROR: " + e.getMessage());
    }
    work.shutdown();
  }

  /** True once it has ended. */
  boolean awaitEnd() throws InterruptedException {
    return sourceWork.awaitTermination(PATIENCE_MINUTES, TimeUnit.MINUTES)
        && work.awaitTermination(PATIENCE_MINUTES, TimeUnit.MINUTES);
  }
}
