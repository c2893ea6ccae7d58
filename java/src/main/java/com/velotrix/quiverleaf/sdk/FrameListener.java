package com.velotrix.quiverleaf.sdk;

/** Gets the frames of a {@link Calibrator} as they are processed. */
@FunctionalInterface
public interface FrameListener {
  /**
   * Called on the thread that processed the frame, which waits for it: hand long work over to a thread of
   * your own. What it throws is written to the engine's log.
   */
  void onFrame(AnnotatedFrame frame);
}
