// What the library's trace texts mean.
#ifndef TOOLS_VOATM_ASK_WHY_CATALOGUE_H
#define TOOLS_VOATM_ASK_WHY_CATALOGUE_H

#include <string>
#include <vector>

// What lies behind some texts, and what to run. "{1}" stands for what the text's first conversion
// printed, "{2}" for the second.
struct TraceAdvice {
  const char* cause;
  const char* next;
};

struct TraceText {
  const char* text;  // printf-style, as the library says it
  const char* means;
  const TraceAdvice* advice;
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
