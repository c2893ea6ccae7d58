package com.velotrix.quiverleaf.sdk;

/** A processed frame: the picture with what was found drawn into it, and where the calibrator stands. */
public final class AnnotatedFrame {
  private final byte[] jpeg;
  private final String statusJson;

  AnnotatedFrame(byte[] jpeg, String statusJson) {
    this.jpeg = jpeg;
    this.statusJson = statusJson;
  }

  /** False when images are not wanted, or the frame held no picture. */
  public boolean hasPicture() { return jpeg.length > 1; }

  /** The picture as JPEG; empty without one. */
  public byte[] jpeg() { return hasPicture() ? jpeg.clone() : new byte[0]; }

  /** The status after the frame. */
  public CalibratorStatus status() { return CalibratorStatus.parse(statusJson); }
}
