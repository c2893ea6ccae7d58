package com.velotrix.quiverleaf.live;

import java.nio.file.Path;

/** What the command line says. */
final class Settings {
  static final String USAGE =
      "usage: velmora-live [--camera N | --file VIDEO | --folder PICTURES] [--push base64|nv21]\n"
      + "                    [--hdist METRES] [--size WxH] [--poses MODEL] [--output NAME]";

  SourceKind source = SourceKind.CAMERA;
  String address = "0";
  PushFormat push = PushFormat.BASE64;
  double hdist = 0.2;
  int width = 640;
  int height = 480;
  Path poses = Path.of("share/velmora/poses-4x11.json");
  Path output = Path.of("camera.json");

  /** Throws IllegalArgumentException, in words, for what it does not understand. */
  static Settings of(String[] arguments) {
    Settings settings = new Settings();
    for (int i = 0; i < arguments.length; i += 2) {
      if (i + 1 == arguments.length) {
        throw new IllegalArgumentException("a value for " + arguments[i] + " is missing");
      }
      settings.set(arguments[i], arguments[i + 1]);
    }
    return settings;
  }

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
        push = PushFormat.of(value);
        break;
      case "--hdist":
        hdist = Double.parseDouble(value);
        break;
      case "--size":
        setSize(value);
        break;
      case "--poses":
        poses = Path.of(value);
        break;
      case "--output":
        output = Path.of(value);
        break;
      default:
        throw new IllegalArgumentException("there is no option " + option);
    }
  }

  private void setSource(SourceKind kind, String value) {
    source = kind;
    address = value;
  }

  private void setSize(String value) {
    String[] sides = value.split("x");
    if (sides.length != 2) {
      throw new IllegalArgumentException("a size is written such as 640x480");
    }
    width = Integer.parseInt(sides[0]);
    height = Integer.parseInt(sides[1]);
  }
}
