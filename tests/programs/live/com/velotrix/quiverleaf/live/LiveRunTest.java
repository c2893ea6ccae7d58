package com.velotrix.quiverleaf.live;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.velotrix.quiverleaf.sdk.Session;
import com.velotrix.quiverleaf.sdk.Verdict;
import java.awt.image.BufferedImage;
import java.io.IOException;
import java.nio.file.DirectoryStream;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.concurrent.LinkedBlockingQueue;
import java.util.concurrent.TimeUnit;
import java.util.concurrent.atomic.AtomicInteger;
import java.util.function.Predicate;
import org.junit.jupiter.api.DisplayNameGeneration;
import org.junit.jupiter.api.DisplayNameGenerator;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** A run without a window. */
@DisplayNameGeneration(DisplayNameGenerator.ReplaceUnderscores.class)
class LiveRunTest {
  private static final String POSES = System.getProperty("velmora.test.poses");
  private static final String VIDEO =
      Path.of(System.getProperty("velmora.test.footage")).resolve("poses.avi").toString();

  @TempDir Path home;

  /** Keeps what is told, and compares what is said to be taken with what is on the disk at that moment. */
  private static final class Witness implements LiveRun.View {
    final LinkedBlockingQueue<Situation> situations = new LinkedBlockingQueue<>();
    final AtomicInteger tooEarly = new AtomicInteger();
    private final Path snapshots;
    final LinkedBlockingQueue<String> messages = new LinkedBlockingQueue<>();
    private volatile Outcome outcome;

    Witness(Path session) { snapshots = session.resolve("snapshots"); }

    private int onTheDisk() {
      int count = 0;
      try (DirectoryStream<Path> folders = Files.newDirectoryStream(snapshots, "0*")) {
        for (Path folder : folders) {
          count += Files.exists(folder.resolve("snapshot.json")) ? 1 : 0;
        }
      } catch (IOException e) {
        return 0; // the run has ended and left nothing behind
      }
      return count;
    }

    @Override
    public void showFrame(BufferedImage picture) {}

    @Override
    public void show(Situation now) {
      if (onTheDisk() < now.snapshots) {
        tooEarly.incrementAndGet();
      }
      situations.add(now);
    }

    @Override
    public void show(Outcome now) {
      outcome = now;
    }

    @Override
    public void showMessage(String message) {
      messages.add(message);
    }

    String awaitMessage(String start) throws InterruptedException {
      String message;
      do {
        message = messages.poll(120, TimeUnit.SECONDS);
      } while (message != null && !message.startsWith(start));
      if (message == null) {
        throw new AssertionError("it never said so");
      }
      return message;
    }

    Situation awaitOne(Predicate<Situation> wanted) throws InterruptedException {
      Situation now;
      do {
        now = situations.poll(120, TimeUnit.SECONDS);
      } while (now != null && !wanted.test(now));
      if (now == null) {
        throw new AssertionError("it never came so far");
      }
      return now;
    }
  }

  @Test
  void the_assistant_leads_to_a_result_and_every_snapshot_is_stored_before_it_is_told() throws Exception {
    Settings settings = Settings.of("--file", VIDEO, "--poses", POSES, "--output", home + "/camera");
    KeptSession kept = KeptSession.of(settings);
    Path folder = kept.session.folder();
    Witness witness = new Witness(folder);
    LiveRun run = new LiveRun(settings, kept, witness);
    run.setAssistant(true);
    run.begin();
    Situation end = witness.awaitOne(now -> now.result && now.upToDate && !now.computing);
    assertEquals(12, end.snapshots);
    assertEquals(-1, end.goal);
    assertEquals(Verdict.Grade.GOOD, end.grade);
    run.save();
    witness.awaitOne(now -> now.saved);
    assertEquals(Verdict.Grade.GOOD, witness.outcome.verdict.grade());
    assertEquals(3, run.filesInWords().size());
    run.close();
    assertTrue(run.awaitEnd());
    assertEquals(0, witness.tooEarly.get());
    for (String file : new String[] {"camera.json", "camera_verdict.json", "camera.velmora/result.json",
             "camera.velmora/result_verdict.json"}) {
      assertTrue(Files.size(home.resolve(file)) > 100, file);
    }
    try (Session session = Session.open(folder)) {
      assertEquals(12, session.snapshots().size());
      assertEquals(480, session.image(12, 0).getHeight());
    }
  }

  @Test
  void a_session_is_gone_on_with_and_computed_again_without_a_source() throws Exception {
    Settings settings = Settings.of("--folder", Frames.FOLDER.toString(), "--output", home + "/camera");
    KeptSession kept = KeptSession.of(settings);
    Witness witness = new Witness(kept.session.folder());
    LiveRun run = new LiveRun(settings, kept, witness);
    run.begin();
    while (witness.awaitOne(now -> now.seen || now.snapshots >= 6).snapshots < 6) {
      run.takeSnapshot();
    }
    run.close();
    assertTrue(run.awaitEnd());
    Settings later = Settings.of("--session", home + "/camera.velmora");
    KeptSession again = KeptSession.of(later);
    Witness second = new Witness(again.session.folder());
    LiveRun next = new LiveRun(later, again, second);
    next.begin();
    int there = second.awaitOne(now -> true).snapshots;
    assertTrue(there >= 6);
    next.takeBack();
    second.awaitOne(now -> now.snapshots == there - 1 && now.takenBack == 1);
    next.bringBack();
    second.awaitOne(now -> now.snapshots == there && now.takenBack == 0);
    next.calibrate();
    assertTrue(second.awaitOne(now -> now.result && !now.computing).upToDate);
    assertEquals(there, second.outcome.verdict.views());
    assertTrue(second.awaitMessage("Computed").endsWith(" model from " + there + " snapshots."));
    next.takeBack();
    second.awaitOne(now -> now.snapshots == there - 1 && !now.upToDate);
    next.calibrate();
    second.awaitOne(now -> now.upToDate && !now.computing);
    String told = second.awaitMessage("Computed");
    assertTrue(told.matches("Computed with the [a-z]+ model from " + (there - 1) + " snapshots\\. It is "
                   + "[0-9.]+ px from the earlier result on average, [0-9.]+ px at most\\."),
        told);
    next.close();
    assertTrue(next.awaitEnd());
  }

  @Test
  void a_source_that_fails_or_ends_is_told() throws Exception {
    Settings settings = Settings.of("--file", home + "/none.avi", "--output", home + "/camera");
    KeptSession kept = KeptSession.of(settings);
    Witness witness = new Witness(kept.session.folder());
    LiveRun run = new LiveRun(settings, kept, witness);
    run.begin();
    Situation failed = witness.awaitOne(now -> now.source == Situation.Source.FAILED);
    assertEquals("The video '" + home + "/none.avi' cannot be opened.", failed.sourceFault);
    run.start(SourceKind.CAMERA, "front", PushFormat.BASE64);
    failed = witness.awaitOne(
        now -> now.source == Situation.Source.FAILED && now.sourceName.equals("camera front"));
    assertTrue(failed.sourceFault.startsWith("'front' is no number of a camera."), failed.sourceFault);
    run.start(SourceKind.FILE, VIDEO, PushFormat.BASE64);
    witness.awaitOne(now -> now.source == Situation.Source.OPEN && now.frames);
    witness.awaitOne(now -> now.source == Situation.Source.ENDED);
    assertEquals(0, run.filesInWords().size());
    run.close();
    assertTrue(run.awaitEnd());
  }
}
