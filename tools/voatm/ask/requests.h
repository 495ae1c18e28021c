// The requests that drivers can be expected to make of a side: those that its files and rows name.
#ifndef TOOLS_VOATM_ASK_REQUESTS_H
#define TOOLS_VOATM_ASK_REQUESTS_H

#include <string>
#include <vector>

#include "ask/comparison.h"

struct Request {
  const Question* question;
  Inputs inputs;
  std::string text;  // as voatm explain takes it
};

// A field or an input as a shell takes it: in quotes where it would not stand for itself.
std::string Quoted(const std::string& word);

// Each once, for an ATM, whichever of the sides names it.
std::vector<Request> RequestsOf(const std::vector<const Side*>& sides, const Atm& atm);

#endif  // TOOLS_VOATM_ASK_REQUESTS_H
