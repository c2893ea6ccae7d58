package com.velotrix.quiverleaf.live;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.nio.file.Files;
import java.nio.file.Path;
import org.junit.jupiter.api.DisplayNameGeneration;
import org.junit.jupiter.api.DisplayNameGenerator;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

/** Sizes, sources and cameras in words, and what pictures showed. */
@DisplayNameGeneration(DisplayNameGenerator.ReplaceUnderscores.class)
class WordsTest {
  @Test
  void sizes_have_few_digits() {
    assertEquals("0 bytes", Bytes.inWords(0));
    assertEquals("999 bytes", Bytes.inWords(999));
    assertEquals("1.2 kB", Bytes.inWords(1234));
    assertEquals("46 MB", Bytes.inWords(45_600_000));
    assertEquals("2.0 TB", Bytes.inWords(2_000_000_000_000L));
  }

  @Test
  void what_was_seen_is_remembered_for_a_moment() {
    Situation now = new Situation();
    Sighting.NONE.tell(now, 5);
    assertFalse(now.frames || now.seen);
    Sighting seen = Sighting.NONE.then(true, "", 100);
    Sighting gone = seen.then(false, "too few circles in sight", 200);
    gone.tell(now, 200);
    assertTrue(now.frames && now.seen);
    assertFalse(now.inView);
    assertEquals("too few circles in sight", now.whyNot);
    gone.tell(now, 100 + Sighting.MEMORY_NANOSECONDS);
    assertFalse(now.seen);
  }

  @Test
  void sources_are_called_by_their_short_names() {
    assertEquals("camera 3", FrameSource.nameOf(SourceKind.CAMERA, " 3 "));
    assertEquals("a.avi", FrameSource.nameOf(SourceKind.FILE, "/home/me/a.avi"));
    assertEquals("rtsp://there/1", FrameSource.nameOf(SourceKind.FILE, "rtsp://there/1"));
    assertEquals("the folder views", FrameSource.nameOf(SourceKind.FOLDER, "some/views"));
  }

  @Test
  void cameras_are_listed_by_number_with_their_names(@TempDir Path devices) throws Exception {
    assertEquals("There is no camera.", Cameras.inWords(devices));
    assertEquals("There is no camera.", Cameras.inWords(devices.resolve("nowhere")));
    for (String device : new String[] {"video10", "video2", "video-x"}) {
      Files.createDirectory(devices.resolve(device));
    }
    Files.writeString(devices.resolve("video2/name"), "Front camera\n");
    assertEquals("There are: 2 (Front camera), 10.", Cameras.inWords(devices));
  }
}
