package com.velotrix.quiverleaf.sdk;

/**
 * How a calibrator searches and solves, what becomes of its computations and its source, and how good its
 * result is, addressed by the calibrator's number; beside {@link Calibration}, whose rules hold here too.
 * {@link Calibrator} is the comfortable way to the same.
 */
public final class EngineChoices {
  static { NativeLibrary.load(); }

  private EngineChoices() {}

  /** 0 for the standard search, 1 for the robust one. Unknown: false. */
  public static native boolean nSetFinder(int id, int finder);

  /** The search that is chosen. Unknown: -1. */
  public static native int nGetFinder(int id);

  /** 0 for OpenCV's solver, 1 for the sparse one. Unknown: false. */
  public static native boolean nSetSolver(int id, int solver);

  /** The solver that is chosen. Unknown: -1. */
  public static native int nGetSolver(int id);

  /** Whether the sparse solver leaves out what disagrees. Unknown: false. */
  public static native boolean nSetRobust(int id, boolean robust);

  /**
   * What the sparse solver may take the sheet for: 0 flat, 1 bent, 2 with circles beside their places, 3 what
   * the snapshots ask for. Unknown: false.
   */
  public static native boolean nSetSheetShape(int id, int shape);

  /** The radius of the discs in metres, 0 for no correction of their centres. Unknown: false. */
  public static native boolean nSetDiscRadius(int id, double radius);

  /**
   * Whether parts of the grid may be taken by nAddSeen, where the robust search finds them. Unknown: false.
   */
  public static native boolean nSetPartialGrids(int id, boolean partial);

  /**
   * Whether the centres of snapshots are measured anew, where the robust search found them. Unknown: false.
   */
  public static native boolean nSetFineCentres(int id, boolean fine);

  /**
   * Makes what the last frame of a camera, or the last frames of a pair, showed a snapshot: the grid or,
   * where that is allowed, a part of it. False when it shows neither, or is one already. Unknown: false.
   */
  public static native boolean nAddSeen(int id);

  /** Whether nAddSeen would make a snapshot of what the last frame, or frames, showed. Unknown: false. */
  public static native boolean nHasSeen(int id);

  /** The verdict on the last result as JSON. Unknown: an empty text. */
  public static native String nGetVerdict(int id);

  /**
   * Starts the computation of a fisheye on a thread of its own, as Calibration.nCalibrate does that of other
   * lenses. Unknown: false.
   */
  public static native boolean nCalibrateFisheye(int id);

  /**
   * The text of a fisheye's result file, which is also written to the path + "_fisheye.json" if asked for. An
   * empty text when the last result is none. Unknown: an empty text.
   */
  public static native String nGetFisheyeJSON(int id, boolean save, String path);

  /** Whether a computation was started that has not ended yet. Unknown: false. */
  public static native boolean nIsComputing(int id);

  /**
   * Whether the computation that ended last brought no result. True before nIsComputing turns false, so ask
   * that first. Unknown: false.
   */
  public static native boolean nHasFailed(int id);

  /** Closes whatever source is open, both cameras of a pair too. Unknown: false. */
  public static native boolean nCloseSource(int id);

  /**
   * Whether no frame comes any more though a source was asked for: it ended by itself, or an open failed.
   * False again after a close, and once another source is opened or a frame is pushed. Unknown: false.
   */
  public static native boolean nHasSourceEnded(int id);

  /**
   * Has the listener run, on the thread that read it, when a source ends by itself, in place of an earlier
   * listener; null for none. Unknown: false.
   */
  public static native boolean nSetSourceEndListener(int id, Runnable listener);

  /** Ends a computation of the sparse solver that is under way. Unknown: false. */
  public static native boolean nCancelComputation(int id);

  /** Why the last search found no grid; empty when it did, and after standard searches. Unknown: empty. */
  public static native String nWhyNotFound(int id);

  /**
   * Which lens model the snapshots ask for: an object of model ("none" with fewer than five snapshots, and
   * during a computation) and reasons. Unknown: an empty text.
   */
  public static native String nChooseModel(int id);

  /**
   * Standard deviations of the last result of one camera: fx, fy, cx, cy and the coefficients; none without
   * one. Unknown: none.
   */
  public static native double[] nGetDeviations(int id);

  /**
   * What a snapshot (from 0) observed: an object of cameras. Unknown: an empty text.
   *
   * @throws IndexOutOfBoundsException when the calibrator has none of that number, as those that follow
   */
  public static native String nGetSnapshot(int id, int number);

  /**
   * The picture of a camera in a snapshot as the bytes of a PNG file; none where none is kept. Unknown:
   * none.
   */
  public static native byte[] nGetSnapshotImage(int id, int number, int camera);

  /** How the last result agrees with a snapshot. Unknown: an empty text. */
  public static native String nGetSnapshotFit(int id, int number);

  /** Adds a snapshot as nGetSnapshot gave it. Unknown: false. */
  public static native boolean nAddSnapshot(int id, String snapshot);

  /** Takes a snapshot out; false during a computation. Unknown: false. */
  public static native boolean nRemoveSnapshot(int id, int number);
}
