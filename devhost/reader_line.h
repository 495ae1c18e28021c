// Lines of configuration files. The bundled reader knows them; a switch's own need not.
#ifndef DEVHOST_READER_LINE_H
#define DEVHOST_READER_LINE_H

#include <string>
#include <type_traits>
#include <utility>

namespace devhost {

template <typename Reader, typename = void>
inline constexpr bool kGivesLines = false;
template <typename Reader>
inline constexpr bool
    kGivesLines<Reader, std::void_t<decltype(std::declval<const Reader&>().line())>> = true;

constexpr int kNoLine = -1;  // of a reader that gives none

// The line of what the reader found last, 0 when it found nothing, or kNoLine.
template <typename Reader>
int LineOf([[maybe_unused]] const Reader& reader) {
  if constexpr (kGivesLines<Reader>) {
    return reader.line();
  } else {
    return kNoLine;
  }
}

// The place as a person reads it.
inline std::string AtLine(const std::string& path, int line) {
  if (line == kNoLine) return path + " (the switch's reader gives no line)";
  return line > 0 ? path + ":" + std::to_string(line) : path;
}

}  // namespace devhost

#endif  // DEVHOST_READER_LINE_H
