package com.velotrix.quiverleaf.sdk;

import java.awt.image.BufferedImage;
import java.util.Arrays;

/** Makes raw frames of pictures, as a camera would deliver them. */
final class RawFrames {
  private RawFrames() {}

  static byte[] of(BufferedImage picture, FrameFormat format) {
    return format == FrameFormat.RGB ? packed(picture) : yuv(picture, format);
  }

  private static byte[] packed(BufferedImage picture) {
    byte[] data = new byte[3 * picture.getWidth() * picture.getHeight()];
    int at = 0;
    for (int y = 0; y < picture.getHeight(); ++y) {
      for (int x = 0; x < picture.getWidth(); ++x) {
        int rgb = picture.getRGB(x, y);
        data[at++] = (byte) (rgb >> 16);
        data[at++] = (byte) (rgb >> 8);
        data[at++] = (byte) rgb;
      }
    }
    return data;
  }

  /** BT.601 in the range of video, with the colour of the upper left pixel of four. */
  private static byte[] yuv(BufferedImage picture, FrameFormat format) {
    int width = picture.getWidth();
    int height = picture.getHeight();
    byte[] data = new byte[format.bytes(width, height)];
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        int rgb = picture.getRGB(x, y);
        int r = rgb >> 16 & 255;
        int g = rgb >> 8 & 255;
        int b = rgb & 255;
        data[y * width + x] = clamp(16.0 + 0.257 * r + 0.504 * g + 0.098 * b);
        if (x % 2 == 0 && y % 2 == 0) {
          int chroma = y / 2 * (width / 2) + x / 2;
          data[place(format, true, chroma, width, height)] = clamp(128.0 - 0.148 * r - 0.291 * g + 0.439 * b);
          data[place(format, false, chroma, width, height)] =
              clamp(128.0 + 0.439 * r - 0.368 * g - 0.071 * b);
        }
      }
    }
    return data;
  }

  private static int place(FrameFormat format, boolean u, int chroma, int width, int height) {
    int start = width * height;
    boolean first = u == (format == FrameFormat.I420 || format == FrameFormat.NV12);
    if (format == FrameFormat.NV12 || format == FrameFormat.NV21) {
      return start + 2 * chroma + (first ? 0 : 1);
    }
    return start + chroma + (first ? 0 : start / 4);
  }

  private static byte clamp(double value) { return (byte) Math.max(0, Math.min(255, Math.round(value))); }

  /** The same frame with rows of so many bytes. */
  static byte[] padded(byte[] data, int width, int step) {
    int rows = data.length / width;
    byte[] result = new byte[rows * step];
    Arrays.fill(result, (byte) 77);
    for (int row = 0; row < rows; ++row) {
      System.arraycopy(data, row * width, result, row * step, width);
    }
    return result;
  }
}
