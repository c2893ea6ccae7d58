package com.velotrix.quiverleaf.sdk;

/** How the pixels of a raw frame lie in memory. */
public enum FrameFormat {
  /** Three bytes per pixel: red, green, blue. */
  RGB("8BPS"),
  /** All Y, then all U, then all V; U and V at half the width and height. */
  I420("I420"),
  /** All Y, then U and V in turn. */
  NV12("NV12"),
  /** All Y, then V and U in turn; what Android's cameras deliver. */
  NV21("NV21"),
  /** All Y, then all V, then all U. */
  YV12("YV12");

  private final String code;

  FrameFormat(String code) { this.code = code; }

  /** The name that the engine knows the format by. */
  public String code() { return code; }

  /**
   * The bytes of a frame without padding. YUV frames may have more: all rows are padded evenly then,
   * two rows of chroma in planes counting as one.
   *
   * @throws ArithmeticException when they are more than an array can have
   */
  public int bytes(int width, int height) {
    return this == RGB ? Math.multiplyExact(Math.multiplyExact(width, height), 3)
                       : Math.multiplyExact(Math.multiplyExact(height, 3) / 2, width);
  }

  /** Whether an array of that length holds a frame of that size, which {@link #fits}. */
  boolean isHeldBy(int length, int width, int height) {
    long pixels = (long) width * height;
    return pixels <= length && (this == RGB ? 3 * pixels : 3 * pixels / 2) <= length;
  }

  /** Whether there are frames of that size: both sides are positive, and for YUV even. */
  public boolean fits(int width, int height) {
    return width > 0 && height > 0 && (this == RGB || (width % 2 == 0 && height % 2 == 0));
  }
}
