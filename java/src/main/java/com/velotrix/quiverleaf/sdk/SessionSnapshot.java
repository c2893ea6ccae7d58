package com.velotrix.quiverleaf.sdk;

import com.google.gson.JsonArray;
import com.google.gson.JsonNull;
import com.google.gson.JsonObject;
import java.awt.image.BufferedImage;
import java.nio.file.Path;
import java.time.Instant;
import java.util.Objects;

/** A snapshot to be added to a session. Methods change it and return it. */
public final class SessionSnapshot {
  private static final int SHAPE = 3;

  private final JsonObject document = new JsonObject();
  private final byte[][] pixels;
  private final int[] shapes;

  /**
   * What each camera observed; at least one saw the grid. It is of now, without images and without a name.
   */
  public SessionSnapshot(Observation... cameras) {
    JsonArray list = new JsonArray();
    for (Observation camera : cameras) {
      list.add(camera.toJson());
    }
    document.add("cameras", list);
    document.addProperty("name", "");
    document.addProperty("takenAt", "");
    document.add("score", JsonNull.INSTANCE);
    pixels = new byte[cameras.length][];
    shapes = new int[SHAPE * cameras.length];
  }

  /** What the source calls it, such as a file name. */
  public SessionSnapshot name(String name) {
    document.addProperty("name", Objects.requireNonNull(name, "name"));
    return this;
  }

  /** When it was taken. */
  public SessionSnapshot takenAt(Instant moment) {
    document.addProperty("takenAt", moment.toString());
    return this;
  }

  /** How well it served, where that was measured. */
  public SessionSnapshot score(double score) {
    if (!Double.isFinite(score)) {
      throw new IllegalArgumentException("a score of " + score + " cannot be");
    }
    document.addProperty("score", score);
    return this;
  }

  /** The image of a camera (from 0), of the session's image size; stored without loss, with 8 bits. */
  public SessionSnapshot image(int camera, BufferedImage image) {
    pixels[camera] = Pixels.of(image);
    shapes[SHAPE * camera] = image.getWidth();
    shapes[SHAPE * camera + 1] = image.getHeight();
    shapes[SHAPE * camera + 2] = Pixels.channelsOf(image);
    return this;
  }

  /** The image of a camera as a file, which is copied, or whose path and content are only noted. */
  public SessionSnapshot imageFile(int camera, Path file, boolean copy) {
    JsonObject object = document.getAsJsonArray("cameras").get(camera).getAsJsonObject();
    object.addProperty("path", file.toString());
    object.addProperty("copy", copy);
    return this;
  }

  String json() { return document.toString(); }

  byte[][] pixels() { return pixels; }

  int[] shapes() { return shapes; }
}
