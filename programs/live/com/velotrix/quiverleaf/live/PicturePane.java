package com.velotrix.quiverleaf.live;

import java.awt.BasicStroke;
import java.awt.Color;
import java.awt.Dimension;
import java.awt.Font;
import java.awt.FontMetrics;
import java.awt.Graphics;
import java.awt.Graphics2D;
import java.awt.RenderingHints;
import java.awt.image.BufferedImage;
import javax.swing.JComponent;
import javax.swing.Timer;

/** Shows the newest frame, as large as there is room, and a note where it is not the present. */
final class PicturePane extends JComponent {
  private static final long serialVersionUID = 1L;
  private static final Color BEHIND = new Color(0x20, 0x24, 0x28);
  private static final Color BAND = new Color(0x20, 0x24, 0x28, 0xD0);
  private static final Color FLASH = new Color(0x4C, 0xD1, 0x6B);
  private static final int FLASH_MILLISECONDS = 350;
  private static final int LARGEST_WIDTH = 800;

  private transient BufferedImage picture;
  private String note = "";
  private boolean flashing;
  private final Timer flashEnd = new Timer(FLASH_MILLISECONDS, event -> {
    flashing = false;
    repaint();
  });

  PicturePane(int width, int height) {
    // Of large frames less, so that the window is on the screen.
    double scale = Math.min(1.0, (double) LARGEST_WIDTH / width);
    setPreferredSize(new Dimension((int) (scale * width), (int) (scale * height)));
    flashEnd.setRepeats(false);
  }

  void show(BufferedImage newest) {
    picture = newest;
    repaint();
  }

  /** Empty: the picture is what the source shows now. */
  void setNote(String words) {
    if (!note.equals(words)) {
      note = words;
      repaint();
    }
  }

  /** Says that a snapshot is taken. */
  void flash() {
    flashing = true;
    flashEnd.restart();
    repaint();
  }

  @Override
  protected void paintComponent(Graphics graphics) {
    graphics.setColor(BEHIND);
    graphics.fillRect(0, 0, getWidth(), getHeight());
    Graphics2D canvas = (Graphics2D) graphics;
    if (picture != null) {
      drawPicture(canvas);
    }
    if (!note.isEmpty()) {
      drawNote(canvas);
    }
    if (flashing) {
      canvas.setColor(FLASH);
      canvas.setStroke(new BasicStroke(16));
      canvas.drawRect(0, 0, getWidth(), getHeight());
    }
  }

  private void drawPicture(Graphics2D canvas) {
    double scale =
        Math.min((double) getWidth() / picture.getWidth(), (double) getHeight() / picture.getHeight());
    int width = (int) Math.round(scale * picture.getWidth());
    int height = (int) Math.round(scale * picture.getHeight());
    canvas.setRenderingHint(RenderingHints.KEY_INTERPOLATION, RenderingHints.VALUE_INTERPOLATION_BILINEAR);
    canvas.drawImage(picture, (getWidth() - width) / 2, (getHeight() - height) / 2, width, height, null);
  }

  private void drawNote(Graphics2D canvas) {
    canvas.setRenderingHint(RenderingHints.KEY_TEXT_ANTIALIASING, RenderingHints.VALUE_TEXT_ANTIALIAS_ON);
    canvas.setFont(getFont() == null ? new Font(Font.SANS_SERIF, Font.BOLD, 20)
                                     : getFont().deriveFont(Font.BOLD, 20.0F));
    FontMetrics metrics = canvas.getFontMetrics();
    int height = 2 * metrics.getHeight();
    int top = (getHeight() - height) / 2;
    canvas.setColor(BAND);
    canvas.fillRect(0, top, getWidth(), height);
    canvas.setColor(Color.WHITE);
    canvas.drawString(note, (getWidth() - metrics.stringWidth(note)) / 2,
        top + (height - metrics.getHeight()) / 2 + metrics.getAscent());
  }
}
