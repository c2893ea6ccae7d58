package com.velotrix.quiverleaf.sdk;

import com.google.gson.JsonObject;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;

/**
 * A fisheye that a calibration found: a point whose ray is at the angle t from the axis is seen at the
 * distance t (1 + k1 t^2 + k2 t^4 + k3 t^6 + k4 t^8) from the principal point, in focal lengths; beside and
 * behind the camera, too. OpenCV's fisheye module takes the same matrices. Positions are in pixels of the
 * calibrator's frame size.
 */
public final class FisheyeResult {
  private static final String MODEL = "kannala-brandt";
  private static final int COEFFICIENTS = 4;

  private final String json;
  private final JsonObject document;

  private FisheyeResult(String json) {
    this.json = json;
    document = Documents.parse(json);
    if (!MODEL.equals(Documents.text(document, "lensModel"))) {
      throw new IllegalArgumentException("not the result of a fisheye");
    }
    // Whatever is missing is to be told now and not by some later call.
    rms();
    imageWidth();
    imageHeight();
    cameraMatrix();
    widestAngle();
    if (coefficients().rows() != 1 || coefficients().columns() != COEFFICIENTS) {
      throw new IllegalArgumentException("'fisheyeCoefs' are not four");
    }
  }

  /**
   * From the text of a fisheye's result file.
   *
   * @throws IllegalArgumentException when it is none
   */
  public static FisheyeResult parse(String json) { return new FisheyeResult(json); }

  /**
   * From a fisheye's result file.
   *
   * @throws IllegalArgumentException when the file's content is no such result
   */
  public static FisheyeResult read(Path file) throws IOException {
    return new FisheyeResult(Files.readString(file));
  }

  /** The text of the result file. */
  public String json() { return json; }

  /** RMS reprojection error in pixels. */
  public double rms() { return Documents.real(document, "error"); }

  /** The width in pixels that positions refer to. */
  public int imageWidth() { return Documents.integer(document, "imgWidth"); }

  /** The height in pixels that positions refer to. */
  public int imageHeight() { return Documents.integer(document, "imgHeight"); }

  /** 3 x 3: focal lengths and principal point. */
  public Matrix cameraMatrix() { return Documents.matrix(document, "cameraMatrix"); }

  /** One row: k1 to k4. */
  public Matrix coefficients() { return Documents.matrix(document, "fisheyeCoefs"); }

  /** Up to which angle from the axis there were points, in degrees. */
  public double widestAngle() { return Documents.real(document, "widestAngle"); }

  /** The text of the result file. */
  @Override
  public String toString() {
    return json;
  }
}
