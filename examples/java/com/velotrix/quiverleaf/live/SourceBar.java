package com.velotrix.quiverleaf.live;

import java.awt.BorderLayout;
import java.awt.FlowLayout;
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

  SourceBar(Settings settings, Session session) {
    super(new BorderLayout(6, 0));
    setBorder(BorderFactory.createEmptyBorder(8, 8, 8, 8));
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
    end.add(Buttons.of("start", "Start", 'T',
        () -> session.start(selected(), address.getText(), (PushFormat) format.getSelectedItem())));
    end.add(Buttons.of("stop", "Stop", 'O', session::stop));
    add(kind, BorderLayout.LINE_START);
    add(address, BorderLayout.CENTER);
    add(end, BorderLayout.LINE_END);
    adapt();
  }

  private SourceKind selected() { return (SourceKind) kind.getSelectedItem(); }

  private void adapt() {
    browse.setEnabled(selected() != SourceKind.CAMERA);
    format.setEnabled(selected() == SourceKind.FOLDER);
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
