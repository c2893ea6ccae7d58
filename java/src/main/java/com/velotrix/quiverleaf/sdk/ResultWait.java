package com.velotrix.quiverleaf.sdk;

import java.time.Duration;
import java.util.Optional;
import java.util.concurrent.TimeoutException;

/** Waits for what comes out of a computation; the engine is asked again and again, for it does not tell. */
final class ResultWait {
  private static final long POLL_MILLISECONDS = 10;

  private ResultWait() {}

  static CalibrationResult on(Calibrator calibrator, Duration patience)
      throws InterruptedException, TimeoutException {
    long end = System.nanoTime() + patience.toNanos();
    boolean computing = false;
    for (;;) {
      CalibratorStatus now = calibrator.status();
      Optional<CalibrationResult> result = now.result();
      if (result.isPresent()) {
        return result.get();
      }
      if (computing && now.status() == Status.READY) {
        throw new IllegalStateException("the computation failed; the engine's log says why");
      }
      computing = now.status() == Status.PROGRESS;
      if (System.nanoTime() - end > 0) {
        throw new TimeoutException("no result in time: " + now);
      }
      Thread.sleep(POLL_MILLISECONDS);
    }
  }
}
