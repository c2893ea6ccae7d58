package com.velotrix.quiverleaf.sdk;

import com.google.gson.JsonArray;
import com.google.gson.JsonElement;
import com.google.gson.JsonObject;
import java.util.List;
import java.util.Objects;

/**
 * Checks an earlier result by what the camera sees of the sheet now. Each with method gives a copy that
 * differs in that.
 *
 * <pre>{@code
 * ResultCheck check = new ResultChecker(result.json(), 0.02).withVerdict(verdict).check(observations);
 * if (!check.passed()) {
 *   System.out.println(check.sentence() + " " + check.advice());
 * }
 * }</pre>
 */
public final class ResultChecker {
  private final String result;
  private final String verdict;
  private final JsonObject request;

  private ResultChecker(String result, String verdict, JsonObject request) {
    this.result = result;
    this.verdict = verdict;
    this.request = request;
  }

  /**
   * With the shipped sheet of 4 x 11 circles, and without a verdict.
   *
   * @param result the text of the result's file, of a plain lens or a fisheye
   * @param unit the distance between adjacent rows in metres
   */
  public ResultChecker(String result, double unit) {
    this(Objects.requireNonNull(result, "result"), null, usual(unit));
  }

  private static JsonObject usual(double unit) {
    JsonObject request = new JsonObject();
    request.add("grid", grid(4, 11));
    request.add("unit", Documents.finite(unit));
    request.addProperty("discRadius", 0.0);
    request.addProperty("tolerance", 0.0);
    request.add("sheetPoints", new JsonArray());
    return request;
  }

  private static JsonObject grid(int columns, int rows) {
    JsonObject grid = new JsonObject();
    grid.addProperty("columns", columns);
    grid.addProperty("rows", rows);
    return grid;
  }

  private ResultChecker with(String key, JsonElement value) {
    JsonObject copy = request.deepCopy();
    copy.add(key, value);
    return new ResultChecker(result, verdict, copy);
  }

  /**
   * With the verdict on the result: how sure it is, and the sheet's shape. Without one the result is taken to
   * be as sure as the new images could make it.
   */
  public ResultChecker withVerdict(Verdict known) { return new ResultChecker(result, known.json(), request); }

  /** The grid's circles per row, and rows. */
  public ResultChecker withGrid(int columns, int rows) { return with("grid", grid(columns, rows)); }

  /** The radius of the discs in metres; 0 takes centres for images of the discs' centres. */
  public ResultChecker withDiscRadius(double metres) { return with("discRadius", Documents.finite(metres)); }

  /**
   * Pixels by which projections may have moved, root of the mean square where the grid was seen. 0: 0.05, or
   * what the verdict says that they are off by, and the principal point no more than 0.001 focal lengths.
   */
  public ResultChecker withTolerance(double pixels) { return with("tolerance", Documents.finite(pixels)); }

  /** Where the circles of the sheet are, three coordinates of each in metres; else the verdict's, or flat. */
  public ResultChecker withSheet(double[][] points) {
    JsonArray list = new JsonArray();
    for (double[] point : points) {
      list.add(Documents.finite(point, 3));
    }
    return with("sheetPoints", list);
  }

  /**
   * What the camera's new images say of the result. Takes about a tenth of a second.
   *
   * @param observations of one image or more, in pixels of the result's image size, weights 0 or 1
   * @throws IllegalArgumentException for what is no result of one camera, for no observations or such that do
   *     not match the grid, and when in none of them the grid is where the camera could see it
   */
  public ResultCheck check(List<Observation> observations) {
    JsonArray images = new JsonArray();
    for (Observation observation : observations) {
      images.add(observation.toJson());
    }
    JsonObject asked = request.deepCopy();
    asked.add("images", images);
    return new ResultCheck(Results.nCheck(result, verdict, asked.toString()));
  }

  /** The same. */
  public ResultCheck check(Observation... observations) { return check(List.of(observations)); }
}
