package com.velotrix.quiverleaf.sdk;

import java.lang.ref.WeakReference;
import java.util.ArrayList;
import java.util.Base64;
import java.util.List;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.Future;
import java.util.concurrent.atomic.AtomicLong;

/**
 * Many frames pushed to many calibrators, which come and go: {@code Soak FRAMES}. It prints what the process
 * holds from time to time, and fails when that grows.
 */
public final class Soak {
  private static final int CALIBRATORS = 8;
  private static final int FRAMES_OF_A_CALIBRATOR = 25;
  private static final int REPORTS = 10;

  private final String text = Base64.getEncoder().encodeToString(Footage.jpeg(Footage.firstView()));
  private final byte[] raw = RawFrames.of(Footage.firstView(), FrameFormat.NV21);
  private final AtomicLong called = new AtomicLong();
  private final AtomicLong pushed = new AtomicLong();
  private final List<WeakReference<FrameListener>> listeners = new ArrayList<>();

  /** Pushes frames to calibrators that live for a few of them each. */
  private void push(int frames) {
    for (int done = 0; done < frames; done += FRAMES_OF_A_CALIBRATOR) {
      int count = Math.min(FRAMES_OF_A_CALIBRATOR, frames - done);
      FrameListener listener = frame -> {
        if (frame.hasPicture() && frame.status().snapshots() >= 0) {
          called.incrementAndGet();
        }
      };
      synchronized (listeners) {
        listeners.add(new WeakReference<>(listener));
      }
      try (Calibrator calibrator = Calibrator.builder().build()) {
        calibrator.onFrames(listener);
        pushTo(calibrator, count);
      }
    }
  }

  private void pushTo(Calibrator calibrator, int count) {
    for (int i = 0; i < count; ++i) {
      if (i % 2 == 0) {
        calibrator.push(text);
      } else {
        calibrator.push(raw, Footage.WIDTH, Footage.HEIGHT, FrameFormat.NV21);
      }
      pushed.incrementAndGet();
      // Few, for a calibrator keeps each picture.
      if (i % 10 == 0) {
        calibrator.takeSnapshot();
      }
    }
  }

  private void pushOnAllThreads(int frames) throws Exception {
    ExecutorService threads = Executors.newFixedThreadPool(CALIBRATORS);
    try {
      List<Future<?>> running = new ArrayList<>();
      for (int i = 0; i < CALIBRATORS; ++i) {
        running.add(threads.submit(() -> push(frames / CALIBRATORS)));
      }
      for (Future<?> one : running) {
        one.get();
      }
    } finally {
      threads.shutdown();
      threads.awaitTermination(1, java.util.concurrent.TimeUnit.MINUTES);
    }
  }

  /** The listeners that something refers to still: the engine's global references keep theirs alive. */
  private long livingListeners() {
    System.gc();
    return listeners.stream().filter(listener -> listener.get() != null).count();
  }

  /**
   * Pushes that many frames in ten parts, and the first of them once more before, so that everything is
   * loaded and the allocators have what they keep.
   *
   * @throws IllegalStateException when something grows, or frames are lost
   */
  void run(int frames) throws Exception {
    Calibrator.setLogLevel(LogLevel.ERROR);
    pushOnAllThreads(frames / REPORTS);
    Usage before = Usage.now();
    System.out.println("at first: " + before);
    long start = pushed.get();
    for (int report = 1; report <= REPORTS; ++report) {
      pushOnAllThreads(frames / REPORTS);
      System.out.println((pushed.get() - start) + " frames: " + Usage.now());
    }
    expectLevel(before, Usage.now());
  }

  private void expectLevel(Usage before, Usage after) {
    long living = livingListeners();
    System.out.println(pushed + " frames pushed, " + called + " handed to listeners, " + listeners.size()
        + " calibrators, " + living + " listeners left");
    require(called.get() == pushed.get(), "frames were lost");
    require(living == 0, "listeners are kept alive");
    require(after.heap < before.heap + 5.0, "the heap grows: " + before + " to " + after);
    require(after.resident < before.resident + 40.0, "memory grows: " + before + " to " + after);
    require(after.threads <= before.threads + 2, "threads are left: " + before + " to " + after);
  }

  private static void require(boolean condition, String complaint) {
    if (!condition) {
      throw new IllegalStateException(complaint);
    }
  }

  /** Takes the number of frames. */
  public static void main(String[] arguments) throws Exception {
    new Soak().run(Integer.parseInt(arguments[0]));
  }
}
