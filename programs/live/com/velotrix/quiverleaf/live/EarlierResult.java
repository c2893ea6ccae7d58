package com.velotrix.quiverleaf.live;

import com.velotrix.quiverleaf.sdk.ResultComparison;
import com.velotrix.quiverleaf.sdk.Session;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.attribute.FileTime;
import java.util.Locale;
import java.util.Optional;

/** The result that a session had before a computation, and how far the next one is from it. */
final class EarlierResult {
  private static final String[] ENDINGS = {".json", "_fisheye.json"};

  private final String text;

  private EarlierResult(String text) { this.text = text; }

  /** The one that was written last under that name; empty: there is none that can be read. */
  static Optional<EarlierResult> in(Session session, String name) {
    Path latest = null;
    FileTime when = null;
    for (String ending : ENDINGS) {
      Path file = session.pathFor(name + ending);
      try {
        FileTime written = Files.getLastModifiedTime(file);
        if (when == null || written.compareTo(when) > 0) {
          latest = file;
          when = written;
        }
      } catch (IOException e) {
        // There is none of that kind.
      }
    }
    try {
      return latest == null ? Optional.empty() : Optional.of(new EarlierResult(Files.readString(latest)));
    } catch (IOException e) {
      return Optional.empty(); // it is of no use, and about to be replaced
    }
  }

  /** How far projections by this result are from those by that one, after the best rotation; a sentence. */
  String changeTo(String result) {
    try {
      ResultComparison change = ResultComparison.of(text, result);
      return String.format(Locale.ROOT, "It is %.3f px from the earlier result on average, %.3f px at most.",
          change.mean(), change.largest());
    } catch (IllegalArgumentException e) {
      return "It cannot be compared with the earlier result: " + e.getMessage();
    }
  }
}
