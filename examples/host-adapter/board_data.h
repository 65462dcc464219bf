#pragma once

// The application's own design data: what a schematic editor keeps in memory, knowing nothing of
// kalmor. Coordinates are page units, y downward.

#include <string>
#include <vector>

struct Spot {
  int x = 0;
  int y = 0;
};

struct Label {
  std::string name;
  std::string value;
  bool showName = false;  // "name = value" rather than the value alone
  Spot offset;            // from the part's corner
};

struct Pin {
  std::string name;
  std::string number;
  Spot from;  // on the body
  Spot to;    // the free end
};

struct Symbol {
  std::string name;
  Spot size;          // body width and height
  std::string glyph;  // a letter drawn inside the body
};

struct Part {
  const Symbol* symbol = nullptr;
  Spot at;  // body corner on the page
  std::vector<Label> labels;
  std::vector<Pin> pins;  // page points
};

struct Wire {
  Spot from;
  Spot to;
  std::string net;  // shown at the wire's start when set
};

struct Sheet {
  std::string name;
  std::vector<Part> parts;
  std::vector<Wire> wires;
};

struct Board {
  std::string name;
  std::string schematic;
  std::vector<Symbol> symbols;
  std::vector<Sheet> sheets;
};

// A divider feeding a sensor input: two sheets, two symbols.
Board MakeDemoBoard();
