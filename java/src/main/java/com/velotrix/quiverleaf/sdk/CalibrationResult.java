package com.velotrix.quiverleaf.sdk;

import com.google.gson.JsonObject;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;

/**
 * What a calibration found out. Positions are in pixels of the calibrator's frame size, lengths in metres;
 * matrices are OpenCV's and can be passed to its functions as they are.
 */
public final class CalibrationResult {
  private final String json;
  private final JsonObject document;
  private final Kind kind;

  private CalibrationResult(String json) {
    this.json = json;
    document = Documents.parse(json);
    kind = Documents.integer(document, "sensor") == Kind.STEREO.code() ? Kind.STEREO : Kind.MONOCULAR;
    // Whatever is missing is to be told now and not by some later call.
    rms();
    imageWidth();
    imageHeight();
    cameraMatrix();
    distortion();
    if (kind == Kind.STEREO) {
      rightCameraMatrix();
      rightDistortion();
      rotation();
      translation();
    }
  }

  /**
   * From the text of a result file.
   *
   * @throws IllegalArgumentException when it is none
   */
  public static CalibrationResult parse(String json) { return new CalibrationResult(json); }

  /**
   * From a result file.
   *
   * @throws IllegalArgumentException when the file's content is no result
   */
  public static CalibrationResult read(Path file) throws IOException {
    return new CalibrationResult(Files.readString(file));
  }

  /** The text of the result file, which {@link Calibrator#calibratePair} takes as well. */
  public String json() { return json; }

  /** Of one camera or of a pair. */
  public Kind kind() { return kind; }

  /** RMS reprojection error in pixels. */
  public double rms() { return Documents.real(document, "error"); }

  /** The width in pixels that positions refer to. */
  public int imageWidth() { return Documents.integer(document, "imgWidth"); }

  /** The height in pixels that positions refer to. */
  public int imageHeight() { return Documents.integer(document, "imgHeight"); }

  /** 3 x 3: focal lengths and principal point; of a pair's left camera. */
  public Matrix cameraMatrix() { return Documents.matrix(document, "cameraMatrix"); }

  /** One row of 5 or 14 coefficients, as OpenCV orders them; of a pair's left camera. */
  public Matrix distortion() { return Documents.matrix(document, "distCoefs"); }

  /** Of a pair's right camera; for one camera alone an IllegalStateException, like all that follow. */
  public Matrix rightCameraMatrix() { return ofPair("cameraMatrix2"); }

  /** Of a pair's right camera. */
  public Matrix rightDistortion() { return ofPair("distCoefs2"); }

  /** 3 x 3: x_right = R x_left + T. */
  public Matrix rotation() { return ofPair("R"); }

  /** 3 x 1, in metres. */
  public Matrix translation() { return ofPair("T"); }

  /** The distance between a pair's cameras in metres. */
  public double baseline() {
    Matrix t = translation();
    return Math.sqrt(t.get(0, 0) * t.get(0, 0) + t.get(1, 0) * t.get(1, 0) + t.get(2, 0) * t.get(2, 0));
  }

  /** 3 x 3: x_right' E x_left = 0 for a point's directions; made from rotation and translation. */
  public Matrix essentialMatrix() {
    Matrix t = translation();
    Matrix cross = new Matrix(
        3, 3, 0.0, -t.get(2, 0), t.get(1, 0), t.get(2, 0), 0.0, -t.get(0, 0), -t.get(1, 0), t.get(0, 0), 0.0);
    return cross.times(rotation());
  }

  private Matrix ofPair(String key) {
    if (kind != Kind.STEREO) {
      throw new IllegalStateException("a result of one camera has no '" + key + "'");
    }
    return Documents.matrix(document, key);
  }

  /** The text of the result file. */
  @Override
  public String toString() {
    return json;
  }
}
