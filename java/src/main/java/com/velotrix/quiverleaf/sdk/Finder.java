package com.velotrix.quiverleaf.sdk;

/** How the grid is searched. */
public enum Finder {
  /** OpenCV's search. */
  STANDARD(0),
  /** Finds the grid in more frames, in less time; a calibrator begins with it. */
  ROBUST(1);

  private final int code;

  Finder(int code) { this.code = code; }

  /** The engine's number for it. */
  public int code() { return code; }
}
