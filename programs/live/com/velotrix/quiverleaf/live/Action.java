package com.velotrix.quiverleaf.live;

/** What a user can do in the window. */
enum Action {
  CHOOSE_SOURCE,
  START,
  STOP,
  ASSISTANT,
  SNAPSHOT,
  TAKE_BACK,
  BRING_BACK,
  START_OVER,
  CHOOSE_MODEL,
  CALIBRATE,
  SAVE
}
