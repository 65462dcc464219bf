#include "board_data.h"

Board MakeDemoBoard() {
  Board board;
  board.name = "DEMO";
  board.schematic = "MAIN";
  board.symbols = {{"RESISTOR", {20, 40}, "R"}, {"SENSOR", {80, 60}, "S"}};
  const Symbol* resistor = &board.symbols[0];
  const Symbol* sensor = &board.symbols[1];

  // Pins 30 long on the grid of 10, at the middle of the body's top and bottom.
  const auto resistorAt = [&](const std::string& reference, const std::string& value, Spot at) {
    return Part{resistor,
                at,
                {{"Reference", reference, false, {24, 12}}, {"Value", value, true, {24, 30}}},
                {{"A", "1", {at.x + 10, at.y}, {at.x + 10, at.y - 30}},
                 {"B", "2", {at.x + 10, at.y + 40}, {at.x + 10, at.y + 70}}}};
  };

  Sheet power{"POWER", {}, {}};
  power.parts.push_back(resistorAt("R1", "10k", {300, 300}));
  power.parts.push_back(resistorAt("R2", "4k7", {300, 400}));
  power.wires = {{{200, 270}, {310, 270}, "VIN"},
                 {{310, 370}, {450, 370}, "SENSE"},
                 {{310, 470}, {310, 500}, "GND"}};

  Sheet sense{"SENSE", {}, {}};
  sense.parts.push_back(Part{sensor,
                             {600, 340},
                             {{"Reference", "U1", false, {0, -6}}},
                             {{"IN", "3", {600, 370}, {570, 370}}}});
  sense.wires = {{{450, 370}, {570, 370}, "SENSE"}};

  board.sheets = {power, sense};
  return board;
}
