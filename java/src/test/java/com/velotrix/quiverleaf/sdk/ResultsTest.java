package com.velotrix.quiverleaf.sdk;

import static org.junit.jupiter.api.Assertions.assertArrayEquals;
import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertThrows;
import static org.junit.jupiter.api.Assertions.assertTrue;

import org.junit.jupiter.api.DisplayNameGeneration;
import org.junit.jupiter.api.DisplayNameGenerator;
import org.junit.jupiter.api.Test;

/** The engine's JSON as objects. */
@DisplayNameGeneration(DisplayNameGenerator.ReplaceUnderscores.class)
class ResultsTest {
  private static final String K =
      "{\"cols\":3,\"rows\":3,\"type\":6,\"depth\":6,\"data\":[500,0,320,0,501,240,0,0,1]}";
  private static final String D =
      "{\"cols\":5,\"rows\":1,\"type\":6,\"depth\":6,\"data\":[-0.1,0.2,0,0,1e-3]}";
  private static final String COMMON =
      "\"error\":0.25,\"imgWidth\":640,\"imgHeight\":480,\"cameraMatrix\":" + K + ",\"distCoefs\":" + D;
  static final String MONOCULAR = "{\"sensor\":0," + COMMON + "}";
  private static final String PAIR = "{\"sensor\":1," + COMMON + ",\"cameraMatrix2\":" + K
      + ",\"distCoefs2\":" + D
      + ",\"R\":{\"cols\":3,\"rows\":3,\"data\":[1,0,0,0,1,0,0,0,1]},\"T\":{\"cols\":1,\"rows\":3,\"data\":[-0.3,0,0.4]}}";

  @Test
  void a_result_of_one_camera_gives_its_numbers() {
    CalibrationResult result = CalibrationResult.parse(MONOCULAR);
    assertEquals(Kind.MONOCULAR, result.kind());
    assertEquals(0.25, result.rms());
    assertEquals(640, result.imageWidth());
    assertEquals(480, result.imageHeight());
    assertEquals(501.0, result.cameraMatrix().get(1, 1));
    assertEquals(1e-3, result.distortion().get(0, 4));
    assertEquals(MONOCULAR, result.json());
    assertThrows(IllegalStateException.class, result::rotation);
    assertThrows(IllegalStateException.class, result::baseline);
  }

  @Test
  void a_result_of_a_pair_gives_how_its_cameras_stand() {
    CalibrationResult result = CalibrationResult.parse(PAIR);
    assertEquals(Kind.STEREO, result.kind());
    assertEquals(0.5, result.baseline(), 1e-12);
    assertEquals(320.0, result.rightCameraMatrix().get(0, 2));
    assertEquals(5, result.rightDistortion().columns());
    assertEquals(new Matrix(3, 3, 0, -0.4, 0, 0.4, 0, 0.3, 0, -0.3, 0).toString(),
        result.essentialMatrix().toString());
  }

  @Test
  void what_is_no_result_is_refused_in_words() {
    for (String text : new String[] {"", "{", "[]", "7", "null", "{}", "nonsense", "{\"sensor\":\"0\"}",
             MONOCULAR.replace("\"distCoefs\"", "\"other\""), MONOCULAR.replace("\"rows\":1", "\"rows\":2"),
             MONOCULAR.replace("[-0.1,", "[\"x\","), MONOCULAR.replace("[-0.1,0.2,0,0,1e-3]", "7"),
             PAIR.replace("\"R\"", "\"Q\"")}) {
      String words =
          assertThrows(IllegalArgumentException.class, () -> CalibrationResult.parse(text)).getMessage();
      assertFalse(words.isEmpty(), text);
    }
  }

  @Test
  void a_status_is_read_with_its_result() {
    String json =
        "{\"op\":\"cs\",\"c\":\"success\",\"ii\":300,\"ni\":7,\"it\":\"caf\u00e9 \ud83d\ude00\",\"cj\":"
        + new com.google.gson.JsonPrimitive(MONOCULAR) + "}";
    CalibratorStatus status = CalibratorStatus.parse(json);
    assertEquals(Status.COMPLETED, status.status());
    assertEquals(7, status.snapshots());
    assertEquals("caf\u00e9 \ud83d\ude00", status.message());
    assertEquals(MONOCULAR, status.result().get().json());
    assertThrows(IllegalArgumentException.class, () -> CalibratorStatus.parse(json.replace("300", "301")));
    assertThrows(IllegalArgumentException.class, () -> CalibratorStatus.parse("{\"ii\":100}"));
  }

  private static final String VERDICT =
      "{\"coverage\":0.5,\"deviationInData\":0.25,\"deviationInImage\":null,\"focalDeviation\":0.001,"
      + "\"focalJackknife\":0.002,\"grade\":\"usable with care\",\"jackknifeInData\":0.5,"
      + "\"leftOut\":[{\"point\":-1,\"reason\":\"wrong order\",\"residual\":12.5,\"view\":3}],"
      + "\"remarks\":[{\"advice\":\"Come closer.\",\"reason\":\"Far.\"}],"
      + "\"sheetBend\":0.0005,\"sheetStretch\":-0.01,\"systematicInData\":0.75,\"views\":7,"
      + "\"poses\":6,\"printError\":0.0001,\"movedWhileRead\":0.002,\"focalChange\":-0.03,"
      + "\"principalPointChange\":[1.5,-2.5],\"changedAfter\":4,\"principalPointDeviation\":0.125,"
      + "\"imageWithoutRay\":0.25}";

  @Test
  void a_verdict_gives_its_grade_remarks_and_numbers() {
    Verdict verdict = Verdict.parse(VERDICT);
    assertEquals(Verdict.Grade.WITH_CARE, verdict.grade());
    assertEquals(7, verdict.views());
    assertEquals(6, verdict.poses());
    assertEquals(0.0001, verdict.printError());
    assertEquals(0.002, verdict.movedWhileRead());
    assertEquals(-0.03, verdict.focalChange());
    assertArrayEquals(new double[] {1.5, -2.5}, verdict.principalPointChange());
    assertEquals(4, verdict.changedAfter());
    assertEquals(0.125, verdict.principalPointDeviation());
    assertEquals(0.25, verdict.imageWithoutRay());
    assertEquals(0.001, verdict.focalDeviation());
    assertEquals(0.002, verdict.focalJackknife());
    assertEquals(0.25, verdict.deviationInData());
    assertEquals(0.5, verdict.jackknifeInData());
    assertEquals(0.75, verdict.systematicInData());
    assertEquals(0.0005, verdict.sheetBend());
    assertEquals(-0.01, verdict.sheetStretch());
    assertEquals(Double.POSITIVE_INFINITY, verdict.deviationInImage());
    assertEquals(0.5, verdict.coverage());
    assertEquals(1, verdict.remarks().size());
    assertEquals("Far.", verdict.remarks().get(0).reason());
    assertEquals("Come closer.", verdict.remarks().get(0).advice());
    assertEquals(3, verdict.leftOut().get(0).view());
    assertEquals(-1, verdict.leftOut().get(0).point());
    assertEquals(12.5, verdict.leftOut().get(0).residual());
    assertEquals("wrong order", verdict.leftOut().get(0).reason());
    assertEquals(VERDICT, verdict.json());
    assertThrows(UnsupportedOperationException.class, () -> verdict.remarks().clear());
  }

  @Test
  void what_is_no_verdict_is_refused_in_words() {
    for (String text : new String[] {"", "{}", "[]", MONOCULAR, VERDICT.replace("usable with care", "fine"),
             VERDICT.replace("\"deviationInData\":0.25", "\"deviationInData\":\"x\""),
             VERDICT.replace("[1.5,-2.5]", "[1.5]"), VERDICT.replace("[1.5,-2.5]", "1.5"),
             VERDICT.replace("\"views\":7", "\"views\":\"7\""), VERDICT.replace("[{\"advice", "[3,{\"advice"),
             VERDICT.replace("\"reason\":\"Far.\"", "\"r\":1"),
             VERDICT.replace(
                 "[{\"point\":-1,\"reason\":\"wrong order\",\"residual\":12.5,\"view\":3}]", "7")}) {
      String words = assertThrows(IllegalArgumentException.class, () -> Verdict.parse(text)).getMessage();
      assertFalse(words.isEmpty(), text);
    }
  }

  @Test
  void numbers_are_those_of_the_engine() {
    assertEquals(0, Finder.STANDARD.code());
    assertEquals(1, Finder.ROBUST.code());
    assertEquals(0, Solver.OPENCV.code());
    assertEquals(1, Solver.SPARSE.code());
    assertEquals(100, Status.NOT_READY.code());
    assertEquals(200, Status.READY.code());
    assertEquals(300, Status.COMPLETED.code());
    assertEquals(400, Status.PROGRESS.code());
    assertEquals(10, LensModel.CLASSIC.code());
    assertEquals(20, LensModel.RATIONAL.code());
    assertEquals(30, LensModel.FULL.code());
    assertEquals(0, Kind.MONOCULAR.code());
    assertEquals(1, Kind.STEREO.code());
    assertEquals(5, LogLevel.TRACE.ordinal());
    assertEquals("8BPS", FrameFormat.RGB.code());
    assertEquals(460800, FrameFormat.NV21.bytes(640, 480));
  }

  @Test
  void a_matrix_knows_its_size() {
    Matrix matrix = new Matrix(2, 1, 3, 4);
    assertEquals("[3.00000\n 4.00000]", matrix.toString());
    assertEquals(matrix, new Matrix(2, 1, matrix.toArray()));
    assertFalse(matrix.equals(new Matrix(1, 2, 3, 4)));
    assertThrows(IllegalArgumentException.class, () -> new Matrix(2, 2, 1));
    assertThrows(IndexOutOfBoundsException.class, () -> matrix.get(0, 1));
    assertThrows(IllegalArgumentException.class, () -> matrix.times(matrix));
    assertTrue(matrix.times(new Matrix(1, 1, 2)).get(1, 0) == 8.0);
  }
}
