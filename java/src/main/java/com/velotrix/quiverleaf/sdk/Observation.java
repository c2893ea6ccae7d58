package com.velotrix.quiverleaf.sdk;

import com.google.gson.JsonArray;
import com.google.gson.JsonObject;

/**
 * What one camera observed of the grid at one moment. All lists are in the order of the grid, in pixels, and
 * are handed out as copies.
 */
public final class Observation {
  private static final double[] UNKNOWN = {};

  private final double[][] centres;
  private final double[] weights;
  private final double[] deviations;
  private final double[] radii;

  private Observation(double[][] centres, double[] weights, double[] deviations, double[] radii) {
    this.centres = copyOf(centres);
    this.weights = weights.clone();
    this.deviations = deviations.clone();
    this.radii = radii.clone();
  }

  /** The centres of all circles: x and y of each. */
  public static Observation of(double[][] centres) {
    return new Observation(centres, UNKNOWN, UNKNOWN, UNKNOWN);
  }

  /** Of a camera that did not see the grid. */
  public static Observation none() { return of(new double[0][]); }

  /** The same with a weight of each circle: 1, or 0 where it was not seen and is only where it would be. */
  public Observation withWeights(double... weights) {
    return new Observation(centres, weights, deviations, radii);
  }

  /** The same with the standard deviation of each centre along an axis; 0 where it is not known. */
  public Observation withDeviations(double... deviations) {
    return new Observation(centres, weights, deviations, radii);
  }

  /** The same with the radius of each disc; 0 where it is not known. */
  public Observation withRadii(double... radii) {
    return new Observation(centres, weights, deviations, radii);
  }

  /** Whether the camera saw the grid. */
  public boolean isSeen() { return centres.length > 0; }

  /** x and y of each circle. */
  public double[][] centres() { return copyOf(centres); }

  /** Of each circle; empty: all were seen. */
  public double[] weights() { return weights.clone(); }

  /** Of each circle; empty: not known. */
  public double[] deviations() { return deviations.clone(); }

  /** Of each circle; empty: not known. */
  public double[] radii() { return radii.clone(); }

  static Observation of(JsonObject camera) {
    return new Observation(Documents.points(camera, "centres"), Documents.reals(camera, "weights"),
        Documents.reals(camera, "deviations"), Documents.reals(camera, "radii"));
  }

  JsonObject toJson() {
    JsonArray points = new JsonArray();
    for (double[] centre : centres) {
      points.add(arrayOf(centre));
    }
    JsonObject camera = new JsonObject();
    camera.add("centres", points);
    camera.add("weights", arrayOf(weights));
    camera.add("deviations", arrayOf(deviations));
    camera.add("radii", arrayOf(radii));
    return camera;
  }

  private static JsonArray arrayOf(double[] numbers) { return Documents.finite(numbers, numbers.length); }

  private static double[][] copyOf(double[][] points) {
    double[][] copy = new double[points.length][];
    for (int i = 0; i < points.length; ++i) {
      if (points[i].length != 2) {
        throw new IllegalArgumentException("a centre has x and y, not " + points[i].length + " numbers");
      }
      copy[i] = points[i].clone();
    }
    return copy;
  }
}
