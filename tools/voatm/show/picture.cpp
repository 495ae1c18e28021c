#include "show/picture.h"

namespace {

constexpr std::size_t kTicks = 5;  // that a narrow screen has room for

// Each state has a pattern of its own: full, hatched, dotted, empty.
constexpr const char* kHead = R"(<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<style>
:root { color-scheme: light dark; --ink: #1d2430; --paper: #fff; --line: #8a94a3; --s0: #1b7f79;
  --s1: #e0a11b; --s2: #c2413b; --s3: #8a94a3; }
@media (prefers-color-scheme: dark) { :root { --ink: #e8ebf0; --paper: #14181f; --s0: #3fb3ab;
  --s2: #ef7d76; } }
body { font: 16px/1.5 system-ui, sans-serif; color: var(--ink); background: var(--paper);
  max-width: 72rem; margin: 0 auto; padding: 1rem; }
h1 { font-size: 1.4rem; }
.row { display: grid; grid-template-columns: 6rem 1fr 3.5rem; gap: .5rem; align-items: center;
  margin: 2px 0; }
@media (max-width: 40rem) { .row { grid-template-columns: 3.2rem 1fr 3.2rem; } }
.row > :first-child, .row > :last-child { font-size: .85rem; overflow-wrap: anywhere; }
.row > :last-child { text-align: right; font-variant-numeric: tabular-nums; }
.bar { display: flex; height: 1.5rem; border: 1px solid var(--line); }
.bar i { min-width: 0; }
.axis { position: sticky; top: 0; background: var(--paper); }
.ticks { display: flex; justify-content: space-between; font-size: .8rem; }
i { print-color-adjust: exact; -webkit-print-color-adjust: exact; }
.s0 { background: var(--s0); }
.s1 { background: repeating-linear-gradient(45deg, var(--s1) 0 4px, transparent 4px 8px); }
.s2 { background: radial-gradient(circle, var(--s2) 1.5px, transparent 2px) 0 0 / 7px 7px; }
.s3 { background: none; }
.legend { display: flex; flex-wrap: wrap; gap: .4rem 1.2rem; padding: 0; list-style: none; }
.legend i { display: inline-block; width: 2.2rem; height: 1rem; border: 1px solid var(--line);
  vertical-align: -2px; margin-right: .4rem; }
table { border-collapse: collapse; width: 100%; margin-top: 1.5rem; font-size: .9rem; }
th, td { text-align: left; padding: .25rem .5rem; border-bottom: 1px solid var(--line);
  overflow-wrap: anywhere; vertical-align: top; }
</style>
)";

std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

std::string Element(const std::string& name, const std::string& content) {
  return "<" + name + ">" + content + "</" + name.substr(0, name.find(' ')) + ">";
}

std::string Swatch(std::size_t state, const std::string& attributes) {
  return "<i class=\"s" + std::to_string(state) + "\"" + attributes + "></i>";
}

std::string Legend(const Picture& picture) {
  std::string items;
  for (std::size_t state = 0; state < picture.states.size(); ++state) {
    items += Element("li", Swatch(state, "") + Escaped(picture.states[state])) + "\n";
  }
  return Element("ul class=\"legend\"", items) + "\n";
}

std::string Axis(const Picture& picture) {
  std::string ticks;
  for (std::size_t tick = 0; tick < kTicks && !picture.columns.empty(); ++tick) {
    const std::size_t column = (picture.columns.size() - 1) * tick / (kTicks - 1);
    ticks += Element("span", std::to_string(picture.columns[column]));
  }
  return Element("div class=\"row axis\"", Element("span", Escaped(picture.row_heading)) +
                                               Element("div class=\"ticks\"", ticks) +
                                               Element("span", Escaped(picture.note_heading))) +
         "\n";
}

// Cells beside each other in one state are one piece.
std::string Bar(const Picture& picture, const Picture::Row& row) {
  std::string pieces;
  for (std::size_t begin = 0; begin < row.cells.size();) {
    std::size_t end = begin;
    while (end < row.cells.size() && row.cells[end] == row.cells[begin]) ++end;
    const std::string last =
        end - begin > 1 ? " to " + std::to_string(picture.columns[end - 1]) : "";
    pieces +=
        Swatch(row.cells[begin], " style=\"flex:" + std::to_string(end - begin) + "\" title=\"" +
                                     std::to_string(picture.columns[begin]) + last + ": " +
                                     Escaped(picture.states[row.cells[begin]]) + "\"");
    begin = end;
  }
  return Element("div class=\"row\"", Element("span", Escaped(row.label)) +
                                          Element("div class=\"bar\"", pieces) +
                                          Element("span", Escaped(row.note))) +
         "\n";
}

std::string Table(const Picture& picture) {
  std::string rows = Element("tr", Element("th", Escaped(picture.row_heading)) +
                                       Element("th", Escaped(picture.note_heading)) +
                                       Element("th", Escaped(picture.details_heading)));
  for (const Picture::Row& row : picture.rows) {
    rows +=
        "\n" + Element("tr", Element("td", Escaped(row.label)) + Element("td", Escaped(row.note)) +
                                 Element("td", Escaped(row.details)));
  }
  return Element("table", rows) + "\n";
}

}  // namespace

std::string PageOf(const Picture& picture) {
  std::string page = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n" +
                     Element("title", Escaped(picture.title)) + "\n" + kHead + "</head>\n<body>\n" +
                     Element("h1", Escaped(picture.title)) + "\n";
  for (const std::string& paragraph : picture.about) {
    page += Element("p", Escaped(paragraph)) + "\n";
  }
  page += Legend(picture) + Axis(picture);
  for (const Picture::Row& row : picture.rows) page += Bar(picture, row);
  return page + Table(picture) + "</body>\n</html>\n";
}
