package com.velotrix.quiverleaf.live;

import com.velotrix.quiverleaf.sdk.AnnotatedFrame;
import com.velotrix.quiverleaf.sdk.Calibrator;
import com.velotrix.quiverleaf.sdk.Status;
import java.awt.image.BufferedImage;
import java.io.ByteArrayInputStream;
import java.io.IOException;
import java.nio.file.Path;
import java.util.List;
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

  private final Settings settings;
  private final View view;
  private final Calibrator calibrator;
  private final KeptSession kept;
  private final SnapshotStore store;
  private final RunSource source;
  private final AssistantRound assistant;
  private final RunFiles files;
  private final Computation computation;
  private final ExecutorService work = Executors.newSingleThreadExecutor();
  /** A thread for the source alone, which can so be stopped during a computation. */
  private final ExecutorService sourceWork = Executors.newSingleThreadExecutor();
  private final LatestOnly<BufferedImage> frames;
  private final LatestOnly<Situation> situations;

  private volatile Sighting sighting = Sighting.NONE;
  private volatile boolean computing;
  private volatile Outcome outcome;
  private volatile boolean saved;
  private volatile LensChoice choice;

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
    source = new RunSource(calibrator, settings.width, settings.height);
    assistant = new AssistantRound(calibrator);
    store = new SnapshotStore(calibrator, kept.session);
    files = new RunFiles(kept.session, store);
    computation = new Computation(calibrator, kept.session);
    calibrator.onFrames(this::onFrame);
    calibrator.onSourceEnded(() -> {
      source.ended();
      publish();
    });
  }

  /** Tells the window how things stand, and opens the source if one was named. */
  void begin() {
    work.execute(() -> tell(() -> {
      files.look();
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

  /** What the assistant took is told; after its last pose there is a computation. */
  private void followAssistant() {
    if (!assistant.advance()) {
      return;
    }
    work.execute(files::look);
    say(assistant.inWords(store));
    if (assistant.isComplete()) {
      assistant.end();
      computing = true;
      work.execute(() -> tell(() -> {
        computation.awaitAssistants();
        return compute();
      }));
    }
  }

  // ---- What the user asks for.

  void start(SourceKind kind, String address, PushFormat format) {
    source.announce(kind, address);
    sighting = Sighting.NONE;
    publish();
    sourceWork.execute(() -> tell(() -> source.open(kind, address, format)));
  }

  void stop() { sourceWork.execute(() -> tell(source::close)); }

  void setAssistant(boolean wanted) {
    work.execute(() -> tell(() -> {
      assistant.stop();
      if (!wanted) {
        return "The assistant is off.";
      }
      assistant.start(settings.poses);
      return "Bring the sheet to the drawn one, " + assistant.goal() + " times.";
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
      files.look();
      return store.unstored() == 0 ? "Snapshot " + store.stored() + " is taken."
                                   : "The snapshot is not on the disk: " + store.fault();
    }));
  }

  void takeBack() {
    work.execute(() -> tell(() -> {
      boolean back = store.takeBack();
      assistant.shift(back ? -1 : 0);
      files.look();
      return back ? "The last snapshot is taken back." : "Nothing is taken back.";
    }));
  }

  void bringBack() {
    work.execute(() -> tell(() -> {
      int count = store.bringBack();
      assistant.shift(count);
      files.look();
      return count == 1 ? "One snapshot is brought back." : count + " snapshots are brought back.";
    }));
  }

  void startOver() {
    work.execute(() -> tell(() -> {
      if (!store.startOver()) {
        return "The snapshots are still needed.";
      }
      outcome = null;
      assistant.startOver(settings.poses);
      files.look();
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
      assistant.end();
      outcome = computation.run(choice);
    } finally {
      computing = false;
    }
    return outcome.inWords();
  }

  void save() {
    work.execute(() -> tell(() -> {
      Outcome now = outcome;
      if (now == null) {
        return "There is nothing to save yet.";
      }
      List<Path> written = ResultFiles.write(calibrator, now, settings.output);
      files.add(written);
      saved = true;
      return "Written: " + written.get(0) + ", " + written.get(1).getFileName();
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

  private void publish() { situations.put(situation()); }

  /** How things stand. */
  Situation situation() {
    Situation now = new Situation();
    source.tell(now);
    sighting.tell(now, System.nanoTime());
    now.snapshots = store.stored();
    now.unstored = store.unstored();
    now.storeFault = store.fault();
    now.takenBack = store.canBringBack();
    assistant.tell(now);
    now.computing = computing;
    Outcome result = outcome;
    now.result = result != null;
    now.upToDate = calibrator.status().status() == Status.COMPLETED;
    now.saved = saved;
    now.grade = result == null ? now.grade : result.verdict.grade();
    files.tell(now);
    return now;
  }

  /** Has it told once more, for much changes without a frame; tries again to store what could not be. */
  void refresh() {
    work.execute(() -> {
      if (store.retry() > 0) {
        files.look();
      }
      publish();
    });
  }

  /** What is there when the run ends, a line for each. */
  List<String> filesInWords() { return files.inWords(); }

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
