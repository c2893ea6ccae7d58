package com.velotrix.quiverleaf.live;

import java.awt.Color;
import java.awt.Dimension;
import java.awt.Graphics;
import java.awt.Graphics2D;
import java.awt.RenderingHints;
import java.awt.image.BufferedImage;
import javax.swing.JComponent;

/** Shows the newest frame, as large as there is room. */
final class PicturePane extends JComponent {
  private static final long serialVersionUID = 1L;
  private static final Color BEHIND = new Color(0x20, 0x24, 0x28);

  private transient BufferedImage picture;

  PicturePane(int width, int height) { setPreferredSize(new Dimension(width, height)); }

  void show(BufferedImage newest) {
    picture = newest;
    repaint();
  }

  @Override
  protected void paintComponent(Graphics graphics) {
    graphics.setColor(BEHIND);
    graphics.fillRect(0, 0, getWidth(), getHeight());
    if (picture == null) {
      return;
    }
    double scale =
        Math.min((double) getWidth() / picture.getWidth(), (double) getHeight() / picture.getHeight());
    int width = (int) Math.round(scale * picture.getWidth());
    int height = (int) Math.round(scale * picture.getHeight());
    Graphics2D canvas = (Graphics2D) graphics;
    canvas.setRenderingHint(RenderingHints.KEY_INTERPOLATION, RenderingHints.VALUE_INTERPOLATION_BILINEAR);
    canvas.drawImage(picture, (getWidth() - width) / 2, (getHeight() - height) / 2, width, height, null);
  }
}
