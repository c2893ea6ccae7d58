package com.velotrix.quiverleaf.live;

/** What the program says of itself at the command line. */
final class Help {
  static final String USAGE = "Usage: velmora-live [OPTIONS]";

  static final String OPTIONS = String.join("\n", //
      "  -h,--help                   Print this help message and exit",
      "  --version                   Print the version and exit",
      "  --camera NUMBER             start with that camera at once",
      "  --file FILE                 start with that video file or address at once",
      "  --folder FOLDER             start with the pictures of that folder at once, over and over",
      "  --push NAME                 as what pictures of a folder are handed to the engine: base64 or nv21",
      "                              (default: base64)",
      "  --hdist METRES              distance in metres across the ten row intervals of the grid (default:",
      "                              0.2, that of the supplied sheet)",
      "  --size WxH                  size in pixels of the frames to work in, also asked of a camera",
      "                              (default: 640x480)",
      "  --model NAME                lens model: classic, rational, full, fisheye, or auto: what the views",
      "                              ask for (default: auto)",
      "  --poses FILE                model file with the poses of the assistant (default: the one that",
      "                              ships)",
      "  --output NAME               name of the result file, to which .json is added (default:",
      "                              calibration)",
      "  --session FOLDER            go on with that session, or begin one of that name (default: a new one,",
      "                              named as the result, with .velmora)",
      "  --no-images                 store only what was observed in the session, no images");

  static final String TEXT = String.join("\n",
      "Calibrates a camera live in a window: bring the printed 4x11 grid to where the drawn sheet is, or take",
      "snapshots by hand. Each is stored in a session before it is said to be taken.", USAGE, "",
      "Options:", OPTIONS, "",
      "Exit status: 0 when the window was closed, 2 wrong usage, a session that cannot be used, or no display.",
      "");

  private Help() {}
}
