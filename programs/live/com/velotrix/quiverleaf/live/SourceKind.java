package com.velotrix.quiverleaf.live;

/** Where frames come from. */
enum SourceKind {
  CAMERA("Camera"),
  FILE("Video file"),
  FOLDER("Folder of pictures");

  private final String words;

  SourceKind(String words) { this.words = words; }

  @Override
  public String toString() {
    return words;
  }
}
