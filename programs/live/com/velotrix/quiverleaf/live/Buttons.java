package com.velotrix.quiverleaf.live;

import java.util.function.Consumer;
import javax.swing.AbstractButton;
import javax.swing.JButton;
import javax.swing.JToggleButton;

/** Buttons with a name, a text and a key. */
final class Buttons {
  private Buttons() {}

  static JButton of(String name, String text, char key, Runnable action) {
    JButton button = new JButton(text);
    button.addActionListener(event -> action.run());
    return named(button, name, key);
  }

  static JToggleButton toggle(String name, String text, char key, Consumer<Boolean> action) {
    JToggleButton button = new JToggleButton(text);
    button.addActionListener(event -> action.accept(button.isSelected()));
    return named(button, name, key);
  }

  static <T extends AbstractButton> T named(T button, String name, char key) {
    button.setName(name);
    button.setMnemonic(key);
    return button;
  }
}
