package com.velotrix.quiverleaf.live;

import com.velotrix.quiverleaf.sdk.Calibrator;
import com.velotrix.quiverleaf.sdk.LensModel;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;

/** Writes what came out of a computation. */
final class ResultFiles {
  private ResultFiles() {}

  /** The result NAME.json, or of a fisheye NAME_fisheye.json, and its verdict; the files. */
  static List<Path> write(Calibrator calibrator, Outcome outcome, Path name) throws IOException {
    Path result = outcome.model == LensModel.FISHEYE ? calibrator.saveFisheye(name) : calibrator.save(name);
    String path = result.toString();
    Path verdict = Path.of(path.substring(0, path.length() - ".json".length()) + "_verdict.json");
    Files.writeString(verdict, outcome.verdict.json() + "\n");
    return List.of(result, verdict);
  }
}
