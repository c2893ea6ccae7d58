package com.velotrix.quiverleaf.sdk;

import com.google.gson.JsonObject;
import java.util.Locale;

/** What was done with a session's snapshots at once, and can be undone at once. */
public final class SessionStep {
  /** What that was. */
  public enum Kind { ADD, EXCLUDE, INCLUDE, REMOVE, BRING_BACK }

  private final Kind kind;
  private final int[] numbers;

  SessionStep(JsonObject document) {
    kind = Kind.valueOf(Documents.text(document, "kind").toUpperCase(Locale.ROOT).replace(' ', '_'));
    numbers = Documents.integers(document, "numbers");
  }

  /** What was done. */
  public Kind kind() { return kind; }

  /** The numbers of the snapshots that it changed, ascending. */
  public int[] numbers() { return numbers.clone(); }
}
