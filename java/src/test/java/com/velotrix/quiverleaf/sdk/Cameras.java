package com.velotrix.quiverleaf.sdk;

import java.awt.image.BufferedImage;
import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Comparator;
import java.util.List;
import java.util.stream.Collectors;
import java.util.stream.Stream;

/** The machine's cameras, as long as the object lives: a library loaded before all others plays them. */
final class Cameras implements AutoCloseable {
  private final Path folder = Path.of(System.getenv("VELMORA_FAKE_CAMERAS"));
  private final long others = timers();

  Cameras() throws IOException {
    close();
    Files.createDirectories(folder);
  }

  /** A camera that plays these pictures over and over. */
  void provide(int camera, List<BufferedImage> pictures) throws IOException {
    String size = pictures.get(0).getWidth() + "x" + pictures.get(0).getHeight();
    Path shown = Files.createDirectories(folder.resolve(Integer.toString(camera)).resolve(size));
    int number = 100;
    for (BufferedImage picture : pictures) {
      Files.write(shown.resolve(number++ + ".jpg"), Footage.jpeg(picture));
    }
  }

  /** The devices that this process has opened since and holds open: each is read by a timer. */
  long open() throws IOException { return timers() - others; }

  private static long timers() throws IOException {
    try (Stream<Path> files = Files.list(Path.of("/proc/self/fd"))) {
      return files.filter(Cameras::isTimer).count();
    }
  }

  private static boolean isTimer(Path descriptor) {
    try {
      return Files.readSymbolicLink(descriptor).toString().contains("timerfd");
    } catch (IOException e) {
      return false; // closed meanwhile
    }
  }

  @Override
  public void close() throws IOException {
    if (!Files.exists(folder)) {
      return;
    }
    try (Stream<Path> files = Files.walk(folder)) {
      for (Path path : files.sorted(Comparator.reverseOrder()).collect(Collectors.toList())) {
        Files.delete(path);
      }
    }
  }
}
