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
  private final double focalDeviation;
  private final double focalJackknife;
  private final double deviationInData;
  private final double jackknifeInData;
  private final double systematicInData;
  private final double sheetBend;
  private final double sheetStretch;
  private final double deviationInImage;
  private final double coverage;

  private Verdict(String json) {
    this.json = json;
    JsonObject document = Documents.parse(json);
    grade = Grade.of(Documents.text(document, "grade"));
    views = Documents.integer(document, "views");
    focalDeviation = Documents.realOrInfinite(document, "focalDeviation");
    focalJackknife = Documents.realOrInfinite(document, "focalJackknife");
    deviationInData = Documents.realOrInfinite(document, "deviationInData");
    jackknifeInData = Documents.realOrInfinite(document, "jackknifeInData");
    systematicInData = Documents.realOrInfinite(document, "systematicInData");
    sheetBend = Documents.realOrInfinite(document, "sheetBend");
    sheetStretch = Documents.realOrInfinite(document, "sheetStretch");
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
   * bent or out of proportion, or a lens that the model does not hold; 0 when the snapshots show none of
   * these.
   */
  public double systematicInData() { return systematicInData; }

  /** Metres from the sheet's lowest dot to its highest, where that is the reason; else 0. */
  public double sheetBend() { return sheetBend; }

  /** The share by which the sheet is longer than it should be, where that is the reason; else 0. */
  public double sheetStretch() { return sheetStretch; }

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
