// What the example driver prints: one step a line, and where its answers come from.
#ifndef EXAMPLES_SHOW_H
#define EXAMPLES_SHOW_H

#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "voatmutil.h"
#include "vodebugutil.h"

// The ATM that the example serves.
constexpr char kInst[] = "HARBOUR";
constexpr char kGroup[] = "BRANCH";
constexpr char kAtm[] = "ATM00001";
constexpr char kFallback[] = "COMMON";

[[gnu::format(printf, 1, 2)]] inline void Title(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  printf("\n");
  vprintf(format, arguments);
  printf("\n");
  va_end(arguments);
}

[[gnu::format(printf, 2, 3)]] inline void Step(const char* name, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  printf("  %-12s ", name);
  vprintf(format, arguments);
  printf("\n");
  va_end(arguments);
}

// The layered file of a kind that the library reads for this ATM.
inline std::string FileRead(const char* directory, const char* suffix) {
  const char* home = getenv("VODIR_HOME");
  const std::string institution = kInst;
  const std::string group = institution + '_' + kGroup;
  for (const std::string& scope :
       {group + '_' + kAtm, group, institution, std::string(kFallback)}) {
    char file[251];
    char path[512];
    snprintf(file, sizeof file, "cfg/atm/%s/%s_%s", directory, scope.c_str(), suffix);
    snprintf(path, sizeof path, "%s/%s", home != nullptr ? home : "", file);
    if (access(path, R_OK) == 0) return file;
  }
  return "no file";
}

// The note count at a position of a dispense logic.
inline int CountAt(const char* logic, int position) {
  return 10 * (logic[2 * position] - '0') + (logic[2 * position + 1] - '0');
}

// What the cassettes' notes add up to.
inline int SumOf(const DenomInfo* cassettes, int count) {
  int sum = 0;
  for (int i = 0; i < count; ++i) sum += cassettes[i].Value * cassettes[i].LastDispNotes;
  return sum;
}

// The notes to dispense, as a cashier would say it.
inline std::string NotesOf(const DenomInfo* cassettes, int count) {
  std::string text;
  for (int i = 0; i < count; ++i) {
    if (cassettes[i].LastDispNotes == 0) continue;
    if (!text.empty()) text += ", ";
    text += std::to_string(cassettes[i].LastDispNotes) + " x ";
    text += std::to_string(cassettes[i].Value);
  }
  return text;
}

// What a result of CheckCashAvailability says.
inline std::string Meaning(int result) {
  switch (result) {
    case 0:
      return "the notes do not add up to the amount";
    case 40:
      return "the configured logic is no number";
    case 108:
      return "no usable cassette of this currency";
    default:
      const char letter = static_cast<char>('A' + (result - 301) / 2);
      return std::string("cassette ") + letter + " stands in the way: " +
             (result % 2 == 0 ? "its notes are too large" : "the plan needs too many notes");
  }
}

// Shows the library's own trace lines between the steps, or drops them.
inline void ShowTrace(VoDebugUtil& trace, bool shown) {
  trace.set_level(7);
  if (shown) {
    trace.to_callback(
        [](void*, int level, const char* text) {
          printf("      %c %s\n", level < 0 ? '-' : static_cast<char>('0' + level), text);
        },
        nullptr);
  } else {
    trace.to_callback([](void*, int, const char*) {}, nullptr);
  }
}

inline int Failed(const char* cause) {
  fprintf(stderr, "withdrawal: %s\n", cause);
  return 1;
}

#endif  // EXAMPLES_SHOW_H
