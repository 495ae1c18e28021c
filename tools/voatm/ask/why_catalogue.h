// What the library's trace texts mean.
#ifndef TOOLS_VOATM_ASK_WHY_CATALOGUE_H
#define TOOLS_VOATM_ASK_WHY_CATALOGUE_H

#include <string>
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

// What an error number means that the library adds to a text.
struct SystemError {
  int number;
  const char* means;
};

// Every trace text of the library, once.
const std::vector<TraceText>& TraceTexts();

const std::vector<SystemError>& SystemErrors();

#endif  // TOOLS_VOATM_ASK_WHY_CATALOGUE_H
