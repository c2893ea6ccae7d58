package com.velotrix.quiverleaf.live;

import java.util.Locale;

/** Sizes of files in words. */
final class Bytes {
  private static final String[] UNITS = {"bytes", "kB", "MB", "GB", "TB"};

  private Bytes() {}

  /** Three digits are enough for people. */
  static String inWords(long bytes) {
    double number = bytes;
    int unit = 0;
    while (number >= 1000.0 && unit + 1 < UNITS.length) {
      number /= 1000.0;
      ++unit;
    }
    return String.format(
        Locale.ROOT, unit == 0 || number >= 10.0 ? "%.0f %s" : "%.1f %s", number, UNITS[unit]);
  }
}
