package com.velotrix.quiverleaf.live;

import com.velotrix.quiverleaf.sdk.Calibrator;
import com.velotrix.quiverleaf.sdk.FrameFormat;
import java.awt.image.BufferedImage;
import java.io.ByteArrayOutputStream;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.concurrent.Executors;
import java.util.concurrent.ScheduledExecutorService;
import java.util.concurrent.TimeUnit;
import java.util.stream.Collectors;
import java.util.stream.Stream;
import javax.imageio.ImageIO;

/** Pushes the pictures of a folder, in the order of their names, over and over. */
final class PictureFolder implements AutoCloseable {
  private static final long PERIOD_MILLISECONDS = 100;

  private final Calibrator calibrator;
  private final PushFormat format;
  private final List<Path> files;
  private final ScheduledExecutorService clock = Executors.newSingleThreadScheduledExecutor();
  private int next;

  PictureFolder(Calibrator calibrator, Path folder, PushFormat format) throws IOException {
    this.calibrator = calibrator;
    this.format = format;
    try (Stream<Path> all = Files.list(folder)) {
      files = all.filter(PictureFolder::isPicture).sorted().collect(Collectors.toList());
    }
    if (files.isEmpty()) {
      throw new IOException("no pictures in " + folder);
    }
    clock.scheduleWithFixedDelay(this::pushNext, 0, PERIOD_MILLISECONDS, TimeUnit.MILLISECONDS);
  }

  private static boolean isPicture(Path file) {
    String name = file.toString().toLowerCase(java.util.Locale.ROOT);
    return name.endsWith(".png") || name.endsWith(".jpg") || name.endsWith(".jpeg");
  }

  private void pushNext() {
    Path file = files.get(next++ % files.size());
    try {
      if (format == PushFormat.BASE64) {
        calibrator.push(jpegOf(file));
      } else {
        BufferedImage picture = read(file);
        calibrator.push(Nv21.of(picture), Nv21.widthOf(picture), Nv21.heightOf(picture), FrameFormat.NV21);
      }
    } catch (IOException | RuntimeException e) {
      System.err.println(file + ": " + e);
    }
  }

  private static byte[] jpegOf(Path file) throws IOException {
    if (!file.toString().toLowerCase(java.util.Locale.ROOT).endsWith(".png")) {
      return Files.readAllBytes(file);
    }
    BufferedImage picture = read(file);
    BufferedImage opaque =
        new BufferedImage(picture.getWidth(), picture.getHeight(), BufferedImage.TYPE_3BYTE_BGR);
    opaque.getGraphics().drawImage(picture, 0, 0, null);
    ByteArrayOutputStream bytes = new ByteArrayOutputStream();
    ImageIO.write(opaque, "jpeg", bytes);
    return bytes.toByteArray();
  }

  private static BufferedImage read(Path file) throws IOException {
    BufferedImage picture = ImageIO.read(file.toFile());
    if (picture == null) {
      throw new IOException("no picture");
    }
    return picture;
  }

  /** Waits for the picture that is being pushed. */
  @Override
  public void close() {
    clock.shutdownNow();
    try {
      clock.awaitTermination(10, TimeUnit.SECONDS);
    } catch (InterruptedException e) {
      Thread.currentThread().interrupt();
    }
  }
}
