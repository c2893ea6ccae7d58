package com.velotrix.quiverleaf.sdk;

/** Pushes a frame, as a Java program does. */
public final class PushedFrames {
  private final int id = Calibration.nNewCalibrator(4, 11, 0.02F, 0, 640, 480);
  private final String base64;
  private final byte[] nv21;
  private long received;

  PushedFrames(String base64, byte[] nv21) {
    this.base64 = base64;
    this.nv21 = nv21;
    Calibration.nSetLogLevel(1);
    Calibration.nRegisterCalibrationListener(
        id, (jpeg, status) -> received += jpeg.length > 1 ? 1 : 0, true, 0, 0);
  }

  void pushBase64() { Calibration.nNextFrameJpegB64(id, base64, 0); }

  void pushNv21() { Calibration.nNextFrame(id, nv21, 640, 480, "NV21", 0); }

  /** The number of pictures handed to the listener. */
  long received() { return received; }
}
