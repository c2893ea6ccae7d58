package com.velotrix.quiverleaf.live;

/** As what the pictures of a folder are handed to the engine. */
enum PushFormat {
  BASE64("Base64 JPEG"),
  NV21("raw NV21");

  private final String words;

  PushFormat(String words) { this.words = words; }

  @Override
  public String toString() {
    return words;
  }
}
