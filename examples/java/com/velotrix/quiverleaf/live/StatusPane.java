package com.velotrix.quiverleaf.live;

import com.velotrix.quiverleaf.sdk.CalibrationResult;
import com.velotrix.quiverleaf.sdk.CalibratorStatus;
import com.velotrix.quiverleaf.sdk.Matrix;
import com.velotrix.quiverleaf.sdk.Status;
import java.awt.BorderLayout;
import java.awt.Color;
import java.awt.Dimension;
import java.awt.Font;
import java.util.Locale;
import java.util.Map;
import javax.swing.BorderFactory;
import javax.swing.Box;
import javax.swing.BoxLayout;
import javax.swing.JComponent;
import javax.swing.JLabel;
import javax.swing.JPanel;
import javax.swing.JProgressBar;
import javax.swing.JTextArea;

/** Where the calibration stands, and what came out of it. */
final class StatusPane extends JPanel {
  private static final long serialVersionUID = 1L;
  private static final int ENOUGH = 5;
  private static final String[] COEFFICIENTS = {
      "k1", "k2", "p1", "p2", "k3", "k4", "k5", "k6", "s1", "s2", "s3", "s4", "tau x", "tau y"};
  private static final Map<Status, Color> COLOURS =
      Map.of(Status.NOT_READY, new Color(0x9A, 0x5B, 0x00), Status.READY, new Color(0x00, 0x55, 0xAA),
          Status.PROGRESS, new Color(0x6A, 0x2C, 0x91), Status.COMPLETED, new Color(0x1B, 0x7A, 0x3A));

  private final JLabel state = new JLabel("No frames yet");
  private final JProgressBar snapshots = new JProgressBar(0, ENOUGH);
  private final JTextArea words = new JTextArea(2, 20);
  private final JTextArea result = new JTextArea();

  StatusPane() {
    super(new BorderLayout(0, 12));
    setBorder(BorderFactory.createEmptyBorder(12, 12, 12, 12));
    setPreferredSize(new Dimension(260, 480));
    state.setName("state");
    state.setFont(state.getFont().deriveFont(Font.BOLD, 18.0F));
    snapshots.setName("snapshots");
    snapshots.setStringPainted(true);
    snapshots.setString("0 snapshots");
    words.setLineWrap(true);
    words.setWrapStyleWord(true);
    words.setFont(state.getFont().deriveFont(Font.PLAIN, 13.0F));
    asLabel(words);
    asLabel(result);
    result.setFont(new Font(Font.MONOSPACED, Font.PLAIN, 13));
    JPanel top = new JPanel();
    top.setLayout(new BoxLayout(top, BoxLayout.Y_AXIS));
    for (JComponent part : new JComponent[] {state, snapshots, words}) {
      part.setAlignmentX(LEFT_ALIGNMENT);
      top.add(part);
      top.add(Box.createVerticalStrut(8));
    }
    add(top, BorderLayout.NORTH);
    add(result, BorderLayout.CENTER);
  }

  private static void asLabel(JTextArea text) {
    text.setEditable(false);
    text.setFocusable(false);
    text.setOpaque(false);
    text.setBackground(new Color(0, true));
    text.setBorder(null);
  }

  /** With the assistant's number of poses, -1 without one. */
  void show(CalibratorStatus status, int goal) {
    String name = status.status().toString().replace('_', ' ').toLowerCase(Locale.ROOT);
    state.setText(Character.toUpperCase(name.charAt(0)) + name.substring(1));
    state.setForeground(COLOURS.get(status.status()));
    int wanted = Math.max(goal, ENOUGH);
    snapshots.setMaximum(wanted);
    snapshots.setValue(Math.min(wanted, status.snapshots()));
    snapshots.setString(status.snapshots() + (goal > 0 ? " of " + goal : "") + " snapshots");
    words.setText(status.message());
    result.setText(status.result().map(StatusPane::describe).orElse(""));
  }

  private static String describe(CalibrationResult result) {
    Matrix k = result.cameraMatrix();
    StringBuilder text = new StringBuilder();
    line(text, "RMS", result.rms(), " px");
    line(text, "fx", k.get(0, 0), "");
    line(text, "fy", k.get(1, 1), "");
    line(text, "cx", k.get(0, 2), "");
    line(text, "cy", k.get(1, 2), "");
    Matrix d = result.distortion();
    for (int i = 0; i < d.columns(); ++i) {
      line(text, COEFFICIENTS[i], d.get(0, i), "");
    }
    return text.toString();
  }

  private static void line(StringBuilder text, String name, double value, String unit) {
    text.append(String.format(Locale.ROOT, "%-6s %12.4f%s%n", name, value, unit));
  }
}
