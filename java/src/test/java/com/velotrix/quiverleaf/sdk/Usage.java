package com.velotrix.quiverleaf.sdk;

import java.io.IOException;
import java.nio.file.DirectoryStream;
import java.nio.file.Files;
import java.nio.file.Path;

/** What this process holds at the moment. */
final class Usage {
  final double heap;
  final double resident;
  final int threads;

  private Usage(double heap, double resident, int threads) {
    this.heap = heap;
    this.resident = resident;
    this.threads = threads;
  }

  /** In megabytes of used heap, after a collection, and of resident memory. */
  static Usage now() throws IOException {
    System.gc();
    Runtime runtime = Runtime.getRuntime();
    double heap = (runtime.totalMemory() - runtime.freeMemory()) / 1e6;
    return new Usage(heap, entry("VmRSS:") / 1e3, threads());
  }

  /** All threads, native ones too, but the machine's own for compiling and collecting, which vary. */
  private static int threads() throws IOException {
    int count = 0;
    try (DirectoryStream<Path> tasks = Files.newDirectoryStream(Path.of("/proc/self/task"))) {
      for (Path task : tasks) {
        count += isOfTheMachine(task) ? 0 : 1;
      }
    }
    return count;
  }

  private static boolean isOfTheMachine(Path task) {
    try {
      String name = Files.readString(task.resolve("comm"));
      return name.startsWith("C1 ") || name.startsWith("C2 ") || name.startsWith("GC ")
          || name.startsWith("G1 ");
    } catch (IOException e) {
      return true; // ended meanwhile
    }
  }

  private static double entry(String name) throws IOException {
    for (String line : Files.readAllLines(Path.of("/proc/self/status"))) {
      if (line.startsWith(name)) {
        return Double.parseDouble(line.substring(name.length()).replace("kB", "").trim());
      }
    }
    throw new IOException(name + " is not told");
  }

  @Override
  public String toString() {
    return String.format("heap %.1f MB, resident %.1f MB, %d threads", heap, resident, threads);
  }
}
