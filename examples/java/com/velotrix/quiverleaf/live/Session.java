package com.velotrix.quiverleaf.live;

import com.velotrix.quiverleaf.sdk.AnnotatedFrame;
import com.velotrix.quiverleaf.sdk.Calibrator;
import com.velotrix.quiverleaf.sdk.CalibratorStatus;
import com.velotrix.quiverleaf.sdk.LensModel;
import java.awt.image.BufferedImage;
import java.io.ByteArrayInputStream;
import java.io.IOException;
import java.nio.file.Path;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import javax.imageio.ImageIO;
import javax.swing.SwingUtilities;

/**
 * The calibrator and its source. The window asks on Swing's thread and is answered there; what takes time is
 * done on a thread of the session's own.
 */
final class Session implements AutoCloseable {
  /** What a session tells; on Swing's thread. */
  interface View {
    void showFrame(BufferedImage picture);

    void showStatus(CalibratorStatus status, int goal);

    void showMessage(String message);
  }

  private final Settings settings;
  private final View view;
  private final Calibrator calibrator;
  private final ExecutorService work = Executors.newSingleThreadExecutor();
  private final LatestOnly<BufferedImage> frames;
  private final LatestOnly<CalibratorStatus> statuses;
  private PictureFolder folder;
  private boolean engineReads;
  private volatile int goal = -1;

  Session(Settings settings, View view) {
    this.settings = settings;
    this.view = view;
    frames = new LatestOnly<>(view::showFrame);
    statuses = new LatestOnly<>(status -> view.showStatus(status, goal));
    calibrator =
        Calibrator.builder().hdist(settings.hdist).frameSize(settings.width, settings.height).build();
    calibrator.onFrames(this::onFrame);
  }

  /** On a thread of the engine, or the one that pushes. */
  private void onFrame(AnnotatedFrame frame) throws IllegalStateException {
    statuses.put(frame.status());
    if (!frame.hasPicture()) {
      return;
    }
    try {
      frames.put(ImageIO.read(new ByteArrayInputStream(frame.jpeg())));
    } catch (IOException e) {
      throw new IllegalStateException(e);
    }
  }

  void start(SourceKind kind, String address, PushFormat format) {
    work.execute(() -> tell(() -> {
      closeSource();
      switch (kind) {
        case CAMERA:
          engineReads =
              calibrator.openCamera(Integer.parseInt(address.trim()), settings.width, settings.height, 30);
          break;
        case FILE:
          engineReads = calibrator.openContent(address);
          break;
        default:
          folder = new PictureFolder(calibrator, Path.of(address), format);
      }
      boolean open = engineReads || folder != null;
      return open ? kind + " " + address + " is open." : kind + " " + address + " cannot be opened.";
    }));
  }

  void stop() {
    work.execute(() -> tell(() -> {
      closeSource();
      return "The source is closed.";
    }));
  }

  private void closeSource() {
    if (folder != null) {
      folder.close();
      folder = null;
    }
    if (engineReads) {
      calibrator.closeSource();
      engineReads = false;
    }
  }

  void setAssistant(boolean wanted) {
    work.execute(() -> tell(() -> {
      if (wanted) {
        calibrator.startAssistant(settings.poses);
      } else {
        calibrator.stopAssistant();
      }
      goal = calibrator.assistantGoal().orElse(-1);
      return wanted ? "Bring the sheet to the drawn one, " + goal + " times." : "The assistant is off.";
    }));
  }

  void setMirror(boolean mirror) { calibrator.setFlip(mirror); }

  void takeSnapshot() {
    work.execute(
        () -> tell(() -> calibrator.takeSnapshot() ? "Snapshot taken." : "The grid is not in view."));
  }

  void calibrate(LensModel model) {
    work.execute(() -> tell(() -> {
      calibrator.calibrate(model);
      return "Computing with the " + model.toString().toLowerCase(java.util.Locale.ROOT) + " model.";
    }));
  }

  void save() {
    work.execute(() -> tell(() -> {
      boolean fisheye = calibrator.fisheye().isPresent();
      return "Written: "
          + (fisheye ? calibrator.saveFisheye(settings.output) : calibrator.save(settings.output));
    }));
  }

  void reset() {
    work.execute(() -> tell(() -> {
      calibrator.reset();
      return "All snapshots are dropped.";
    }));
  }

  /** Something that may fail, in words. */
  private interface Action {
    String run() throws Exception;
  }

  private void tell(Action action) {
    String message;
    try {
      message = action.run();
    } catch (Exception e) {
      message = e.getMessage() == null ? e.toString() : e.getMessage();
    }
    String words = message;
    CalibratorStatus status = calibrator.status();
    SwingUtilities.invokeLater(() -> view.showMessage(words));
    statuses.put(status);
  }

  /** Has the status told once more, for computations end without a frame. */
  void refresh() { statuses.put(calibrator.status()); }

  @Override
  public void close() {
    work.execute(this::closeSource);
    work.execute(calibrator::close);
    work.shutdown();
  }
}
