#include <cstdio>
#include <string_view>
#include <unordered_map>

#include "gallery/gallery.h"
#include "render/svg_writer.h"
#include "render/xml_text.h"

namespace kalmor::gallery {
namespace {

// Blocks deeper than this show their path as its last steps only, so that a deep chain of blocks
// costs no more than a shallow one.
constexpr std::size_t kWholePathDepth = 12;
constexpr std::size_t kPathTailSteps = 3;
constexpr std::size_t kUnfoldedRows = 20;

// The page's look. Thumbnails share one box shape so the grid stays even; names of any length
// wrap rather than widen the page on a phone.
constexpr std::string_view kStyle = R"css(
:root { color-scheme: light; --ink: #1d2330; --muted: #5d6573; --line: #d8dce3; --back: #f2f3f5; }
* { box-sizing: border-box; }
body { margin: 0; background: var(--back); color: var(--ink);
  font: 15px/1.45 system-ui, -apple-system, "Segoe UI", Roboto, "Liberation Sans", sans-serif; }
header, nav, main, footer { max-width: 1440px; margin: 0 auto; padding: 0 16px; }
header { padding-top: 20px; }
h1 { font-size: 1.6rem; margin: 0 0 4px; }
h1, h2, h3, p, li { overflow-wrap: anywhere; }
a { color: #1a4fb5; }
.muted, .summary { color: var(--muted); }
.summary { margin: 0; }
nav h2, main h2 { font-size: 1.15rem; margin: 24px 0 8px; }
nav summary { cursor: pointer; margin: 24px 0 8px; }
nav summary h2 { display: inline; }
.tree { list-style: none; margin: 0; padding: 10px 14px; background: #fff;
  border: 1px solid var(--line); border-radius: 8px; }
.tree li { padding: 3px 0 3px calc(min(var(--depth, 0), 10) * 1.4rem); }
.tree .block::before { content: "└ "; color: var(--muted); }
section h2 { display: flex; flex-wrap: wrap; align-items: baseline; gap: 4px 12px; }
section h2 .muted { font-size: .9rem; font-weight: normal; }
.pages { list-style: none; margin: 0; padding: 0; display: grid; gap: 16px;
  grid-template-columns: repeat(auto-fill, minmax(min(100%, 360px), 1fr)); }
.page { background: #fff; border: 1px solid var(--line); border-radius: 8px; overflow: hidden; }
.page:target { outline: 3px solid #1a4fb5; }
.thumb { display: block; aspect-ratio: 3 / 2; background: #fff; border-bottom: 1px solid var(--line); }
.thumb img { display: block; width: 100%; height: 100%; object-fit: contain; }
.about { padding: 10px 12px 12px; }
.about h3 { margin: 0; font-size: 1.05rem; }
.number { color: var(--muted); font-weight: normal; margin-right: .35em; }
.file { margin: 2px 0 8px; }
.layers { list-style: none; margin: 0; padding: 0; font-size: .88rem;
  display: grid; grid-template-columns: 1fr 1fr; column-gap: 18px; }
.layers li { display: flex; justify-content: space-between; gap: 8px; }
.layers .none { color: #a0a6af; }
.layers .total { font-weight: 600; }
.swatch { display: inline-block; width: .7em; height: .7em; margin-right: .4em; border-radius: 2px; }
data { font-variant-numeric: tabular-nums; }
footer { padding: 24px 16px; font-size: .85rem; }
@media print {
  body { background: #fff; }
  nav { display: none; }
  .page { break-inside: avoid; }
}
)css";

// A name from the design as HTML text: escaped, and isolated so that right-to-left characters or
// direction controls in it cannot reorder the text around it.
std::string Name(std::string_view name) {
  return "<bdi>" + XmlText(name) + "</bdi>";
}

// A relative file name as a URL: every byte but the unreserved ones and '/' is percent-encoded,
// so that '#', '?', '%' or ':' in a name stay part of the path.
std::string Url(std::string_view file) {
  static constexpr std::string_view kKept =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
  std::string url;
  for (const char c : file) {
    if (kKept.find(c) != std::string_view::npos) {
      url += c;
    } else {
      char escape[4];
      std::snprintf(escape, sizeof escape, "%%%02X", static_cast<unsigned char>(c));
      url += escape;
    }
  }
  return url;
}

// 1234567 as "1,234,567".
std::string Grouped(std::uintmax_t number) {
  std::string digits = std::to_string(number);
  for (std::size_t at = digits.size(); at > 3; at -= 3) {
    digits.insert(at - 3, ",");
  }
  return digits;
}

std::string Counted(std::uintmax_t count, std::string_view one, std::string_view many) {
  return Grouped(count) + " " + std::string(count == 1 ? one : many);
}

// A file size as people read it: "812 bytes", "17.3 kB", "66.0 MB".
std::string Size(std::uintmax_t bytes) {
  static constexpr const char* kUnits[] = {"kB", "MB", "GB", "TB"};
  if (bytes < 1000) {
    return Counted(bytes, "byte", "bytes");
  }
  auto value = static_cast<double>(bytes) / 1000;
  std::size_t unit = 0;
  while (value >= 999.95 && unit + 1 < std::size(kUnits)) {
    value /= 1000;
    ++unit;
  }
  char text[32];
  std::snprintf(text, sizeof text, "%.1f %s", value, kUnits[unit]);
  return text;
}

// The pages of one schematic: [first, end) of Gallery::pages.
struct Section {
  std::size_t first = 0;
  std::size_t end = 0;
};

class GalleryWriter {
 public:
  explicit GalleryWriter(const Gallery& gallery) : gallery_(gallery) {
    for (std::size_t i = 0; i < gallery.pages.size(); ++i) {
      if (i == 0 || gallery.pages[i].schematic != gallery.pages[i - 1].schematic) {
        sectionOf_.emplace(gallery.pages[i].schematic, sections_.size());
        sections_.push_back({i, i});
      }
      ++sections_.back().end;
    }
    for (const Block& block : gallery.blocks) {
      // A parent listed after its block breaks the order promised; the block is then shown at
      // the top rather than read out of bounds.
      depth_.push_back(block.parent < depth_.size() ? depth_[block.parent] + 1 : 0);
      ++placements_[block.schematic];
    }
  }

  std::string Write() {
    Head();
    out_ += "<body>\n<header>\n<h1>" + Name(gallery_.designName) + "</h1>\n";
    out_ += "<p class=\"summary\">" + Summary() + "</p>\n</header>\n";
    if (gallery_.blocks.empty()) {
      Contents();
    } else {
      Hierarchy();
    }
    out_ += "<main>\n";
    for (std::size_t i = 0; i < sections_.size(); ++i) {
      SchematicSection(i);
    }
    out_ += "</main>\n<footer class=\"muted\">Written by " + XmlText(gallery_.generator) +
            " from " + Name(gallery_.source) + ".</footer>\n</body>\n</html>\n";
    return std::move(out_);
  }

 private:
  void Head() {
    out_ += "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n";
    out_ += "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n";
    out_ += "<meta name=\"generator\" content=\"" + XmlText(gallery_.generator) + "\">\n";
    out_ += "<title>" + XmlText(gallery_.designName) + " · drawings</title>\n";
    out_ += "<style>" + std::string(kStyle) + "</style>\n</head>\n";
  }

  std::string Summary() const {
    std::uintmax_t bytes = 0;
    for (const Page& page : gallery_.pages) {
      bytes += page.dxfBytes;
    }
    std::string summary = Counted(gallery_.pages.size(), "page", "pages") + " in " +
                          Counted(sections_.size(), "schematic", "schematics") + " · " +
                          Size(bytes) + " of DXF";
    for (const std::string& setting : gallery_.settings) {
      summary += " · " + XmlText(setting);
    }
    return summary;
  }

  // A list that folds away, folded from the start when it is long enough to push the drawings
  // far down.
  void OpenNav(std::string_view title, std::size_t rows, const std::string& count) {
    out_ += "<nav aria-label=\"" + std::string(title) + "\">\n<details" +
            (rows <= kUnfoldedRows ? " open" : "") + ">\n<summary><h2>" + std::string(title) +
            "</h2> <span class=\"muted\">" + count + "</span></summary>\n<ul class=\"tree\">\n";
  }

  // The schematics of a flat design with links to their pages.
  void Contents() {
    OpenNav("Contents", sections_.size(), Counted(sections_.size(), "schematic", "schematics"));
    for (std::size_t i = 0; i < sections_.size(); ++i) {
      out_ += "<li><a href=\"#schematic-" + std::to_string(i + 1) + "\">" +
              Name(gallery_.pages[sections_[i].first].schematic) + "</a>: " + PageLinks(i) +
              "</li>\n";
    }
    out_ += "</ul>\n</details>\n</nav>\n";
  }

  // The root schematic, then every block below it indented by depth, then the schematics that
  // no block places.
  void Hierarchy() {
    OpenNav("Hierarchy", 1 + gallery_.blocks.size(),
            Counted(gallery_.blocks.size(), "block", "blocks"));
    out_ += "<li>" + Name(gallery_.rootSchematic) +
            " <span class=\"muted\">(top)</span>: " + PageLinksOf(gallery_.rootSchematic) +
            "</li>\n";
    for (std::size_t i = 0; i < gallery_.blocks.size(); ++i) {
      const Block& block = gallery_.blocks[i];
      out_ += "<li class=\"block\" id=\"block-" + std::to_string(i + 1) +
              "\" style=\"--depth:" + std::to_string(depth_[i] + 1) + "\">" + Name(block.id) +
              " → " + Name(block.schematic) + ": ";
      const auto section = sectionOf_.find(block.schematic);
      if (section == sectionOf_.end()) {
        out_ += "<span class=\"muted\">no pages</span>";
      } else if (const std::size_t shown =
                     gallery_.pages[sections_[section->second].first].shownThrough;
                 shown == i || shown == kNone) {
        out_ += PageLinks(section->second);
      } else {
        out_ += "<span class=\"muted\">drawn once, as placed at <a href=\"#block-" +
                std::to_string(shown + 1) + "\">" + Name(PathOf(shown)) + "</a></span>";
      }
      out_ += "</li>\n";
    }
    for (std::size_t i = 0; i < sections_.size(); ++i) {
      const Page& first = gallery_.pages[sections_[i].first];
      if (first.shownThrough == kNone && first.schematic != gallery_.rootSchematic) {
        out_ += "<li>" + Name(first.schematic) +
                " <span class=\"muted\">(not placed in the hierarchy)</span>: " + PageLinks(i) +
                "</li>\n";
      }
    }
    out_ += "</ul>\n</details>\n</nav>\n";
  }

  std::string PageLinksOf(const std::string& schematic) const {
    const auto section = sectionOf_.find(schematic);
    return section == sectionOf_.end() ? "<span class=\"muted\">no pages</span>"
                                       : PageLinks(section->second);
  }

  std::string PageLinks(std::size_t section) const {
    std::string links;
    for (std::size_t i = sections_[section].first; i < sections_[section].end; ++i) {
      links += i == sections_[section].first ? "" : " · ";
      links += "<a href=\"#page-" + std::to_string(i + 1) + "\">" + Name(gallery_.pages[i].name) +
               "</a>";
    }
    return links;
  }

  // "/CH_A/AMP"; for deep blocks only the last steps: "/…/X/Y/Z".
  std::string PathOf(std::size_t block) const {
    if (block >= depth_.size()) {
      return "";
    }
    // One step per level, so that parents out of order cannot make the walk go round.
    const std::size_t depth = depth_[block];
    const bool whole = depth < kWholePathDepth;
    std::string path;
    for (std::size_t step = 0; step <= depth && (whole || step < kPathTailSteps); ++step) {
      path.insert(0, "/" + gallery_.blocks[block].id);
      block = gallery_.blocks[block].parent;
    }
    return whole ? path : "/…" + path;
  }

  void SchematicSection(std::size_t index) {
    const Section& section = sections_[index];
    const Page& first = gallery_.pages[section.first];
    out_ += "<section id=\"schematic-" + std::to_string(index + 1) + "\">\n<h2>" +
            Name(first.schematic) + SectionNote(first) + "</h2>\n<ol class=\"pages\">\n";
    for (std::size_t i = section.first; i < section.end; ++i) {
      PageCard(i);
    }
    out_ += "</ol>\n</section>\n";
  }

  // How the schematic's property values were chosen, when the design has a hierarchy.
  std::string SectionNote(const Page& first) const {
    if (gallery_.blocks.empty()) {
      return "";
    }
    std::string note = " <span class=\"muted\">";
    if (first.shownThrough != kNone) {
      note += "values as placed at " + Name(PathOf(first.shownThrough));
      const auto placed = placements_.find(first.schematic);
      if (placed != placements_.end() && placed->second > 1) {
        note += " · placed " + Grouped(placed->second) + " times, drawn once";
      }
    } else if (first.schematic == gallery_.rootSchematic) {
      note += "top of the hierarchy";
    } else {
      note += "not placed in the hierarchy: plain values";
    }
    return note + "</span>";
  }

  void PageCard(std::size_t index) {
    const Page& page = gallery_.pages[index];
    const std::string svg = XmlText(Url(page.svgFile));
    out_ += "<li class=\"page\" id=\"page-" + std::to_string(index + 1) + "\">\n";
    out_ += "<a class=\"thumb\" href=\"" + svg + "\"><img src=\"" + svg + "\" alt=\"" +
            XmlText(page.schematic + " / " + page.name) +
            "\" loading=\"lazy\" decoding=\"async\"></a>\n";
    out_ += "<div class=\"about\">\n<h3><span class=\"number\">" + std::to_string(index + 1) +
            "</span>" + Name(page.name) + "</h3>\n";
    out_ += "<p class=\"file\"><a href=\"" + XmlText(Url(page.dxfFile)) + "\">" +
            Name(page.dxfFile) + "</a> <span class=\"muted\">" + Size(page.dxfBytes) +
            "</span></p>\n<ul class=\"layers\">\n";
    std::size_t total = 0;
    for (std::size_t layer = 0; layer < kDrawingLayers.size(); ++layer) {
      const std::size_t count = page.entities[layer];
      total += count;
      out_ +=
          "<li" + std::string(count == 0 ? " class=\"none\"" : "") +
          "><span><span class=\"swatch\" style=\"background:" + std::string(kLayerColours[layer]) +
          "\"></span>" + std::string(kDrawingLayers[layer]) + "</span><data value=\"" +
          std::to_string(count) + "\">" + Grouped(count) + "</data></li>\n";
    }
    out_ += "<li class=\"total\"><span>entities</span><data value=\"" + std::to_string(total) +
            "\">" + Grouped(total) + "</data></li>\n</ul>\n</div>\n</li>\n";
  }

  const Gallery& gallery_;
  std::string out_;
  std::vector<Section> sections_;
  std::unordered_map<std::string, std::size_t> sectionOf_;
  std::vector<std::size_t> depth_;
  std::unordered_map<std::string, std::size_t> placements_;
};

}  // namespace

std::string WriteGalleryHtml(const Gallery& gallery) {
  return GalleryWriter(gallery).Write();
}

}  // namespace kalmor::gallery
