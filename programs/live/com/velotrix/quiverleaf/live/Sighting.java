package com.velotrix.quiverleaf.live;

import java.util.concurrent.TimeUnit;

/** What the last pictures of a source showed. */
final class Sighting {
  /** For so long what was seen counts as seen, so that buttons do not flicker with single pictures. */
  static final long MEMORY_NANOSECONDS = TimeUnit.MILLISECONDS.toNanos(700);
  /** No picture has come yet. */
  static final Sighting NONE = new Sighting(false, false, "", false, 0);

  /** Why the whole grid was not found in the last one, as a clause; empty: it was. */
  final String whyNot;
  private final boolean pictures;
  private final boolean inView;
  private final boolean everSeen;
  private final long seenAt;

  private Sighting(boolean pictures, boolean inView, String whyNot, boolean everSeen, long seenAt) {
    this.pictures = pictures;
    this.inView = inView;
    this.whyNot = whyNot;
    this.everSeen = everSeen;
    this.seenAt = seenAt;
  }

  /** After a further picture, in which there was something to take, or not. */
  Sighting then(boolean canBeTaken, String reason, long nanoseconds) {
    return new Sighting(true, canBeTaken, reason, everSeen || canBeTaken, canBeTaken ? nanoseconds : seenAt);
  }

  void tell(Situation now, long nanoseconds) {
    now.frames = pictures;
    now.inView = inView;
    now.seen = inView || everSeen && nanoseconds - seenAt < MEMORY_NANOSECONDS;
    now.whyNot = whyNot;
  }
}
