/// Tables of numbers under conditions, as Markdown and as CSV.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace accuracy {

struct Condition {
  std::string name;
  std::string value;
};

struct Number {
  std::string name;
  double value = 0.0;
  bool percent = false;  ///< a share, shown as per cent
  bool csvOnly = false;
  bool count = false;  ///< shown as an integer
};

struct Row {
  std::vector<Condition> conditions;
  std::vector<Number> numbers;
};

/// All rows have the same names in the same order.
struct Table {
  std::string name;  ///< of the CSV file
  std::string title;
  std::string text;
  std::vector<Row> rows;
};

/// Conditions that are the same in all rows are told once, above the table.
void PrintMarkdown(const Table& table, std::ostream& out);

/// NAME.csv in the folder. Throws std::runtime_error when it cannot be written.
void WriteCsv(const Table& table, const std::string& folder);

/// A number in words of a table: three significant digits; "-" for none.
std::string Shown(const Number& number);
/// The shortest plain form.
std::string Text(double value);

}  // namespace accuracy
