#include "topo/Table.h"

#include <algorithm>
#include <ostream>
#include <utility>

#include "topo/Text.h"

namespace Topo {

namespace {

void printRow(std::ostream& out, const std::vector<Cell>& cells, const std::vector<std::size_t>& widths,
              bool isColoured) {
  std::size_t last = cells.size();
  while (last > 0 && cells[last - 1].text.empty()) --last;
  for (std::size_t i = 0; i < last; ++i) {
    out << (isColoured ? coloured(cells[i].text, cells[i].colour) : cells[i].text);
    if (i + 1 < last) out << std::string(widths[i] - charactersOf(cells[i].text) + 2, ' ');
  }
  out << '\n';
}

}  // namespace

std::string coloured(const std::string& text, Colour colour) {
  switch (colour) {
    case Colour::none:
      return text;
    case Colour::bold:
      return "\033[1m" + text + "\033[0m";
    case Colour::dim:
      return "\033[2m" + text + "\033[0m";
    case Colour::red:
      return "\033[31m" + text + "\033[0m";
    case Colour::green:
      return "\033[32m" + text + "\033[0m";
    case Colour::yellow:
      return "\033[33m" + text + "\033[0m";
  }
  return text;
}

Table::Table(std::vector<std::string> columns) : columns_(std::move(columns)) {}

void Table::row(std::vector<Cell> cells) {
  cells.resize(columns_.size(), Cell(""));
  rows_.push_back(std::move(cells));
}

void Table::print(std::ostream& out, bool isColoured) const {
  if (rows_.empty()) return;
  std::vector<Cell> head;
  std::vector<std::size_t> widths;
  for (const std::string& column : columns_) {
    head.emplace_back(column, Colour::bold);
    widths.push_back(charactersOf(column));
  }
  for (const std::vector<Cell>& cells : rows_) {
    for (std::size_t i = 0; i < cells.size(); ++i) widths[i] = std::max(widths[i], charactersOf(cells[i].text));
  }
  printRow(out, head, widths, isColoured);
  for (const std::vector<Cell>& cells : rows_) printRow(out, cells, widths, isColoured);
}

}  // namespace Topo
