package com.velotrix.quiverleaf.sdk;

/** The class of the name that is looked for, without the method. */
public class JNICalibrationListener {
  public void onPicture(byte[] jpeg) {}
}
