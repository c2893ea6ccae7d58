package com.velotrix.quiverleaf.sdk;

import com.google.gson.JsonObject;
import java.util.List;
import java.util.Locale;

/** Which lens model the snapshots ask for. */
public final class ModelChoice {
  private final LensModel model;
  private final List<String> reasons;

  ModelChoice(JsonObject document) {
    model = LensModel.valueOf(Documents.text(document, "model").toUpperCase(Locale.ROOT));
    reasons = List.copyOf(Documents.texts(document, "reasons"));
  }

  /** The model. */
  public LensModel model() { return model; }

  /** Of each of the larger models, why it is chosen or not, as sentences. */
  public List<String> reasons() { return reasons; }

  @Override
  public String toString() {
    return model + ": " + String.join(" ", reasons);
  }
}
