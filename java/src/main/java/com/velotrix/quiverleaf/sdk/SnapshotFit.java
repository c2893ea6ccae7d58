package com.velotrix.quiverleaf.sdk;

import com.google.gson.JsonObject;
import java.util.List;

/** How the result of a computation agrees with one of the snapshots that it is of. Pixels. */
public final class SnapshotFit {
  private final boolean rejected;
  private final String reason;
  private final List<JsonObject> cameras;

  SnapshotFit(String json) {
    JsonObject document = Documents.parse(json);
    rejected = Documents.flag(document, "rejected");
    reason = Documents.text(document, "reason");
    cameras = Documents.objects(document, "cameras");
  }

  /** How many cameras it is of; 0 when there is no result, or it is not of this snapshot. */
  public int cameras() { return cameras.size(); }

  /** Whether the computation used nothing of the snapshot. */
  public boolean isRejected() { return rejected; }

  /** Why, as a clause; empty when it was used. */
  public String reason() { return reason; }

  /** Root of the mean squared distance of the centres from where the result has them; -1 without a pose. */
  public double rms(int camera) { return Documents.real(cameras.get(camera), "rms"); }

  /**
   * Of each circle the x and y by which its centre was observed beside where the result has it; NaN where it
   * was not seen.
   */
  public double[][] residuals(int camera) { return Documents.points(cameras.get(camera), "residuals"); }

  /** The circles that were seen and not used, ascending. */
  public int[] outliers(int camera) { return Documents.integers(cameras.get(camera), "outliers"); }
}
