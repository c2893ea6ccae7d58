package com.velotrix.quiverleaf.sdk;

import com.google.gson.JsonObject;
import java.util.Optional;

/** A calibrator's answer to the question where it stands. */
public final class CalibratorStatus {
  private final Status status;
  private final int snapshots;
  private final String message;
  private final String result;

  private CalibratorStatus(JsonObject document) {
    status = Status.of(Documents.integer(document, "ii"));
    snapshots = Documents.integer(document, "ni");
    message = Documents.text(document, "it");
    result = document.has("cj") ? Documents.text(document, "cj") : "";
  }

  /**
   * From the JSON that a {@link JNICalibrationListener} gets.
   *
   * @throws IllegalArgumentException when it is no status
   */
  public static CalibratorStatus parse(String json) { return new CalibratorStatus(Documents.parse(json)); }

  /** Where the calibrator stands. */
  public Status status() { return status; }

  /** The number of snapshots. */
  public int snapshots() { return snapshots; }

  /** The status in a sentence. */
  public String message() { return message; }

  /** The result, once the status is COMPLETED. */
  public Optional<CalibrationResult> result() {
    return result.isEmpty() ? Optional.empty() : Optional.of(CalibrationResult.parse(result));
  }

  @Override
  public String toString() {
    return status + ", " + snapshots + " snapshots: " + message;
  }
}
