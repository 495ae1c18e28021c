// The keys of a request as both property tables hold them.
#ifndef SRC_PROPERTY_REQUEST_KEYS_H
#define SRC_PROPERTY_REQUEST_KEYS_H

#include <cstddef>

#include "common/text_field.h"
#include "property/key_walk.h"
#include "voatmutil.h"

namespace voatm {

// The ATM's columns stand at the same place in both tables.
static_assert(offsetof(VoAtmProperty, InstTerminalGroup) ==
              offsetof(VoAtmActionProperty, InstTerminalGroup));
static_assert(offsetof(VoAtmProperty, AtmLogicalGroup) ==
              offsetof(VoAtmActionProperty, AtmLogicalGroup));
static_assert(offsetof(VoAtmProperty, AtmId) == offsetof(VoAtmActionProperty, AtmId));

// One column that identifies the ATM: its own value, then any. A value that does not fit the column
// with its NUL is cut.
class AtmColumn {
 public:
  AtmColumn(std::size_t column, const char* caller_text)
      : keys{{column, {Cut(caller_text), sizeof text_}}, {column, {kAny, sizeof text_}}} {}
  AtmColumn(const AtmColumn&) = delete;
  AtmColumn& operator=(const AtmColumn&) = delete;

  // The value of a choice as text.
  const char* Text(int choice) const { return choice == 0 ? text_ : kAny; }

 private:
  const char* Cut(const char* caller_text) {
    SetText(text_, caller_text);
    return text_;
  }

  char text_[sizeof(VoAtmProperty::AtmId)];

 public:
  const ColumnKey keys[2];
};

struct AtmKeys {
  AtmKeys(const char* inst_terminal_group, const char* atm_logical_group, const char* atm_id)
      : caller_inst(inst_terminal_group),
        inst(offsetof(VoAtmProperty, InstTerminalGroup), inst_terminal_group),
        logical(offsetof(VoAtmProperty, AtmLogicalGroup), atm_logical_group),
        atm(offsetof(VoAtmProperty, AtmId), atm_id) {}

  // What a miss of the first level shows. Intended: its first try shows the caller's own text.
  const char* InstShown(int choice) const { return choice == 0 ? caller_inst : inst.Text(choice); }

  const char* caller_inst;
  AtmColumn inst;
  AtmColumn logical;
  AtmColumn atm;
};

// A transaction code as rows hold it, narrowest first: six digits, the two of its class, any.
struct TxnCodeTexts {
  explicit TxnCodeTexts(int txn_code) {
    SetDigits(code, txn_code, 6);
    SetDigits(txn_class, txn_code / 10000, 2);
  }

  char code[sizeof(VoAtmProperty::TxnCode)];
  char txn_class[sizeof(VoAtmProperty::TxnCode)];
  const char* const choices[3] = {code, txn_class, kAny};
};

}  // namespace voatm

#endif  // SRC_PROPERTY_REQUEST_KEYS_H
