package com.velotrix.quiverleaf.live;

import com.velotrix.quiverleaf.sdk.CalibratorStatus;
import com.velotrix.quiverleaf.sdk.LensModel;
import java.awt.BorderLayout;
import java.awt.FlowLayout;
import java.awt.event.WindowAdapter;
import java.awt.event.WindowEvent;
import java.awt.image.BufferedImage;
import javax.swing.BorderFactory;
import javax.swing.JComboBox;
import javax.swing.JFrame;
import javax.swing.JLabel;
import javax.swing.JPanel;
import javax.swing.Timer;

/**
 * The window: source, frames, status, and what there is to do. Alt and the underlined letter press a button.
 */
final class LiveWindow extends JFrame implements Session.View {
  private static final long serialVersionUID = 1L;
  private static final int REFRESH_MILLISECONDS = 250;

  private final transient Session session;
  private final PicturePane picture;
  private final StatusPane status = new StatusPane();
  private final JLabel message = new JLabel("Choose a source and press Start.");
  private final JComboBox<LensModel> model = new JComboBox<>(LensModel.values());
  private final Timer refresh;

  LiveWindow(Settings settings) {
    super("Velmora live");
    session = new Session(settings, this);
    picture = new PicturePane(settings.width, settings.height);
    refresh = new Timer(REFRESH_MILLISECONDS, event -> session.refresh());
    message.setName("message");
    message.setBorder(BorderFactory.createEmptyBorder(4, 10, 8, 10));
    JPanel foot = new JPanel(new BorderLayout());
    foot.add(buttons(), BorderLayout.CENTER);
    foot.add(message, BorderLayout.SOUTH);
    add(new SourceBar(settings, session), BorderLayout.NORTH);
    add(picture, BorderLayout.CENTER);
    add(status, BorderLayout.EAST);
    add(foot, BorderLayout.SOUTH);
    setDefaultCloseOperation(DISPOSE_ON_CLOSE);
    addWindowListener(new WindowAdapter() {
      @Override
      public void windowClosed(WindowEvent event) {
        refresh.stop();
        session.close();
      }
    });
    pack();
    setLocationByPlatform(true);
    refresh.start();
  }

  private JPanel buttons() {
    JPanel row = new JPanel(new FlowLayout(FlowLayout.LEADING, 6, 4));
    row.add(Buttons.toggle("assistant", "Assistant", 'A', session::setAssistant));
    row.add(Buttons.toggle("mirror", "Mirror", 'M', session::setMirror));
    row.add(Buttons.of("snapshot", "Snapshot", 'S', session::takeSnapshot));
    row.add(Buttons.of("reset", "Reset", 'R', session::reset));
    row.add(model);
    row.add(Buttons.of(
        "calibrate", "Calibrate", 'C', () -> session.calibrate((LensModel) model.getSelectedItem())));
    row.add(Buttons.of("save", "Save", 'V', session::save));
    return row;
  }

  @Override
  public void showFrame(BufferedImage frame) {
    picture.show(frame);
  }

  @Override
  public void showStatus(CalibratorStatus now, int goal) {
    status.show(now, goal);
  }

  @Override
  public void showMessage(String words) {
    message.setText(words);
  }
}
