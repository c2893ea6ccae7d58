package com.velotrix.quiverleaf.live;

import com.velotrix.quiverleaf.sdk.Calibrator;
import com.velotrix.quiverleaf.sdk.Session;
import com.velotrix.quiverleaf.sdk.StoredSnapshot;
import java.io.IOException;
import java.util.ArrayDeque;
import java.util.ArrayList;
import java.util.Deque;
import java.util.List;

/**
 * Keeps a calibrator's snapshots in a session: those that the session had come first, those that are taken
 * follow in their order. Whatever adds snapshots to the calibrator or takes them out goes through here, or is
 * followed by keepNew. Any thread may call any method.
 */
final class SnapshotStore {
  /** Views whose circles moved by less, as a share of the image's width, tell nothing new. */
  private static final double SAME = 0.01;

  private final Calibrator calibrator;
  private final Session session;
  /** In the session, of the calibrator's snapshots that are stored: the first ones. */
  private final List<Integer> numbers = new ArrayList<>();
  private final Deque<int[]> takenBack = new ArrayDeque<>();
  /** How many of the calibrator's snapshots are complete: one that is being taken is measured for a while. */
  private int known;
  private String fault = "";

  SnapshotStore(Calibrator calibrator, Session session) throws IOException {
    this.calibrator = calibrator;
    this.session = session;
    for (StoredSnapshot snapshot : session.snapshots()) {
      if (snapshot.isUsed() && session.restore(snapshot.number(), calibrator)) {
        numbers.add(snapshot.number());
      }
    }
  }

  synchronized int stored() { return numbers.size(); }

  synchronized int unstored() { return calibrator.snapshots() - numbers.size(); }

  /** Why some are not stored, as a sentence; empty when all are. */
  synchronized String fault() { return fault; }

  /** How many can be brought back at once. */
  synchronized int canBringBack() { return takenBack.isEmpty() ? 0 : takenBack.peek().length; }

  /** What became of a view that was to be taken. */
  enum Taking { TAKEN, NOTHING_IN_VIEW, SAME_AS_BEFORE }

  /** Makes what is in view a snapshot, and stores it; not where an earlier one shows the sheet as it is. */
  synchronized Taking take() {
    if (!calibrator.takeSnapshot()) {
      return Taking.NOTHING_IN_VIEW;
    }
    if (isSameAsBefore(calibrator.snapshots() - 1) && calibrator.removeSnapshot(calibrator.snapshots() - 1)) {
      return Taking.SAME_AS_BEFORE;
    }
    keepNew("by hand");
    return Taking.TAKEN;
  }

  private boolean isSameAsBefore(int last) {
    double[][] centres = centresOf(last);
    for (int i = 0; i < last; ++i) {
      if (distance(centresOf(i), centres) < SAME * session.settings().imageWidth(0)) {
        return true;
      }
    }
    return false;
  }

  private double[][] centresOf(int snapshot) { return calibrator.observations(snapshot).get(0).centres(); }

  /** By how much circles moved on the average. */
  private static double distance(double[][] before, double[][] after) {
    double sum = 0.0;
    for (int i = 0; i < before.length; ++i) {
      sum += Math.hypot(after[i][0] - before[i][0], after[i][1] - before[i][1]);
    }
    return sum / before.length;
  }

  /** Stores what the calibrator has and the session has not yet; how many more were stored. */
  synchronized int keepNew(String name) {
    known = calibrator.snapshots();
    return keepKnown(name);
  }

  /** Tries again to store what could not be; how many were stored. What is just being taken is left alone. */
  synchronized int retry() { return fault.isEmpty() ? 0 : keepKnown("later"); }

  private int keepKnown(String name) {
    int before = numbers.size();
    fault = "";
    while (numbers.size() < Math.min(known, calibrator.snapshots())) {
      try {
        numbers.add(session.store(calibrator, numbers.size(), name));
        takenBack.clear(); // what is brought back is to come where it was
      } catch (IOException | RuntimeException e) {
        fault = e.getMessage();
        break;
      }
    }
    return numbers.size() - before;
  }

  /** Takes the last snapshot back. False when the calibrator does not let it go. */
  synchronized boolean takeBack() throws IOException {
    int last = calibrator.snapshots() - 1;
    if (last < 0) {
      return false;
    }
    known = Math.min(known, last);
    if (last >= numbers.size()) {
      return calibrator.removeSnapshot(last);
    }
    int number = numbers.get(last);
    session.remove(number);
    if (!calibrator.removeSnapshot(last)) {
      session.bringBack(number);
      return false;
    }
    numbers.remove(last);
    takenBack.push(new int[] {number});
    return true;
  }

  /** Takes all of them back. False when the calibrator does not let them go. */
  synchronized boolean startOver() throws IOException {
    int[] all = numbers.stream().mapToInt(Integer::intValue).toArray();
    session.remove(all);
    calibrator.reset();
    if (calibrator.snapshots() > 0) {
      session.bringBack(all);
      return false;
    }
    numbers.clear();
    known = 0;
    if (all.length > 0) {
      takenBack.push(all);
    }
    fault = "";
    return true;
  }

  /** Brings back what was taken back last; how many these are. */
  synchronized int bringBack() throws IOException {
    int[] back = takenBack.peek();
    if (back == null) {
      return 0;
    }
    session.bringBack(back);
    takenBack.pop();
    int before = numbers.size();
    for (int number : back) {
      if (session.restore(number, calibrator)) {
        numbers.add(number);
      }
    }
    return numbers.size() - before;
  }
}
