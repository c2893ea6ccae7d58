package com.velotrix.quiverleaf.sdk;

import static org.junit.jupiter.api.Assertions.assertTrue;

import java.awt.image.BufferedImage;
import java.time.Duration;
import java.util.List;

/** Calibrations from the rendered views. */
final class Views {
  static final Duration PATIENCE = Duration.ofSeconds(60);

  private Views() {}

  /** How a picture is handed to a calibrator. */
  interface Push {
    void accept(Calibrator calibrator, BufferedImage picture);
  }

  static void pushJpeg(Calibrator calibrator, BufferedImage picture) {
    calibrator.push(Footage.jpeg(picture));
  }

  /** Takes a snapshot of each picture and calibrates. */
  static CalibrationResult calibrate(
      Calibrator calibrator, List<BufferedImage> pictures, LensModel model, Push push) throws Exception {
    for (BufferedImage picture : pictures) {
      push.accept(calibrator, picture);
      assertTrue(calibrator.takeSnapshot());
    }
    calibrator.calibrate(model);
    return calibrator.awaitResult(PATIENCE);
  }

  /** Looks again and again until the condition is met; false when it never is. */
  static boolean eventually(java.util.function.BooleanSupplier condition) {
    long end = System.nanoTime() + PATIENCE.toNanos();
    while (!condition.getAsBoolean()) {
      if (System.nanoTime() - end > 0) {
        return false;
      }
      Thread.yield();
    }
    return true;
  }

  static Calibrator calibrated() throws Exception {
    Calibrator calibrator = Calibrator.builder().build();
    calibrate(calibrator, Footage.pictures("views"), LensModel.CLASSIC, Views::pushJpeg);
    return calibrator;
  }
}
