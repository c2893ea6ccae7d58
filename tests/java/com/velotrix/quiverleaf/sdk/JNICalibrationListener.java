package com.velotrix.quiverleaf.sdk;

/** What the engine calls with every processed frame. */
public interface JNICalibrationListener {
  void onFrame(byte[] jpeg, String status);
}
