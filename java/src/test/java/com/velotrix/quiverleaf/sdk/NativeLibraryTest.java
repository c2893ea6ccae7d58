package com.velotrix.quiverleaf.sdk;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.Map;
import java.util.concurrent.TimeUnit;
import org.junit.jupiter.api.DisplayNameGeneration;
import org.junit.jupiter.api.DisplayNameGenerator;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** How the engine is found: each in a virtual machine of its own, for it is loaded once. */
@DisplayNameGeneration(DisplayNameGenerator.ReplaceUnderscores.class)
class NativeLibraryTest {
  private static final Path LIBRARY = Path.of(System.getProperty("velmora.test.library"));
  private static final Path JAR = Path.of(System.getProperty("velmora.test.jar"));

  @TempDir Path folder;

  /** What a machine with that jar says, with such options and variables. */
  private String run(Path jar, Map<String, String> variables, String... options) throws Exception {
    List<String> command = new ArrayList<>(List.of(ProcessHandle.current().info().command().get()));
    command.addAll(List.of(options));
    // The tests' own jar comes last: whatever both hold is taken from the jar under test.
    command.addAll(List.of("-cp",
        jar + ":" + Path.of(LoadProgram.class.getProtectionDomain().getCodeSource().getLocation().toURI()),
        LoadProgram.class.getName()));
    ProcessBuilder builder = new ProcessBuilder(command).redirectErrorStream(true);
    builder.environment().remove("VELMORA_LIBRARY");
    builder.environment().putAll(variables);
    Path output = folder.resolve("output.txt");
    Process process = builder.redirectOutput(output.toFile()).start();
    assertTrue(process.waitFor(60, TimeUnit.SECONDS));
    return Files.readString(output);
  }

  private Path copyOfTheJar() throws Exception {
    return Files.copy(JAR, Files.createDirectories(folder.resolve("java")).resolve("velmora.jar"));
  }

  @Test
  void beside_the_jar_in_the_build_tree_it_is_found_without_settings() throws Exception {
    assertEquals("5.1.0\n", run(JAR, Map.of()));
  }

  @Test
  void in_the_folder_lib_next_to_the_jar_s_it_is_found() throws Exception {
    Path jar = copyOfTheJar();
    Files.copy(LIBRARY, Files.createDirectories(folder.resolve("lib")).resolve("libCalibration.so"));
    assertEquals("5.1.0\n", run(jar, Map.of()));
  }

  @Test
  void where_only_the_versioned_file_is_installed_it_is_found() throws Exception {
    Path jar = copyOfTheJar();
    Files.copy(LIBRARY, jar.resolveSibling("libCalibration.so.5"));
    assertEquals("5.1.0\n", run(jar, Map.of()));
  }

  @Test
  void on_the_library_path_it_is_found() throws Exception {
    assertEquals("5.1.0\n", run(copyOfTheJar(), Map.of(), "-Djava.library.path=" + LIBRARY.getParent()));
  }

  @Test
  void it_is_the_file_that_the_property_or_the_variable_names() throws Exception {
    Path jar = copyOfTheJar();
    Path other = Files.copy(LIBRARY, folder.resolve("caf\u00e9.so"));
    assertEquals("5.1.0\n", run(jar, Map.of("LC_ALL", "C.UTF-8"), "-Dvelmora.library=" + other));
    assertEquals("5.1.0\n", run(jar, Map.of("VELMORA_LIBRARY", LIBRARY.toString())));
  }

  @Test
  void one_error_says_what_was_looked_for_and_how_to_set_it() throws Exception {
    String printed = run(copyOfTheJar(), Map.of(), "-Djava.library.path=/nowhere");
    assertEquals("java.lang.UnsatisfiedLinkError: Cannot load the engine (libCalibration.so). Looked for:\n"
            + "  - system property velmora.library: not set\n"
            + "  - environment variable VELMORA_LIBRARY: not set\n"
            + "  - " + folder + "/java/libCalibration.so (not there)\n"
            + "  - " + folder + "/java/libCalibration.so.5 (not there)\n"
            + "  - " + folder + "/lib/libCalibration.so (not there)\n"
            + "  - " + folder + "/lib/libCalibration.so.5 (not there)\n"
            + "  - java.library.path: /nowhere (not there)\n"
            + "Name its file with -Dvelmora.library=FILE or in the environment variable VELMORA_LIBRARY, or put its "
            + "folder on java.library.path.\nand again the same\n",
        printed);
  }

  @Test
  void a_file_that_was_named_and_is_none_is_an_error_even_when_there_is_another() throws Exception {
    String absent = run(JAR, Map.of(), "-Dvelmora.library=/nowhere/engine.so");
    assertTrue(
        absent.contains("  - system property velmora.library: /nowhere/engine.so (no such file)\n"), absent);
    Path text = Files.writeString(folder.resolve("text.so"), "no library");
    String wrong = run(JAR, Map.of("VELMORA_LIBRARY", text.toString()));
    assertTrue(
        wrong.contains("  - environment variable VELMORA_LIBRARY: " + text + " (" + text + ": "), wrong);
  }
}
