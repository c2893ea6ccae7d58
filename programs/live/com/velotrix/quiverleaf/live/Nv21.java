package com.velotrix.quiverleaf.live;

import java.awt.image.BufferedImage;

/** Pictures as the raw frames of a phone's camera. */
final class Nv21 {
  private Nv21() {}

  /** BT.601; an odd last column or row is left out. */
  static byte[] of(BufferedImage picture) {
    int width = widthOf(picture);
    int height = heightOf(picture);
    byte[] data = new byte[width * height * 3 / 2];
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        int rgb = picture.getRGB(x, y);
        int r = rgb >> 16 & 255;
        int g = rgb >> 8 & 255;
        int b = rgb & 255;
        data[y * width + x] = (byte) (16 + (66 * r + 129 * g + 25 * b + 128 >> 8));
        if (x % 2 == 0 && y % 2 == 0) {
          int chroma = width * height + y / 2 * width + x;
          data[chroma] = (byte) (128 + (112 * r - 94 * g - 18 * b + 128 >> 8));
          data[chroma + 1] = (byte) (128 + (-38 * r - 74 * g + 112 * b + 128 >> 8));
        }
      }
    }
    return data;
  }

  static int widthOf(BufferedImage picture) { return picture.getWidth() / 2 * 2; }

  static int heightOf(BufferedImage picture) { return picture.getHeight() / 2 * 2; }
}
