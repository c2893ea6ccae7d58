package com.velotrix.quiverleaf.sdk;

import java.util.Objects;

/** Makes calibrators. Numbers that make no sense are refused with IllegalArgumentException. */
public final class CalibratorBuilder {
  int columns = 4;
  int rows = 11;
  double unit = 0.02;
  Kind kind = Kind.MONOCULAR;
  int width = 640;
  int height = 480;
  private double hdist = Double.NaN;

  CalibratorBuilder() {}

  /** The grid's circles per row and rows. */
  public CalibratorBuilder grid(int columns, int rows) {
    require(columns > 0 && rows > 1, "a grid of " + columns + " x " + rows);
    this.columns = columns;
    this.rows = rows;
    return this;
  }

  /** The distance between adjacent rows in metres, in place of {@link #hdist}. */
  public CalibratorBuilder unit(double metres) {
    require(metres > 0.0 && Double.isFinite(metres), "a unit of " + metres);
    unit = metres;
    hdist = Double.NaN;
    return this;
  }

  /** The distance from the first row to the last in metres: what a ruler measures on the print. */
  public CalibratorBuilder hdist(double metres) {
    require(metres > 0.0 && Double.isFinite(metres), "a distance of " + metres);
    hdist = metres;
    return this;
  }

  /** One camera or a pair. */
  public CalibratorBuilder kind(Kind kind) {
    this.kind = Objects.requireNonNull(kind, "kind");
    return this;
  }

  /** The size in pixels that frames are brought to, and in which results are given. */
  public CalibratorBuilder frameSize(int width, int height) {
    require(width > 0 && height > 0, "frames of " + width + " x " + height);
    this.width = width;
    this.height = height;
    return this;
  }

  /** The calibrator; close it when done. */
  public Calibrator build() {
    if (!Double.isNaN(hdist)) {
      unit = hdist / (rows - 1);
    }
    return new Calibrator(this);
  }

  private static void require(boolean condition, String what) {
    if (!condition) {
      throw new IllegalArgumentException(what + " cannot be");
    }
  }
}
