package com.velotrix.quiverleaf.live;

import com.velotrix.quiverleaf.sdk.Calibrator;
import com.velotrix.quiverleaf.sdk.LogLevel;
import java.awt.GraphicsEnvironment;
import java.awt.HeadlessException;
import java.io.IOException;
import java.util.List;
import javax.swing.SwingUtilities;
import javax.swing.UIManager;
import javax.swing.UnsupportedLookAndFeelException;
import javax.swing.plaf.nimbus.NimbusLookAndFeel;

/** A camera's live calibration in a window. */
public final class LiveCalibration {
  private static final int UNUSABLE = 2;
  private static final double LEAST_HDIST = 0.02;
  private static final double MOST_HDIST = 5.0;

  private LiveCalibration() {}

  /** See Help. */
  public static void main(String[] arguments) {
    Settings settings;
    try {
      settings = Settings.of(arguments);
    } catch (IllegalArgumentException e) {
      end(e.getMessage() + "\n" + Help.USAGE + "\nRun with --help for more information.");
      return;
    }
    if (settings.help) {
      System.out.print(Help.TEXT);
      return;
    }
    try {
      run(settings);
    } catch (IOException | HeadlessException | IllegalArgumentException | UnsatisfiedLinkError e) {
      end(e instanceof HeadlessException ? "There is no display to open a window on." : e.getMessage());
    }
  }

  private static void end(String words) {
    System.err.println("ERROR: " + words);
    System.exit(UNUSABLE);
  }

  private static void run(Settings settings) throws IOException {
    if (settings.version) {
      System.out.println(Calibrator.version());
      return;
    }
    if (settings.hdist < LEAST_HDIST || settings.hdist > MOST_HDIST) {
      System.err.println("Warning: --hdist is in metres, and " + settings.hdist
          + " m is unusual for a grid (the supplied sheet has " + Settings.SUPPLIED_HDIST
          + "). All lengths follow it.");
    }
    if (GraphicsEnvironment.isHeadless()) {
      throw new HeadlessException();
    }
    Calibrator.setLogLevel(LogLevel.ERROR);
    KeptSession kept = KeptSession.of(settings);
    SwingUtilities.invokeLater(() -> {
      dress();
      try {
        open(settings, kept);
      } catch (IOException | RuntimeException e) {
        end(e.getMessage());
      }
    });
  }

  private static void open(Settings settings, KeptSession kept) throws IOException {
    LiveWindow window = new LiveWindow(settings, kept);
    // Told once: when the window was closed, or the program was ended from outside.
    Thread farewell = new Thread(() -> {
      tellFiles(window.run().filesInWords());
      closeQuietly(kept);
    });
    Runtime.getRuntime().addShutdownHook(farewell);
    window.onEnd(() -> {
      Runtime.getRuntime().removeShutdownHook(farewell);
      tellFiles(window.run().filesInWords());
    });
    window.setVisible(true);
    window.run().begin();
  }

  private static void closeQuietly(KeptSession kept) {
    try {
      kept.close();
    } catch (IOException | RuntimeException e) {
      System.err.println("ERROR: " + e.getMessage());
    }
  }

  private static void tellFiles(List<String> files) {
    if (files.isEmpty()) {
      System.out.println("Nothing was taken, and no file was written.");
      return;
    }
    System.out.println("Files written:");
    files.forEach(file -> System.out.println("  " + file));
  }

  private static void dress() {
    try {
      UIManager.setLookAndFeel(new NimbusLookAndFeel());
    } catch (UnsupportedLookAndFeelException e) {
      System.err.println(e.getMessage()); // the plain one will do
    }
  }
}
