package com.velotrix.quiverleaf.sdk;

import com.google.gson.JsonObject;
import java.util.ArrayList;
import java.util.Collections;
import java.util.List;
import java.util.Locale;

/**
 * What new images say of an earlier result; of a {@link ResultChecker}. Deviations are standard deviations.
 */
public final class ResultCheck {
  /** The whole in a word. */
  public enum Answer {
    /** The camera is as its calibration found it. */
    CALIBRATED,
    /** It is not. */
    NOT_CALIBRATED,
    /** The images do not show which. */
    CANNOT_TELL
  }

  /** One of the images. */
  public static final class Image {
    private final JsonObject image;

    private Image(JsonObject image) { this.image = image; }

    /** False: the grid in it is not where that of any camera like this can be. */
    public boolean isUsed() { return Documents.flag(image, "used"); }

    /** RMS of its circles in pixels, by the lens of the result; -1 where it is not used. */
    public double rms() { return Documents.real(image, "rms"); }

    /** The largest residual in pixels, outliers too. */
    public double largest() { return Documents.real(image, "largest"); }

    /** The number of the circle that has it, from 0; -1 where the image is not used. */
    public int largestPoint() { return Documents.integer(image, "largestPoint"); }

    /** How many circles do not agree with the others, and do not count. */
    public int outliers() { return Documents.integer(image, "outliers"); }

    /** Of the sheet against the ray to its middle, in degrees. */
    public double tilt() { return Documents.real(image, "tilt"); }

    /**
     * From the sheet's frame to the camera's, as a vector along the axis, of the angle's length in radians.
     */
    public double[] rotation() { return Documents.reals(image, "rvec", 3); }

    /** Where the first circle is in the camera's frame, in metres. */
    public double[] translation() { return Documents.reals(image, "tvec", 3); }
  }

  private final JsonObject document;
  private final Answer answer;
  private final List<Image> images = new ArrayList<>();

  ResultCheck(String json) {
    document = Documents.parse(json);
    answer = Answer.valueOf(Documents.text(document, "answer").toUpperCase(Locale.ROOT).replace(' ', '_'));
    for (JsonObject image : Documents.objects(document, "images")) {
      images.add(new Image(image));
    }
  }

  /** The whole in a word. */
  public Answer answer() { return answer; }

  /** Whether the camera is still as its calibration found it. */
  public boolean passed() { return answer == Answer.CALIBRATED; }

  /** The answer with what speaks for it: "Still calibrated: ...", "No longer ...", "Cannot tell: ...". */
  public String sentence() { return Documents.text(document, "sentence"); }

  /** What to do; empty where nothing is to be done. */
  public String advice() { return Documents.text(document, "advice"); }

  /** Of each image, in the order in which they were given. */
  public List<Image> images() { return Collections.unmodifiableList(images); }

  /** RMS of all circles that count, in pixels, by the lens of the result. */
  public double rms() { return Documents.real(document, "rms"); }

  /** The same by the lens that suits the images best: what is left is no matter of the lens. */
  public double noise() { return Documents.real(document, "noise"); }

  /**
   * Pixels by which projections have moved, root of the mean square where the grid was seen, after the best
   * rotation of the camera's frame.
   */
  public double shift() { return Documents.real(document, "shift"); }

  /** Deviation of the shift; infinite where the images do not determine it. */
  public double shiftDeviation() { return Documents.realOrInfinite(document, "shiftDeviation"); }

  /** The shift that is allowed, in pixels. */
  public double tolerance() { return Documents.real(document, "tolerance"); }

  /** Pixels by which projections may have moved without the images showing it, in 19 of 20 cases. */
  public double unseen() { return Documents.realOrInfinite(document, "unseen"); }

  /** By how much a lens that moved explains the images better than chance does: above 1 it is no chance. */
  public double evidence() { return Documents.realOrInfinite(document, "evidence"); }

  /** The share by which the focal length has grown. */
  public double focalChange() { return Documents.real(document, "focalChange"); }

  /** Its deviation. */
  public double focalDeviation() { return Documents.realOrInfinite(document, "focalDeviation"); }

  /** The pixels by which the principal point has moved: x and y. */
  public double[] principalPointChange() { return Documents.reals(document, "principalPointChange", 2); }

  /** Their deviations. */
  public double[] principalPointDeviation() {
    return Documents.realsOrInfinite(document, "principalPointDeviation");
  }

  /** The share of the image where the grid was seen, 0 to 1. */
  public double coverage() { return Documents.real(document, "coverage"); }

  @Override
  public String toString() {
    return sentence() + (advice().isEmpty() ? "" : " " + advice());
  }
}
