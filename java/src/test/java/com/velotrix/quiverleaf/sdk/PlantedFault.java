package com.velotrix.quiverleaf.sdk;

/** Makes a fault in native code, or none, for the check of the tests' output: PlantedFault KIND. */
final class PlantedFault {
  private PlantedFault() {}

  private static native void plant(String kind);

  public static void main(String[] arguments) {
    System.load(System.getProperty("velmora.test.planted"));
    try {
      plant(arguments[0]);
    } catch (IllegalStateException e) {
      System.out.println("planted: " + e.getMessage());
    }
    System.out.println("the end");
  }

  /** Called by the native method. */
  static void fail() { throw new IllegalStateException("not today"); }
}
