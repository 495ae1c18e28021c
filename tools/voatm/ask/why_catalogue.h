// What the library's trace texts mean.
#ifndef TOOLS_VOATM_ASK_WHY_CATALOGUE_H
#define TOOLS_VOATM_ASK_WHY_CATALOGUE_H

#include <string_view>
#include <vector>

// How much a text matters.
enum class Weight {
  kError,   // something is wrong
  kNotice,  // wrong or meant, as the requests and the configuration are
  kNormal,
};

// What lies behind some texts, and what to run. "{1}" stands for what the text's first conversion
// printed, "{2}" for the second.
struct TraceAdvice {
  const char* cause;
  const char* next;
  Weight weight = Weight::kError;
};

struct TraceText {
  const char* text;  // printf-style, as the library says it
  const char* means;
  const TraceAdvice* advice;
  // What the last conversion prints once there is nothing wider to try; `means` then ends at its
  // semicolon.
  const char* widest = nullptr;
};

// Every trace text of the library, once; those that differ in a table's name are one.
const std::vector<TraceText>& TraceTexts();

// What the number of a system's error means for the library; null when nothing more is known of it.
const char* MeaningOfError(std::string_view number);

#endif  // TOOLS_VOATM_ASK_WHY_CATALOGUE_H
