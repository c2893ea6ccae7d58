package com.velotrix.quiverleaf.live;

import com.velotrix.quiverleaf.sdk.Calibrator;
import java.awt.image.BufferedImage;
import java.io.ByteArrayOutputStream;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.stream.Collectors;
import java.util.stream.Stream;
import javax.imageio.ImageIO;

/** The rendered views as frames that are pushed. */
final class Frames {
  static final Path FOLDER = Path.of(System.getProperty("velmora.test.footage")).resolve("views");

  private Frames() {}

  static List<byte[]> jpegs() throws IOException {
    try (Stream<Path> files = Files.list(FOLDER)) {
      return files.filter(file -> file.toString().endsWith(".png"))
          .sorted()
          .map(Frames::jpegOf)
          .collect(Collectors.toList());
    }
  }

  private static byte[] jpegOf(Path file) {
    try {
      BufferedImage picture = ImageIO.read(file.toFile());
      BufferedImage opaque =
          new BufferedImage(picture.getWidth(), picture.getHeight(), BufferedImage.TYPE_3BYTE_BGR);
      opaque.getGraphics().drawImage(picture, 0, 0, null);
      ByteArrayOutputStream bytes = new ByteArrayOutputStream();
      ImageIO.write(opaque, "jpeg", bytes);
      return bytes.toByteArray();
    } catch (IOException e) {
      throw new AssertionError(e);
    }
  }

  static void push(Calibrator calibrator, int view) throws IOException { calibrator.push(jpegs().get(view)); }

  /** Takes the first ones by the store. */
  static void take(Calibrator calibrator, SnapshotStore store, int count) throws IOException {
    for (byte[] frame : jpegs().subList(0, count)) {
      calibrator.push(frame);
      if (store.take() != SnapshotStore.Taking.TAKEN) {
        throw new AssertionError("not taken");
      }
    }
  }
}
