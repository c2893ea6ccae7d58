package com.velotrix.quiverleaf.sdk;

/** What the sparse solver may take the sheet for. */
public enum SheetShape {
  /** As flat as it was meant to be. */
  FLAT(0),
  /** Bent, perhaps out of proportion, perhaps in another way in each snapshot. */
  BENT(1),
  /** Its circles beside their places, too. */
  FREE(2),
  /** Whatever the snapshots ask for; a calibrator begins with it. */
  AUTO(3);

  private final int code;

  SheetShape(int code) { this.code = code; }

  /** The engine's number for it. */
  public int code() { return code; }
}
