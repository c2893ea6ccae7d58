package com.velotrix.quiverleaf.sdk;

import com.google.gson.JsonArray;
import com.google.gson.JsonObject;
import java.awt.image.BufferedImage;
import java.io.ByteArrayInputStream;
import java.io.IOException;
import java.util.Locale;
import java.util.Objects;
import javax.imageio.ImageIO;

/**
 * How far two results of one camera are apart, plain lenses or fisheyes: the differences between the pixels
 * where both lenses put the same rays, after the best rotation between both cameras' frames, which no
 * calibration can tell from a rotation of all poses. They are taken at the middles of the cells of a regular
 * grid over the image; each is a pixel of the first lens. Where a lens images nothing there is no difference.
 */
public final class ResultComparison {
  private static final int SIDE = 3;

  private final String first;
  private final String second;
  private final String options;
  private final JsonObject document;
  private final double[][] differences;
  private final int columns;

  private ResultComparison(String first, String second, String options) {
    this.first = first;
    this.second = second;
    this.options = options;
    document = Documents.parse(Results.nCompare(first, second, options));
    differences = Documents.points(document, "differences");
    columns = Documents.integer(document, "columns");
  }

  /**
   * Compares the second result with the first, by the texts of their files: {@link CalibrationResult#json}
   * and {@link FisheyeResult#json} have them too.
   *
   * @throws IllegalArgumentException for texts of anything else, images of different sizes, and where no
   *     place is seen by both lenses
   */
  public static ResultComparison of(String first, String second) {
    return of(first, second, 0.0, new double[0][]);
  }

  /**
   * The same with other cells, or of a part of the image only.
   *
   * @param step pixels from one cell to the next; 0: a fortieth of the image's longer side
   * @param area the corners, x and y of each, of a convex polygon within which the rotation is the best one
   *     and numbers are taken; the map is of the whole image all the same. Empty: all of the image counts
   */
  public static ResultComparison of(String first, String second, double step, double[][] area) {
    JsonObject options = new JsonObject();
    options.add("step", Documents.finite(step));
    JsonArray corners = new JsonArray();
    for (double[] corner : area) {
      corners.add(Documents.finite(corner, 2));
    }
    options.add("area", corners);
    return new ResultComparison(
        Objects.requireNonNull(first, "first"), Objects.requireNonNull(second, "second"), options.toString());
  }

  /** Of the lengths of the differences, in pixels. */
  public double mean() { return Documents.real(document, "mean"); }

  /** Root of the mean square of the lengths, in pixels. */
  public double rms() { return Documents.real(document, "rms"); }

  /** The length of the largest difference, in pixels. */
  public double largest() { return Documents.real(document, "largest"); }

  /** x and y of the pixel of the first lens with the largest difference. */
  public double[] where() { return Documents.reals(document, "where", 2); }

  /** 3 x 3: what a ray of the first camera's frame is in the second's. */
  public Matrix rotation() {
    return new Matrix(SIDE, SIDE, Documents.reals(document, "rotation", SIDE * SIDE));
  }

  /** Of that rotation, in degrees. */
  public double angle() { return Documents.real(document, "angle"); }

  /** The number of cells that count. */
  public int compared() { return Documents.integer(document, "compared"); }

  /** The share of the cells that should have counted, for which one of the lenses has no ray. */
  public double incomparable() { return Documents.real(document, "incomparable"); }

  /** The rows of cells. */
  public int rows() { return Documents.integer(document, "rows"); }

  /** The cells of a row. */
  public int columns() { return columns; }

  /** Pixels from one cell to the next of a row. */
  public double stepX() { return Documents.real(document, "stepX"); }

  /** Pixels from one row of cells to the next. */
  public double stepY() { return Documents.real(document, "stepY"); }

  /**
   * By how many pixels the second lens puts the ray in the middle of the cell to the right and below of where
   * the first has it; NaN where that is not known.
   */
  public double[] difference(int row, int column) {
    Objects.checkIndex(row, rows());
    Objects.checkIndex(column, columns);
    return differences[row * columns + column].clone();
  }

  /** The lengths of the differences, a row of cells each; NaN where they are not known. */
  public double[][] lengths() {
    double[][] lengths = new double[rows()][columns];
    for (int i = 0; i < differences.length; ++i) {
      lengths[i / columns][i % columns] = Math.hypot(differences[i][0], differences[i][1]);
    }
    return lengths;
  }

  /**
   * The lengths in colours, of the size of the images, with a scale from 0 to the largest; grey where they
   * are not known.
   */
  public BufferedImage picture() {
    try {
      return ImageIO.read(new ByteArrayInputStream(Results.nDrawComparison(first, second, options)));
    } catch (IOException e) {
      throw new IllegalStateException(e); // there is no file in it
    }
  }

  @Override
  public String toString() {
    return String.format(Locale.ROOT, "%.3f px on average, %.3f px at most, after a rotation by %.3f degrees",
        mean(), largest(), angle());
  }
}
