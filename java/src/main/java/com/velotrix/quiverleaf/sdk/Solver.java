package com.velotrix.quiverleaf.sdk;

/** What a computation is done with. */
public enum Solver {
  /** OpenCV's own; its time grows with the cube of the number of snapshots. */
  OPENCV(0),
  /** The engine's own, which a calibrator begins with: milliseconds. */
  SPARSE(1);

  private final int code;

  Solver(int code) { this.code = code; }

  /** The engine's number for it. */
  public int code() { return code; }
}
