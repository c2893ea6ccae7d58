package com.velotrix.quiverleaf.live;

import java.io.IOException;
import java.nio.file.DirectoryStream;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.TreeMap;

/** The cameras of this machine. */
final class Cameras {
  private Cameras() {}

  /** A sentence that names them, as the system lists them in that folder. */
  static String inWords(Path devices) {
    TreeMap<Integer, String> names = new TreeMap<>();
    try (DirectoryStream<Path> list = Files.newDirectoryStream(devices, "video*")) {
      for (Path device : list) {
        String number = device.getFileName().toString().substring("video".length());
        if (number.matches("[0-9]{1,6}")) {
          names.put(Integer.valueOf(number), nameOf(device));
        }
      }
    } catch (IOException e) {
      // there are none
    }
    if (names.isEmpty()) {
      return "There is no camera.";
    }
    StringBuilder words = new StringBuilder("There are:");
    names.forEach(
        (number, name) -> words.append(words.length() > 10 ? ", " : " ").append(number).append(name));
    return words.append('.').toString();
  }

  private static String nameOf(Path device) {
    try {
      return " (" + Files.readString(device.resolve("name")).strip() + ")";
    } catch (IOException e) {
      return "";
    }
  }
}
