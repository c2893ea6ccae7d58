package com.velotrix.quiverleaf.live;

import java.util.concurrent.atomic.AtomicReference;
import java.util.function.Consumer;
import javax.swing.SwingUtilities;

/** Hands values to Swing's thread; one that comes before the last was taken replaces it. */
final class LatestOnly<T> {
  private final AtomicReference<T> waiting = new AtomicReference<>();
  private final Consumer<T> receiver;

  LatestOnly(Consumer<T> receiver) { this.receiver = receiver; }

  void put(T value) {
    if (waiting.getAndSet(value) == null) {
      SwingUtilities.invokeLater(() -> receiver.accept(waiting.getAndSet(null)));
    }
  }
}
