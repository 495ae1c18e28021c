// The lookups over private tables of any bytes, against scans over their columns as strings.
#include "records/record_tables.h"
#include "support.h"
#include "support/walk_model.h"

namespace {

using records::FieldKind;
using records::kRecordTables;

// What a lookup asks for, and the words of which it and the rows are made.
struct Request {
  explicit Request(FuzzedDataProvider& input)
      : ordinal(input.ConsumeIntegralInRange(-1, 6)),
        txn_code(WithZeros(std::to_string(input.ConsumeIntegralInRange(0, 999999)), 6)),
        resp_code(WithZeros(std::to_string(input.ConsumeIntegralInRange(0, 999)), 3)) {
    const auto prefix = input.ConsumeIntegralInRange<std::size_t>(0, 10);
    for (int i = 0; i < 3; ++i) words.push_back(TextOf(input, 24));
    words.push_back(words[2].substr(0, prefix) + std::string(10 - prefix, 'F'));
    words.insert(words.end(), {"*", "NOTDEFINED", "FFFFFFFFFF", "Y", "N", txn_code,
                               txn_code.substr(0, 2), resp_code, std::to_string(number())});
  }

  int number() const { return atoi(words[0].c_str()); }

  int ordinal;
  std::string txn_code, resp_code;
  Texts words;
};

// A table whose fields hold words, cut at their width, or bytes of the input.
class Table {
 public:
  Table(FuzzedDataProvider& input, const Request& request, std::size_t table)
      : layout_(records::kRecordTables[table]),
        rows_(input.ConsumeIntegralInRange<std::size_t>(0, 5)),
        bytes_(rows_.size() * layout_.record_size) {
    for (std::size_t i = 0; i < rows_.size(); ++i) {
      for (const records::RecordField& field : layout_) {
        Fill(input, request.words, field, bytes_.data() + i * layout_.record_size + field.offset);
      }
      Note(i);
    }
  }

  int slots() const { return static_cast<int>(rows_.size()); }
  const std::vector<Texts>& rows() const { return rows_; }  // the columns of each as text

  template <typename Record>
  Record* As() {
    return bytes_.As<Record>();
  }

  // The first row that has this text in a column, or -1.
  int Find(std::size_t column, const std::string& text) const {
    const auto found = std::find_if(rows_.begin(), rows_.end(),
                                    [&](const Texts& row) { return row[column] == text; });
    return found == rows_.end() ? -1 : static_cast<int>(found - rows_.begin());
  }

  // Expects a read to have copied a row whole, or nothing for -1.
  void RequireCopied(int slot, int result, Block& out) {
    Block expected(layout_.record_size);
    const char* row = bytes_.data() + (slot < 0 ? 0 : slot) * static_cast<long>(expected.size());
    if (slot >= 0) std::memcpy(expected.data(), row, expected.size());
    Require(result == (slot >= 0 ? 1 : -1), "whether there is a row");
    Require(out == expected, "the row, whole");
  }

 private:
  static void Fill(FuzzedDataProvider& input, const Texts& words, const records::RecordField& field,
                   char* out) {
    const auto choice = input.ConsumeIntegralInRange<std::size_t>(0, words.size());
    if (choice == words.size()) {
      input.ConsumeData(out, std::min<std::size_t>(field.size, 20));
    } else if (field.kind == records::FieldKind::kInt32) {
      const int number = atoi(words[choice].c_str());
      std::memcpy(out, &number, sizeof number);
    } else if (field.kind != records::FieldKind::kBytes) {
      std::strncpy(out, words[choice].c_str(), field.size);
    }
  }

  void Note(std::size_t slot) {
    for (const records::RecordField& field : layout_) {
      const char* at = bytes_.data() + slot * layout_.record_size + field.offset;
      int number;
      std::memcpy(&number, at, std::min(field.size, sizeof number));
      rows_[slot].push_back(field.kind == records::FieldKind::kInt32
                                ? std::to_string(number)
                                : std::string(at, strnlen(at, field.size)));
    }
  }

  const records::RecordTable& layout_;
  std::vector<Texts> rows_;
  Block bytes_;
};

void CheckAtms(VoATMUtil& util, FuzzedDataProvider& input, const Request& request) {
  Table atms(input, request, 0);
  util.AtmMemoryPtr = atms.As<AtmMemoryTable>();
  util.MaxAtm = atms.slots();
  Block id(request.words[0]);
  Block group(request.words[1]);
  Block out(sizeof(AtmMemoryTable));
  auto* record = out.As<AtmMemoryTable>();
  const int slot = atms.Find(0, id.Text());
  atms.RequireCopied(slot, util.ReadAtmMemory(id.data(), record), out);
  Require(util.VerifyAtmMemory(id.data()) == (slot >= 0 ? 1 : -1), "presence");
  if (slot >= 0) Require(util.LastAtmIndex == slot, "the slot is remembered");

  Texts members = {""};
  for (const Texts& row : atms.rows()) {
    if (row[0] != "NOTDEFINED" && row[2] == group.Text()) members.push_back(row[0]);
  }
  const int count = static_cast<int>(members.size()) - 1;
  const bool found = request.ordinal >= 1 && request.ordinal <= count;
  Block text(21);
  Block expected = text;
  if (found) expected.Put(members[static_cast<std::size_t>(request.ordinal)]);
  Require(util.GetAtmCount(group.data()) == count, "how many are in a group");
  Require(util.GetAtmId(group.data(), text.data(), request.ordinal) == (found ? 1 : -1), "ordinal");
  Require(text == expected, "the id of a member");

  util.LastAtmIndex = request.ordinal;
  std::memset(record, 'w', sizeof *record);
  Require(util.WriteAtmMemory(id.data(), record) == (slot >= 0 ? 1 : -1), "a row to write over");
  const auto last = static_cast<std::size_t>(request.ordinal);
  const bool at_last = last < atms.rows().size() && atms.rows()[last][0] == id.Text();
  for (int i = 0; i < atms.slots(); ++i) {
    const bool written = std::memcmp(&util.AtmMemoryPtr[i], record, sizeof *record) == 0;
    const bool wanted = slot >= 0 && i == (at_last ? request.ordinal : slot);
    Require(written == wanted, "only that row is written");
  }
}

// The longest prefix, tried from the longest on, or the catch-all.
int SlotOfCard(const Table& fits, const std::string& key, const std::string& card) {
  for (std::size_t length = 10; length > 0; --length) {
    std::string pattern = card.substr(0, length);
    pattern.resize(length);
    pattern.resize(10, 'F');
    for (int slot = 0; slot < fits.slots(); ++slot) {
      const Texts& fit = fits.rows()[static_cast<std::size_t>(slot)];
      if (fit[0] != "NOTDEFINED" && fit[1] == key && fit[4] == UpToNul(pattern)) return slot;
    }
  }
  for (int slot = 0; slot < fits.slots(); ++slot) {
    const std::string& pattern = fits.rows()[static_cast<std::size_t>(slot)][4];
    if (pattern.size() == 10 && pattern.find_first_not_of("fF") == std::string::npos) return slot;
  }
  return -1;
}

void CheckFits(VoATMUtil& util, FuzzedDataProvider& input, const Request& request) {
  Table fits(input, request, 1);
  util.AtmFitPtr = fits.As<AtmFit>();
  util.MaxFit = fits.slots();
  Block key1(request.words[0]);
  Block key2(request.words[1]);
  Block card(request.words[2]);
  int selected = 0;
  int slot = -1;
  for (int i = 0; i < fits.slots(); ++i) {
    const Texts& fit = fits.rows()[static_cast<std::size_t>(i)];
    const bool third = fit[3] == "*" || (fit[3] == card.Text() && fit[2] != "*");
    if (fit[1] != key1.Text() || !third || (fit[2] != key2.Text() && fit[2] != "*")) continue;
    if (++selected == request.ordinal) slot = i;
  }
  Block out(sizeof(AtmFit));
  const int result =
      util.ReadFitMemory(key1.data(), key2.data(), card.data(), out.As<AtmFit>(), request.ordinal);
  fits.RequireCopied(slot, result, out);
  Require(util.GetFitCount(key1.data(), key2.data(), card.data()) == selected, "how many");
  const int taken = fits.Find(0, key1.Text());
  Require(util.VerifyAtmFit(key1.data()) == (taken < 0 ? 1 : -1), "whether an id is free");

  Block state(8);
  Block expected = state;
  const int of_card = SlotOfCard(fits, key1.Text(), card.Text());
  if (of_card >= 0) expected.Clear();
  if (of_card >= 0) *expected.data() = util.AtmFitPtr[of_card].IndirectNextState;
  util.ReadIndirectState(key1.data(), key2.data(), card.data(), state.data());
  Require(state == expected, "the state of a card");
}

void CheckSecurity(VoATMUtil& util, FuzzedDataProvider& input, const Request& request) {
  Table securities(input, request, 2);
  util.SecurityPtr = securities.As<VoSecurity>();
  util.MaxSecurity = securities.slots();
  Block id(request.words[0]);
  Block out(sizeof(VoSecurity));
  const int result = util.ReadVoSecurityTable(id.data(), out.As<VoSecurity>());
  securities.RequireCopied(securities.Find(0, id.Text()), result, out);

  Table statuses(input, request, 5);
  util.AtmStatusPtr = statuses.As<VoAtmStatus>();
  util.MaxAtmStatus = statuses.slots();
  const bool known = statuses.Find(0, id.Text()) >= 0;
  Require(util.VerifyAtmStatusMemory(id.data()) == (known ? 1 : -1), "a status code");
}

void CheckProperties(VoATMUtil& util, FuzzedDataProvider& input, const Request& request) {
  Table properties(input, request, 3);
  util.AtmPropertyPtr = properties.As<VoAtmProperty>();
  util.MaxAtmProperty = properties.slots();
  std::vector<Texts> rows;
  for (const Texts& row : properties.rows()) {
    rows.push_back({row[1], row[2], row[3], row[12], row[13], row[16]});
  }
  const std::string number = std::to_string(request.number());
  std::vector<Texts> tries = {{request.words[0].substr(0, 16), "*"},
                              {request.words[1].substr(0, 16), "*"},
                              {request.words[2].substr(0, 16), "*"},
                              {request.txn_code, request.txn_code.substr(0, 2), "*"},
                              {request.resp_code, "*"},
                              {number, "0"}};
  std::string said;
  const int slot = SlowWalk(rows, tries, "VoAtmProperty", &said);
  Block out(sizeof(VoAtmProperty));
  const int result =
      util.ReadAtmProperty(Block(request.words[0]).data(), Block(request.words[1]).data(),
                           Block(request.words[2]).data(), std::stoi(request.txn_code),
                           std::stoi(request.resp_code), request.number(), out.As<VoAtmProperty>());
  if (slot >= 0) return properties.RequireCopied(slot, result, out);
  Block expected(sizeof(VoAtmProperty));
  util.resetAtmProperty(expected.As<VoAtmProperty>());
  Require(result == -1 && out == expected, "the switches are off");
}

void CheckActions(VoATMUtil& util, FuzzedDataProvider& input, const Request& request) {
  Table actions(input, request, 4);
  util.AtmActionPropertyPtr = actions.As<VoAtmActionProperty>();
  util.MaxAtmProperty = actions.slots();
  const int type = input.ConsumeIntegralInRange<int>(STATUS_ACTION, TXN_VALUE);
  Block statuses(request.words[1] + "|" + request.words[2] + "|");
  Block text(21);
  int value = request.ordinal;
  const int result =
      util.ReadAtmActionProperty(Block(request.words[0]).data(), Block(request.words[1]).data(),
                                 Block(request.words[2]).data(), statuses.data(),
                                 std::stoi(request.txn_code), text.data(), &value, type);
  const auto answers = [&](const Texts& row) {
    return type == STATUS_ACTION ? row[5] == "Y" && row[6].substr(0, 20) == text.Text()
                                 : row[7] == "Y" && atoi(row[9].c_str()) == value;
  };
  Require(result == 1 ? std::any_of(actions.rows().begin(), actions.rows().end(), answers)
                      : result == -1,
          "a row with its flag answers");
  if (result != 1 || type == TXN_VALUE) Require(text == Block(21), "no text is written");
  if (result != 1 || type == STATUS_ACTION) Require(value == request.ordinal, "no value is");
  Require(util.GetAtmActionPropertyCount() ==
              std::count_if(actions.rows().begin(), actions.rows().end(),
                            [](const Texts& row) { return row[1] != "NOTDEFINED"; }),
          "defined rows");
  const int numbered = actions.Find(0, std::to_string(request.number()));
  Require(util.VerifyAtmActionPropertyMemory(request.number()) == (numbered >= 0 ? 1 : -1),
          "whether a number is there");
}

}  // namespace

FUZZ_TARGET(lookups) {
  static const bool quiet = std::freopen("/dev/null", "w", stdout) != nullptr;
  Require(quiet, "what GetAtmId prints is dropped");
  constexpr void (*kChecks[])(VoATMUtil&, FuzzedDataProvider&, const Request&) = {
      CheckAtms, CheckFits, CheckSecurity, CheckProperties, CheckActions};
  FuzzedDataProvider input(bytes, size);
  const auto check = input.ConsumeIntegralInRange<std::size_t>(0, std::size(kChecks) - 1);
  const Request request(input);
  Driver driver;
  kChecks[check](driver.util, input, request);
  return 0;
}
