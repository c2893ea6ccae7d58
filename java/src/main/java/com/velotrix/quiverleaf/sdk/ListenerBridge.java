package com.velotrix.quiverleaf.sdk;

/** Turns the engine's calls into those of a program's listener, and knows which threads are in one. */
final class ListenerBridge {
  private final ThreadLocal<Integer> depth = ThreadLocal.withInitial(() -> 0);

  JNICalibrationListener to(FrameListener listener) {
    return (jpeg, statusJson) -> {
      depth.set(depth.get() + 1);
      try {
        listener.onFrame(new AnnotatedFrame(jpeg, statusJson));
      } finally {
        depth.set(depth.get() - 1);
      }
    };
  }

  /** Whether this thread is in a call of a listener. */
  boolean isCalling() { return depth.get() > 0; }
}
