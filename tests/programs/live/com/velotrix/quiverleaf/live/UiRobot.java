package com.velotrix.quiverleaf.live;

import java.awt.AWTException;
import java.awt.Component;
import java.awt.Container;
import java.awt.Point;
import java.awt.Rectangle;
import java.awt.Robot;
import java.awt.Window;
import java.awt.event.InputEvent;
import java.io.IOException;
import java.nio.file.Path;
import java.util.concurrent.Callable;
import java.util.concurrent.FutureTask;
import javax.imageio.ImageIO;
import javax.swing.JLabel;
import javax.swing.JProgressBar;
import javax.swing.JTable;
import javax.swing.SwingUtilities;
import javax.swing.text.JTextComponent;

/** A user of the window: presses what is on the screen with the mouse, and reads what is written there. */
final class UiRobot implements AutoCloseable {
  private static final long PATIENCE_NANOSECONDS = 120_000_000_000L;

  private final Robot robot;
  private final Window window;

  /** Starts the application and waits for its window. */
  UiRobot(String... arguments) throws AWTException {
    robot = new Robot();
    LiveCalibration.main(arguments);
    await(() -> shown() != null);
    window = shown();
    robot.waitForIdle();
  }

  private static Window shown() {
    for (Window candidate : Window.getWindows()) {
      if (candidate instanceof LiveWindow && candidate.isShowing()) {
        return candidate;
      }
    }
    return null;
  }

  void press(String name) {
    Component button = find(window, name);
    Point at = button.getLocationOnScreen();
    robot.mouseMove(at.x + button.getWidth() / 2, at.y + button.getHeight() / 2);
    robot.mousePress(InputEvent.BUTTON1_DOWN_MASK);
    robot.mouseRelease(InputEvent.BUTTON1_DOWN_MASK);
    robot.waitForIdle();
  }

  /** The text of a label, or of a bar. */
  String read(String name) {
    return onSwing(() -> {
      Component component = find(window, name);
      return component instanceof JLabel        ? ((JLabel) component).getText()
          : component instanceof JTextComponent ? ((JTextComponent) component).getText()
                                                : ((JProgressBar) component).getString();
    });
  }

  boolean canPress(String name) { return onSwing(() -> find(window, name).isEnabled()); }

  /** The number in a cell of the table of results. */
  double number(String row, int column) {
    return onSwing(() -> {
      JTable table = (JTable) find(window, "numbers");
      for (int i = 0; i < table.getRowCount(); ++i) {
        if (table.getValueAt(i, 0).equals(row)) {
          return Double.valueOf((String) table.getValueAt(i, column));
        }
      }
      throw new AssertionError("there is no row " + row);
    });
  }

  /** Waits until the label begins so; false when it never does. */
  boolean sees(String name, String text) { return await(() -> read(name).startsWith(text)); }

  void photograph(Path file) throws IOException {
    robot.waitForIdle();
    Rectangle area = new Rectangle(window.getLocationOnScreen(), window.getSize());
    ImageIO.write(robot.createScreenCapture(area), "png", file.toFile());
  }

  static boolean await(Callable<Boolean> condition) {
    long end = System.nanoTime() + PATIENCE_NANOSECONDS;
    try {
      while (!condition.call()) {
        if (System.nanoTime() - end > 0) {
          return false;
        }
        Thread.sleep(10);
      }
      return true;
    } catch (Exception e) {
      throw new AssertionError(e);
    }
  }

  private static <T> T onSwing(Callable<T> question) {
    FutureTask<T> task = new FutureTask<>(question);
    SwingUtilities.invokeLater(task);
    try {
      return task.get();
    } catch (Exception e) {
      throw new AssertionError(e);
    }
  }

  private static Component find(Container parent, String name) {
    for (Component child : parent.getComponents()) {
      if (name.equals(child.getName())) {
        return child;
      }
      Component found = child instanceof Container ? find((Container) child, name) : null;
      if (found != null) {
        return found;
      }
    }
    return null;
  }

  @Override
  public void close() {
    onSwing(() -> {
      window.dispose();
      return true;
    });
  }
}
