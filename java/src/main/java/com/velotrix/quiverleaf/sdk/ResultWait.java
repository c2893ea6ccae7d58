package com.velotrix.quiverleaf.sdk;

import java.time.Duration;
import java.util.Optional;
import java.util.concurrent.TimeoutException;
import java.util.function.Function;

/** Waits for what comes out of a computation; the engine is asked again and again, for it does not tell. */
final class ResultWait {
  private static final long POLL_MILLISECONDS = 10;

  private ResultWait() {}

  /** What a status holds, or the calibrator at that moment. */
  static <T> T on(Calibrator calibrator, Function<CalibratorStatus, Optional<T>> resultOf, Duration patience)
      throws InterruptedException, TimeoutException {
    long end = System.nanoTime() + nanosOf(patience);
    boolean started = false;
    for (;;) {
      // In this order: when the source has ended, what its last frame started is under way; when nothing is
      // computed any more, failure and status are those of the last computation. The status alone does not
      // tell that a computation is about to replace the result.
      boolean ended = EngineChoices.nHasSourceEnded(calibrator.id());
      boolean computing = EngineChoices.nIsComputing(calibrator.id());
      boolean failed = EngineChoices.nHasFailed(calibrator.id());
      CalibratorStatus now = calibrator.status();
      if (!computing && failed) {
        throw new IllegalStateException("the computation failed; the engine's log says why");
      }
      Optional<T> result = resultOf.apply(now);
      if (!computing && result.isPresent()) {
        return result.get();
      }
      if (started && !computing && now.status() != Status.PROGRESS
          && !EngineChoices.nIsComputing(calibrator.id())) {
        throw new IllegalStateException("the result was dropped by a reset or another snapshot: " + now);
      }
      if (ended && !computing && now.status() != Status.PROGRESS) {
        throw new IllegalStateException(
            "no frame comes any more, the source has ended or could not be opened: " + now);
      }
      started = started || computing;
      if (System.nanoTime() - end > 0) {
        throw new TimeoutException("no result in time: " + now);
      }
      Thread.sleep(POLL_MILLISECONDS);
    }
  }

  /** The nearest that the clock can count; three centuries are for ever. */
  private static long nanosOf(Duration patience) {
    try {
      return patience.toNanos();
    } catch (ArithmeticException e) {
      return patience.isNegative() ? 0 : Long.MAX_VALUE;
    }
  }
}
