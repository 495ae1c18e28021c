// What decided an answer: the row or file that the library took, and how that is shown.
#include <map>

#include "support/random_cases.h"
#include "support/served_home.h"
#include "support/trace_recorder.h"
#include "tools/voatm/ask/explain_core.h"

namespace {

const Texts kNames = {"I_G_A", "I_G", "I", "J_G", "J", "C", "DEFAULT"};

// Entries of every kind of file; '~' is the file's number.
constexpr char kEntries[] =
    "K_L ~ 2 3 4 5|I_BADRSP_RCPT_NEEDED Yes|[GOOD_RESPONSE]|K_L ~ 1|[BAD_RESPONSE]|K_L ~ 1|"
    "[ATM_RESERVEDSCREEN]|EMPTYSCR ~|[DISPENCE_LOGIC]|K_1 ~ 0 0 0|[BNA_MAPPING]|01 ~|[VOBUSINESS]|"
    "UTCFLAG No|[OPKEYMAP]|K ~|DEFAULT ~|[OAR]|OAR_TIMEOUT ~|[OAR#VAR]|TOTALVAR 1|A $VAR 1|"
    "B $NEXT 1|C $X 1|D $PREVIOUS 0|F 7 1|G $CANCEL 1|H $CONTINUE 1|I NONE 1|"
    "[OAR#CONTROL]|DISPLAYFLAG 1|NUMERICKEYS ~|CANCEL 12";

// Kind; where the answers stand; the field that says which '~' is; the words of each input.
constexpr char kRequests[] =
    "property;ATMPROPERTYMEMORY slot ~;RecordId;I J X;G X;A X;10000 20000;0 5;978 1\n"
    "action;ATMACTIONPROPERTYMEMORY slot ~;ActionText;action;I J X;G X;A X;S| S|T| T|S| S|T;0\n"
    "action;ATMACTIONPROPERTYMEMORY slot ~;TxnValue;value;I J X;G X;A X;T| T|S|;10000 20000\n"
    "fit;ATMFITMEMORY slot ~;IndirectNextState;I J;G X;A X;1 2\n"
    "indirect-state;ATMFITMEMORY slot ~;IndirectNextState;I X;G;9780012345 97800 9799999999 1\n"
    "txn-code;cfg/atm/statetable/opkey/~_opk.cfg;TxnCode;K;L M;I J;G X;A X;C\n"
    "response;cfg/atm/statetable/resptable/~_resp.cfg;StateNo;good bad;K;L M;I J;G X;A X;C\n"
    "oar;cfg/atm/templates/~_T_1.oar;TimeOut;I J;G X;A X;T;1 1 1 2;C\n"
    "screen;cfg/atm/statetable/screen/~_screen.cfg;ScreenNo;I J;G X;A X;C\n"
    "displogic;cfg/atm/displogic/~_displogic.cfg;DispLogic;K;1 2;I J;G X;A X;NDC+ATM;C\n"
    "deposit;cfg/atm/bnamap/~_bnamap.cfg;Map;I J;G X;A X;C;A0101 A01010101 A010010 A0201\n"
    "flags;cfg/vobusiness.cfg;Flag;receipt utc;I X\n"
    "cardless;cfg/atm/CARDLESS_TXN.cfg;Track2Data;K X";

std::string With(std::string text, const std::string& word) {
  const std::size_t at = text.find('~');
  return at == std::string::npos ? text : text.replace(at, 1, word);
}

class ExplainTest : public testing::Test {
 protected:
  ExplainTest() : home_({1, 10, 1, 10, 1}) {
    EXPECT_EQ(util_.InitVoATMUtil(trace_.debug(), false), 1) << trace_.Take();
  }

  template <typename Row>
  void SetAtm(Row* row) {
    SetField(row->InstTerminalGroup, random_.OneOf({"I", "J", "*", "NOTDEFINED"}));
    SetField(row->AtmLogicalGroup, random_.OneOf({"G", "*"}));
    SetField(row->AtmId, random_.OneOf({"A", "*"}));
    SetField(row->TxnCode, random_.OneOf({"010000", "01", "020000", "*"}));
  }

  // Gives a row of each table, which its number and letter name, new content.
  void ChangeRow(int slot) {
    VoAtmProperty& row = util_.AtmPropertyPtr[slot];
    VoAtmActionProperty& action = util_.AtmActionPropertyPtr[slot];
    AtmFit& fit = util_.AtmFitPtr[slot];
    row.RecordId = slot;
    SetAtm(&row);
    SetAtm(&action);
    SetField(row.RespCode, random_.OneOf({"000", "005", "*"}));
    row.CurrencyCode = random_.OneOf({978, 0});
    SetField(action.StatusCode, random_.OneOf({"S", "T"}));
    action.ActionFlag = random_.OneOf({'Y', 'N'});
    action.TxnFlag = random_.OneOf({'Y', 'Y', 'N'});
    SetField(action.ActionText, std::to_string(slot));
    SetField(action.TxnValue, std::to_string(slot));
    SetField(fit.FitId, random_.OneOf({"NOTDEFINED", "F", "F", "F"}));
    SetField(fit.MatchKey1, random_.OneOf({"I", "J"}));
    SetField(fit.MatchKey2, random_.OneOf({"G", "*"}));
    SetField(fit.MatchKey3, random_.OneOf({"A", "*"}));
    SetField(fit.CardPrefix, random_.OneOf({"978FFFFFFF", "978001FFFF", "97800", "9799999999"}));
    if (random_.Below(40) == 0) SetField(fit.CardPrefix, "ffffFFFFFF");
    fit.IndirectNextState = static_cast<char>('0' + slot);
  }

  // Writes or removes one of the files.
  void ChangeFile(const std::string& where) {
    const int number = random_.Below(static_cast<int>(kNames.size()));
    const std::string path = With(where, kNames[static_cast<std::size_t>(number)]);
    if (random_.Below(3) == 0) return home_.Remove(path);
    std::string text;
    for (const std::string& entry : Words(kEntries, '|')) {
      if (random_.Below(16) != 0) text += With(entry, std::to_string(10 + number)) + "\n";
    }
    home_.Write(path, text);
  }

  // Asks as a row says, and returns whether there is an answer.
  bool Ask(const ExplainKind& kind, const Texts& row) {
    Inputs inputs;
    for (std::size_t i = 3; i < row.size(); ++i) {
      inputs[kind.inputs[i - 3].name] = random_.Row({Words(row[i])}).front();
    }
    const Explanation explanation = Explain(util_, kind, inputs);
    EXPECT_EQ(explanation.disagreement, "") << kind.name;
    if (!explanation.found) return false;
    std::string value;
    for (const Fact& fact : explanation.answer) {
      if (fact.name == row[2]) value = fact.value.substr(0, 2);
    }
    const bool is_file = !kind.needs_tables && row[1].find('~') != std::string::npos;
    const std::string name = is_file ? kNames.at(std::stoul(value) - 10) : value;
    const std::string place = (kind.needs_tables ? "" : home_.path() + "/") + With(row[1], name);
    EXPECT_EQ(explanation.source.substr(0, place.size()), place) << kind.name;
    return true;
  }

  ServedHome home_;
  TraceRecorder trace_;
  VoATMUtil util_;
  RandomCases random_;
};

TEST_F(ExplainTest, NamesTheRowOrFileThatTheLibraryTook) {
  for (int slot = 0; slot < 10; ++slot) ChangeRow(slot);
  std::map<std::string, const ExplainKind*> kinds;
  for (const ExplainKind& kind : kExplainTables) kinds[kind.name] = &kind;
  for (const ExplainKind& kind : kExplainFiles) kinds[kind.name] = &kind;
  for (const std::string& line : Words(kRequests, '\n')) {
    const Texts row = Words(line, ';');
    const ExplainKind& kind = *kinds.at(row[0]);
    int found = 0;
    for (int i = 0; i < 1000 && !HasFailure(); ++i) {
      if (i % 4 == 0) kind.needs_tables ? ChangeRow(random_.Below(10)) : ChangeFile(row[1]);
      if (Ask(kind, row)) ++found;
    }
    EXPECT_TRUE(found > 50 && found < 1000) << found << " answers of " << line;
  }
}

// A walk that leads elsewhere than the library is no explanation.
TEST(ExplainConclude, SaysThatTheLibraryAnswersOtherwise) {
  Explanation explanation;
  Conclude(&explanation, true, {{"State", "1"}}, true, {{"State", "2"}});
  EXPECT_EQ(explanation.disagreement,
            "the library answers: found State[1]; the tries lead to: found State[2]");
}

}  // namespace
