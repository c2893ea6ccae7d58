package com.velotrix.quiverleaf.sdk;

import com.google.gson.JsonArray;
import com.google.gson.JsonObject;
import java.util.List;
import java.util.Locale;

/** What a session goes by; fixed when it is created. Each with method gives a copy that differs in that. */
public final class SessionSettings {
  private final JsonObject document;

  SessionSettings(JsonObject document) { this.document = document; }

  /**
   * Of one camera, with the shipped sheet of 4 x 11 circles; lens model, search and solver are those that a
   * {@link Calibrator} begins with, images are kept.
   *
   * @param unit the distance between adjacent rows in metres
   * @param width of the images in pixels: the size that centres are in
   */
  public static SessionSettings of(double unit, int width, int height) {
    JsonObject document = new JsonObject();
    document.add("cameras", new JsonArray());
    SessionSettings settings = new SessionSettings(document).withCamera(width, height).withGrid(4, 11);
    return settings.with("unit", unit)
        .withLensModel("auto")
        .withFinder(Finder.ROBUST)
        .withSolver(Solver.SPARSE)
        .withSheetShape(SheetShape.AUTO)
        .withFineCentres(true)
        .withDiscRadius(0.0)
        .withSource("")
        .withImages(true);
  }

  /** With a further camera, whose images have that size. */
  public SessionSettings withCamera(int width, int height) {
    JsonObject size = new JsonObject();
    size.addProperty("width", width);
    size.addProperty("height", height);
    JsonObject camera = new JsonObject();
    camera.add("imageSize", size);
    JsonObject copy = document.deepCopy();
    copy.getAsJsonArray("cameras").add(camera);
    return new SessionSettings(copy);
  }

  /** The grid's circles per row, and rows. */
  public SessionSettings withGrid(int columns, int rows) {
    JsonObject grid = new JsonObject();
    grid.addProperty("columns", columns);
    grid.addProperty("rows", rows);
    JsonObject copy = document.deepCopy();
    copy.add("grid", grid);
    return new SessionSettings(copy);
  }

  /** "classic", "rational", "full", "fisheye" or "auto". */
  public SessionSettings withLensModel(String model) { return with("lensModel", model); }

  /** How images are searched. */
  public SessionSettings withFinder(Finder finder) { return with("finder", nameOf(finder)); }

  /** What computes. */
  public SessionSettings withSolver(Solver solver) { return with("solver", nameOf(solver)); }

  /** What the sheet may be taken for. */
  public SessionSettings withSheetShape(SheetShape shape) { return with("sheetShape", nameOf(shape)); }

  /** The radius of the discs in metres; 0: not known. */
  public SessionSettings withDiscRadius(double metres) { return with("discRadius", metres); }

  /** Whether centres are measured anew. */
  public SessionSettings withFineCentres(boolean fine) { return with("centres", fine ? "fine" : "plain"); }

  /** Where images come from, in any words. */
  public SessionSettings withSource(String source) { return with("source", source); }

  /** Whether images are kept; else only what was observed, whatever images are given. */
  public SessionSettings withImages(boolean images) {
    JsonObject copy = document.deepCopy();
    copy.addProperty("images", images);
    return new SessionSettings(copy);
  }

  /** The grid's circles per row. */
  public int columns() { return Documents.integer(document.getAsJsonObject("grid"), "columns"); }

  /** The grid's rows. */
  public int rows() { return Documents.integer(document.getAsJsonObject("grid"), "rows"); }

  /** The distance between adjacent rows in metres. */
  public double unit() { return Documents.real(document, "unit"); }

  /** The number of cameras. */
  public int cameras() { return sizes().size(); }

  /** The width of a camera's images in pixels. */
  public int imageWidth(int camera) {
    return Documents.integer(sizes().get(camera).getAsJsonObject("imageSize"), "width");
  }

  /** Their height. */
  public int imageHeight(int camera) {
    return Documents.integer(sizes().get(camera).getAsJsonObject("imageSize"), "height");
  }

  /** As it was given. */
  public String lensModel() { return Documents.text(document, "lensModel"); }

  /** Where images come from, as it was given. */
  public String source() { return Documents.text(document, "source"); }

  /** Whether images are kept. */
  public boolean keepsImages() { return Documents.flag(document, "images"); }

  String json() { return document.toString(); }

  private List<JsonObject> sizes() { return Documents.objects(document, "cameras"); }

  private static String nameOf(Enum<?> value) { return value.name().toLowerCase(Locale.ROOT); }

  private SessionSettings with(String key, String value) {
    JsonObject copy = document.deepCopy();
    copy.addProperty(key, java.util.Objects.requireNonNull(value, key));
    return new SessionSettings(copy);
  }

  private SessionSettings with(String key, double value) {
    if (!Double.isFinite(value)) {
      throw new IllegalArgumentException(key + " of " + value + " cannot be");
    }
    JsonObject copy = document.deepCopy();
    copy.addProperty(key, value);
    return new SessionSettings(copy);
  }
}
