package com.velotrix.quiverleaf.live;

import java.awt.Color;
import java.awt.Font;
import javax.swing.Box;
import javax.swing.BoxLayout;
import javax.swing.JComponent;
import javax.swing.JLabel;
import javax.swing.JPanel;
import javax.swing.JProgressBar;

/** How many snapshots there are, and where they are kept. */
final class StatusPane extends JPanel {
  private static final long serialVersionUID = 1L;
  private static final Color WARNING = new Color(0xB0, 0x00, 0x20);

  private final JProgressBar snapshots = new JProgressBar(0, Steps.PLENTY);
  private final JLabel kept = new JLabel(" ");
  private final WrappedText warning = new WrappedText();

  StatusPane() {
    setLayout(new BoxLayout(this, BoxLayout.Y_AXIS));
    snapshots.setName("snapshots");
    snapshots.setStringPainted(true);
    snapshots.setString("0 snapshots");
    kept.setName("kept");
    kept.setFont(kept.getFont().deriveFont(Font.PLAIN, 12.0F));
    warning.setName("warning");
    warning.setForeground(WARNING);
    for (JComponent part : new JComponent[] {snapshots, kept, warning}) {
      part.setAlignmentX(LEFT_ALIGNMENT);
      add(part);
      add(Box.createVerticalStrut(6));
    }
  }

  void show(Situation now) {
    int wanted = now.goal > 0 ? now.goal : Steps.PLENTY;
    int done = now.goal > 0 ? now.reached : now.snapshots;
    snapshots.setMaximum(wanted);
    snapshots.setValue(Math.min(wanted, done));
    String count = now.snapshots + (now.snapshots == 1 ? " snapshot" : " snapshots");
    snapshots.setString(now.goal > 0 ? count + ", pose " + now.reached + " of " + now.goal : count);
    kept.setText(now.kept.isEmpty() ? " " : now.kept);
    warning.setText(warningOf(now));
  }

  private static String warningOf(Situation now) {
    if (now.unstored > 0) {
      return now.unstored + " more not on the disk yet, and tried again: " + now.storeFault;
    }
    return now.diskWarning;
  }
}
