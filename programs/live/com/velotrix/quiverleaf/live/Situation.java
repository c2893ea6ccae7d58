package com.velotrix.quiverleaf.live;

import com.velotrix.quiverleaf.sdk.Verdict;

/** Where a live calibration stands: all that decides what the user can do next. */
final class Situation {
  enum Source { NONE, OPENING, OPEN, ENDED, FAILED }

  Source source = Source.NONE;
  /** In words, such as "camera 0"; empty before the first. */
  String sourceName = "";
  /** Why it failed, as sentences. */
  String sourceFault = "";
  /** Whether a picture has come from the open source. */
  boolean frames;
  /**
   * Whether the last picture showed what a snapshot can be taken of, and whether one of the last ones did.
   */
  boolean inView;
  boolean seen;
  /** Why the whole grid was not found in the last picture, as a clause; empty: it was. */
  String whyNot = "";
  /** Those that are on the disk. */
  int snapshots;
  /** Those that are taken, but not on the disk: the next line is why. */
  int unstored;
  String storeFault = "";
  /** How many can be brought back at once. */
  int takenBack;
  /** The assistant's poses, and how many of them are reached; -1 without an assistant. */
  int goal = -1;
  int reached;
  boolean computing;
  /** Whether there is a result, and whether it is of the snapshots as they are. */
  boolean result;
  boolean upToDate;
  boolean saved;
  Verdict.Grade grade = Verdict.Grade.NONE;
  /** Where snapshots are kept, with what that takes; and a warning of a disk that is nearly full. */
  String kept = "";
  String diskWarning = "";

  /** What counts for a computation. */
  int taken() { return snapshots + unstored; }
}
