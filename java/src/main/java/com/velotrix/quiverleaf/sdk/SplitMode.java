package com.velotrix.quiverleaf.sdk;

/** What becomes of the frames of a camera that delivers two pictures side by side. */
public enum SplitMode {
  /** Both are searched as a pair. */
  PAIR(0),
  /** The left one alone is kept. */
  LEFT(-1),
  /** The right one alone is kept. */
  RIGHT(1);

  private final int code;

  SplitMode(int code) { this.code = code; }

  /** The engine's number for it. */
  public int code() { return code; }
}
