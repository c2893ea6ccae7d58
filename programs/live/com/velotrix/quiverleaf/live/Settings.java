package com.velotrix.quiverleaf.live;

import java.nio.file.Path;
import java.util.Arrays;
import java.util.Locale;
import java.util.stream.Collectors;

/** What the command line says. */
final class Settings {
  static final double SUPPLIED_HDIST = 0.2;
  static final int ROW_INTERVALS = 10;

  SourceKind source = SourceKind.CAMERA;
  String address = "0";
  /** Whether a source was named, which is then opened at once. */
  boolean sourceGiven;
  PushFormat push = PushFormat.BASE64;
  double hdist = SUPPLIED_HDIST;
  boolean hdistGiven;
  int width = 640;
  int height = 480;
  boolean sizeGiven;
  LensChoice model = LensChoice.AUTO;
  Path poses = Path.of("share/velmora/poses-4x11.json");
  /** Of the result, without ".json". */
  Path output = Path.of("calibration");
  /** Null: one of a new name. */
  Path session;
  boolean images = true;
  boolean help;
  boolean version;

  /** Throws IllegalArgumentException, in words, for what it does not understand. */
  static Settings of(String... arguments) {
    Settings settings = new Settings();
    for (int i = 0; i < arguments.length; ++i) {
      int equals = arguments[i].startsWith("--") ? arguments[i].indexOf('=') : -1;
      String option = equals < 0 ? arguments[i] : arguments[i].substring(0, equals);
      if (settings.setFlag(option)) {
        continue;
      }
      if (equals < 0 && i + 1 == arguments.length && settings.knows(option)) {
        throw new IllegalArgumentException("a value for " + option + " is missing");
      }
      String value = equals >= 0     ? arguments[i].substring(equals + 1)
          : i + 1 < arguments.length ? arguments[++i]
                                     : "";
      settings.set(option, value);
    }
    return settings;
  }

  /** The distance of adjacent rows in metres. */
  double unit() { return hdist / ROW_INTERVALS; }

  private boolean setFlag(String option) {
    switch (option) {
      case "-h":
      case "--help":
        help = true;
        return true;
      case "--version":
        version = true;
        return true;
      case "--no-images":
        images = false;
        return true;
      default:
        return false;
    }
  }

  private boolean knows(String option) { return Help.OPTIONS.contains("  " + option + " "); }

  private void set(String option, String value) {
    switch (option) {
      case "--camera":
        setSource(SourceKind.CAMERA, value);
        break;
      case "--file":
        setSource(SourceKind.FILE, value);
        break;
      case "--folder":
        setSource(SourceKind.FOLDER, value);
        break;
      case "--push":
        push = choice(option, value, PushFormat.values());
        break;
      case "--hdist":
        hdist = metres(value);
        hdistGiven = true;
        break;
      case "--size":
        setSize(value);
        break;
      case "--model":
        model = choice(option, value, LensChoice.values());
        break;
      case "--poses":
        poses = Path.of(value);
        break;
      case "--output":
        output = nameOf(value);
        break;
      case "--session":
        session = Path.of(value);
        break;
      default:
        throw new IllegalArgumentException("there is no option " + option);
    }
  }

  private void setSource(SourceKind kind, String value) {
    source = kind;
    address = value;
    sourceGiven = true;
  }

  private static <T extends Enum<T>> T choice(String option, String value, T[] choices) {
    for (T choice : choices) {
      if (choice.name().toLowerCase(Locale.ROOT).equals(value)) {
        return choice;
      }
    }
    String words = Arrays.stream(choices)
                       .map(choice -> choice.name().toLowerCase(Locale.ROOT))
                       .collect(Collectors.joining(", "));
    throw new IllegalArgumentException(option + " is one of " + words + ", not '" + value + "'");
  }

  private static double metres(String value) {
    try {
      double number = Double.parseDouble(value);
      if (number > 0.0 && Double.isFinite(number)) {
        return number;
      }
    } catch (NumberFormatException e) {
      // told below
    }
    throw new IllegalArgumentException("--hdist is a distance in metres such as 0.2, not '" + value + "'");
  }

  private void setSize(String value) {
    try {
      String[] sides = value.split("x");
      width = Integer.parseInt(sides[0]);
      height = Integer.parseInt(sides[sides.length - 1]);
      if (sides.length == 2 && width > 0 && height > 0) {
        sizeGiven = true;
        return;
      }
    } catch (NumberFormatException e) {
      // told below
    }
    throw new IllegalArgumentException("a size is written such as 640x480, not '" + value + "'");
  }

  private static Path nameOf(String value) {
    String name = value.endsWith(".json") ? value.substring(0, value.length() - 5) : value;
    if (name.isEmpty() || name.endsWith("/")) {
      throw new IllegalArgumentException("--output needs a name");
    }
    return Path.of(name);
  }
}
