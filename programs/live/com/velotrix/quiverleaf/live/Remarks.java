package com.velotrix.quiverleaf.live;

import com.velotrix.quiverleaf.sdk.Verdict;
import java.util.Locale;

/** What is said of a result, in sentences. */
final class Remarks {
  private Remarks() {}

  static String of(Outcome outcome) {
    Verdict verdict = outcome.verdict;
    StringBuilder text = new StringBuilder();
    for (Verdict.Remark remark : verdict.remarks()) {
      text.append(remark.reason()).append('\n').append("\u2192 ").append(remark.advice()).append("\n\n");
    }
    text.append(String.format(Locale.ROOT,
        "%s model of %d snapshots, RMS %.3f px.%nProjections are accurate to %s px where the grid was seen, %s px "
            + "over the whole image; it was seen in %.0f %% of it.%n",
        capital(outcome.model.name()), verdict.views(), outcome.rms, pixels(verdict.deviationInData()),
        pixels(verdict.deviationInImage()), 100.0 * verdict.coverage()));
    for (Verdict.LeftOut left : verdict.leftOut()) {
      text.append(left.point() < 0
              ? String.format(Locale.ROOT, "%nLeft out: snapshot %d, %s (%.2f px)", left.view() + 1,
                  left.reason(), left.residual())
              : String.format(Locale.ROOT, "%nIgnored: circle %d of snapshot %d, %.2f px off", left.point(),
                  left.view() + 1, left.residual()));
    }
    return text.toString();
  }

  private static String capital(String name) {
    return name.charAt(0) + name.substring(1).toLowerCase(Locale.ROOT);
  }

  private static String pixels(double number) {
    return Double.isInfinite(number) ? "unknown"
                                     : String.format(Locale.ROOT, number < 0.1 ? "%.4f" : "%.2f", number);
  }
}
