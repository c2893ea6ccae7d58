package com.velotrix.quiverleaf.sdk;

import java.io.IOException;

/**
 * Calibration sessions as the engine keeps them, addressed by number; {@link Session} is the comfortable way
 * to the same. Texts are JSON, with the fields of a session's files.
 *
 * <p>All methods may be called from any thread. Arguments that make no sense, numbers of sessions and
 * snapshots that there are not among them, are thrown as {@link IllegalArgumentException}, what the disk
 * refuses as {@link IOException}, both with the engine's sentences; everything is then as it was.
 */
public final class Sessions {
  static { NativeLibrary.load(); }

  private Sessions() {}

  /** The folder of the session of that name: with ".velmora" appended, unless it ends so. */
  public static native String nFolderOf(String name);

  /** The first of NAME.velmora, NAME-2.velmora and so on that does not exist. */
  public static native String nFreeFolder(String name);

  /** Creates a session with these settings; its number. */
  public static native int nCreate(String folder, String settings) throws IOException;

  /** Opens a session, one with these settings unless they are null; its number. */
  public static native int nOpen(String folder, String expected, boolean checkImages) throws IOException;

  /** Lets other processes open it once calls under way have ended. False when there is none. */
  public static native boolean nClose(int id);

  /** An object of folder, settings and warnings. */
  public static native String nDescribe(int id);

  /** The path of a further file in the session's folder. */
  public static native String nPathFor(int id, String name);

  /**
   * Stores a snapshot; its number.
   *
   * @param pixels of each camera, row by row, 8 bits, blue before green and red; null, also as a whole, for
   *     none
   * @param shapes width, height and channels of each camera's; null where pixels are
   */
  public static native int nAdd(int id, String snapshot, byte[][] pixels, int[] shapes) throws IOException;

  /**
   * Stores a snapshot of a calibrator (from 0), with its pictures; its number in the session.
   *
   * @throws IndexOutOfBoundsException when the calibrator has none of that number
   */
  public static native int nStore(int id, int calibrator, int number, String name) throws IOException;

  /** Adds a stored snapshot to a calibrator; false when that takes none at the moment. */
  public static native boolean nRestore(int id, int number, int calibrator) throws IOException;

  /** All snapshots: an array of objects. */
  public static native String nSnapshots(int id);

  /** One of them. */
  public static native String nSnapshot(int id, int number);

  /** The image of a camera (from 0) as the bytes of a PNG file. */
  public static native byte[] nLoadImage(int id, int number, int camera) throws IOException;

  /** Excludes (0), includes (1), removes (2) or brings back (3) snapshots. */
  public static native void nDecide(int id, int decision, int[] numbers) throws IOException;

  /** Takes back what was done last; what that was, empty when there was nothing. */
  public static native String nUndo(int id) throws IOException;

  /** Does again what was taken back last, likewise. */
  public static native String nRedo(int id) throws IOException;

  /** Whether there is something to take back. */
  public static native boolean nCanUndo(int id);

  /** Whether there is something to do again. */
  public static native boolean nCanRedo(int id);

  /** Deletes the files of removed snapshots; how many there were. */
  public static native int nPurge(int id) throws IOException;

  /** The bytes of all files in the folder. */
  public static native long nBytesTaken(int id) throws IOException;

  /** The bytes that are free on its disk. */
  public static native long nBytesFree(int id) throws IOException;

  /** A warning when these further snapshots will not fit on the disk; else empty. */
  public static native String nDiskWarning(int id, int snapshots) throws IOException;
}
