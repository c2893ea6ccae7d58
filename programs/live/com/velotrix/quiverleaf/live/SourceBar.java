package com.velotrix.quiverleaf.live;

import java.awt.BorderLayout;
import java.awt.FlowLayout;
import java.util.Set;
import javax.swing.BorderFactory;
import javax.swing.JButton;
import javax.swing.JComboBox;
import javax.swing.JFileChooser;
import javax.swing.JPanel;
import javax.swing.JTextField;

/** Where the frames are to come from. */
final class SourceBar extends JPanel {
  private static final long serialVersionUID = 1L;

  private final JComboBox<SourceKind> kind = new JComboBox<>(SourceKind.values());
  private final JTextField address = new JTextField();
  private final JComboBox<PushFormat> format = new JComboBox<>(PushFormat.values());
  private final JButton browse = new JButton("Browse");
  private final JButton start;
  private final JButton stop;
  private boolean choosable = true;

  SourceBar(Settings settings, LiveRun run) {
    super(new BorderLayout(6, 0));
    setBorder(BorderFactory.createEmptyBorder(8, 8, 8, 8));
    kind.setName("kind");
    address.setName("address");
    kind.setSelectedItem(settings.source);
    address.setText(settings.address);
    format.setSelectedItem(settings.push);
    kind.addActionListener(event -> {
      address.setText(selected() == SourceKind.CAMERA ? "0" : "");
      adapt();
    });
    browse.addActionListener(event -> browse());
    JPanel end = new JPanel(new FlowLayout(FlowLayout.TRAILING, 6, 0));
    end.add(browse);
    end.add(format);
    start = Buttons.of("start", "Start", 'T',
        () -> run.start(selected(), address.getText(), (PushFormat) format.getSelectedItem()));
    stop = Buttons.of("stop", "Stop", 'O', run::stop);
    end.add(start);
    end.add(stop);
    add(kind, BorderLayout.LINE_START);
    add(address, BorderLayout.CENTER);
    add(end, BorderLayout.LINE_END);
    adapt();
  }

  private SourceKind selected() { return (SourceKind) kind.getSelectedItem(); }

  private void adapt() {
    kind.setEnabled(choosable);
    address.setEnabled(choosable);
    browse.setEnabled(choosable && selected() != SourceKind.CAMERA);
    format.setVisible(selected() == SourceKind.FOLDER);
    format.setEnabled(choosable);
  }

  void enableWhat(Set<Action> possible) {
    start.setEnabled(possible.contains(Action.START));
    stop.setEnabled(possible.contains(Action.STOP));
    if (choosable != possible.contains(Action.CHOOSE_SOURCE)) {
      choosable = !choosable;
      adapt();
    }
  }

  private void browse() {
    JFileChooser chooser = new JFileChooser(address.getText());
    chooser.setFileSelectionMode(
        selected() == SourceKind.FOLDER ? JFileChooser.DIRECTORIES_ONLY : JFileChooser.FILES_ONLY);
    if (chooser.showOpenDialog(this) == JFileChooser.APPROVE_OPTION) {
      address.setText(chooser.getSelectedFile().getPath());
    }
  }
}
