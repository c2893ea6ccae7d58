package com.velotrix.quiverleaf.sdk;

import org.junit.jupiter.api.DisplayNameGeneration;
import org.junit.jupiter.api.DisplayNameGenerator;
import org.junit.jupiter.api.Test;

/** A short form of the long run. */
@DisplayNameGeneration(DisplayNameGenerator.ReplaceUnderscores.class)
class SoakTest {
  @Test
  void memory_threads_and_listeners_stay_level_while_calibrators_come_and_go() throws Exception {
    new Soak().run(400);
  }
}
