package com.velotrix.quiverleaf.live;

import java.awt.BorderLayout;
import java.awt.Color;
import java.awt.FlowLayout;
import java.awt.Font;
import java.awt.event.WindowAdapter;
import java.awt.event.WindowEvent;
import java.awt.image.BufferedImage;
import java.io.IOException;
import java.util.EnumMap;
import java.util.Map;
import java.util.Set;
import javax.swing.BorderFactory;
import javax.swing.JComboBox;
import javax.swing.JComponent;
import javax.swing.JFrame;
import javax.swing.JLabel;
import javax.swing.JPanel;
import javax.swing.JToggleButton;
import javax.swing.Timer;

/**
 * The window: what to do now, source, frames, what came out, and what there is to do. Alt and the underlined
 * letter press a button.
 */
final class LiveWindow extends JFrame implements LiveRun.View {
  private static final long serialVersionUID = 1L;
  private static final int REFRESH_MILLISECONDS = 250;
  private static final Color SEEN = new Color(0x1B, 0x7A, 0x3A);
  private static final Color UNSEEN = new Color(0x9A, 0x5B, 0x00);

  private final transient LiveRun run;
  private final SourceBar sources;
  private final PicturePane picture;
  private final StatusPane status = new StatusPane();
  private final ResultPane result = new ResultPane();
  private final WrappedText next = new WrappedText();
  private final JLabel sight = new JLabel(" ");
  private final JLabel message = new JLabel(" ");
  private final JToggleButton assistant = new JToggleButton("Assistant");
  private final JComboBox<LensChoice> model = new JComboBox<>(LensChoice.values());
  private final Map<Action, JComponent> controls = new EnumMap<>(Action.class);
  private final Timer refresh;
  private transient Runnable atEnd = () -> {};
  private int snapshotsShown;

  /** The session belongs to the window's run. */
  LiveWindow(Settings settings, KeptSession kept) throws IOException {
    super("Velmora live");
    run = new LiveRun(settings, kept, this);
    picture = new PicturePane(settings.width, settings.height);
    sources = new SourceBar(settings, run);
    refresh = new Timer(REFRESH_MILLISECONDS, event -> run.refresh());
    model.setSelectedItem(settings.model);
    add(head(), BorderLayout.NORTH);
    add(picture, BorderLayout.CENTER);
    add(side(), BorderLayout.EAST);
    add(foot(), BorderLayout.SOUTH);
    setDefaultCloseOperation(DISPOSE_ON_CLOSE);
    addWindowListener(new WindowAdapter() {
      @Override
      public void windowClosed(WindowEvent event) {
        refresh.stop();
        atEnd.run();
        run.close();
      }
    });
    show(run.situation());
    pack();
    setMinimumSize(getSize());
    setLocationByPlatform(true);
    refresh.start();
  }

  LiveRun run() { return run; }

  /** Called when the window was closed, before the run ends. */
  void onEnd(Runnable listener) { atEnd = listener; }

  private JPanel head() {
    next.setName("next");
    next.setFont(next.getFont().deriveFont(Font.BOLD, 17.0F));
    next.setBorder(BorderFactory.createEmptyBorder(2, 12, 10, 12));
    next.setRows(1);
    JPanel head = new JPanel(new BorderLayout());
    head.add(sources, BorderLayout.NORTH);
    head.add(next, BorderLayout.SOUTH);
    return head;
  }

  private JPanel side() {
    JPanel side = new JPanel(new BorderLayout());
    side.setBorder(BorderFactory.createEmptyBorder(0, 12, 0, 12));
    side.add(status, BorderLayout.NORTH);
    side.add(result, BorderLayout.CENTER);
    return side;
  }

  private JPanel foot() {
    sight.setName("sight");
    sight.setFont(sight.getFont().deriveFont(Font.BOLD, 15.0F));
    sight.setBorder(BorderFactory.createEmptyBorder(8, 12, 2, 12));
    message.setName("message");
    message.setBorder(BorderFactory.createEmptyBorder(2, 12, 10, 12));
    JPanel foot = new JPanel(new BorderLayout());
    foot.add(sight, BorderLayout.NORTH);
    foot.add(buttons(), BorderLayout.CENTER);
    foot.add(message, BorderLayout.SOUTH);
    return foot;
  }

  private JPanel buttons() {
    JPanel row = new JPanel(new FlowLayout(FlowLayout.LEADING, 6, 4));
    Buttons.named(assistant, "assistant", 'A');
    assistant.addActionListener(event -> run.setAssistant(assistant.isSelected()));
    put(row, Action.ASSISTANT, assistant);
    row.add(Buttons.toggle("mirror", "Mirror", 'M', run::setMirror));
    put(row, Action.SNAPSHOT, Buttons.of("snapshot", "Snapshot", 'S', run::takeSnapshot));
    put(row, Action.TAKE_BACK, Buttons.of("takeBack", "Take back", 'B', run::takeBack));
    put(row, Action.BRING_BACK, Buttons.of("bringBack", "Bring back", 'G', run::bringBack));
    put(row, Action.START_OVER, Buttons.of("startOver", "Start over", 'R', run::startOver));
    model.setName("model");
    model.addActionListener(event -> run.choose((LensChoice) model.getSelectedItem()));
    put(row, Action.CHOOSE_MODEL, model);
    put(row, Action.CALIBRATE, Buttons.of("calibrate", "Calibrate", 'C', run::calibrate));
    put(row, Action.SAVE, Buttons.of("save", "Save", 'V', run::save));
    return row;
  }

  private void put(JPanel row, Action action, JComponent control) {
    controls.put(action, control);
    row.add(control);
  }

  @Override
  public void showFrame(BufferedImage frame) {
    picture.show(frame);
  }

  @Override
  public void show(Situation now) {
    Set<Action> possible = Steps.possible(now);
    controls.forEach((action, control) -> control.setEnabled(possible.contains(action)));
    sources.enableWhat(possible);
    assistant.setSelected(now.goal > 0);
    if (!next.getText().equals(Steps.next(now))) {
      next.setText(Steps.next(now));
      next.revalidate();
    }
    String seen = Steps.sight(now);
    sight.setText(seen.isEmpty() ? " " : seen);
    sight.setForeground(now.inView ? SEEN : UNSEEN);
    picture.setNote(noteOf(now));
    if (now.taken() > snapshotsShown && now.frames) {
      picture.flash();
    }
    snapshotsShown = now.taken();
    status.show(now);
    result.showAge(now.upToDate);
  }

  /** What the picture itself says: that it is not the present. */
  private static String noteOf(Situation now) {
    switch (now.source) {
      case OPEN:
        return now.frames ? "" : "Waiting for pictures";
      case OPENING:
        return "Opening " + now.sourceName;
      case ENDED:
        return "No more pictures come from " + now.sourceName;
      case FAILED:
        return "No pictures";
      default:
        return now.frames ? "Stopped" : "No pictures yet";
    }
  }

  @Override
  public void show(Outcome outcome) {
    result.show(outcome);
  }

  @Override
  public void showMessage(String words) {
    message.setText(words);
  }
}
