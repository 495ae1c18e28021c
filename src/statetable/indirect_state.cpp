// Indirect states: the next state of a card by the longest card-number prefix in the FIT table.
#include <strings.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "common/field_key.h"
#include "common/slot_scan.h"
#include "common/text_field.h"
#include "voatmutil.h"

using namespace voatm;

namespace {

constexpr int kPrefixLength = 10;
constexpr char kFill = 'F';  // what a pattern holds beyond its prefix
constexpr char kCatchAll[] = "FFFFFFFFFF";

using PrefixPattern = char[kPrefixLength + 1];

static_assert(sizeof(PrefixPattern) == sizeof(AtmFit::CardPrefix));

// The card number whose longest prefix is looked for.
class CardNumber {
 public:
  explicit CardNumber(const char* number) {
    const std::size_t length = strnlen(number, kPrefixLength);
    memcpy(number_, number, length);
    length_ = static_cast<int>(length);
    LookForLonger(0);
  }

  // From now on only prefixes longer than this matter.
  void LookForLonger(int than) {
    const int decided = std::min(std::max(than, kShort), length_) + 1;
    char mask[kProbe] = {};
    for (int i = 0; i < decided && i < kProbe; ++i) mask[i] = '\xff';
    mask_ = Load(mask);
    if (than >= kShort) letter_ = 0;
  }

  // The first row from this one on whose pattern may hold a longer prefix or be the catch-all, or
  // end. Two looks at one word rule most rows out: what follows a short prefix is a letter, and any
  // other pattern begins as the card number.
  [[gnu::noinline]] AtmFit* Next(AtmFit* fit, AtmFit* end) const {
    const std::uint64_t number = Load(number_);
    return NextCandidate(fit, end, [number, mask = mask_, letter = letter_](const AtmFit& next) {
      const std::uint64_t word = Load(next.CardPrefix);
      return (word & letter) != 0 || ((word ^ number) & mask) == 0;
    });
  }

  // How many of the card number's first ten characters the pattern has for its prefix, 0 when it
  // does not match. Intended: a shorter number matches a pattern that is that number, unfilled, as
  // if it had all ten.
  int PrefixOf(const PrefixPattern& pattern) const {
    int common = 0;
    while (common < length_ && pattern[common] == number_[common]) ++common;
    if (length_ < kPrefixLength && common == length_ && pattern[common] == '\0') {
      return kPrefixLength;
    }
    for (int i = common; i < kPrefixLength; ++i) {
      if (pattern[i] != kFill) return 0;
    }
    return pattern[kPrefixLength] == '\0' ? common : 0;
  }

 private:
  static constexpr int kProbe = sizeof(std::uint64_t);
  static constexpr int kShort = 3;  // prefixes of up to so many characters are rare

  static std::uint64_t Load(const char* bytes) {
    std::uint64_t word;
    memcpy(&word, bytes, sizeof word);
    return word;
  }

  char number_[kPrefixLength] = {};
  int length_;
  std::uint64_t mask_ = 0;  // the characters in which a longer prefix agrees with the number
  // Digits lack this bit, kFill has it in either case. It is looked for behind a short prefix.
  std::uint64_t letter_ = Load("\0\0\0\x40\0\0\0");
};

bool IsCatchAll(const PrefixPattern& pattern) {
  const bool may_be = pattern[0] == kFill || pattern[0] == 'f';  // spares nearly all rows the call
  return may_be && strncasecmp(pattern, kCatchAll, sizeof pattern) == 0;
}

// The row with the longest prefix, else the first catch-all.
int FindState(Slots<AtmFit> fits, const char* fit_key1, const char* fit_key2,
              const char* card_number) {
  const FieldKey key1(fit_key1, sizeof(AtmFit::MatchKey1));
  const FieldKey key2(fit_key2, sizeof(AtmFit::MatchKey2));
  CardNumber card(card_number);
  int longest = 0;
  int found = kNoSlot;
  int catch_all = kNoSlot;
  const auto next = [&](AtmFit* fit, AtmFit* end) { return card.Next(fit, end); };
  FindSlotAmong(fits, next, [&](const AtmFit& fit, int slot) {
    // Intended: for the catch-all free slots and other first keys count too.
    if (catch_all == kNoSlot && IsCatchAll(fit.CardPrefix)) catch_all = slot;
    const bool first = key1.Is(fit.MatchKey1);
    // Intended: the second key makes no difference; the form is kept.
    const bool candidate = (key2.Is(fit.MatchKey2) && first) || first;
    if (!candidate || FieldIs(fit.FitId, kNotDefined)) return false;
    const int prefix = card.PrefixOf(fit.CardPrefix);
    if (prefix > longest) {
      longest = prefix;
      found = slot;
      card.LookForLonger(longest);
    }
    return longest == kPrefixLength;
  });
  return found != kNoSlot ? found : catch_all;
}

}  // namespace

int VoATMUtil::readIndirectState(const char* fitKey1, const char* fitKey2, const char* cardNumber,
                                 char* indirectState) {
  const Slots<AtmFit> fits = TableSlots(AtmFitPtr, MaxFit);
  const int slot = FindState(fits, fitKey1, fitKey2, cardNumber);
  if (slot == kNoSlot) return NotFound();
  ClearOutput(indirectState);
  indirectState[0] = fits.first[slot].IndirectNextState;
  return 1;
}

// Intended: unlike the other capitalised forms it takes no lock.
int VoATMUtil::ReadIndirectState(const char* fitKey1, const char* fitKey2, const char* cardNumber,
                                 char* indirectState) {
  return readIndirectState(fitKey1, fitKey2, cardNumber, indirectState);
}
