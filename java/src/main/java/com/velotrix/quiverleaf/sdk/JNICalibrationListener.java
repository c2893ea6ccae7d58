package com.velotrix.quiverleaf.sdk;

/** What the engine calls with every processed frame. */
public interface JNICalibrationListener {
  /**
   * Called on the thread that processed the frame. What it throws is written to the engine's log.
   *
   * @param jpeg the annotated frame as JPEG; a single zero byte when no images are wanted, empty when there
   *     is no picture
   * @param statusJson the status of the calibrator, as {@link Calibration#nGetStatusQVX} answers it
   */
  void onFrame(byte[] jpeg, String statusJson);
}
