package com.velotrix.quiverleaf.sdk;

import java.util.concurrent.TimeUnit;
import java.util.concurrent.locks.Condition;
import java.util.concurrent.locks.Lock;
import java.util.concurrent.locks.ReentrantLock;
import java.util.function.BooleanSupplier;

/** A listener that keeps the last call and can be waited for. */
final class Recorder implements JNICalibrationListener {
  private static final long PATIENCE_SECONDS = 60;

  private final Lock lock = new ReentrantLock();
  private final Condition called = lock.newCondition();
  private int calls;
  private byte[] jpeg = {};
  private String status = "";
  private String thread = "";

  @Override
  public void onFrame(byte[] picture, String statusJson) {
    lock.lock();
    try {
      ++calls;
      jpeg = picture;
      status = statusJson;
      thread = Thread.currentThread().getName();
      called.signalAll();
    } finally {
      lock.unlock();
    }
  }

  int calls() { return locked(() -> calls); }

  byte[] jpeg() { return locked(() -> jpeg); }

  CalibratorStatus status() { return CalibratorStatus.parse(locked(() -> status)); }

  String thread() { return locked(() -> thread); }

  /** Waits until there were so many calls; false when there never were. */
  boolean await(int count) throws InterruptedException { return await(() -> calls >= count); }

  /** Waits for a condition that calls bring about. */
  boolean await(BooleanSupplier condition) throws InterruptedException {
    long left = TimeUnit.SECONDS.toNanos(PATIENCE_SECONDS);
    lock.lock();
    try {
      boolean met = condition.getAsBoolean();
      while (!met && left > 0) {
        left = called.awaitNanos(left);
        met = condition.getAsBoolean();
      }
      return met;
    } finally {
      lock.unlock();
    }
  }

  /** Waits until no call has come for that long. */
  void awaitQuiet(long milliseconds) throws InterruptedException {
    lock.lock();
    try {
      while (called.await(milliseconds, TimeUnit.MILLISECONDS)) {
        // Another one came.
      }
    } finally {
      lock.unlock();
    }
  }

  private <T> T locked(java.util.function.Supplier<T> value) {
    lock.lock();
    try {
      return value.get();
    } finally {
      lock.unlock();
    }
  }
}
