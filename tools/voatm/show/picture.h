// A table of states as a page that a browser shows without anything else.
#ifndef TOOLS_VOATM_SHOW_PICTURE_H
#define TOOLS_VOATM_SHOW_PICTURE_H

#include <cstddef>
#include <string>
#include <vector>

// Columns against rows, each cell in one of up to four states, which the page tells apart by colour
// and by pattern.
struct Picture {
  struct Row {
    std::string label;
    std::vector<std::size_t> cells;  // the state of each column
    std::string note;                // short, beside the cells
    std::string details;             // in the table below
  };

  std::string title;
  std::vector<std::string> about;   // a paragraph each
  std::vector<std::string> states;  // their names
  std::vector<int> columns;
  std::string row_heading, note_heading, details_heading;
  std::vector<Row> rows;
};

// The page, in HTML.
std::string PageOf(const Picture& picture);

#endif  // TOOLS_VOATM_SHOW_PICTURE_H
