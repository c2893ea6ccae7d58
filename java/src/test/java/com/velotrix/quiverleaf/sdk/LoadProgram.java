package com.velotrix.quiverleaf.sdk;

/** Loads the engine and prints its version, or the error, and whether a second attempt ends alike. */
public final class LoadProgram {
  private LoadProgram() {}

  /** Takes no arguments. */
  public static void main(String[] arguments) {
    String first;
    try {
      System.out.println(Calibrator.version());
      return;
    } catch (UnsatisfiedLinkError e) {
      first = e.toString();
      System.out.println(first);
    }
    try {
      Calibrator.builder().build();
    } catch (UnsatisfiedLinkError e) {
      System.out.println(first.equals(e.toString()) ? "and again the same" : e.toString());
    }
  }
}
