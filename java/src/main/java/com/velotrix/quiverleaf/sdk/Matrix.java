package com.velotrix.quiverleaf.sdk;

import java.util.Arrays;
import java.util.Locale;

/** A matrix of numbers that does not change. */
public final class Matrix {
  private final int rows;
  private final int columns;
  private final double[] data;

  /** From its elements, row by row. */
  public Matrix(int rows, int columns, double... data) {
    if (rows < 0 || columns < 0 || (long) rows * columns != data.length) {
      throw new IllegalArgumentException(data.length + " elements do not make " + rows + " x " + columns);
    }
    this.rows = rows;
    this.columns = columns;
    this.data = data.clone();
  }

  /** The number of rows. */
  public int rows() { return rows; }

  /** The number of columns. */
  public int columns() { return columns; }

  /** The element of that row and column, counted from 0. */
  public double get(int row, int column) {
    if (row < 0 || row >= rows || column < 0 || column >= columns) {
      throw new IndexOutOfBoundsException(row + ", " + column + " of " + rows + " x " + columns);
    }
    return data[row * columns + column];
  }

  /** The product of this and the other matrix. */
  public Matrix times(Matrix other) {
    if (columns != other.rows) {
      throw new IllegalArgumentException(
          "a matrix of " + columns + " columns times one of " + other.rows + " rows");
    }
    double[] product = new double[rows * other.columns];
    for (int row = 0; row < rows; ++row) {
      for (int column = 0; column < other.columns; ++column) {
        for (int i = 0; i < columns; ++i) {
          product[row * other.columns + column] += get(row, i) * other.get(i, column);
        }
      }
    }
    return new Matrix(rows, other.columns, product);
  }

  /** The elements row by row, as an array of the caller's own. */
  public double[] toArray() { return data.clone(); }

  @Override
  public boolean equals(Object other) {
    return other instanceof Matrix && rows == ((Matrix) other).rows && columns == ((Matrix) other).columns
        && Arrays.equals(data, ((Matrix) other).data);
  }

  @Override
  public int hashCode() {
    return 31 * rows + Arrays.hashCode(data);
  }

  /** One line per row. */
  @Override
  public String toString() {
    StringBuilder text = new StringBuilder();
    for (int row = 0; row < rows; ++row) {
      text.append(row == 0 ? "[" : "\n ");
      for (int column = 0; column < columns; ++column) {
        text.append(String.format(Locale.ROOT, column == 0 ? "%.6g" : ", %.6g", get(row, column)));
      }
    }
    return text.append(rows == 0 ? "[]" : "]").toString();
  }
}
