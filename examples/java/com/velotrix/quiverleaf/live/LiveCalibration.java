package com.velotrix.quiverleaf.live;

import com.velotrix.quiverleaf.sdk.Calibrator;
import com.velotrix.quiverleaf.sdk.LogLevel;
import javax.swing.SwingUtilities;
import javax.swing.UIManager;
import javax.swing.UnsupportedLookAndFeelException;
import javax.swing.plaf.nimbus.NimbusLookAndFeel;

/** A camera's live calibration in a window: how a Java program uses the engine. */
public final class LiveCalibration {
  private LiveCalibration() {}

  /** See the usage line. */
  public static void main(String[] arguments) {
    Settings settings;
    try {
      settings = Settings.of(arguments);
      Calibrator.setLogLevel(LogLevel.WARN);
    } catch (IllegalArgumentException | UnsatisfiedLinkError e) {
      System.err.println("ERROR: " + e.getMessage() + "\n" + Settings.USAGE);
      System.exit(2);
      return;
    }
    SwingUtilities.invokeLater(() -> {
      dress();
      new LiveWindow(settings).setVisible(true);
    });
  }

  private static void dress() {
    try {
      UIManager.setLookAndFeel(new NimbusLookAndFeel());
    } catch (UnsupportedLookAndFeelException e) {
      System.err.println(e.getMessage()); // the plain one will do
    }
  }
}
