/// Prints tables.
#include "Table.h"

#include <cmath>
#include <cstdio>
#include <fstream>
#include <ostream>
#include <stdexcept>

namespace accuracy {

namespace {

std::string Fixed(double value, int decimals) {
  char text[64];
  std::snprintf(text, sizeof text, "%.*f", decimals, value);
  return text;
}

std::string Scientific(double value) {
  char text[64];
  std::snprintf(text, sizeof text, "%.1e", value);
  return text;
}

std::string General(double value, int digits) {
  char text[64];
  std::snprintf(text, sizeof text, "%.*g", digits, value);
  return text;
}

/// A comma would end the field.
std::string Field(const std::string& text) {
  return text.find(',') == std::string::npos ? text : '"' + text + '"';
}

bool Varies(const Table& table, std::size_t condition) {
  for (const Row& row : table.rows) {
    if (row.conditions[condition].value != table.rows.front().conditions[condition].value) return true;
  }
  return false;
}

void PrintCommon(const Table& table, std::ostream& out) {
  const char* separator = "In all rows: ";
  for (std::size_t i = 0; i < table.rows.front().conditions.size(); ++i) {
    if (Varies(table, i)) continue;
    const Condition& condition = table.rows.front().conditions[i];
    out << separator << condition.name << ' ' << condition.value;
    separator = ", ";
  }
  if (*separator == ',') out << ".\n\n";
}

void PrintHead(const Table& table, std::ostream& out) {
  std::string rule = "|";
  out << '|';
  for (std::size_t i = 0; i < table.rows.front().conditions.size(); ++i) {
    if (!Varies(table, i)) continue;
    out << ' ' << table.rows.front().conditions[i].name << " |";
    rule += "---|";
  }
  for (const Number& number : table.rows.front().numbers) {
    if (number.csvOnly) continue;
    out << ' ' << number.name << " |";
    rule += "---:|";
  }
  out << '\n' << rule << '\n';
}

}  // namespace

std::string Text(double value) {
  return General(value, 6);
}

std::string Shown(const Number& number) {
  if (std::isnan(number.value)) return "-";
  if (std::isinf(number.value)) return "inf";
  if (number.percent) return Fixed(100.0 * number.value, 0) + " %";
  if (number.count) return Fixed(number.value, 0);
  const double size = std::abs(number.value);
  if (size >= 1e5 || (size > 0.0 && size < 0.001)) return Scientific(number.value);
  if (size >= 100.0 || size == 0.0) return Fixed(number.value, 0);
  return Fixed(number.value, size >= 10.0 ? 1 : size >= 1.0 ? 2 : size >= 0.1 ? 3 : 4);
}

void PrintMarkdown(const Table& table, std::ostream& out) {
  out << "## " << table.title << "\n\n" << table.text << "\n\n";
  if (table.rows.empty()) return;
  PrintCommon(table, out);
  PrintHead(table, out);
  for (const Row& row : table.rows) {
    out << '|';
    for (std::size_t i = 0; i < row.conditions.size(); ++i) {
      if (Varies(table, i)) out << ' ' << row.conditions[i].value << " |";
    }
    for (const Number& number : row.numbers) {
      if (!number.csvOnly) out << ' ' << Shown(number) << " |";
    }
    out << '\n';
  }
  out << std::endl;
}

void WriteCsv(const Table& table, const std::string& folder) {
  const std::string path = folder + "/" + table.name + ".csv";
  std::ofstream file(path);
  const char* separator = "";
  if (!table.rows.empty()) {
    for (const Condition& condition : table.rows.front().conditions) {
      file << separator << Field(condition.name);
      separator = ",";
    }
    for (const Number& number : table.rows.front().numbers) file << ',' << Field(number.name);
    file << '\n';
  }
  for (const Row& row : table.rows) {
    separator = "";
    for (const Condition& condition : row.conditions) {
      file << separator << Field(condition.value);
      separator = ",";
    }
    for (const Number& number : row.numbers) file << ',' << General(number.value, 6);
    file << '\n';
  }
  file.flush();
  if (!file) throw std::runtime_error("cannot write \"" + path + "\"");
}

}  // namespace accuracy
