package com.velotrix.quiverleaf.live;

import com.velotrix.quiverleaf.sdk.Calibrator;
import java.io.IOException;

/** The source of a run, and how it stands; opened and closed by one thread, and told of to any. */
final class RunSource {
  private final Calibrator calibrator;
  private final FrameSource source;
  private volatile Situation.Source state = Situation.Source.NONE;
  private volatile String name = "";
  private volatile String fault = "";

  RunSource(Calibrator calibrator, int width, int height) {
    this.calibrator = calibrator;
    source = new FrameSource(calibrator, width, height);
  }

  /** Says that it will be opened. */
  void announce(SourceKind kind, String address) {
    name = FrameSource.nameOf(kind, address);
    state = Situation.Source.OPENING;
  }

  /** What came of it, as a sentence. */
  String open(SourceKind kind, String address, PushFormat format) {
    try {
      source.open(kind, address, format);
      // A short one may have come to its end by now.
      state = calibrator.sourceEnded() ? Situation.Source.ENDED : Situation.Source.OPEN;
      return sentence(name) + " is open.";
    } catch (IOException e) {
      fault = e.getMessage();
      state = Situation.Source.FAILED;
      return fault;
    }
  }

  /** What came of it, as a sentence. */
  String close() {
    source.close();
    state = Situation.Source.NONE;
    return sentence(name) + " is closed.";
  }

  /** It came to its end by itself. */
  void ended() { state = Situation.Source.ENDED; }

  void tell(Situation now) {
    now.source = state;
    now.sourceName = name;
    now.sourceFault = fault;
  }

  private static String sentence(String words) {
    return words.isEmpty() ? words : Character.toUpperCase(words.charAt(0)) + words.substring(1);
  }
}
