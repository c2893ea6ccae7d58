package com.velotrix.quiverleaf.sdk;

/** Which distortion coefficients a computation estimates. */
public enum LensModel {
  /** k1, k2, p1, p2, k3. */
  CLASSIC(10),
  /** And k4, k5, k6. A pair needs cameras calibrated with this model or the next. */
  RATIONAL(20),
  /** And s1 to s4, tau x, tau y. */
  FULL(30);

  private final int code;

  LensModel(int code) { this.code = code; }

  /** The engine's number for it. */
  public int code() { return code; }
}
