package com.velotrix.quiverleaf.sdk;

import java.util.ArrayList;
import java.util.List;
import java.util.Random;

/** Results of cameras that are known, and what such a camera sees of the shipped sheet. */
final class Lenses {
  static final double FOCAL = 550.0;
  static final double CENTRE_X = 319.5;
  static final double CENTRE_Y = 239.5;
  static final double UNIT = 0.02;
  private static final double NOISE = 0.03;
  private static final int COLUMNS = 4;
  private static final int ROWS = 11;

  private Lenses() {}

  private static String common(double focal, double centreX, int width) {
    return "\"error\":0.05,\"imgWidth\":" + width + ",\"imgHeight\":480,"
        + "\"cameraMatrix\":{\"cols\":3,\"rows\":3,\"type\":6,\"depth\":6,\"data\":[" + focal + ",0,"
        + centreX + ",0," + focal + "," + CENTRE_Y + ",0,0,1]},";
  }

  /** The text of a result without distortion. */
  static String plain(double focal, double centreX, int width) {
    return "{\"sensor\":0," + common(focal, centreX, width)
        + "\"distCoefs\":{\"cols\":5,\"rows\":1,\"type\":6,\"depth\":6,\"data\":[0,0,0,0,0]}}";
  }

  static String usual() { return plain(FOCAL, CENTRE_X, 640); }

  /** The text of a fisheye's result that is the usual lens to a few hundredths of a pixel. */
  static String fisheye() {
    return "{\"lensModel\":\"kannala-brandt\",\"widestAngle\":40," + common(FOCAL, CENTRE_X, 640)
        + "\"fisheyeCoefs\":{\"cols\":4,\"rows\":1,\"type\":6,\"depth\":6,\"data\":[" + 1.0 / 3.0 + ","
        + 2.0 / 15.0 + "," + 17.0 / 315.0 + "," + 62.0 / 2835.0 + "]}}";
  }

  /** Where the circles of the sheet are, in metres: three coordinates of each. */
  static double[][] sheet() {
    double[][] points = new double[COLUMNS * ROWS][];
    for (int i = 0; i < points.length; ++i) {
      int row = i / COLUMNS;
      points[i] = new double[] {UNIT * (2 * (i % COLUMNS) + row % 2), UNIT * row, 0.0};
    }
    return points;
  }

  /** What a camera of that focal length sees of the sheet, turned about x and then y, with noise. */
  static Observation view(double focal, double[][] sheet, double aboutX, double aboutY, double x, double y,
      double z, Random noise) {
    double[][] centres = new double[sheet.length][];
    for (int i = 0; i < centres.length; ++i) {
      double a = sheet[i][0] - UNIT * (COLUMNS - 0.5);
      double b = sheet[i][1] - UNIT * (ROWS - 1) / 2.0;
      double depth = b * Math.sin(aboutX);
      double across = a * Math.cos(aboutY) + depth * Math.sin(aboutY);
      double away = z - a * Math.sin(aboutY) + depth * Math.cos(aboutY);
      centres[i] = new double[] {CENTRE_X + focal * (x + across) / away + NOISE * noise.nextGaussian(),
          CENTRE_Y + focal * (y + b * Math.cos(aboutX)) / away + NOISE * noise.nextGaussian()};
    }
    return Observation.of(centres);
  }

  /** Six views, tilted to all sides and all over the image. */
  static List<Observation> views(double focal) {
    Random noise = new Random(7);
    double[][] sheet = sheet();
    List<Observation> views = new ArrayList<>();
    views.add(view(focal, sheet, 0.6, 0.0, 0.0, 0.0, 0.35, noise));
    views.add(view(focal, sheet, -0.6, 0.1, 0.05, 0.02, 0.4, noise));
    views.add(view(focal, sheet, 0.1, 0.6, -0.08, -0.03, 0.35, noise));
    views.add(view(focal, sheet, -0.1, -0.6, 0.09, 0.04, 0.35, noise));
    views.add(view(focal, sheet, 0.4, 0.4, -0.1, 0.05, 0.45, noise));
    views.add(view(focal, sheet, -0.4, 0.4, 0.1, -0.05, 0.45, noise));
    return views;
  }
}
