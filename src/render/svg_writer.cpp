#include "render/svg_writer.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <optional>
#include <type_traits>

#include "kalmor/host_text.h"
#include "render/bulge_arc.h"
#include "render/xml_text.h"

namespace kalmor {
namespace {

// A DXF text height is the height of its capitals; Liberation Sans capitals stand 1409/2048 em
// tall and its characters average 1187/2048 em wide.
constexpr double kCapHeightEm = 1409.0 / 2048.0;
constexpr double kAverageAdvanceEm = 1187.0 / 2048.0;
constexpr double kDescentEm = 0.25;
constexpr std::string_view kFontFamily = "Liberation Sans, Arial, Helvetica, sans-serif";
constexpr std::string_view kOverlineToggle = "%%o";
// SVG units (pixels at the picture's own size) per drawing unit: drawing units are inches on
// pages of the usual pin-to-pin spacing, and texts of a tenth of a unit must stay many units
// tall for renderers that hint glyphs at their nominal size.
constexpr double kScale = 100;
// Lines without a width stay one pixel wide when the picture is shown this wide.
constexpr double kViewedSide = 1600;
constexpr double kSmallestLegendRow = 20;

std::string Num(double value) {
  return SvgNumber(value);
}
std::string Length(double length) {
  return SvgNumber(length * kScale);
}
std::string X(double x) {
  return SvgNumber(x * kScale);
}
// Drawing y grows upward, SVG y downward.
std::string Y(double y) {
  return SvgNumber(-y * kScale);
}

class DrawingBounds {
 public:
  void Add(DrawingPoint p) {
    if (empty_) {
      low_ = high_ = p;
      empty_ = false;
      return;
    }
    low_ = {std::min(low_.x, p.x), std::min(low_.y, p.y)};
    high_ = {std::max(high_.x, p.x), std::max(high_.y, p.y)};
  }
  void Add(const DrawingBounds& other, double pad) {
    if (!other.empty_) {
      Add({other.low_.x - pad, other.low_.y - pad});
      Add({other.high_.x + pad, other.high_.y + pad});
    }
  }
  // Takes in the parts of an arc that bulge past its end points, which are already in.
  void AddArc(const BulgeArc& arc) { ExtendByArc(arc, low_, high_); }
  bool empty() const { return empty_; }
  DrawingPoint low() const { return low_; }
  DrawingPoint high() const { return high_; }

 private:
  bool empty_ = true;
  DrawingPoint low_;
  DrawingPoint high_;
};

// Visits each segment of a polyline as (end point, its arc when bulged, whether it closes the
// polyline); the closing segment comes last, and only for closed polylines.
template <typename Visit>
void ForEachSegment(const DrawnPolyline& polyline, Visit visit) {
  const auto& v = polyline.vertices;
  const std::size_t count = polyline.closed ? v.size() : (v.empty() ? 0 : v.size() - 1);
  for (std::size_t i = 0; i < count; ++i) {
    const PolylineVertex& to = v[(i + 1) % v.size()];
    visit(to.at, ArcFromBulge(v[i].at, to.at, v[i].bulge), i + 1 == v.size());
  }
}

// Two half circles stroked as wide as their diameter: the filled dot.
bool IsDot(const DrawnPolyline& polyline) {
  const auto& v = polyline.vertices;
  return polyline.closed && polyline.width > 0 && v.size() == 2 && std::fabs(v[0].bulge) == 1 &&
         v[1].bulge == v[0].bulge;
}

double FontSize(const DrawnText& text) {
  // A negative height (the sine of an outsized font) is drawn at its size.
  return std::fabs(text.height) / kCapHeightEm;
}

// The text's runs between "%%o" toggles; odd runs are overlined.
std::vector<std::string_view> OverlineRuns(std::string_view value) {
  std::vector<std::string_view> runs;
  for (;;) {
    std::size_t at = std::string_view::npos;
    for (std::size_t i = 0; i + kOverlineToggle.size() <= value.size(); ++i) {
      if (value.substr(i, 2) == "%%" && (value[i + 2] == 'o' || value[i + 2] == 'O')) {
        at = i;
        break;
      }
    }
    runs.push_back(value.substr(0, at));
    if (at == std::string_view::npos) {
      return runs;
    }
    value.remove_prefix(at + kOverlineToggle.size());
  }
}

std::size_t VisibleCharacters(std::string_view value) {
  std::size_t count = 0;
  for (const std::string_view run : OverlineRuns(value)) {
    count += HostTextLength(run);
  }
  return count;
}

DrawingBounds TextBounds(const DrawnText& text) {
  const double size = FontSize(text);
  const double length =
      static_cast<double>(VisibleCharacters(text.value)) * size * kAverageAdvanceEm;
  const double angle = text.angle * std::numbers::pi / 180;
  DrawingBounds bounds;
  for (const DrawingPoint corner :
       {DrawingPoint{0, -kDescentEm * size}, DrawingPoint{length, -kDescentEm * size},
        DrawingPoint{0, std::fabs(text.height)}, DrawingPoint{length, std::fabs(text.height)}}) {
    bounds.Add({text.at.x + corner.x * std::cos(angle) - corner.y * std::sin(angle),
                text.at.y + corner.x * std::sin(angle) + corner.y * std::cos(angle)});
  }
  return bounds;
}

DrawingBounds EntityBounds(const DxfEntity& entity) {
  DrawingBounds bounds;
  std::visit(
      [&bounds](const auto& shape) {
        using Shape = std::decay_t<decltype(shape)>;
        if constexpr (std::is_same_v<Shape, DrawnLine>) {
          bounds.Add(shape.start);
          bounds.Add(shape.end);
        } else if constexpr (std::is_same_v<Shape, DrawnCircle>) {
          const double r = std::fabs(shape.radius);
          bounds.Add({shape.centre.x - r, shape.centre.y - r});
          bounds.Add({shape.centre.x + r, shape.centre.y + r});
        } else if constexpr (std::is_same_v<Shape, DrawnSolid>) {
          for (const DrawingPoint& corner : shape.corners) {
            bounds.Add(corner);
          }
        } else if constexpr (std::is_same_v<Shape, DrawnPolyline>) {
          DrawingBounds line;
          for (const PolylineVertex& vertex : shape.vertices) {
            line.Add(vertex.at);
          }
          ForEachSegment(shape, [&line](DrawingPoint, std::optional<BulgeArc> arc, bool) {
            if (arc) {
              line.AddArc(*arc);
            }
          });
          bounds.Add(line, shape.width / 2);
        } else {
          bounds.Add(TextBounds(shape), 0);
        }
      },
      entity.shape);
  return bounds;
}

class SvgBuilder {
 public:
  SvgBuilder(std::string& out, double hairline) : out_(out), hairline_(hairline) {}

  void Entity(const DxfEntity& entity) {
    const std::string_view colour = kLayerColours[entity.layer];
    std::visit([&](const auto& shape) { Shape(entity, colour, shape); }, entity.shape);
  }

 private:
  void Open(std::string_view element, const DxfEntity& entity) {
    out_ += "<";
    out_ += element;
    out_ += " data-layer=\"";
    out_ += kDrawingLayers[entity.layer];
    out_ += "\"";
  }
  void Attribute(std::string_view name, std::string_view value) {
    out_ += " ";
    out_ += name;
    out_ += "=\"";
    out_ += value;
    out_ += "\"";
  }
  void Stroke(std::string_view colour, double width) {
    Attribute("fill", "none");
    Attribute("stroke", colour);
    Attribute("stroke-width", Num(width));
    out_ += "/>\n";
  }
  static std::string At(DrawingPoint p) { return X(p.x) + " " + Y(p.y); }

  void Shape(const DxfEntity& entity, std::string_view colour, const DrawnLine& line) {
    Open("line", entity);
    Attribute("x1", X(line.start.x));
    Attribute("y1", Y(line.start.y));
    Attribute("x2", X(line.end.x));
    Attribute("y2", Y(line.end.y));
    Stroke(colour, hairline_);
  }

  void Shape(const DxfEntity& entity, std::string_view colour, const DrawnCircle& circle) {
    Open("circle", entity);
    Attribute("cx", X(circle.centre.x));
    Attribute("cy", Y(circle.centre.y));
    // A negative radius is passed through by the writer; the circle meant is its size.
    Attribute("r", Length(std::fabs(circle.radius)));
    Stroke(colour, hairline_);
  }

  void Shape(const DxfEntity& entity, std::string_view colour, const DrawnSolid& solid) {
    // The record's corners zig-zag: the outline is first, second, fourth, third.
    std::string points;
    for (const std::size_t corner : {0, 1, 3, 2}) {
      const DrawingPoint p = solid.corners[corner];
      points += (points.empty() ? "" : " ") + X(p.x) + "," + Y(p.y);
    }
    Open("polygon", entity);
    Attribute("points", points);
    Attribute("fill", colour);
    out_ += "/>\n";
  }

  void Shape(const DxfEntity& entity, std::string_view colour, const DrawnPolyline& polyline) {
    std::string d;
    if (!polyline.vertices.empty()) {
      d = "M " + At(polyline.vertices.front().at);
    }
    ForEachSegment(polyline, [&d](DrawingPoint to, std::optional<BulgeArc> arc, bool closing) {
      if (!arc) {
        if (!closing) {  // "Z" draws a straight closing segment
          d += " L " + At(to);
        }
        return;
      }
      // With y flipped, a counter-clockwise arc is drawn with sweep flag 0.
      const std::string radius = Length(arc->radius);
      d += " A " + radius + " " + radius + " 0 " +
           (std::fabs(arc->sweep) > std::numbers::pi ? "1 " : "0 ") +
           (arc->sweep > 0 ? "0 " : "1 ") + At(to);
    });
    if (polyline.closed && !polyline.vertices.empty()) {
      d += " Z";
    }
    Open("path", entity);
    Attribute("d", d);
    if (IsDot(polyline)) {
      // The stroke alone already covers the disc; the fill leaves no pinhole at the centre.
      Attribute("fill", colour);
      Attribute("stroke", colour);
      Attribute("stroke-width", Length(polyline.width));
      out_ += "/>\n";
      return;
    }
    Stroke(colour, polyline.width > 0 ? polyline.width * kScale : hairline_);
  }

  void Shape(const DxfEntity& entity, std::string_view colour, const DrawnText& text) {
    Open("text", entity);
    Attribute("x", X(text.at.x));
    Attribute("y", Y(text.at.y));
    Attribute("font-size", Length(FontSize(text)));
    Attribute("fill", colour);
    if (text.angle != 0) {
      // Counter-clockwise in the drawing is a negative turn with y flipped.
      Attribute("transform", "rotate(" + Num(-text.angle) + " " + At(text.at) + ")");
    }
    Attribute("xml:space", "preserve");
    out_ += ">";
    const std::vector<std::string_view> runs = OverlineRuns(text.value);
    for (std::size_t i = 0; i < runs.size(); ++i) {
      if (runs[i].empty()) {
        continue;
      }
      // The file's texts are in its code page, with escapes for the characters it lacks.
      const std::string shown = XmlText(Utf8FromHostText(runs[i]));
      if (i % 2 == 1) {
        out_ += "<tspan text-decoration=\"overline\">" + shown + "</tspan>";
      } else {
        out_ += shown;
      }
    }
    out_ += "</text>\n";
  }

  std::string& out_;
  double hairline_;
};

struct Box {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;
};

void WriteLegend(std::string& out, const std::array<std::size_t, kDrawingLayers.size()>& counts,
                 double left, double top, double row) {
  out += "<g data-role=\"legend\" font-family=\"" + std::string(kFontFamily) + "\">\n";
  for (std::size_t i = 0; i < kDrawingLayers.size(); ++i) {
    const double y = top + static_cast<double>(i) * row;
    out += "<rect data-legend=\"" + std::string(kDrawingLayers[i]) + "\" x=\"" + Num(left) +
           "\" y=\"" + Num(y + 0.2 * row) + "\" width=\"" + Num(0.6 * row) + "\" height=\"" +
           Num(0.6 * row) + "\" fill=\"" + std::string(kLayerColours[i]) + "\"/>\n";
    out += "<text x=\"" + Num(left + row) + "\" y=\"" + Num(y + 0.75 * row) + "\" font-size=\"" +
           Num(0.6 * row) + "\" fill=\"#000000\">" + std::string(kDrawingLayers[i]) + " (" +
           std::to_string(counts[i]) + ")</text>\n";
  }
  out += "</g>\n";
}

}  // namespace

std::string SvgNumber(double value) {
  char buffer[400];  // the widest double in fixed notation
  const auto result =
      std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, 4);
  std::string text(buffer, result.ptr);
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') {
    text.pop_back();
  }
  return text == "-0" ? "0" : text;
}

std::string WriteSvg(const DxfDrawing& drawing, std::string_view title) {
  DrawingBounds bounds;
  std::array<std::size_t, kDrawingLayers.size()> counts{};
  for (const DxfEntity& entity : drawing.entities) {
    bounds.Add(EntityBounds(entity), 0);
    ++counts[entity.layer];
  }
  if (bounds.empty()) {
    bounds.Add({0, 0});
    bounds.Add({1, 1});
  }
  // From here on in SVG units, y downward.
  const double left = bounds.low().x * kScale;
  const double right = bounds.high().x * kScale;
  const double top = -bounds.high().y * kScale;
  const double bottom = -bounds.low().y * kScale;
  double span = std::max(right - left, bottom - top);
  if (span <= 0) {
    span = kScale;  // a single point still gets a page
  }
  const double margin = span * 0.04;
  const double row = std::max(span / 28, kSmallestLegendRow);
  const double legendLeft = right + margin;
  const double legendHeight = row * static_cast<double>(kDrawingLayers.size());

  Box view;
  view.x = left - margin;
  view.y = top - margin;
  view.width = legendLeft + row * 7 + margin - view.x;  // room for "PARTTEXT (1234)"
  view.height = std::max(bottom, top + legendHeight) + margin - view.y;
  const double hairline = std::max(1.0, std::max(view.width, view.height) / kViewedSide);

  std::string out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
  out += "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + Num(std::ceil(view.width)) +
         "\" height=\"" + Num(std::ceil(view.height)) + "\" viewBox=\"" + Num(view.x) + " " +
         Num(view.y) + " " + Num(view.width) + " " + Num(view.height) + "\">\n";
  out += "<title>" + XmlText(title) + "</title>\n";
  out += "<rect data-role=\"page\" x=\"" + Num(view.x) + "\" y=\"" + Num(view.y) + "\" width=\"" +
         Num(view.width) + "\" height=\"" + Num(view.height) + "\" fill=\"#ffffff\"/>\n";
  out += "<g data-role=\"drawing\" font-family=\"" + std::string(kFontFamily) + "\">\n";
  SvgBuilder builder(out, hairline);
  for (const DxfEntity& entity : drawing.entities) {
    builder.Entity(entity);
  }
  out += "</g>\n";
  WriteLegend(out, counts, legendLeft, top, row);
  out += "</svg>\n";
  return out;
}

}  // namespace kalmor
