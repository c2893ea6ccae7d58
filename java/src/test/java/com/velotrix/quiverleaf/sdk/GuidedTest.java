package com.velotrix.quiverleaf.sdk;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.google.gson.JsonArray;
import com.google.gson.JsonElement;
import com.google.gson.JsonObject;
import java.util.ArrayList;
import java.util.List;
import java.util.OptionalInt;
import org.junit.jupiter.api.DisplayNameGeneration;
import org.junit.jupiter.api.DisplayNameGenerator;
import org.junit.jupiter.api.Test;

/** A user who follows the assistant: the sheet moves on to whatever pose is shown, and is held there. */
@DisplayNameGeneration(DisplayNameGenerator.ReplaceUnderscores.class)
class GuidedTest {
  private static final int POSES = 12;
  private static final int FRAMES_HELD = 60;

  /** The video's frames are the ways that the sheet may take; where it is in each is told by the truth. */
  private final List<byte[]> frames = Footage.framesOf(Footage.file("poses.avi"));
  private final List<double[]> centres = centresOfFrames();

  GuidedTest() throws Exception {}

  private static List<double[]> centresOfFrames() throws Exception {
    List<double[]> all = new ArrayList<>();
    for (JsonElement frame : Footage.json(Footage.file("poses.truth.json")).getAsJsonArray("frames")) {
      JsonArray points = frame.getAsJsonObject().getAsJsonArray("centres");
      double[] numbers = new double[2 * points.size()];
      for (int i = 0; i < numbers.length; ++i) {
        numbers[i] = points.get(i / 2).getAsJsonArray().get(i % 2).getAsDouble();
      }
      all.add(numbers);
    }
    return all;
  }

  private static double distance(double[] a, JsonArray pose) {
    double sum = 0.0;
    for (int i = 0; i + 1 < a.length; i += 2) {
      sum += Math.hypot(a[i] - pose.get(i).getAsDouble(), a[i + 1] - pose.get(i + 1).getAsDouble());
    }
    return sum;
  }

  /** The frame in which the sheet is nearest to the pose. */
  private int frameOf(JsonObject model, int pose) {
    JsonArray points = model.getAsJsonObject("points" + pose).getAsJsonArray("data");
    int best = 0;
    for (int i = 1; i < frames.size(); ++i) {
      if (distance(centres.get(i), points) < distance(centres.get(best), points)) {
        best = i;
      }
    }
    return best;
  }

  @Test
  void following_the_assistant_leads_to_the_rendered_camera() throws Exception {
    assertEquals(centres.size(), frames.size());
    JsonObject model = Footage.json(Footage.poses());
    try (Calibrator calibrator = Calibrator.builder().hdist(0.2).build()) {
      calibrator.startAssistant(Footage.poses());
      assertEquals(OptionalInt.of(POSES), calibrator.assistantGoal());
      int at = 0;
      for (int pose = 0; pose < POSES; ++pose) {
        assertEquals(pose, calibrator.snapshots());
        at = reach(calibrator, pose, at, frameOf(model, pose));
      }
      CalibrationResult result = calibrator.awaitResult(Views.PATIENCE);
      assertEquals(POSES, calibrator.snapshots());
      assertEquals(14, result.distortion().columns());
      Footage.expectCamera(result, Footage.file("poses.truth.json"), 0.005);
    }
  }

  /** Moves the sheet to that frame of the video and holds it until the snapshot is taken. */
  private int reach(Calibrator calibrator, int pose, int from, int target) {
    int at = from;
    for (int held = 0; calibrator.snapshots() == pose;) {
      held = at == target ? held + 1 : 0;
      assertTrue(held < FRAMES_HELD, "no snapshot of pose " + pose);
      at += Integer.signum(target - at);
      calibrator.push(frames.get(at));
    }
    return at;
  }
}
