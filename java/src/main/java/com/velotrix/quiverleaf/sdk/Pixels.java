package com.velotrix.quiverleaf.sdk;

import java.awt.image.BufferedImage;

/** The pixels of images as the engine takes them: 8 bits, row by row, grey or blue before green and red. */
final class Pixels {
  private Pixels() {}

  static int channelsOf(BufferedImage image) {
    return image.getType() == BufferedImage.TYPE_BYTE_GRAY ? 1 : 3;
  }

  static byte[] of(BufferedImage image) {
    int width = image.getWidth();
    int height = image.getHeight();
    byte[] pixels = new byte[width * height * channelsOf(image)];
    if (channelsOf(image) == 1) {
      // As they are: what getRGB gives of a grey pixel went through a colour space.
      int[] row = new int[width];
      for (int y = 0; y < height; ++y) {
        image.getRaster().getSamples(0, y, width, 1, 0, row);
        for (int x = 0; x < width; ++x) {
          pixels[y * width + x] = (byte) row[x];
        }
      }
      return pixels;
    }
    int at = 0;
    for (int y = 0; y < height; ++y) {
      for (int rgb : image.getRGB(0, y, width, 1, null, 0, width)) {
        pixels[at++] = (byte) rgb;
        pixels[at++] = (byte) (rgb >> 8);
        pixels[at++] = (byte) (rgb >> 16);
      }
    }
    return pixels;
  }
}
