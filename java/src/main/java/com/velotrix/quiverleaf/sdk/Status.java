package com.velotrix.quiverleaf.sdk;

/** Where a calibrator stands. Compare for equality: the numbers are not in the order of its life. */
public enum Status {
  /** Fewer than five snapshots. */
  NOT_READY(100),
  /** Enough snapshots for a computation. */
  READY(200),
  /** The result is there; the next snapshot leads back to READY. */
  COMPLETED(300),
  /** A computation runs. */
  PROGRESS(400);

  private final int code;

  Status(int code) { this.code = code; }

  /** The engine's number for it. */
  public int code() { return code; }

  /** The status of that number. */
  public static Status of(int code) {
    for (Status status : values()) {
      if (status.code == code) {
        return status;
      }
    }
    throw new IllegalArgumentException("no status has the number " + code);
  }
}
