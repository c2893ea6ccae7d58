package com.velotrix.quiverleaf.sdk;

import com.google.gson.JsonArray;
import com.google.gson.JsonObject;
import java.awt.image.BufferedImage;
import java.io.ByteArrayInputStream;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.time.Duration;
import java.util.ArrayList;
import java.util.Base64;
import java.util.List;
import java.util.Objects;
import java.util.Optional;
import java.util.OptionalDouble;
import java.util.OptionalInt;
import java.util.concurrent.TimeoutException;
import javax.imageio.ImageIO;

/**
 * Calibrates a camera, or a pair, with a printed grid of circles.
 *
 * <pre>{@code
 * try (Calibrator calibrator = Calibrator.builder().hdist(0.2).frameSize(640, 480).build()) {
 *   calibrator.onFrames(frame -> show(frame.jpeg()));
 *   calibrator.startAssistant(Path.of("poses-4x11.json"));
 *   calibrator.openCamera(0, 640, 480, 30);
 *   CalibrationResult result = calibrator.awaitResult(Duration.ofMinutes(5));
 *   System.out.println(result.cameraMatrix());
 * }
 * }</pre>
 *
 * <p>Any thread may call any method. Frames come from one source that the engine reads by itself (the open
 * methods) or from the program (the push methods). After {@link #close} every method but close throws
 * {@link IllegalStateException}; null arguments are refused with {@link NullPointerException}; what goes
 * wrong inside of the engine comes as {@link RuntimeException} or, where a method answers false, as a line of
 * the engine's log.
 */
public final class Calibrator implements AutoCloseable {
  private static final int ENOUGH = 5;

  private final int id;
  private final Kind kind;
  private boolean closed;

  Calibrator(CalibratorBuilder settings) {
    NativeLibrary.load();
    kind = settings.kind;
    id = Calibration.nNewCalibrator(
        settings.columns, settings.rows, (float) settings.unit, kind.code(), settings.width, settings.height);
    if (id < 0) {
      throw new IllegalArgumentException("the engine refuses such a calibrator; its log says why");
    }
    // The engine itself begins with OpenCV's, as programs on its native methods know it.
    EngineChoices.nSetFinder(id, Finder.ROBUST.code());
    EngineChoices.nSetSolver(id, Solver.SPARSE.code());
    EngineChoices.nSetSheetShape(id, SheetShape.AUTO.code());
    EngineChoices.nSetPartialGrids(id, true);
    EngineChoices.nSetFineCentres(id, true);
  }

  /** A builder with the shipped sheet of 4 x 11 circles, a unit of 0.02 m, one camera of 640 x 480 pixels. */
  public static CalibratorBuilder builder() { return new CalibratorBuilder(); }

  /** The engine's version. */
  public static String version() {
    NativeLibrary.load();
    return Calibration.nGetVersion();
  }

  /** How much the engine writes to standard output, for the whole process. */
  public static void setLogLevel(LogLevel level) {
    NativeLibrary.load();
    Calibration.nSetLogLevel(level.ordinal());
  }

  /**
   * Closes the source, waits for the calibrator's threads (and so for a running computation), and releases
   * it. Closing again does nothing. A listener that closes the calibrator that calls it does not wait.
   */
  @Override
  public void close() {
    synchronized (this) {
      if (closed) {
        return;
      }
      closed = true;
    }
    Calibration.nDeleteCalibrator(id);
  }

  /** The number by which {@link Calibration} knows this calibrator. */
  public synchronized int id() {
    if (closed) {
      throw new IllegalStateException("the calibrator is closed");
    }
    return id;
  }

  /** What it calibrates. */
  public Kind kind() {
    id();
    return kind;
  }

  // ---- Where it stands.

  /** Status, snapshots and, once there is one, the result. */
  public CalibratorStatus status() {
    String json = Calibration.nGetStatusQVX(id());
    id(); // closed meanwhile, it has no status
    return CalibratorStatus.parse(json);
  }

  /** The number of snapshots. */
  public int snapshots() { return Calibration.nGetPictureCount(id()); }

  /** Whether the last frame showed the grid and is no snapshot yet. */
  public boolean isDetected() { return Calibration.nIsDetected(id()); }

  /**
   * Whether {@link #takeSnapshot} would take what the last frame showed: the grid, or a part that may be
   * taken.
   */
  public boolean canTakeSnapshot() { return EngineChoices.nHasSeen(id()); }

  /** RMS reprojection error in pixels; empty before a result. */
  public OptionalDouble rms() {
    float error = Calibration.nGetError(id());
    return error < 0.0F ? OptionalDouble.empty() : OptionalDouble.of(error);
  }

  /** Drops snapshots and results; does nothing during a computation. */
  public void reset() { Calibration.nResetCalibrator(id()); }

  // ---- Search, solver, verdict.

  /** How later frames are searched; {@link Finder#ROBUST} at first. */
  public void setFinder(Finder finder) { EngineChoices.nSetFinder(id(), finder.code()); }

  /**
   * Whether {@link #takeSnapshot} takes frames in which the border or a hand hides up to a quarter of the
   * grid's circles (of a pair, from one camera or the other); with the robust search, and at first.
   */
  public void setPartialGrids(boolean partial) { EngineChoices.nSetPartialGrids(id(), partial); }

  /**
   * Whether the centres of snapshots are measured anew when they are taken, so that uneven light does not
   * move them; with the robust search, and at first.
   */
  public void setFineCentres(boolean fine) { EngineChoices.nSetFineCentres(id(), fine); }

  /** What later computations are done with; {@link Solver#SPARSE} at first. */
  public void setSolver(Solver solver) { EngineChoices.nSetSolver(id(), solver.code()); }

  /** Lets the sparse solver leave out snapshots and points that disagree; not at first. */
  public void setRobust(boolean robust) { EngineChoices.nSetRobust(id(), robust); }

  /** What the sparse solver may take the sheet for; {@link SheetShape#AUTO} at first. */
  public void setSheetShape(SheetShape shape) { EngineChoices.nSetSheetShape(id(), shape.code()); }

  /**
   * Has the sparse solver correct the centres of discs of that radius in metres; 0, as at first, takes them
   * as they are.
   */
  public void setDiscRadius(double metres) {
    if (!(metres >= 0.0) || Double.isInfinite(metres)) {
      throw new IllegalArgumentException("discs of radius " + metres + " cannot be");
    }
    EngineChoices.nSetDiscRadius(id(), metres);
  }

  /**
   * How good the result of the last computation of one camera is. Its grade is NONE during a computation,
   * before the first, and after snapshots were added.
   */
  public Verdict verdict() {
    requireKind(Kind.MONOCULAR);
    String json = EngineChoices.nGetVerdict(id());
    id(); // closed meanwhile, it has none
    return Verdict.parse(json);
  }

  // ---- Frames handed out.

  /** Mirrors the frames that are handed out; results do not depend on it. */
  public void setFlip(boolean flip) { Calibration.nSetFlip(id(), flip); }

  /** Whether frames are mirrored. */
  public boolean isFlipped() { return Calibration.nGetFlip(id()); }

  /** Has the listener get each processed frame in its own size, in place of an earlier listener. */
  public void onFrames(FrameListener listener) { onFrames(listener, 0, 0); }

  /** The same with pictures of that size; their own unless both sides are positive. */
  public void onFrames(FrameListener listener, int width, int height) {
    register(Objects.requireNonNull(listener, "listener"), true, width, height);
  }

  /** Has the listener get the status after each processed frame, without pictures. */
  public void onStatus(FrameListener listener) {
    register(Objects.requireNonNull(listener, "listener"), false, 0, 0);
  }

  /** Ends calls of the listener. One under way on another thread may still be at it. */
  public void removeListener() { Calibration.nRegisterCalibrationListener(id(), null, false, 0, 0); }

  private void register(FrameListener listener, boolean sendImage, int width, int height) {
    JNICalibrationListener adapted = (jpeg, json) -> listener.onFrame(new AnnotatedFrame(jpeg, json));
    if (!Calibration.nRegisterCalibrationListener(id(), adapted, sendImage, width, height)) {
      throw new IllegalStateException("the engine did not take the listener; its log says why");
    }
  }

  /** Shows processed frames in the engine's own window, where there is a display. */
  public void openPreview() { Calibration.nOpenPreview(id()); }

  /** Ends that. */
  public void closePreview() { Calibration.nClosePreview(id()); }

  // ---- Assistant.

  /**
   * Draws the poses of a model file into the frames, one after the other, and takes their snapshots.
   *
   * @throws IllegalArgumentException when the file is no model, which the engine's log explains; there is no
   *     assistant then
   */
  public void startAssistant(Path model) throws IOException {
    if (!Files.isReadable(model)) {
      throw new java.nio.file.NoSuchFileException(model.toString());
    }
    Calibration.nStartAssistant(id(), model.toString());
    if (Calibration.nGetAssistantGoal(id()) < 1 && !EngineChoices.nIsComputing(id())) {
      throw new IllegalArgumentException(model + " is no model of poses; the engine's log says why");
    }
  }

  /** Ends the assistant; snapshots are kept. */
  public void stopAssistant() { Calibration.nStopAssistant(id()); }

  /** The assistant's number of poses; empty without an assistant. */
  public OptionalInt assistantGoal() {
    int goal = Calibration.nGetAssistantGoal(id());
    return goal < 0 ? OptionalInt.empty() : OptionalInt.of(goal);
  }

  // ---- Snapshots and computation.

  /**
   * Makes the last frame a snapshot; false when it shows no grid, nor a part of it that may be taken, or is
   * one already.
   */
  public boolean takeSnapshot() { return EngineChoices.nAddSeen(id()); }

  /**
   * Why the last frame showed no grid, in words; empty when it did, and after a standard search. Where a part
   * of the grid can be taken, it says why the whole was not found.
   */
  public Optional<String> whyNotFound() {
    String reason = EngineChoices.nWhyNotFound(id());
    return reason.isEmpty() ? Optional.empty() : Optional.of(reason);
  }

  /**
   * What each camera observed in a snapshot, by its number from 0.
   *
   * @throws IndexOutOfBoundsException when there is none of that number, as of the methods that follow
   */
  public List<Observation> observations(int number) {
    List<Observation> observations = new ArrayList<>();
    String json = EngineChoices.nGetSnapshot(id(), number);
    id(); // closed meanwhile, it has none
    for (JsonObject camera : Documents.objects(Documents.parse(json), "cameras")) {
      observations.add(Observation.of(camera));
    }
    return observations;
  }

  /** The picture of a camera (from 0) in a snapshot, as it was searched; empty where none is kept. */
  public Optional<BufferedImage> snapshotImage(int number, int camera) throws IOException {
    byte[] png = EngineChoices.nGetSnapshotImage(id(), number, camera);
    return png.length == 0 ? Optional.empty() : Optional.of(ImageIO.read(new ByteArrayInputStream(png)));
  }

  /** How the last result agrees with a snapshot. */
  public SnapshotFit snapshotFit(int number) {
    String json = EngineChoices.nGetSnapshotFit(id(), number);
    id(); // closed meanwhile, it has none
    return new SnapshotFit(json);
  }

  /**
   * Adds a snapshot of what each camera observed; false, with a line in the log, for what is none of this
   * grid, and during a computation. A whole one with its pictures comes from {@link Session#restore}.
   */
  public boolean addSnapshot(Observation... cameras) {
    JsonArray list = new JsonArray();
    for (Observation camera : cameras) {
      list.add(camera.toJson());
    }
    JsonObject snapshot = new JsonObject();
    snapshot.add("cameras", list);
    return EngineChoices.nAddSnapshot(id(), snapshot.toString());
  }

  /** Takes a snapshot out; those after it move up. False during a computation. */
  public boolean removeSnapshot(int number) { return EngineChoices.nRemoveSnapshot(id(), number); }

  /** Which lens model the snapshots ask for; empty with fewer than five, and during a computation. */
  public Optional<ModelChoice> chooseModel() {
    requireKind(Kind.MONOCULAR);
    if (snapshots() < ENOUGH) {
      return Optional.empty();
    }
    JsonObject choice = Documents.parse(EngineChoices.nChooseModel(id()));
    return Documents.text(choice, "model").equals("none") ? Optional.empty()
                                                          : Optional.of(new ModelChoice(choice));
  }

  /**
   * Standard deviations of the result of one camera: fx, fy, cx, cy and the coefficients in their order, 0
   * for those that the model does not have; none without a result.
   */
  public double[] deviations() {
    requireKind(Kind.MONOCULAR);
    return EngineChoices.nGetDeviations(id());
  }

  /**
   * Starts the computation of one camera. {@link #awaitResult} gets what comes out of it, of a {@link
   * LensModel#FISHEYE} {@link #awaitFisheye}.
   */
  public void calibrate(LensModel model) {
    requireKind(Kind.MONOCULAR);
    if (model == LensModel.FISHEYE) {
      EngineChoices.nCalibrateFisheye(id());
    } else {
      Calibration.nCalibrate(id(), model.code());
    }
  }

  /** Starts the computation of a pair from its cameras' own results, which are held fixed. */
  public void calibratePair(CalibrationResult left, CalibrationResult right, LensModel model) {
    requireKind(Kind.STEREO);
    if (model == LensModel.FISHEYE) {
      throw new IllegalArgumentException("a pair has RATIONAL or FULL lenses");
    }
    Calibration.nCalibrateStereoQVX(id(), left.json(), right.json(), model.code());
  }

  /**
   * Ends a computation of the sparse solver that is under way; it then fails, and earlier results stay. Does
   * nothing when none is under way.
   */
  public void cancelComputation() { EngineChoices.nCancelComputation(id()); }

  /**
   * Waits for a result: that of a computation that was started, or that the assistant starts. Without one
   * under way, a result that is there already is returned at once.
   *
   * @throws TimeoutException when there is none in time
   * @throws IllegalStateException when the computation that ended last brought none, which the engine's log
   *     explains; {@link #result} still has an earlier one. It is so until a computation brings a result, the
   *     assistant is started, or the calibrator is reset. Also when nothing is computed and {@link
   *     #sourceEnded} says that no frame comes any more: a computation is to be started before the wait
   */
  public CalibrationResult awaitResult(Duration patience) throws InterruptedException, TimeoutException {
    return ResultWait.on(this, CalibratorStatus::result, patience);
  }

  /** As {@link #awaitResult}, for the computation of a {@link LensModel#FISHEYE}. */
  public FisheyeResult awaitFisheye(Duration patience) throws InterruptedException, TimeoutException {
    return ResultWait.on(this, now -> fisheye(), patience);
  }

  /** The result, if there is one; not that of a fisheye. */
  public Optional<CalibrationResult> result() { return status().result(); }

  /** The fisheye, if the last result is one. */
  public Optional<FisheyeResult> fisheye() {
    String json = EngineChoices.nGetFisheyeJSON(id(), false, "");
    return json.isEmpty() ? Optional.empty() : Optional.of(FisheyeResult.parse(json));
  }

  /**
   * Writes the result file.
   *
   * @param file its path; ".json" is appended unless it ends in that
   * @return the file written
   * @throws IllegalArgumentException when the path has no name before ".json"
   * @throws IllegalStateException when there is no result
   */
  public Path save(Path file) throws IOException {
    String base = baseOf(file);
    return written(Path.of(base + ".json"), Calibration.nGetCalibrationJSON(id(), true, base));
  }

  /**
   * Writes the result file of a fisheye, whose name ends in "_fisheye.json".
   *
   * @param file its path up to that; a ".json" at its end is not taken for a part of the name
   * @return the file written
   * @throws IllegalArgumentException when the path has no name
   * @throws IllegalStateException when there is no result of a fisheye
   */
  public Path saveFisheye(Path file) throws IOException {
    String base = baseOf(file);
    return written(Path.of(base + "_fisheye.json"), EngineChoices.nGetFisheyeJSON(id(), true, base));
  }

  private static String baseOf(Path file) {
    String path = file.toString();
    String base = path.endsWith(".json") ? path.substring(0, path.length() - 5) : path;
    if (base.isEmpty()) {
      throw new IllegalArgumentException("'" + path + "' names no file");
    }
    return base;
  }

  private static Path written(Path file, String json) throws IOException {
    if (json.isEmpty()) {
      throw new IllegalStateException("Nothing to save yet: calibrate first.");
    }
    if (!Files.exists(file) || !Files.readString(file).equals(json)) {
      throw new IOException("cannot write " + file);
    }
    return file;
  }

  private void requireKind(Kind needed) {
    id();
    if (kind != needed) {
      throw new IllegalStateException("this calibrator is of the kind " + kind);
    }
  }

  // ---- A source that the engine reads.

  /** Opens a camera; false, with a line in the log, when that fails. */
  public boolean openCamera(int index, int width, int height, int fps) {
    return openCamera(index, width, height, fps, SplitMode.PAIR);
  }

  /** Opens a camera that may deliver two pictures side by side. */
  public boolean openCamera(int index, int width, int height, int fps, SplitMode split) {
    return Calibration.nOpenNativeCamera(id(), index, width, height, fps, split.code());
  }

  /** Opens two cameras as a pair. */
  public boolean openCameras(int left, int right, int width, int height, int fps) {
    return Calibration.nOpenNativeStereoCamera(id(), left, right, width, height, fps);
  }

  /**
   * Opens a file or URL; false, with a line in the log, when that fails. At its end it stays open until
   * {@link #closeSource}; {@link #onSourceEnded} tells.
   */
  public boolean openContent(String content) {
    return Calibration.nOpenFFmpegContent(id(), Objects.requireNonNull(content, "content"));
  }

  /** Opens a GStreamer pipeline that ends in an appsink. */
  public boolean openPipeline(String pipeline) {
    return Calibration.nOpenGstreamerPipe(id(), Objects.requireNonNull(pipeline, "pipeline"));
  }

  /** Stops reading the source and closes it, both cameras of a pair. */
  public void closeSource() { EngineChoices.nCloseSource(id()); }

  /**
   * Whether no frame comes any more though a source was asked for: a file or stream that came to its end, a
   * source that is gone, or an open method that answered false. Not any more after {@link #closeSource}, and
   * once another source is opened or a frame is pushed.
   */
  public boolean sourceEnded() { return EngineChoices.nHasSourceEnded(id()); }

  /**
   * Has the listener run when a source ends by itself, in place of an earlier listener: on the thread that
   * read it, after its last frame. Not for an open method that answered false. What it throws is written to
   * the engine's log.
   */
  public void onSourceEnded(Runnable listener) {
    EngineChoices.nSetSourceEndListener(id(), Objects.requireNonNull(listener, "listener"));
  }

  // ---- Frames that the program pushes.

  /**
   * From now on pushed frames are processed on threads of the engine's own, and a push returns at once. Only
   * the newest frame counts: one that waits is replaced by the next.
   */
  public void startGrabbers() {
    Calibration.nOpenJpegB64FrameGrabber(id());
    Calibration.nOpenRGBFrameGrabber(id());
  }

  /** From now on a push processes its frame before it returns. */
  public void stopGrabbers() {
    Calibration.nCloseJpegB64FrameGrabber(id());
    Calibration.nCloseRGBFrameGrabber(id());
  }

  /** Pushes a JPEG picture. */
  public void push(byte[] jpeg) { push(Base64.getEncoder().encodeToString(jpeg)); }

  /** Pushes a JPEG picture given as Base64 text. */
  public void push(String base64Jpeg) {
    Calibration.nNextFrameJpegB64(id(), Objects.requireNonNull(base64Jpeg, "base64Jpeg"), 0);
  }

  /**
   * Pushes a raw frame.
   *
   * @throws IllegalArgumentException when the size is not positive, odd for a YUV format, or too large for
   *     the data
   */
  public void push(byte[] data, int width, int height, FrameFormat format) {
    if (!format.fits(width, height) || !format.isHeldBy(data.length, width, height)) {
      throw new IllegalArgumentException(
          data.length + " bytes are no " + format + " frame of " + width + " x " + height);
    }
    Calibration.nNextFrame(id(), data, width, height, format.code(), 0);
  }
}
