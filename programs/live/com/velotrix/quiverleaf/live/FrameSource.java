package com.velotrix.quiverleaf.live;

import com.velotrix.quiverleaf.sdk.Calibrator;
import java.io.IOException;
import java.nio.file.Path;

/** Where frames come from; used by one thread. */
final class FrameSource implements AutoCloseable {
  private static final Path CAMERAS = Path.of("/sys/class/video4linux");
  private static final int FRAMES_PER_SECOND = 30;

  private final Calibrator calibrator;
  private final int width;
  private final int height;
  private PictureFolder folder;

  FrameSource(Calibrator calibrator, int width, int height) {
    this.calibrator = calibrator;
    this.width = width;
    this.height = height;
  }

  /** In words; of a file its name alone, which is enough for who chose it. */
  static String nameOf(SourceKind kind, String address) {
    if (kind == SourceKind.CAMERA) {
      return "camera " + address.trim();
    }
    String name = address.substring(address.lastIndexOf('/') + 1);
    boolean told = address.contains("://") || name.isEmpty();
    return (kind == SourceKind.FOLDER ? "the folder " : "") + (told ? address : name);
  }

  /** Throws an IOException with sentences when it cannot be opened. */
  void open(SourceKind kind, String address, PushFormat format) throws IOException {
    close();
    switch (kind) {
      case CAMERA:
        if (!calibrator.openCamera(numberOf(address), width, height, FRAMES_PER_SECOND)) {
          throw new IOException(
              "Camera " + address.trim() + " cannot be opened. " + Cameras.inWords(CAMERAS));
        }
        break;
      case FILE:
        if (!calibrator.openContent(address)) {
          throw new IOException("The video '" + address + "' cannot be opened.");
        }
        break;
      default:
        folder = new PictureFolder(calibrator, Path.of(address), format);
    }
  }

  private static int numberOf(String address) throws IOException {
    if (!address.trim().matches("[0-9]{1,6}")) {
      throw new IOException("'" + address + "' is no number of a camera. " + Cameras.inWords(CAMERAS));
    }
    return Integer.parseInt(address.trim());
  }

  @Override
  public void close() {
    if (folder != null) {
      folder.close();
      folder = null;
    }
    calibrator.closeSource();
  }
}
