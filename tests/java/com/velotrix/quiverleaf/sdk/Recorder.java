package com.velotrix.quiverleaf.sdk;

import java.lang.ref.WeakReference;
import java.util.ArrayList;
import java.util.List;

/** A listener for tests: it keeps the last call, and knows which arrays are still alive. */
public class Recorder implements JNICalibrationListener {
  private final List<WeakReference<byte[]>> arrays = new ArrayList<>();
  private byte[] image;
  private String status;
  private boolean failing;

  @Override
  public synchronized void onFrame(byte[] jpeg, String text) {
    arrays.add(new WeakReference<>(jpeg));
    image = jpeg.clone();
    status = text;
    notifyAll();
    if (failing) {
      throw new IllegalStateException("not today");
    }
  }

  public synchronized void fail(boolean fail) { failing = fail; }

  public synchronized int calls() { return arrays.size(); }

  public synchronized byte[] image() { return image; }

  public synchronized String status() { return status; }

  /** The number of arrays handed in that something still refers to. */
  public synchronized int livingArrays() {
    System.gc();
    return (int) arrays.stream().filter(array -> array.get() != null).count();
  }

  /** The number of Java's threads that are not its own. */
  public static int threads() { return Thread.activeCount(); }

  public static void collectGarbage() { System.gc(); }
}
