package com.velotrix.quiverleaf.live;

import com.velotrix.quiverleaf.sdk.CalibrationResult;
import com.velotrix.quiverleaf.sdk.Calibrator;
import com.velotrix.quiverleaf.sdk.FisheyeResult;
import com.velotrix.quiverleaf.sdk.LensModel;
import com.velotrix.quiverleaf.sdk.Matrix;
import com.velotrix.quiverleaf.sdk.Verdict;
import java.util.ArrayList;
import java.util.List;
import java.util.Locale;

/** What came out of a computation. */
final class Outcome {
  /** A number of the result, with its standard deviation. */
  static final class Parameter {
    final String name;
    final double value;
    final double deviation;

    private Parameter(String name, double value, double deviation) {
      this.name = name;
      this.value = value;
      this.deviation = deviation;
    }
  }

  private static final String[] COEFFICIENTS = {
      "k1", "k2", "p1", "p2", "k3", "k4", "k5", "k6", "s1", "s2", "s3", "s4", "tau x", "tau y"};
  private static final String[] FISHEYE_COEFFICIENTS = {"k1", "k2", "k3", "k4"};

  final LensModel model;
  final double rms;
  final Verdict verdict;
  final List<Parameter> parameters = new ArrayList<>();
  /** How far it is from the result before it, as a sentence; empty: there was none. */
  String change = "";

  private Outcome(LensModel model, double rms, Verdict verdict) {
    this.model = model;
    this.rms = rms;
    this.verdict = verdict;
  }

  static Outcome of(Calibrator calibrator, LensModel model, CalibrationResult result) {
    Outcome outcome = new Outcome(model, result.rms(), calibrator.verdict());
    outcome.addAll(result.cameraMatrix(), result.distortion(), COEFFICIENTS, calibrator.deviations());
    return outcome;
  }

  static Outcome of(Calibrator calibrator, FisheyeResult result) {
    Outcome outcome = new Outcome(LensModel.FISHEYE, result.rms(), calibrator.verdict());
    outcome.addAll(
        result.cameraMatrix(), result.coefficients(), FISHEYE_COEFFICIENTS, calibrator.deviations());
    return outcome;
  }

  /** What it came from and, where there is one, how far it is from the result before it. */
  String inWords() {
    return "Computed with the " + model.name().toLowerCase(Locale.ROOT) + " model from " + verdict.views()
        + " snapshots." + (change.isEmpty() ? "" : " " + change);
  }

  private void addAll(Matrix k, Matrix d, String[] names, double[] deviations) {
    add("fx", k.get(0, 0), deviations, 0);
    add("fy", k.get(1, 1), deviations, 1);
    add("cx", k.get(0, 2), deviations, 2);
    add("cy", k.get(1, 2), deviations, 3);
    for (int i = 0; i < d.columns(); ++i) {
      // Both are 0 of those that are not part of the model.
      if (d.get(0, i) != 0.0) {
        add(names[i], d.get(0, i), deviations, 4 + i);
      }
    }
  }

  private void add(String name, double value, double[] deviations, int place) {
    parameters.add(new Parameter(name, value, place < deviations.length ? deviations[place] : 0.0));
  }
}
