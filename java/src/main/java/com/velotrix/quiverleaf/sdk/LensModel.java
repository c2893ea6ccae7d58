package com.velotrix.quiverleaf.sdk;

/** Which lens a computation estimates. */
public enum LensModel {
  /** k1, k2, p1, p2, k3. */
  CLASSIC(10),
  /** And k4, k5, k6. A pair needs cameras calibrated with this model or the next. */
  RATIONAL(20),
  /** And s1 to s4, tau x, tau y. */
  FULL(30),
  /**
   * A lens of 90 degrees and more, of one camera: what comes out is a {@link FisheyeResult}. It has no
   * number, as the engine computes it apart from the others.
   */
  FISHEYE(-1);

  private final int code;

  LensModel(int code) { this.code = code; }

  /** The engine's number for it; -1 for {@link #FISHEYE}. */
  public int code() { return code; }
}
