package com.velotrix.quiverleaf.live;

import com.velotrix.quiverleaf.live.Situation.Source;
import java.util.EnumSet;
import java.util.Set;

/** From where a calibration stands to what can be done, and to what is best done next. */
final class Steps {
  static final int ENOUGH = 5;
  /** With these a result is usually good. */
  static final int PLENTY = 12;

  private Steps() {}

  static Set<Action> possible(Situation now) {
    Set<Action> possible = EnumSet.noneOf(Action.class);
    boolean reading = now.source == Source.OPEN;
    put(possible, Action.STOP, reading);
    put(possible, Action.START, !reading && now.source != Source.OPENING);
    put(possible, Action.CHOOSE_SOURCE, !reading && now.source != Source.OPENING);
    if (now.computing) {
      return possible;
    }
    put(possible, Action.ASSISTANT, true);
    put(possible, Action.CHOOSE_MODEL, true);
    // The assistant takes them by itself.
    put(possible, Action.SNAPSHOT, reading && now.frames && now.seen && now.goal < 0);
    put(possible, Action.TAKE_BACK, now.taken() > 0);
    put(possible, Action.BRING_BACK, now.takenBack > 0);
    put(possible, Action.START_OVER, now.taken() > 0);
    put(possible, Action.CALIBRATE, now.taken() >= ENOUGH);
    put(possible, Action.SAVE, now.result && now.upToDate);
    return possible;
  }

  private static void put(Set<Action> possible, Action action, boolean is) {
    if (is) {
      possible.add(action);
    }
  }

  /** One line: what to do now. */
  static String next(Situation now) {
    if (now.computing) {
      return "Computing. This takes a moment.";
    }
    if (now.result && now.upToDate) {
      return withResult(now);
    }
    switch (now.source) {
      case OPENING:
        return "Opening " + now.sourceName + " ...";
      case OPEN:
        return now.frames ? whileReading(now) : "Waiting for pictures from " + now.sourceName + " ...";
      case ENDED:
        return "No more pictures come from " + now.sourceName + ". " + withoutPictures(now);
      case FAILED:
        return now.sourceFault + " Choose a source and press Start.";
      default:
        return withoutPictures(now);
    }
  }

  private static String withResult(Situation now) {
    if (now.saved) {
      return "The result is saved. Close the window, or take more snapshots and press Calibrate again.";
    }
    switch (now.grade) {
      case GOOD:
        return "The result is good: press Save.";
      case WITH_CARE:
        return "Press Save, or better do what is advised at the right and press Calibrate again.";
      case WORTHLESS:
        return "Do not use this result. Do what is advised at the right, then press Calibrate again.";
      default:
        return "Press Save, or take more snapshots and press Calibrate again.";
    }
  }

  private static String whileReading(Situation now) {
    if (now.goal > 0) {
      return "Hold the sheet where the drawn one is (pose " + Math.min(now.reached + 1, now.goal) + " of "
          + now.goal + "). The snapshot is taken by itself.";
    }
    if (now.taken() >= PLENTY) {
      return "Press Calibrate, or take more snapshots.";
    }
    String enough = now.taken() >= ENOUGH ? ", or Calibrate" : "";
    if (now.seen) {
      return "Press Snapshot" + enough + ". " + missing(now);
    }
    return now.taken() == 0
        ? "Press Assistant to be led from pose to pose, or show the sheet to the camera."
        : "Show the sheet in another pose: tilted, nearer, at the picture's edge. " + missing(now);
  }

  private static String missing(Situation now) {
    int missing = ENOUGH - now.taken();
    return missing > 0
        ? missing + (missing == 1 ? " more snapshot is needed." : " more snapshots are needed.")
        : PLENTY - now.taken() + " more poses make the result surer.";
  }

  private static String withoutPictures(Situation now) {
    if (now.taken() >= ENOUGH) {
      return "Press Calibrate, or Start for more snapshots.";
    }
    if (now.taken() > 0) {
      return "Choose a source and press Start. " + missing(now);
    }
    return "Choose where pictures come from and press Start.";
  }

  /** One line: whether the grid is seen and, if not, why; empty where there is nothing to tell. */
  static String sight(Situation now) {
    if (now.source != Source.OPEN || !now.frames) {
      return "";
    }
    if (now.inView) {
      return now.whyNot.isEmpty() ? "The grid is in view." : "Enough of the grid for a snapshot is in view.";
    }
    return now.whyNot.isEmpty() ? "This view is taken. Move the sheet." : "No grid: " + now.whyNot + ".";
  }
}
