package com.velotrix.quiverleaf.sdk;

import java.net.URISyntaxException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.security.CodeSource;
import java.util.ArrayList;
import java.util.List;

/**
 * Loads the engine, once. It is looked for in this order:
 *
 * <ol>
 *   <li>the file that the system property {@value #PROPERTY} names,
 *   <li>the file that the environment variable {@value #VARIABLE} names,
 *   <li>beside this class's jar, and in the folder {@code lib} beside the jar's folder,
 *   <li>on {@code java.library.path}.
 * </ol>
 *
 * <p>A file that was named is the one that is taken: when it cannot be loaded, no other is tried.
 */
public final class NativeLibrary {
  /** The system property that names the library's file. */
  public static final String PROPERTY = "velmora.library";

  /** The environment variable that names the library's file. */
  public static final String VARIABLE = "VELMORA_LIBRARY";

  private static final String NAME = "Calibration";
  /** An installation without what compilers need has only the file of that name's end. */
  private static final String INTERFACE = ".5";
  private static boolean loaded;
  private static String fault;

  private NativeLibrary() {}

  /**
   * Loads the engine unless that has been done.
   *
   * @throws UnsatisfiedLinkError when it cannot be loaded; it says what was looked for, and how to set it.
   *     Later calls throw the same.
   */
  public static synchronized void load() {
    if (loaded) {
      return;
    }
    if (fault == null) {
      List<String> seen = new ArrayList<>();
      loaded = loadFrom(seen);
      if (loaded) {
        return;
      }
      fault = "Cannot load the engine (" + System.mapLibraryName(NAME) + "). Looked for:\n  - "
          + String.join("\n  - ", seen) + "\nName its file with -D" + PROPERTY
          + "=FILE or in the environment variable " + VARIABLE + ", or put its folder on java.library.path.";
    }
    throw new UnsatisfiedLinkError(fault);
  }

  private static boolean loadFrom(List<String> seen) {
    String property = System.getProperty(PROPERTY);
    seen.add("system property " + PROPERTY + ": " + (property == null ? "not set" : property));
    if (property != null) {
      return loadFile(Path.of(property), seen);
    }
    String variable = System.getenv(VARIABLE);
    seen.add("environment variable " + VARIABLE + ": " + (variable == null ? "not set" : variable));
    if (variable != null) {
      return loadFile(Path.of(variable), seen);
    }
    for (Path candidate : besideTheJar()) {
      seen.add(candidate.toString());
      if (!Files.exists(candidate)) {
        note(seen, "not there");
      } else if (loadFile(candidate, seen)) {
        return true;
      }
    }
    return loadFromLibraryPath(seen);
  }

  private static boolean loadFile(Path file, List<String> seen) {
    if (!Files.isRegularFile(file)) {
      note(seen, "no such file");
      return false;
    }
    try {
      System.load(file.toAbsolutePath().toString());
      return true;
    } catch (UnsatisfiedLinkError reason) {
      note(seen, reason.getMessage());
      return false;
    }
  }

  private static boolean loadFromLibraryPath(List<String> seen) {
    seen.add("java.library.path: " + System.getProperty("java.library.path"));
    try {
      System.loadLibrary(NAME);
      return true;
    } catch (UnsatisfiedLinkError reason) {
      // That it is on none of the folders says nothing that the line does not say already.
      boolean absent = reason.getMessage() != null && reason.getMessage().startsWith("no " + NAME + " in ");
      note(seen, absent ? "not there" : reason.getMessage());
      return false;
    }
  }

  /** Adds to the last line why it was of no use. */
  private static void note(List<String> seen, String reason) {
    int last = seen.size() - 1;
    seen.set(last, seen.get(last) + " (" + reason + ")");
  }

  private static List<Path> besideTheJar() {
    String file = System.mapLibraryName(NAME);
    List<Path> candidates = new ArrayList<>();
    Path folder = folderOfTheJar();
    if (folder != null) {
      for (Path place : List.of(folder, folder.resolve("..").resolve("lib").normalize())) {
        candidates.add(place.resolve(file));
        candidates.add(place.resolve(file + INTERFACE));
      }
    }
    return candidates;
  }

  /** Null where the class comes from nothing that lies in a folder. */
  private static Path folderOfTheJar() {
    CodeSource source = NativeLibrary.class.getProtectionDomain().getCodeSource();
    if (source == null || source.getLocation() == null) {
      return null;
    }
    try {
      return Path.of(source.getLocation().toURI()).toAbsolutePath().getParent();
    } catch (URISyntaxException | IllegalArgumentException | java.nio.file.FileSystemNotFoundException e) {
      return null;
    }
  }
}
