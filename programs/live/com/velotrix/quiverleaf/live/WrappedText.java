package com.velotrix.quiverleaf.live;

import java.awt.Color;
import javax.swing.JLabel;
import javax.swing.JTextArea;

/** A label whose text takes as many lines as it needs. */
final class WrappedText extends JTextArea {
  private static final long serialVersionUID = 1L;

  WrappedText() {
    setLineWrap(true);
    setWrapStyleWord(true);
    setEditable(false);
    setFocusable(false);
    setOpaque(false);
    setBackground(new Color(0, true));
    setBorder(null);
    setFont(new JLabel().getFont().deriveFont(13.0F));
  }
}
