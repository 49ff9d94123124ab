// Tables for a person: columns of text, in colour where that is wanted.
//
//   Table table({"PORT", "STATE"});
//   table.row({"Ethernet1", {"blocking", Colour::red}});
//   table.print(std::cout, isColoured);

#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace Topo {

enum class Colour : std::uint8_t { none, bold, dim, red, green, yellow };

/// The text as a terminal shows it in the colour.
[[nodiscard]] std::string coloured(const std::string& text, Colour colour);

struct Cell {
  Cell(std::string cellText, Colour cellColour = Colour::none) : text(std::move(cellText)), colour(cellColour) {}
  Cell(const char* cellText) : text(cellText) {}

  std::string text;
  Colour colour = Colour::none;
};

class Table {
 public:
  explicit Table(std::vector<std::string> columns);

  void row(std::vector<Cell> cells);
  [[nodiscard]] bool empty() const noexcept { return rows_.empty(); }

  /// The head and the rows, without blanks at the ends of lines. Nothing if there is no row.
  void print(std::ostream& out, bool isColoured) const;

 private:
  std::vector<std::string> columns_;
  std::vector<std::vector<Cell>> rows_;
};

}  // namespace Topo
