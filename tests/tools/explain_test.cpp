// What decided an answer, and what stands behind it: the command's answers on tables and files of
// the test's own.
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "support/served_home.h"
#include "support/words.h"
#include "tools/voatm_output.h"
#include "voatmutil.h"
#include "vodebugutil.h"

namespace {

// A row of a seed file, of words: the fields of a table in the order of `names`.
std::string Row(const Texts& names, const std::string& line) {
  const Texts words = Words(line);
  std::string row;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const bool number = names[i] == "RecordId" || names[i] == "CurrencyCode" || names[i] == "Slot";
    const bool object = words[i][0] == '{';
    const std::string quote = number || object ? "" : "\"";
    row += (row.empty() ? "{\"" : ", \"") + names[i] + "\": " + quote + words[i] + quote;
  }
  return row + "}";
}

std::string SeedRows(const std::string& names, const Texts& lines) {
  std::string rows;
  for (const std::string& line : lines) {
    rows += (rows.empty() ? "[" : ",\n") + Row(Words(names), line);
  }
  return rows + "]";
}

constexpr char kProperty[] =
    "RecordId InstTerminalGroup AtmLogicalGroup AtmId TxnCode RespCode CurrencyCode";
constexpr char kAction[] =
    "RecordId InstTerminalGroup AtmLogicalGroup AtmId StatusCode ActionFlag ActionText TxnFlag "
    "TxnCode TxnValue";
constexpr char kFit[] = "FitId MatchKey1 MatchKey2 MatchKey3 CardPrefix IndirectNextState";

// A case: the arguments, --from below the home, then pairs of a place in the JSON and what stands
// there.
struct ExplainCase {
  const char* arguments;
  int code;
  std::vector<std::pair<const char*, const char*>> expected;
};

class ExplainTest : public testing::Test {
 protected:
  void Expect(const std::vector<ExplainCase>& cases) {
    for (const ExplainCase& each : cases) {
      std::string arguments = each.arguments;
      const std::size_t from = arguments.find("--from ");
      if (from != std::string::npos) arguments.insert(from + 7, home_.path() + "/");
      const Output output = Voatm("explain " + arguments + " --json 2>/dev/null");
      EXPECT_EQ(output.code, each.code) << each.arguments;
      const Json json = Json::parse(output.text, nullptr, false);
      for (const auto& [place, expected] : each.expected) {
        const Json::json_pointer pointer(place);
        const Json actual = json.contains(pointer) ? json.at(pointer) : Json("nothing there");
        EXPECT_EQ(Shown(actual), expected) << each.arguments << " at " << place;
      }
    }
  }

  // Texts and numbers as they are; of a list each one's place or result.
  std::string Shown(const Json& json) const {
    if (json.is_string()) return WithoutHome(json.get<std::string>());
    if (!json.is_array()) return json.dump();
    std::string all;
    for (const Json& each : json) {
      const char* const name = each.contains("where") ? "where" : "result";
      all += (all.empty() ? "" : "; ") + WithoutHome(each.at(name).get<std::string>());
    }
    return all;
  }

  std::string WithoutHome(std::string text) const {
    const std::size_t at = text.find(home_.path());
    return at == std::string::npos ? text : text.erase(at, home_.path().size() + 1);
  }

  TestHome home_;
};

TEST_F(ExplainTest, RowsStandBehindInTheOrderInWhichTheyWouldAnswer) {
  home_.Write("tables/atm_property.json",
              SeedRows(kProperty, {"1 I G A 010000 * 0", "2 I G * 01 * 0", "3 I G * * * 0",
                                   "4 * * * * * 0", "5 I * * * * 0", "6 J G A 010000 * 0"}));
  home_.Write(
      "tables/atm_fit.json",
      SeedRows(kFit, {"F1 I G * 978FFFFFFF A", "F2 I * A 97800FFFFF B", "F3 I * * 9999999999 C",
                      "F4 J G A ffffffffff D", "F5 I G A 9780FFFFFF E"}));
  home_.Write("tables/atm_status.json",
              SeedRows("StatusCode StatusKind", {"PAPER N", "CASH S", "CASH N"}));
  const std::string too_many = "status CASH NONE " + std::string(15 * 11, 'A') + " --from tables";
  Expect({
      {"property I G A 10000 5 978 --from tables --locks",
       0,
       {{"/source", "ATMPROPERTYMEMORY slot 0"},
        {"/answer/RecordId", "1"},
        {"/behind",
         "ATMPROPERTYMEMORY slot 1; ATMPROPERTYMEMORY slot 2; ATMPROPERTYMEMORY slot 4; "
         "ATMPROPERTYMEMORY slot 3"},
        {"/behind/2/answer/RecordId", "5"},
        {"/alone", ""},
        {"/tries/4/result",
         "none: Error in Searching InstTerminalGroup[I] AtmLogicalGroup[G] AtmId[A] "
         "TxnCode[010000] RespCode[005] in VoAtmProperty Table"},
        {"/tries/7/result", "slot 0"},
        {"/locks/slots", "18"},
        {"/locks/calls", "36"}}},
      {"property I G A 080000 058 0978 --from tables/atm_property.json",
       1,
       {{"/found", "false"},
        {"/source", ""},
        {"/behind", ""},
        {"/alone",
         "ATMPROPERTYMEMORY slot 2; ATMPROPERTYMEMORY slot 3; ATMPROPERTYMEMORY slot 4"}}},
      {"fit I G A 2 --from tables",
       0,
       {{"/source", "ATMFITMEMORY slot 2"},
        {"/answer/FitId", "F3"},
        {"/tries", "slot 2"},
        {"/behind", "ATMFITMEMORY slot 4"}}},
      {"fit I X Y --from tables", 0, {{"/source", "ATMFITMEMORY slot 2"}, {"/alone", ""}}},
      {"fit Z X Y --from tables", 1, {{"/tries", "none"}, {"/source", ""}}},
      {"indirect-state I G 9780012345 --from tables",
       0,
       {{"/source", "ATMFITMEMORY slot 1"},
        {"/answer/IndirectNextState", "B"},
        {"/behind", "ATMFITMEMORY slot 4; ATMFITMEMORY slot 0; ATMFITMEMORY slot 3"},
        {"/behind/2/answer/IndirectNextState", "D"}}},
      {"status CASH 'A|' 'A|B' --from tables",
       0,
       {{"/source", "ATMSTATUSMEMORY slot 1"},
        {"/answer/row 2", "(empty) -> CASH"},
        {"/answer/message", "A| -> A|CASH|"},
        {"/behind", "ATMSTATUSMEMORY slot 2"},
        {"/behind/0/answer/message", "as it was"}}},
      {"status OTHER --from tables", 1, {{"/answer/row 0", "(empty) -> OTHER"}}},
      {"property I G A 1 2 3 --from nowhere", 2, {}},
      {"property I G A 10000 5 978 --from tables --home none", 2, {}},
      {"action action I G A X --from tables", 2, {}},
      {"property I G A 0x10 2 3 --from tables", 2, {}},
      {"screen I G A C --from tables", 2, {}},
      {"screen I G A C --locks", 2, {}},
      {"action value I G A 'X|' --from tables", 2, {}},
      {"status ELEVENCHARS --from tables", 2, {}},
      {"status TENLETTERS --from tables", 1, {}},
      {"status CASH '' 'CASH|2|3|4|5|6|7|8|9|10|11|12|13|14|15' --from tables",
       0,
       {{"/answer/rows", "as they were"}, {"/answer/message", "as it was"}}},
      {"status CASH '' ELEVENCHARS --from tables", 2, {}},
      {"status CASH '' '1|2|3|4|5|6|7|8|9|10|11|12|13|14|15|16' --from tables", 2, {}},
      {too_many.c_str(), 2, {}},
      {"flags receipt", 2, {}},
      {"flags utc I", 2, {}},
  });
  EXPECT_NE(Voatm("explain action action I G A").text.find("PAPEROUT|CASHLOW|"), std::string::npos);
}

// A home with fewer slots than rows: its drivers see none of those behind.
TEST_F(ExplainTest, RowsForWhichTheHomeHasNoSlotAreRefused) {
  WriteStartUpFiles(home_, 0, {});
  Texts rows(9, "1 I G A 010000 * 0");
  home_.Write("tables/atm_property.json", SeedRows(kProperty, rows));
  Expect({{"property I G A 10000 5 978 --from tables", 2, {}}});
  rows.pop_back();
  home_.Write("tables/atm_property.json", SeedRows(kProperty, rows));
  Expect({{"property I G A 10000 5 978 --from tables", 0, {}}});
}

// More rows than a mark can tell at once, and a text without its NUL.
TEST_F(ExplainTest, TheRowIsToldAmongThousands) {
  Texts actions, fits;
  for (int i = 0; i < 2500; ++i) {
    actions.push_back(std::to_string(i) + " I G A S" + std::to_string(i) + " Y T Y 010000 7");
    fits.push_back("F I G A " + std::to_string(1000000000 + i) + " N");
  }
  actions.push_back(
      "9 I G A LONG Y {\"hex\":\"414141414141414141414141414141414141414141\"} N * 1");
  home_.Write("tables/atm_action_property.json", SeedRows(kAction, actions));
  home_.Write("tables/atm_fit.json", SeedRows(kFit, fits));
  Expect({
      {"action value I G A 'S3|S2345|' 10000 --from tables",
       0,
       {{"/source", "ATMACTIONPROPERTYMEMORY slot 2345"}, {"/answer/TxnValue", "7"}}},
      {"action action I G A 'S1234|S7|' --from tables",
       0,
       {{"/source", "ATMACTIONPROPERTYMEMORY slot 1234"}, {"/answer/ActionText", "T"}}},
      {"action action I G A 'LONG|' --from tables",
       0,
       {{"/source", "ATMACTIONPROPERTYMEMORY slot 2500"},
        {"/answer/ActionText", "AAAAAAAAAAAAAAAAAAAA"}}},
      {"action action I G A 'NOSUCH|S7|' --from tables",
       0,
       {{"/tries", "slot 0; slot 0; slot 0; none; slot 7"}}},
      {"indirect-state I G 1000001999 --from tables", 0, {{"/source", "ATMFITMEMORY slot 1999"}}},
  });
}

TEST_F(ExplainTest, FilesStandBehindWhenTheyWouldAnswer) {
  const std::string responses = "cfg/atm/statetable/resptable/";
  home_.Write(responses + "I_G_resp.cfg", "[GOOD_RESPONSE]\nK_L 1 2\n[BAD_RESPONSE]\nK_L 1\n");
  home_.Write(responses + "I_resp.cfg", "[GOOD_RESPONSE]\nOTHER 3 4\n");
  home_.Write(responses + "C_resp.cfg", "# c\n[GOOD_RESPONSE]\nK_L 5 6\n");
  home_.Write("cfg/atm/CARDLESS_TXN.cfg", "[OPKEYMAP]\nDEFAULT 1\nK 2\n");
  home_.Write("cfg/vobusiness.cfg", "I_BADRSP_RCPT_NEEDED No\n");
  home_.Write("cfg/atm/statetable/opkey/C_opk.cfg", "K_L 010000\n");
  Expect({
      {"txn-code K L I G A C",
       1,
       {{"/tries", "none; none; none; exists; line 1: no readable field 3"}}},
      {"response good K L I G A C",
       0,
       {{"/source", "cfg/atm/statetable/resptable/I_G_resp.cfg:2"},
        {"/answer/ScreenNo", "2"},
        {"/tries", "none; exists; line 2: 1 2"},
        {"/behind", "cfg/atm/statetable/resptable/C_resp.cfg:3"},
        {"/behind/0/answer/StateNo", "5"}}},
      {"response bad K L I G A C",
       1,
       {{"/source", ""}, {"/tries", "none; exists; line 4: no readable field 3"}}},
      {"cardless K",
       0,
       {{"/source", "cfg/atm/CARDLESS_TXN.cfg:3"},
        {"/behind", "cfg/atm/CARDLESS_TXN.cfg:2"},
        {"/behind/0/answer/Track2Data", "1"}}},
      {"flags receipt I", 0, {{"/source", "cfg/vobusiness.cfg:1"}, {"/answer/Flag", "0"}}},
      {"flags receipt J", 1, {{"/source", ""}, {"/answer/Flag", "0"}, {"/tries", "exists; none"}}},
  });
  const Output elsewhere = Shell(
      "unset VODIR_HOME; " BUILD_DIRECTORY "/voatm explain flags receipt I --home " + home_.path());
  EXPECT_EQ(elsewhere.code, 0) << elsewhere.text;
  EXPECT_EQ(Shell("unset VODIR_HOME; " BUILD_DIRECTORY "/voatm explain cardless K 2>&1").code, 2);
}

// A folder that may not be entered hides what a driver may see.
TEST_F(ExplainTest, WhatMayNotBeReadIsNoAnswer) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can become somebody else";
  home_.Write("cfg/atm/CARDLESS_TXN.cfg", "[OPKEYMAP]\nK 2\n");
  const Output output = Shell("chmod 755 " + home_.path() + "; chmod 700 " + home_.path() +
                              "/cfg; setpriv --reuid=65534 --clear-groups " BUILD_DIRECTORY
                              "/voatm explain cardless K --json --home " +
                              home_.path() + " 2>&1");
  EXPECT_EQ(output.code, 2);
  EXPECT_NE(output.text.find("not opened: Permission denied"), std::string::npos) << output.text;
  const Output checked =
      Shell("setpriv --reuid=65534 --clear-groups " BUILD_DIRECTORY "/voatm check --home " +
            home_.path() + " 2>&1");
  EXPECT_NE(checked.text.find("does not open: Permission denied [unreadable-file]"),
            std::string::npos)
      << checked.text;
  home_.Remove("cfg/atm/CARDLESS_TXN.cfg");
  home_.Write("cfg/atm/CARDLESS_TXN.cfg/K", "a folder");
  const Output folder = Voatm("explain cardless K");
  EXPECT_EQ(folder.code, 2);
  EXPECT_NE(folder.text.find("not opened: it is no file"), std::string::npos) << folder.text;
}

TEST_F(ExplainTest, TextsAreTakenApart) {
  VoATMUtil util;
  VoDebugUtil trace;
  util.dptr = &trace;
  const auto keep = [&](const char* name, const auto& kept) {
    const std::string path = home_.path() + "/" + name;
    std::ofstream(path).write(reinterpret_cast<const char*>(&kept), sizeof kept);
    return "message " + path;
  };
  VoAtmMgrQMsg message{};
  util.PackAtmTraceNoMsg("ATM00001", 4711, &message);
  const std::string traced = keep("trace", message);
  util.PackAtmStatusMsg("ATM00001", "PAPEROUT|", "more", &message);
  const std::string status = keep("out", message);
  util.PackAtmLogMsg("ATM00001", "no paper", 'L', &message);
  const std::string log = keep("log", message);
  AtmDenomStatusMsg denom{"one", "two", "three", {}, {1, 2, 3, 4, 5, 6, 7, 8}, "000010", "000020"};
  util.PackAtmDenomMsg("ATM00001", &denom, &message);
  const std::string notes = "message - < " + keep("denom", message).substr(8);
  VoAlertMgrMsg alert{};
  util.PackAtmAlertMsg("DRIVER", "no paper", &alert);
  const std::string alerted = keep("alert", alert);
  VoDevMsg transaction{};
  transaction.MsgType = 420;
  transaction.TxnCode = 10000;
  transaction.TraceNo = 11;
  transaction.ReasonCode = 103;
  transaction.MemTraceNo = 12;
  const std::string reversal = keep("transaction", transaction);
  mkfifo((home_.path() + "/fifo").c_str(), 0600);
  for (const char* file : {"/tmp", "/dev/zero", "fifo"}) {
    const std::string path = file[0] == '/' ? file : home_.path() + "/" + file;
    const Output output = Voatm("explain message " + path);
    EXPECT_EQ(output.code, 2) << path;
    EXPECT_NE(output.text.find(path), std::string::npos) << output.text;
  }
  EXPECT_EQ(Voatm("explain fit A B C --from " + home_.path() + "/fifo").code, 2);
  home_.Write("short", "abc");
  const std::string cut = "message " + home_.path() + "/short";
  const std::string lost = "message " + home_.path() + "/absent";
  Expect({
      {traced.c_str(),
       0,
       {{"/answer",
         R"({"is":"VoAtmMgrQMsg","MsgGroup":"2","MsgCode":"11","MsgSubCode":"13",)"
         R"("AtmId":"ATM00001","is 2":"AtmTraceNoPayload","AtmId 2":"ATM00001","TraceNo":"4711"})"}}},
      {status.c_str(),
       0,
       {{"/answer/is 2", "AtmStatusPayload"},
        {"/answer/StatusText", "PAPEROUT|"},
        {"/answer/ExtraText", "more"}}},
      {log.c_str(),
       0,
       {{"/answer/is 2", "AtmLogPayload"},
        {"/answer/LogText", "no paper"},
        {"/answer/LogFlag", "L"}}},
      {notes.c_str(),
       0,
       {{"/answer",
         R"({"is":"VoAtmMgrQMsg","MsgGroup":"2","MsgCode":"10","MsgSubCode":"13",)"
         R"("AtmId":"ATM00001","is 2":"AtmDenomStatusMsg","DenomText1":"one","DenomText2":"two",)"
         R"("DenomText3":"three","DenomNotes A":"1","DenomNotes B":"2","DenomNotes C":"3",)"
         R"("DenomNotes D":"4","DenomNotes E":"5","DenomNotes F":"6","DenomNotes G":"7",)"
         R"("DenomNotes H":"8","DenomNum1":"000010","DenomNum2":"000020"})"}}},
      {alerted.c_str(),
       0,
       {{"/answer",
         R"({"is":"VoAlertMgrMsg","MsgCode":"1","AlertSource":"DRIVER","AlertText":"no paper"})"}}},
      {reversal.c_str(),
       0,
       {{"/answer", R"({"is":"VoDevMsg or VoTxnMsg","MsgType":"420","TxnCode":"10000",)"
                    R"("TraceNo":"11","ReasonCode":"103","MemTraceNo":"12"})"}}},
      {cut.c_str(), 2, {}},
      {lost.c_str(), 2, {}},
      {"last-transaction 2471010000100002000030000400000 01020304 10000 4711",
       0,
       {{"/answer/mark", "2"},
        {"/answer/trace number", "4710"},
        {"/answer/end", "1"},
        {"/answer/notes A", "00001"},
        {"/answer/notes D", "00004"},
        {"/answer/coin amount", "00000"},
        {"/answer/deposit", ""},
        {"/answer/MsgType", "420"},
        {"/answer/ReasonCode", "103"}}},
      {"last-transaction 2471110000100002000030000400000 01020399 10000 4711 420 106",
       0,
       {{"/answer/ReasonCode", "103"}}},
      {"last-transaction 2471110000100002000030000400000 01020399 10000 4711 420 105",
       0,
       {{"/answer/decided", "nothing is sent"}}},
      {"last-transaction 2471110000100002000030000400000 01020304 10000 4711",
       0,
       {{"/answer/decided", "nothing is sent"}, {"/answer/MsgType", "nothing there"}}},
  });
}

}  // namespace
