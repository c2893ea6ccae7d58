package com.velotrix.quiverleaf.live;

import com.velotrix.quiverleaf.sdk.Verdict;
import java.awt.BorderLayout;
import java.awt.Color;
import java.awt.Component;
import java.awt.Dimension;
import java.awt.Font;
import java.util.Locale;
import java.util.Map;
import javax.swing.BorderFactory;
import javax.swing.JLabel;
import javax.swing.JPanel;
import javax.swing.JScrollPane;
import javax.swing.JTable;
import javax.swing.SwingConstants;
import javax.swing.table.DefaultTableCellRenderer;
import javax.swing.table.DefaultTableModel;
import javax.swing.table.TableCellRenderer;

/** The verdict on the result, with what to do about it, and its numbers. */
final class ResultPane extends JPanel {
  private static final long serialVersionUID = 1L;
  private static final Dimension SIZE = new Dimension(340, 420);
  private static final Map<Verdict.Grade, Color> COLOURS = Map.of(Verdict.Grade.NONE,
      new Color(0x55, 0x5B, 0x61), Verdict.Grade.GOOD, new Color(0x1B, 0x7A, 0x3A), Verdict.Grade.WITH_CARE,
      new Color(0x9A, 0x5B, 0x00), Verdict.Grade.WORTHLESS, new Color(0xB0, 0x00, 0x20));

  private final JLabel grade = new JLabel("No result yet");
  private final WrappedText words = new WrappedText();
  private final DefaultTableModel numbers =
      new DefaultTableModel(new String[] {"", "value", "std. dev."}, 0) {
        private static final long serialVersionUID = 1L;

        @Override
        public boolean isCellEditable(int row, int column) {
          return false;
        }
      };
  private transient Outcome shown;
  private boolean upToDate = true;

  ResultPane() {
    super(new BorderLayout(0, 8));
    setPreferredSize(SIZE);
    grade.setName("verdict");
    grade.setOpaque(true);
    grade.setForeground(Color.WHITE);
    grade.setFont(grade.getFont().deriveFont(Font.BOLD, 16.0F));
    grade.setBorder(BorderFactory.createEmptyBorder(6, 10, 6, 10));
    words.setName("remarks");
    JScrollPane text = new JScrollPane(words);
    text.setBorder(BorderFactory.createEmptyBorder(0, 4, 0, 0));
    JScrollPane table = new JScrollPane(table());
    table.setPreferredSize(new Dimension(SIZE.width, SIZE.height / 2));
    add(grade, BorderLayout.NORTH);
    add(text, BorderLayout.CENTER);
    add(table, BorderLayout.SOUTH);
    show((Outcome) null);
  }

  private JTable table() {
    JTable table = new JTable(numbers);
    table.setName("numbers");
    table.setFocusable(false);
    table.setRowSelectionAllowed(false);
    table.getTableHeader().setReorderingAllowed(false);
    DefaultTableCellRenderer right = new DefaultTableCellRenderer();
    right.setHorizontalAlignment(SwingConstants.RIGHT);
    for (int column = 1; column < table.getColumnCount(); ++column) {
      table.getColumnModel().getColumn(column).setCellRenderer(right);
      table.getColumnModel().getColumn(column).setHeaderRenderer(headerOf(table));
    }
    table.getColumnModel().getColumn(0).setMaxWidth(70);
    return table;
  }

  /** As the others, but above numbers. */
  private static TableCellRenderer headerOf(JTable table) {
    TableCellRenderer usual = table.getTableHeader().getDefaultRenderer();
    return (in, value, selected, focused, row, column) -> {
      Component label = usual.getTableCellRendererComponent(in, value, selected, focused, row, column);
      if (label instanceof JLabel) {
        ((JLabel) label).setHorizontalAlignment(SwingConstants.RIGHT);
      }
      return label;
    };
  }

  void show(Outcome outcome) {
    if (outcome == shown && outcome != null) {
      return;
    }
    shown = outcome;
    numbers.setRowCount(0);
    if (outcome != null) {
      outcome.parameters.forEach(number -> numbers.addRow(rowOf(number)));
    }
    words.setText(
        outcome == null ? "The verdict on the result and its numbers will be here." : Remarks.of(outcome));
    words.setCaretPosition(0);
    showGrade();
  }

  /** Whether it is of the snapshots as they are. */
  void showAge(boolean isUpToDate) {
    if (upToDate != isUpToDate) {
      upToDate = isUpToDate;
      showGrade();
    }
  }

  private void showGrade() {
    Verdict.Grade of = shown == null ? Verdict.Grade.NONE : shown.verdict.grade();
    boolean old = shown != null && !upToDate;
    grade.setText(
        shown == null ? "No result yet" : (old ? "Before the last change: " : "Verdict: ") + of.words());
    grade.setBackground(COLOURS.get(old ? Verdict.Grade.NONE : of));
  }

  private static Object[] rowOf(Outcome.Parameter number) {
    String format = number.name.startsWith("f") || number.name.startsWith("c") ? "%.3f" : "%.6f";
    return new Object[] {number.name, String.format(Locale.ROOT, format, number.value),
        String.format(Locale.ROOT, format, number.deviation)};
  }
}
