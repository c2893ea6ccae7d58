package com.velotrix.quiverleaf.sdk;

import static org.junit.jupiter.api.Assertions.assertTrue;

import com.google.gson.JsonArray;
import com.google.gson.JsonObject;
import com.google.gson.JsonParser;
import java.awt.image.BufferedImage;
import java.io.ByteArrayOutputStream;
import java.io.IOException;
import java.io.UncheckedIOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.stream.Collectors;
import java.util.stream.Stream;
import javax.imageio.IIOImage;
import javax.imageio.ImageIO;
import javax.imageio.ImageWriteParam;
import javax.imageio.ImageWriter;

/** The rendered pictures and videos that the tests work on, with their truth. */
final class Footage {
  static final int WIDTH = 640;
  static final int HEIGHT = 480;

  private Footage() {}

  static Path file(String name) { return Path.of(System.getProperty("velmora.test.footage")).resolve(name); }

  static Path poses() { return Path.of(System.getProperty("velmora.test.poses")); }

  /** The pictures of a folder, in the order of their names. */
  static List<BufferedImage> pictures(String folder) {
    try (Stream<Path> files = Files.list(file(folder))) {
      List<BufferedImage> pictures = new ArrayList<>();
      for (Path path :
          files.filter(f -> f.toString().endsWith(".png")).sorted().collect(Collectors.toList())) {
        pictures.add(ImageIO.read(path.toFile()));
      }
      assertTrue(!pictures.isEmpty(), folder);
      return pictures;
    } catch (IOException e) {
      throw new UncheckedIOException(e);
    }
  }

  static BufferedImage firstView() { return pictures("views").get(0); }

  /** As JPEG of a quality that leaves the discs where they are. */
  static byte[] jpeg(BufferedImage picture) {
    BufferedImage opaque =
        new BufferedImage(picture.getWidth(), picture.getHeight(), BufferedImage.TYPE_3BYTE_BGR);
    opaque.getGraphics().drawImage(picture, 0, 0, null);
    ImageWriter writer = ImageIO.getImageWritersByFormatName("jpeg").next();
    ImageWriteParam settings = writer.getDefaultWriteParam();
    settings.setCompressionMode(ImageWriteParam.MODE_EXPLICIT);
    settings.setCompressionQuality(0.97F);
    ByteArrayOutputStream bytes = new ByteArrayOutputStream();
    try (javax.imageio.stream.ImageOutputStream output = ImageIO.createImageOutputStream(bytes)) {
      writer.setOutput(output);
      writer.write(null, new IIOImage(opaque, null, null), settings);
    } catch (IOException e) {
      throw new UncheckedIOException(e);
    } finally {
      writer.dispose();
    }
    return bytes.toByteArray();
  }

  /** The pictures of a motion JPEG video: each goes from a start to an end marker. */
  static List<byte[]> framesOf(Path video) throws IOException {
    byte[] bytes = Files.readAllBytes(video);
    List<byte[]> frames = new ArrayList<>();
    int start = -1;
    for (int i = 0; i + 2 < bytes.length; ++i) {
      if (bytes[i] != (byte) 0xFF) {
        continue;
      }
      if (start < 0 && bytes[i + 1] == (byte) 0xD8 && bytes[i + 2] == (byte) 0xFF) {
        start = i;
      } else if (start >= 0 && bytes[i + 1] == (byte) 0xD9) {
        frames.add(java.util.Arrays.copyOfRange(bytes, start, i + 2));
        start = -1;
      }
    }
    return frames;
  }

  static JsonObject json(Path file) throws IOException {
    return JsonParser.parseString(Files.readString(file)).getAsJsonObject();
  }

  /** Expects the result to tell of the camera that the footage was rendered with. */
  static void expectCamera(CalibrationResult result, Path truth, double focalTolerance) throws IOException {
    JsonArray rows = json(truth).getAsJsonArray("K");
    for (int i = 0; i < 2; ++i) {
      double focal = rows.get(i).getAsJsonArray().get(i).getAsDouble();
      double centre = rows.get(i).getAsJsonArray().get(2).getAsDouble();
      org.junit.jupiter.api.Assertions.assertEquals(
          focal, result.cameraMatrix().get(i, i), focalTolerance * focal);
      org.junit.jupiter.api.Assertions.assertEquals(centre, result.cameraMatrix().get(i, 2), 3.0);
    }
    assertTrue(result.rms() > 0.0 && result.rms() < 0.2, "rms " + result.rms());
  }
}
