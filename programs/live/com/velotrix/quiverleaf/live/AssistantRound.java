package com.velotrix.quiverleaf.live;

import com.velotrix.quiverleaf.sdk.Calibrator;
import java.io.IOException;
import java.nio.file.Path;

/**
 * The poses that the assistant asks for: how many there are, and how many are reached. It takes snapshots by
 * itself, and nobody else does meanwhile.
 */
final class AssistantRound {
  private final Calibrator calibrator;
  private volatile int goal = -1;
  private volatile int reached;
  /** How many snapshots do not come from the assistant that is on. */
  private volatile int before;

  AssistantRound(Calibrator calibrator) { this.calibrator = calibrator; }

  void start(Path poses) throws IOException {
    reached = 0;
    before = calibrator.snapshots();
    calibrator.startAssistant(poses);
    goal = calibrator.assistantGoal().orElse(-1);
  }

  /** From the first pose on, when all snapshots were taken back. */
  void startOver(Path poses) throws IOException {
    if (goal > 0) {
      calibrator.startAssistant(poses);
      before = 0;
      reached = 0;
    }
  }

  void stop() {
    calibrator.stopAssistant();
    end();
  }

  /** It is over, for a computation ends it. */
  void end() { goal = -1; }

  /** So many snapshots more were there before, or fewer. */
  void shift(int count) { before += count; }

  /** Whether it took a snapshot since it was asked last. */
  boolean advance() {
    int now = calibrator.snapshots() - before;
    if (goal < 0 || now <= reached) {
      return false;
    }
    reached = now;
    return true;
  }

  /** Whether its last pose is reached, upon which the engine computes. */
  boolean isComplete() { return goal >= 0 && reached >= goal && calibrator.assistantGoal().isEmpty(); }

  int goal() { return goal; }

  /** What it took last, in words. */
  String inWords(SnapshotStore store) {
    if (store.unstored() > 0) {
      return "Pose " + reached + " is not on the disk yet: " + store.fault();
    }
    return reached < goal ? "Pose " + reached + " is taken." : "All poses are taken.";
  }

  void tell(Situation now) {
    now.goal = goal;
    now.reached = reached;
  }
}
