package com.velotrix.quiverleaf.sdk;

import com.google.gson.JsonElement;
import com.google.gson.JsonObject;
import java.nio.file.Path;
import java.time.Instant;
import java.util.ArrayList;
import java.util.List;
import java.util.Locale;
import java.util.Optional;
import java.util.OptionalDouble;

/** A snapshot of a session, as it was when it was asked for. */
public final class StoredSnapshot {
  /** What was decided of a snapshot. */
  public enum Decision {
    USED,
    /** Kept, not computed with. */
    EXCLUDED,
    /** As if it had never been taken, until it is brought back or purged. */
    REMOVED
  }

  /** An image that is kept. */
  public static final class Image {
    /** How it is kept. */
    public enum Kind {
      /** The session's own, without loss. */
      PNG,
      /** The session's own copy of a file. */
      COPY,
      /** A file elsewhere. */
      REFERENCE
    }

    private final JsonObject image;

    private Image(JsonObject image) { this.image = image; }

    /** How it is kept. */
    public Kind kind() { return Kind.valueOf(Documents.text(image, "kind").toUpperCase(Locale.ROOT)); }

    /** Where it is. */
    public Path path() { return Path.of(Documents.text(image, "path")); }

    /** The size of the file. */
    public long bytes() { return Documents.whole(image, "bytes"); }

    /** Why a file elsewhere can no longer serve, as a sentence; empty: it can. */
    public String fault() { return Documents.text(image, "fault"); }
  }

  private final JsonObject document;

  StoredSnapshot(JsonObject document) { this.document = document; }

  /** From 1 in the order of adding; never used again. */
  public int number() { return Documents.integer(document, "number"); }

  /** What the source calls it. */
  public String name() { return Documents.text(document, "name"); }

  /** When it was taken; empty of a damaged one. */
  public Optional<Instant> takenAt() {
    String moment = Documents.text(document, "takenAt");
    return moment.isEmpty() ? Optional.empty() : Optional.of(Instant.parse(moment));
  }

  /** How well it served, where that was measured. */
  public OptionalDouble score() {
    return document.get("score").isJsonNull() ? OptionalDouble.empty()
                                              : OptionalDouble.of(Documents.real(document, "score"));
  }

  /** What was decided of it. */
  public Decision decision() {
    return Decision.valueOf(Documents.text(document, "decision").toUpperCase(Locale.ROOT));
  }

  /** What is damaged, as a sentence; empty: it is whole. */
  public String fault() { return Documents.text(document, "fault"); }

  /** Whether computations take it: it is whole, and neither excluded nor removed. */
  public boolean isUsed() { return fault().isEmpty() && decision() == Decision.USED; }

  /** What each camera observed. */
  public List<Observation> observations() {
    List<Observation> observations = new ArrayList<>();
    for (JsonObject camera : cameras()) {
      observations.add(Observation.of(camera));
    }
    return observations;
  }

  /** The image of a camera (from 0), where one is kept. */
  public Optional<Image> image(int camera) {
    JsonElement image = cameras().get(camera).get("image");
    return image.isJsonNull() ? Optional.empty() : Optional.of(new Image(image.getAsJsonObject()));
  }

  private List<JsonObject> cameras() { return Documents.objects(document, "cameras"); }

  @Override
  public String toString() {
    return number() + " " + name()
        + (isUsed() ? "" : " (" + (fault().isEmpty() ? decision() : fault()) + ")");
  }
}
