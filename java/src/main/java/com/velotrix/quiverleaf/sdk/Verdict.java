package com.velotrix.quiverleaf.sdk;

import com.google.gson.JsonObject;
import java.util.ArrayList;
import java.util.Collections;
import java.util.List;

/**
 * How good a result of one camera is. Deviations are standard deviations; numbers that the snapshots do not
 * determine are infinite.
 */
public final class Verdict {
  /** The whole in a word. */
  public enum Grade {
    /** There is no result to judge. */
    NONE("no result"),
    /** Nothing speaks against the result. */
    GOOD("good"),
    /** It is right within the limits that the remarks tell. */
    WITH_CARE("usable with care"),
    /** Do not use it, however small its RMS is. */
    WORTHLESS("worthless");

    private final String words;

    Grade(String words) { this.words = words; }

    /** As the engine says it. */
    public String words() { return words; }

    static Grade of(String words) {
      for (Grade grade : values()) {
        if (grade.words.equals(words)) {
          return grade;
        }
      }
      throw new IllegalArgumentException("there is no grade '" + words + "'");
    }
  }

  /** What speaks against a result. */
  public static final class Remark {
    private final String reason;
    private final String advice;

    Remark(JsonObject remark) {
      reason = Documents.text(remark, "reason");
      advice = Documents.text(remark, "advice");
    }

    /** What was found. */
    public String reason() { return reason; }

    /** What to do about it. */
    public String advice() { return advice; }

    @Override
    public String toString() {
      return reason + " " + advice;
    }
  }

  /** What the computation did not use. */
  public static final class LeftOut {
    private final int view;
    private final int point;
    private final double residual;
    private final String reason;

    LeftOut(JsonObject left) {
      view = Documents.integer(left, "view");
      point = Documents.integer(left, "point");
      residual = Documents.realOrInfinite(left, "residual");
      reason = Documents.text(left, "reason");
    }

    /** The number of the snapshot, from 0. */
    public int view() { return view; }

    /** The number of the point, from 0; -1 for the whole snapshot. */
    public int point() { return point; }

    /** How far off it is, in pixels. */
    public double residual() { return residual; }

    /** Why it was left out. */
    public String reason() { return reason; }
  }

  private final String json;
  private final Grade grade;
  private final List<Remark> remarks = new ArrayList<>();
  private final List<LeftOut> leftOut = new ArrayList<>();
  private final int views;
  private final int poses;
  private final double focalDeviation;
  private final double focalJackknife;
  private final double deviationInData;
  private final double jackknifeInData;
  private final double systematicInData;
  private final double sheetBend;
  private final double sheetStretch;
  private final double printError;
  private final double movedWhileRead;
  private final double focalChange;
  private final double[] principalPointChange;
  private final int changedAfter;
  private final double principalPointDeviation;
  private final double imageWithoutRay;
  private final double deviationInImage;
  private final double coverage;

  private Verdict(String json) {
    this.json = json;
    JsonObject document = Documents.parse(json);
    grade = Grade.of(Documents.text(document, "grade"));
    views = Documents.integer(document, "views");
    poses = Documents.integer(document, "poses");
    focalDeviation = Documents.realOrInfinite(document, "focalDeviation");
    focalJackknife = Documents.realOrInfinite(document, "focalJackknife");
    deviationInData = Documents.realOrInfinite(document, "deviationInData");
    jackknifeInData = Documents.realOrInfinite(document, "jackknifeInData");
    systematicInData = Documents.realOrInfinite(document, "systematicInData");
    sheetBend = Documents.realOrInfinite(document, "sheetBend");
    sheetStretch = Documents.realOrInfinite(document, "sheetStretch");
    printError = Documents.realOrInfinite(document, "printError");
    movedWhileRead = Documents.realOrInfinite(document, "movedWhileRead");
    focalChange = Documents.realOrInfinite(document, "focalChange");
    principalPointChange = Documents.reals(document, "principalPointChange", 2);
    changedAfter = Documents.integer(document, "changedAfter");
    principalPointDeviation = Documents.realOrInfinite(document, "principalPointDeviation");
    imageWithoutRay = Documents.realOrInfinite(document, "imageWithoutRay");
    deviationInImage = Documents.realOrInfinite(document, "deviationInImage");
    coverage = Documents.realOrInfinite(document, "coverage");
    for (JsonObject remark : Documents.objects(document, "remarks")) {
      remarks.add(new Remark(remark));
    }
    for (JsonObject left : Documents.objects(document, "leftOut")) {
      leftOut.add(new LeftOut(left));
    }
  }

  /**
   * From the text of a verdict file.
   *
   * @throws IllegalArgumentException when it is none
   */
  public static Verdict parse(String json) { return new Verdict(json); }

  /** The whole in a word. */
  public Grade grade() { return grade; }

  /** What speaks against the result, and what to do about it; empty for a good one. */
  public List<Remark> remarks() { return Collections.unmodifiableList(remarks); }

  /** What the computation did not use. */
  public List<LeftOut> leftOut() { return Collections.unmodifiableList(leftOut); }

  /** The number of snapshots that the result is of. */
  public int views() { return views; }

  /** How many of them are different: those in which the sheet was where it was in another one count once. */
  public int poses() { return poses; }

  /** Deviation of the focal length, relative to it, from the noise of the points. */
  public double focalDeviation() { return focalDeviation; }

  /** The same from leaving out each snapshot in turn, which shows errors of the model too. */
  public double focalJackknife() { return focalJackknife; }

  /** Deviation of projections in pixels where there is data, from the noise of the points. */
  public double deviationInData() { return deviationInData; }

  /** The same from leaving out each snapshot in turn. */
  public double jackknifeInData() { return jackknifeInData; }

  /**
   * By how many pixels projections are off where there is data for a reason that is no noise: a sheet that is
   * bent, out of proportion or moved, a lens that the model does not hold, or a camera that did not stay the
   * same (then from the nearer one of the two); 0 when the snapshots show none of these.
   */
  public double systematicInData() { return systematicInData; }

  /** Metres from the sheet's lowest dot to its highest, where that is the reason; else 0. */
  public double sheetBend() { return sheetBend; }

  /** The share by which the sheet is longer than it should be, where that is the reason; else 0. */
  public double sheetStretch() { return sheetStretch; }

  /** Metres by which discs are printed beside their places, where that is the reason; else 0. */
  public double printError() { return printError; }

  /** Metres by which the sheet moved while an image was read row by row, where that is the reason; else 0. */
  public double movedWhileRead() { return movedWhileRead; }

  /**
   * The share by which the focal length grew from the first snapshots to the last (or as the remark has it),
   * where that is the reason; else 0.
   */
  public double focalChange() { return focalChange; }

  /** The pixels by which the principal point moved, likewise: x and y. */
  public double[] principalPointChange() { return principalPointChange.clone(); }

  /** The number of the last snapshot before a change that came at once, from 0; else -1. */
  public int changedAfter() { return changedAfter; }

  /** Deviation of the principal point in pixels. */
  public double principalPointDeviation() { return principalPointDeviation; }

  /** The share of the image for whose pixels the lens has no ray, 0 to 1. */
  public double imageWithoutRay() { return imageWithoutRay; }

  /** Deviation of projections in pixels over the whole image, from the noise of the points. */
  public double deviationInImage() { return deviationInImage; }

  /** The share of the image that the data cover, 0 to 1. */
  public double coverage() { return coverage; }

  /** The text that it was read from. */
  public String json() { return json; }

  @Override
  public String toString() {
    return grade.words() + (remarks.isEmpty() ? "" : ": " + remarks);
  }
}
