package com.velotrix.quiverleaf.sdk;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.Random;
import org.junit.jupiter.api.DisplayNameGeneration;
import org.junit.jupiter.api.DisplayNameGenerator;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.function.Executable;
import org.junit.jupiter.api.io.TempDir;

/** Whether a camera that stayed as it was passes, and one that moved fails. */
@DisplayNameGeneration(DisplayNameGenerator.ReplaceUnderscores.class)
class ResultCheckTest {
  private static final ResultChecker CHECKER = new ResultChecker(Lenses.usual(), Lenses.UNIT);

  @TempDir Path home;

  private static void expectRefusal(String sentence, Executable call) {
    assertEquals(sentence, assertThrows(IllegalArgumentException.class, call).getMessage());
  }

  @Test
  void a_camera_that_stayed_as_it_was_is_still_calibrated() {
    ResultCheck check = CHECKER.check(Lenses.views(Lenses.FOCAL));
    assertEquals(ResultCheck.Answer.CALIBRATED, check.answer(), check.toString());
    assertTrue(check.passed());
    assertTrue(check.sentence().startsWith("Still calibrated: "), check.sentence());
    assertEquals(6, check.images().size());
    for (ResultCheck.Image image : check.images()) {
      assertTrue(image.isUsed());
      assertTrue(image.rms() > 0.01 && image.rms() < 0.1, "rms " + image.rms());
      assertTrue(image.tilt() > 15.0 && image.tilt() < 60.0, "tilt " + image.tilt());
      assertTrue(image.translation()[2] > 0.2 && image.translation()[2] < 0.6);
      assertEquals(0, image.outliers());
    }
    assertEquals(0.6, check.images().get(0).rotation()[0], 0.01);
    assertTrue(check.rms() > 0.01 && check.rms() < 0.1);
    assertTrue(check.noise() <= check.rms() + 1e-9);
    assertEquals(0.05, check.tolerance());
    assertTrue(check.evidence() < 1.0);
    assertTrue(check.shift() < check.tolerance() + 3.0 * check.shiftDeviation());
    assertTrue(check.unseen() > 0.0 && check.coverage() > 0.1 && check.coverage() < 1.0);
    assertEquals(2, check.principalPointDeviation().length);
  }

  @Test
  void a_camera_whose_focal_length_grew_is_no_longer_calibrated() {
    ResultCheck check = CHECKER.check(Lenses.views(1.01 * Lenses.FOCAL));
    assertEquals(ResultCheck.Answer.NOT_CALIBRATED, check.answer(), check.toString());
    assertFalse(check.passed());
    assertTrue(check.sentence().startsWith("No longer calibrated: "), check.sentence());
    assertFalse(check.advice().isEmpty());
    assertEquals(0.01, check.focalChange(), 4.0 * check.focalDeviation() + 1e-4);
    assertTrue(check.shift() > check.tolerance() + 2.0 * check.shiftDeviation());
    assertTrue(check.evidence() > 1.0);
    for (double moved : check.principalPointChange()) {
      assertEquals(0.0, moved, 1.0);
    }
    // What is allowed is no fault.
    ResultCheck tolerant = CHECKER.withTolerance(50.0).check(Lenses.views(1.01 * Lenses.FOCAL));
    assertEquals(ResultCheck.Answer.CALIBRATED, tolerant.answer(), tolerant.toString());
    assertEquals(50.0, tolerant.tolerance());
  }

  @Test
  void a_single_frontal_image_cannot_tell_and_asks_for_others() {
    ResultCheck check =
        CHECKER.check(Lenses.view(Lenses.FOCAL, Lenses.sheet(), 0.0, 0.0, 0.0, 0.0, 0.6, new Random(1)));
    assertEquals(ResultCheck.Answer.CANNOT_TELL, check.answer(), check.toString());
    assertTrue(check.sentence().startsWith("Cannot tell: "), check.sentence());
    assertFalse(check.advice().isEmpty());
  }

  @Test
  void circles_that_disagree_or_are_not_seen_do_not_count() {
    List<Observation> views = Lenses.views(Lenses.FOCAL);
    double[][] wrong = views.get(2).centres();
    wrong[17][0] += 6.0;
    views.set(2, Observation.of(wrong));
    double[][] hidden = views.get(3).centres();
    double[] weights = new double[44];
    for (int i = 0; i < 44; ++i) {
      weights[i] = i < 8 ? 0.0 : 1.0;
      hidden[i] = i < 8 ? new double[] {0.0, 0.0} : hidden[i];
    }
    views.set(3, Observation.of(hidden).withWeights(weights));
    ResultCheck check = CHECKER.check(views);
    assertTrue(check.images().get(2).outliers() >= 1);
    assertEquals(17, check.images().get(2).largestPoint());
    assertEquals(6.0, check.images().get(2).largest(), 0.5);
    assertTrue(check.images().get(3).largest() < 0.3);
    assertTrue(check.passed(), check.toString());
  }

  @Test
  void an_image_that_no_such_camera_can_have_taken_is_left_out() {
    List<Observation> views = Lenses.views(Lenses.FOCAL);
    double[][] line = new double[44][];
    for (int i = 0; i < line.length; ++i) {
      line[i] = new double[] {100.0 + 10.0 * i, 100.0};
    }
    views.set(1, Observation.of(line));
    ResultCheck check = CHECKER.check(views);
    assertFalse(check.images().get(1).isUsed());
    assertEquals(-1.0, check.images().get(1).rms());
    assertEquals(-1, check.images().get(1).largestPoint());
    assertTrue(check.passed(), check.toString());
    expectRefusal("In none of the images is the grid where this camera could see it.",
        () -> CHECKER.check(Observation.of(line)));
  }

  @Test
  void the_result_of_a_fisheye_is_checked_too() {
    ResultChecker checker = new ResultChecker(Lenses.fisheye(), Lenses.UNIT);
    assertTrue(checker.check(Lenses.views(Lenses.FOCAL)).passed());
    assertFalse(checker.check(Lenses.views(1.02 * Lenses.FOCAL)).passed());
  }

  @Test
  void a_result_is_checked_by_what_a_calibrator_sees_and_compared_with_a_later_one() throws Exception {
    Path earlier = home.resolve("camera.json");
    Path verdict = home.resolve("camera_verdict.json");
    try (Calibrator calibrator = Views.calibrated()) {
      calibrator.save(home.resolve("camera"));
      Files.writeString(verdict, calibrator.verdict().json());
    }
    try (Calibrator calibrator = Calibrator.builder().build()) {
      CalibrationResult result =
          Views.calibrate(calibrator, Footage.pictures("views"), LensModel.RATIONAL, Views::pushJpeg);
      // A few snapshots of the sheet, tilted to all sides, tell whether the earlier result still holds.
      List<Observation> seen = new ArrayList<>();
      for (int i = 0; i < calibrator.snapshots(); ++i) {
        seen.addAll(calibrator.observations(i));
      }
      ResultCheck check = new ResultChecker(Files.readString(earlier), 0.02)
                              .withVerdict(Verdict.parse(Files.readString(verdict)))
                              .check(seen);
      System.out.println(check.sentence() + " " + check.advice()); // "Still calibrated: ..."

      ResultComparison change = ResultComparison.of(Files.readString(earlier), result.json());
      System.out.println(change.mean() + " px on average, " + change.largest() + " px at most");
      assertTrue(check.passed(), check.toString());
      assertTrue(check.rms() < 0.1);
      assertTrue(change.mean() > 0.0 && change.mean() < 0.5, change.toString());
      // One that was worth nothing cannot be checked.
      String worthless =
          Files.readString(verdict).replaceFirst("\"grade\":\"[a-z ]*\"", "\"grade\":\"worthless\"");
      ResultCheck none = new ResultChecker(Files.readString(earlier), 0.02)
                             .withVerdict(Verdict.parse(worthless))
                             .check(seen);
      assertEquals(ResultCheck.Answer.CANNOT_TELL, none.answer());
    }
  }

  @Test
  void what_makes_no_sense_is_refused_with_a_sentence() {
    List<Observation> views = Lenses.views(Lenses.FOCAL);
    expectRefusal("There are no images to check the result by.", () -> CHECKER.check());
    expectRefusal("image 0 has 44 points, the grid 21.", () -> CHECKER.withGrid(3, 7).check(views));
    expectRefusal(
        "image 1 has 0 points, the grid 44.", () -> CHECKER.check(views.get(0), Observation.none()));
    expectRefusal("The distance of the grid's rows is not positive.",
        () -> new ResultChecker(Lenses.usual(), 0.0).check(views));
    expectRefusal("The tolerance is negative.", () -> CHECKER.withTolerance(-1.0).check(views));
    expectRefusal("The discs' radius is negative.", () -> CHECKER.withDiscRadius(-1.0).check(views));
    expectRefusal("The known shape of the sheet is that of another grid.",
        () -> CHECKER.withSheet(new double[][] {{0.0, 0.0, 0.0}}).check(views));
    expectRefusal("Infinity is no finite number", () -> CHECKER.withTolerance(Double.POSITIVE_INFINITY));
    expectRefusal("The text of the result is not a result file.",
        () -> new ResultChecker("nonsense", Lenses.UNIT).check(views));
    assertThrows(NullPointerException.class, () -> new ResultChecker(null, Lenses.UNIT));
    // It is as it was.
    assertTrue(CHECKER.check(views).passed());
  }

  @Test
  void a_known_shape_of_the_sheet_and_the_size_of_discs_are_taken_into_account() {
    double[][] printed = Lenses.sheet();
    for (int i = 0; i < printed.length; ++i) {
      printed[i][0] += 0.0005 * Math.sin(40.0 * i);
      printed[i][1] += 0.0005 * Math.cos(71.0 * i);
    }
    // From a single view nobody can tell of what shape the sheet is.
    Observation view = Lenses.view(Lenses.FOCAL, printed, 0.5, 0.3, 0.0, 0.0, 0.35, new Random(2));
    assertTrue(CHECKER.check(view).rms() > 0.2);
    assertTrue(CHECKER.withSheet(printed).check(view).rms() < 0.06);
    // Centres of large discs are not where their outlines' are.
    List<Observation> views = Lenses.views(Lenses.FOCAL);
    ResultCheck large = CHECKER.withDiscRadius(0.03).check(views);
    assertEquals(ResultCheck.Answer.NOT_CALIBRATED, large.answer());
    assertTrue(large.rms() > 1.2 * CHECKER.check(views).rms());
  }
}
