package com.velotrix.quiverleaf.sdk;

/**
 * The engine's operations as they are, addressed by the number of a calibrator. {@link Calibrator} is the
 * comfortable way to the same.
 *
 * <p>All methods may be called from any thread. An unknown number is reported by a line of the engine's log
 * and answered by the value that each method names. What goes wrong inside of the engine is thrown as
 * {@link RuntimeException}; the calibrator stays usable.
 */
public final class Calibration {
  static { NativeLibrary.load(); }

  private Calibration() {}

  /**
   * Makes a calibrator; the caller deletes it with {@link #nDeleteCalibrator}.
   *
   * @param columns circles per row of the grid
   * @param rows rows of the grid
   * @param unit distance between adjacent rows, in metres
   * @param kind 0 for one camera, 1 for a pair
   * @param frameWidth width in pixels of the frames that are worked on
   * @param frameHeight their height
   * @return its number
   */
  public static native int nNewCalibrator(
      int columns, int rows, float unit, int kind, int frameWidth, int frameHeight);

  /** Deletes a calibrator: closes its source, waits for its threads. False when there is none. */
  public static native boolean nDeleteCalibrator(int id);

  /** Drops snapshots and results. */
  public static native void nResetCalibrator(int id);

  /** Searches the grid in a JPEG picture; the annotated picture, or the text itself when it is none. */
  public static native String nDetectPattern(int id, String base64Jpeg, int quality);

  /** Whether the last frame showed the grid and is no snapshot yet. Unknown: false. */
  public static native boolean nIsDetected(int id);

  /** Mirrors the frames that are handed out. */
  public static native void nSetFlip(int id, boolean flip);

  /** Whether frames are mirrored. Unknown: false. */
  public static native boolean nGetFlip(int id);

  /** Starts the assistant with a file of poses. Unknown: false. */
  public static native boolean nStartAssistant(int id, String modelPath);

  /** Stops the assistant. Unknown: false. */
  public static native boolean nStopAssistant(int id);

  /** Makes the last detection a snapshot; true when there is one. Unknown: false. */
  public static native boolean nAddPicture(int id);

  /** The same, answered as JSON. */
  public static native String nAddPictureQVX(int id);

  /** Starts the computation for one camera with a lens model (10, 20 or 30). */
  public static native void nCalibrate(int id, int model);

  /** The same, answered as JSON. */
  public static native String nCalibrateQVX(int id, int model);

  /** Makes the last detection in both frames a snapshot; true when there is one. Unknown: false. */
  public static native boolean nAddStereoPicture(int id);

  /** The same, answered as JSON. */
  public static native String nAddStereoPictureQVX(int id);

  /** Computes a pair from the two cameras' results on the calling thread. */
  public static native void nCalibrateStereo(int id, String left, String right, int model);

  /** Starts the same computation on a thread of its own; the results are given as texts. */
  public static native String nCalibrateStereoQVX(int id, String left, String right, int model);

  /** The status: 100, 200, 300 or 400. Unknown: -1. */
  public static native int nGetStatus(int id);

  /** The status as JSON, with the result once there is one. */
  public static native String nGetStatusQVX(int id);

  /** The number of snapshots. Unknown: -2. */
  public static native int nGetPictureCount(int id);

  /** The assistant's number of poses, -1 without an assistant. Unknown: -3. */
  public static native int nGetAssistantGoal(int id);

  /** RMS reprojection error in pixels, -1 before a result. Unknown: -2. */
  public static native float nGetError(int id);

  /** The result as JSON, written to path + ".json" on demand; empty when there is none. */
  public static native String nGetCalibrationJSON(int id, boolean save, String path);

  /** Opens a camera. See {@link SplitMode} for the last argument. */
  public static native boolean nOpenNativeCamera(
      int id, int index, int width, int height, int fps, int splitMode);

  /** Closes the source. */
  public static native void nCloseNativeCamera(int id);

  /** Opens two cameras as a pair. */
  public static native boolean nOpenNativeStereoCamera(
      int id, int leftIndex, int rightIndex, int width, int height, int fps);

  /** Stops the reader and closes the left camera of a pair; the right one stays open. */
  public static native void nCloseStereoNativeCamera(int id);

  /** Opens a file or URL. */
  public static native boolean nOpenFFmpegContent(int id, String content);

  /** Closes the source. */
  public static native void nCloseFFmpegContent(int id);

  /** Opens a GStreamer pipeline that ends in an appsink. */
  public static native boolean nOpenGstreamerPipe(int id, String pipe);

  /** Closes the source. */
  public static native void nCloseGstreamerPipe(int id);

  /** From now on pushed JPEG frames are processed on a thread of their own, the newest one only. */
  public static native void nOpenJpegB64FrameGrabber(int id);

  /** Ends that thread after its frame. */
  public static native void nCloseJpegB64FrameGrabber(int id);

  /** Pushes a JPEG frame. */
  public static native void nNextFrameJpegB64(int id, String base64Jpeg, int tag);

  /** From now on pushed raw frames are processed on a thread of their own, the newest one only. */
  public static native void nOpenRGBFrameGrabber(int id);

  /** Ends that thread after its frame. */
  public static native void nCloseRGBFrameGrabber(int id);

  /** Pushes a raw frame. See {@link FrameFormat} for format names and sizes. */
  public static native void nNextFrame(int id, byte[] data, int width, int height, String format, int tag);

  /** Shows processed frames in a window of the engine's own. */
  public static native void nOpenPreview(int id);

  /** Ends that. */
  public static native void nClosePreview(int id);

  /** Kept for older callers: prints a warning. */
  public static native void nDisableConsoleLogger();

  /** Kept for older callers: prints a warning. */
  public static native void nDisableFileLogger();

  /** How much the engine's log says: 0 (nothing) to 5 (everything). */
  public static native void nSetLogLevel(int level);

  /** The engine's version. */
  public static native String nGetVersion();

  /** How the OpenCV library in use was built. */
  public static native String nGetOpenCVBuildInfo();

  /** Makes the virtual machine known to a calibrator, which {@link #nNewCalibrator} has done already. */
  public static native void nRegisterJavaVM(int id);

  /**
   * Registers the one listener of a calibrator, or with null none.
   *
   * @param sendImage whether it gets frames, in the size given when both sides are positive
   * @return whether one is registered now
   */
  public static native boolean nRegisterCalibrationListener(
      int id, JNICalibrationListener listener, boolean sendImage, int width, int height);
}
