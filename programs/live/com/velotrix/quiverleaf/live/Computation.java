package com.velotrix.quiverleaf.live;

import com.velotrix.quiverleaf.sdk.CalibrationResult;
import com.velotrix.quiverleaf.sdk.Calibrator;
import com.velotrix.quiverleaf.sdk.LensModel;
import com.velotrix.quiverleaf.sdk.ModelChoice;
import com.velotrix.quiverleaf.sdk.Session;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.time.Duration;
import java.util.Optional;
import java.util.concurrent.TimeoutException;

/** Computes from a calibrator's snapshots, and keeps what comes out in the session. */
final class Computation {
  private static final Duration PATIENCE = Duration.ofMinutes(10);
  private static final String RESULT = "result";

  private final Calibrator calibrator;
  private final Session session;

  Computation(Calibrator calibrator, Session session) {
    this.calibrator = calibrator;
    this.session = session;
  }

  /** Waits for the computation that the assistant began, whose result is computed again with our model. */
  void awaitAssistants() throws InterruptedException {
    try {
      calibrator.awaitResult(PATIENCE);
    } catch (IllegalStateException | TimeoutException e) {
      // Its model may be too large for these views: the one that is chosen may not.
    }
  }

  Outcome run(LensChoice choice) throws InterruptedException, TimeoutException, IOException {
    LensModel model = choice.model;
    if (model == null) {
      model = calibrator.chooseModel().map(ModelChoice::model).orElse(LensModel.RATIONAL);
    }
    calibrator.calibrate(model);
    Outcome outcome = await(model);
    Optional<EarlierResult> earlier = EarlierResult.in(session, RESULT);
    // Whatever becomes of the window, the session has it.
    Path result = ResultFiles.write(calibrator, outcome, session.pathFor(RESULT)).get(0);
    if (earlier.isPresent()) {
      outcome.change = earlier.get().changeTo(Files.readString(result));
    }
    return outcome;
  }

  private Outcome await(LensModel model) throws InterruptedException, TimeoutException {
    if (model == LensModel.FISHEYE) {
      return Outcome.of(calibrator, calibrator.awaitFisheye(PATIENCE));
    }
    CalibrationResult result = calibrator.awaitResult(PATIENCE);
    return Outcome.of(calibrator, model, result);
  }
}
