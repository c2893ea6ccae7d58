package com.velotrix.quiverleaf.sdk;

/**
 * Results of one camera, by the texts of their files: how far two are apart, and whether one still holds.
 * {@link ResultComparison} and {@link ResultChecker} are the comfortable way to the same. Texts are JSON.
 *
 * <p>All methods may be called from any thread. Arguments that make no sense are thrown as
 * {@link IllegalArgumentException} with the engine's sentences.
 */
public final class Results {
  static { NativeLibrary.load(); }

  private Results() {}

  /**
   * Compares the second result with the first.
   *
   * @param options an object of step and area
   * @return an object of mean, rms, largest, where, rotation, angle, compared, incomparable, stepX, stepY,
   *     rows, columns and differences, a pair for each cell or null
   */
  public static native String nCompare(String first, String second, String options);

  /** The lengths of the differences in colours, of the size of the images, as the bytes of a PNG file. */
  public static native byte[] nDrawComparison(String first, String second, String options);

  /**
   * Checks a result by new images.
   *
   * @param verdict that on the result; null: not known
   * @param request an object of images, grid, unit, discRadius, tolerance and sheetPoints
   * @return an object of what the check says
   */
  public static native String nCheck(String result, String verdict, String request);
}
