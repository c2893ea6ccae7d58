package com.velotrix.quiverleaf.sdk;

/** What a calibrator calibrates. */
public enum Kind {
  /** One camera: its camera matrix and lens distortion. */
  MONOCULAR(0),
  /** Two cameras: how the right one stands to the left one. */
  STEREO(1);

  private final int code;

  Kind(int code) { this.code = code; }

  /** The engine's number for it. */
  public int code() { return code; }
}
