package com.velotrix.quiverleaf.sdk;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNotEquals;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.awt.image.BufferedImage;
import org.junit.jupiter.api.DisplayNameGeneration;
import org.junit.jupiter.api.DisplayNameGenerator;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.function.Executable;

/** How far results are said to be apart. */
@DisplayNameGeneration(DisplayNameGenerator.ReplaceUnderscores.class)
class ResultComparisonTest {
  private static final String LONGER = Lenses.plain(Lenses.FOCAL + 3.0, Lenses.CENTRE_X, 640);

  private static void expectRefusal(String sentence, Executable call) {
    assertEquals(sentence, assertThrows(IllegalArgumentException.class, call).getMessage());
  }

  @Test
  void a_result_is_no_way_apart_from_itself() {
    ResultComparison comparison = ResultComparison.of(Lenses.usual(), Lenses.usual());
    assertEquals(0.0, comparison.largest(), 1e-6);
    assertEquals(0.0, comparison.angle(), 1e-6);
    assertEquals(1200, comparison.compared());
    assertEquals(0.0, comparison.incomparable());
  }

  @Test
  void a_longer_focal_length_moves_each_cell_outwards_by_its_share() {
    ResultComparison comparison = ResultComparison.of(Lenses.usual(), LONGER);
    assertEquals(30, comparison.rows());
    assertEquals(40, comparison.columns());
    assertEquals(16.0, comparison.stepX());
    assertEquals(16.0, comparison.stepY());
    double sum = 0.0;
    double squares = 0.0;
    double[][] lengths = comparison.lengths();
    for (int row = 0; row < 30; ++row) {
      for (int column = 0; column < 40; ++column) {
        double x = (16.0 * column + 7.5 - Lenses.CENTRE_X) * 3.0 / Lenses.FOCAL;
        double y = (16.0 * row + 7.5 - Lenses.CENTRE_Y) * 3.0 / Lenses.FOCAL;
        assertArrayEquals(new double[] {x, y}, comparison.difference(row, column), 1e-6);
        assertEquals(Math.hypot(x, y), lengths[row][column], 1e-6);
        sum += Math.hypot(x, y);
        squares += x * x + y * y;
      }
    }
    assertEquals(sum / 1200.0, comparison.mean(), 1e-6);
    assertEquals(Math.sqrt(squares / 1200.0), comparison.rms(), 1e-6);
    assertEquals(Math.hypot(312.0, 232.0) * 3.0 / Lenses.FOCAL, comparison.largest(), 1e-6);
    assertEquals(312.0, Math.abs(comparison.where()[0] - Lenses.CENTRE_X), 1e-9);
    assertEquals(232.0, Math.abs(comparison.where()[1] - Lenses.CENTRE_Y), 1e-9);
    assertEquals("1.176 px on average, 2.121 px at most, after a rotation by 0.000 degrees",
        comparison.toString().replace("-0.000", "0.000"));
  }

  @Test
  void a_moved_principal_point_is_mostly_a_rotation() {
    ResultComparison comparison =
        ResultComparison.of(Lenses.usual(), Lenses.plain(Lenses.FOCAL, Lenses.CENTRE_X + 5.0, 640));
    double angle = Math.atan(5.0 / Lenses.FOCAL);
    assertEquals(Math.toDegrees(angle), comparison.angle(), 0.15 * Math.toDegrees(angle));
    assertEquals(comparison.angle(), Math.toDegrees(Math.acos(comparison.rotation().get(0, 0))), 1e-6);
    assertTrue(comparison.mean() < 1.0, comparison.toString());
    assertTrue(comparison.largest() < 2.5, comparison.toString());
  }

  @Test
  void of_an_area_are_numbers_and_of_the_whole_image_is_the_map() {
    double[][] area = {{220.0, 140.0}, {420.0, 140.0}, {420.0, 340.0}, {220.0, 340.0}};
    ResultComparison comparison = ResultComparison.of(Lenses.usual(), LONGER, 8.0, area);
    assertEquals(80, comparison.columns());
    assertEquals(60, comparison.rows());
    assertEquals(25 * 25, comparison.compared());
    assertEquals(Math.hypot(95.5, 95.5) * 3.0 / Lenses.FOCAL, comparison.largest(), 0.05);
    assertTrue(Math.abs(comparison.where()[0] - 320.0) <= 100.0);
    assertTrue(comparison.lengths()[0][0] > 2.0);
  }

  @Test
  void a_fisheye_is_compared_with_a_plain_lens() {
    assertTrue(ResultComparison.of(Lenses.usual(), Lenses.fisheye()).largest() < 0.05);
    assertTrue(ResultComparison.of(Lenses.fisheye(), LONGER).largest() > 2.0);
  }

  @Test
  void what_a_lens_does_not_image_has_no_difference() {
    // Strong barrel distortion folds: beyond the fold there are no rays.
    String folded = Lenses.usual().replace("[0,0,0,0,0]", "[-1.2,0,0,0,0]");
    ResultComparison comparison = ResultComparison.of(folded, folded);
    assertTrue(comparison.incomparable() > 0.1, comparison.toString());
    assertTrue(Double.isNaN(comparison.difference(0, 0)[0]));
    assertTrue(Double.isNaN(comparison.lengths()[29][39]));
    assertEquals(0.0, comparison.lengths()[15][20], 1e-6);
    int grey = comparison.picture().getRGB(5, 5) & 0xFFFFFF;
    assertEquals(0x808080, grey);
  }

  @Test
  void differences_are_drawn_in_colours_of_the_size_of_the_images() {
    BufferedImage picture = ResultComparison.of(Lenses.usual(), LONGER).picture();
    assertEquals(640, picture.getWidth());
    assertEquals(480, picture.getHeight());
    assertNotEquals(picture.getRGB(320, 240), picture.getRGB(639, 0));
    assertEquals(picture.getRGB(0, 0), picture.getRGB(639, 0));
  }

  @Test
  void what_cannot_be_compared_is_refused_with_a_sentence() {
    String usual = Lenses.usual();
    expectRefusal("The second text is the result of a pair; that of one of its cameras is needed.",
        () -> ResultComparison.of(usual, usual.replace("\"sensor\":0", "\"sensor\":1")));
    expectRefusal("The first text is not a result file.", () -> ResultComparison.of("{", usual));
    expectRefusal("The results are of images of different sizes, 640 x 480 and 800 x 480: "
            + "only those of one size compare.",
        () -> ResultComparison.of(usual, Lenses.plain(500.0, 400.0, 800)));
    expectRefusal("The step of a comparison is negative or not finite.",
        () -> ResultComparison.of(usual, usual, -1.0, new double[0][]));
    expectRefusal(
        "NaN is no finite number", () -> ResultComparison.of(usual, usual, Double.NaN, new double[0][]));
    expectRefusal(
        "1 numbers where 2 are needed", () -> ResultComparison.of(usual, usual, 0.0, new double[][] {{1.0}}));
    assertThrows(NullPointerException.class, () -> ResultComparison.of(usual, null));
    ResultComparison comparison = ResultComparison.of(usual, usual);
    assertThrows(IndexOutOfBoundsException.class, () -> comparison.difference(0, 40));
    assertThrows(IndexOutOfBoundsException.class, () -> comparison.difference(-1, 0));
  }
}
