package com.velotrix.quiverleaf.live;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertFalse;
import static org.junit.jupiter.api.Assertions.assertTrue;

import com.velotrix.quiverleaf.live.Situation.Source;
import com.velotrix.quiverleaf.sdk.Verdict;
import java.util.EnumSet;
import java.util.Set;
import org.junit.jupiter.api.DisplayNameGeneration;
import org.junit.jupiter.api.DisplayNameGenerator;
import org.junit.jupiter.api.Test;

/** What can be done when, and what the window says is to be done. */
@DisplayNameGeneration(DisplayNameGenerator.ReplaceUnderscores.class)
class StepsTest {
  private final Situation now = new Situation();

  private void reading(boolean seen) {
    now.source = Source.OPEN;
    now.sourceName = "camera 0";
    now.frames = true;
    now.seen = seen;
    now.inView = seen;
    now.whyNot = seen ? "" : "too few circles in sight";
  }

  private void computed(Verdict.Grade grade) {
    now.snapshots = 12;
    now.result = true;
    now.upToDate = true;
    now.grade = grade;
  }

  private void expectPossible(Action... actions) {
    Set<Action> expected = EnumSet.noneOf(Action.class);
    expected.addAll(Set.of(actions));
    assertEquals(expected, Steps.possible(now));
  }

  private void expectNext(String words) { assertEquals(words, Steps.next(now)); }

  @Test
  void at_first_there_is_a_source_to_choose() {
    expectPossible(Action.CHOOSE_SOURCE, Action.START, Action.ASSISTANT, Action.CHOOSE_MODEL);
    expectNext("Choose where pictures come from and press Start.");
    assertEquals("", Steps.sight(now));
  }

  @Test
  void while_a_source_is_being_opened_it_is_not_opened_again() {
    now.source = Source.OPENING;
    now.sourceName = "camera 0";
    expectPossible(Action.ASSISTANT, Action.CHOOSE_MODEL);
    expectNext("Opening camera 0 ...");
  }

  @Test
  void before_its_first_picture_there_is_nothing_to_take() {
    now.source = Source.OPEN;
    now.sourceName = "camera 0";
    now.seen = true;
    expectPossible(Action.STOP, Action.ASSISTANT, Action.CHOOSE_MODEL);
    expectNext("Waiting for pictures from camera 0 ...");
  }

  @Test
  void a_snapshot_is_taken_of_a_grid_that_is_seen() {
    reading(false);
    expectPossible(Action.STOP, Action.ASSISTANT, Action.CHOOSE_MODEL);
    expectNext("Press Assistant to be led from pose to pose, or show the sheet to the camera.");
    assertEquals("No grid: too few circles in sight.", Steps.sight(now));
    reading(true);
    expectPossible(Action.STOP, Action.ASSISTANT, Action.CHOOSE_MODEL, Action.SNAPSHOT);
    expectNext("Press Snapshot. 5 more snapshots are needed.");
    assertEquals("The grid is in view.", Steps.sight(now));
  }

  @Test
  void a_part_of_the_grid_that_can_be_taken_is_told_as_such() {
    reading(true);
    now.whyNot = "part of the grid is outside the picture";
    assertTrue(Steps.possible(now).contains(Action.SNAPSHOT));
    assertEquals("Enough of the grid for a snapshot is in view.", Steps.sight(now));
  }

  @Test
  void a_grid_that_was_seen_a_moment_ago_leaves_the_button_and_yet_the_reason_is_told() {
    reading(false);
    now.seen = true;
    assertTrue(Steps.possible(now).contains(Action.SNAPSHOT));
    assertEquals("No grid: too few circles in sight.", Steps.sight(now));
  }

  @Test
  void a_view_that_is_taken_is_not_taken_twice() {
    reading(false);
    now.whyNot = "";
    now.snapshots = 1;
    assertFalse(Steps.possible(now).contains(Action.SNAPSHOT));
    assertEquals("This view is taken. Move the sheet.", Steps.sight(now));
    expectNext(
        "Show the sheet in another pose: tilted, nearer, at the picture's edge. 4 more snapshots are needed.");
  }

  @Test
  void a_computation_needs_five_snapshots() {
    reading(true);
    now.snapshots = 4;
    expectPossible(Action.STOP, Action.ASSISTANT, Action.CHOOSE_MODEL, Action.SNAPSHOT, Action.TAKE_BACK,
        Action.START_OVER);
    expectNext("Press Snapshot. 1 more snapshot is needed.");
    now.snapshots = 5;
    assertTrue(Steps.possible(now).contains(Action.CALIBRATE));
    expectNext("Press Snapshot, or Calibrate. 7 more poses make the result surer.");
    now.snapshots = 12;
    expectNext("Press Calibrate, or take more snapshots.");
  }

  @Test
  void snapshots_that_are_not_on_the_disk_count_for_a_computation() {
    now.snapshots = 3;
    now.unstored = 2;
    assertTrue(Steps.possible(now).contains(Action.CALIBRATE));
  }

  @Test
  void the_assistant_leads() {
    reading(true);
    now.goal = 12;
    now.reached = 6;
    expectPossible(Action.STOP, Action.ASSISTANT, Action.CHOOSE_MODEL);
    expectNext("Hold the sheet where the drawn one is (pose 7 of 12). The snapshot is taken by itself.");
  }

  @Test
  void during_a_computation_snapshots_are_left_alone() {
    reading(true);
    now.snapshots = 12;
    now.takenBack = 1;
    now.computing = true;
    expectPossible(Action.STOP);
    expectNext("Computing. This takes a moment.");
  }

  @Test
  void what_was_taken_back_can_be_brought_back() {
    now.takenBack = 1;
    expectPossible(
        Action.CHOOSE_SOURCE, Action.START, Action.ASSISTANT, Action.CHOOSE_MODEL, Action.BRING_BACK);
  }

  @Test
  void a_result_is_saved_as_long_as_it_is_of_the_snapshots() {
    computed(Verdict.Grade.GOOD);
    assertTrue(Steps.possible(now).contains(Action.SAVE));
    expectNext("The result is good: press Save.");
    now.saved = true;
    expectNext("The result is saved. Close the window, or take more snapshots and press Calibrate again.");
    now.upToDate = false;
    assertFalse(Steps.possible(now).contains(Action.SAVE));
    expectNext("Press Calibrate, or Start for more snapshots.");
  }

  @Test
  void what_to_do_with_a_result_follows_from_its_verdict() {
    computed(Verdict.Grade.WITH_CARE);
    expectNext("Press Save, or better do what is advised at the right and press Calibrate again.");
    computed(Verdict.Grade.WORTHLESS);
    expectNext("Do not use this result. Do what is advised at the right, then press Calibrate again.");
  }

  @Test
  void a_source_that_ended_or_failed_is_told() {
    reading(true);
    now.source = Source.ENDED;
    now.snapshots = 3;
    expectNext(
        "No more pictures come from camera 0. Choose a source and press Start. 2 more snapshots are needed.");
    assertFalse(Steps.possible(now).contains(Action.SNAPSHOT));
    assertTrue(Steps.possible(now).contains(Action.START));
    now.snapshots = 7;
    expectNext("No more pictures come from camera 0. Press Calibrate, or Start for more snapshots.");
    now.source = Source.FAILED;
    now.sourceFault = "Camera 0 cannot be opened. There is no camera.";
    expectNext("Camera 0 cannot be opened. There is no camera. Choose a source and press Start.");
  }
}
