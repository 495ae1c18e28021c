#include <cstdlib>

#include "support/call_fault.h"
#include "support/file_test.h"

namespace {

using Util = VoATMUtil;
using Outs = char* const*;

// An operation that gives what a file holds, and what it does with a text in that file (';' for
// line ends), first with one that it understands, often last without a file.
struct Operation {
  const char* file;  // the scope, if it has one, stands at the '*'
  int levels;        // 0: the file has a fixed place
  int (*call)(Util&, Outs);
  const char* table;
};

// Shows each key's letter, type, flag and value.
int LoadKeys(Util& u, Outs o) {
  OARDetails details;
  for (OARKeyEntry& key : details.Keys) key = {'?', 8, 9, 33};
  const int result = u.LoadOARTemplate("A", "B", "C", "T", -3, &details, "F");
  char* end = o[0];
  for (const OARKeyEntry& key : details.Keys) {
    end += sprintf(end, "%c%d%d%d ", key.KeyId, key.KeyType, key.KeyFlag, key.KeyValue);
  }
  return result;
}

int PackKeys(Util& u, Outs o) {
  OARDetails details = {};
  const int flags[] = {1, 0, 0, 1, 0, 0, -5, 12};
  for (std::size_t i = 0; i < 8; ++i) details.Keys[i].KeyFlag = flags[i];
  return u.PackKeyDetails("A", "B", "C", "T", 3, o[0], &details, "F");
}

constexpr Operation kOperations[] = {
    {"cfg/atm/statetable/opkey/*_opk.cfg", 4,
     [](Util& u, Outs o) {
       return u.LoadTxnCode("K", "1", o[0], o[1], o[2], o[3], o[4], "A", "B", "C", "F");
     },
     R"(
K_1 1101 5 840 Y N 9 => 0 [1101....] [5.......] [840.] [Y.] [N.]
K_1 1101 5 840 Y => -1 [1101....] [5.......] [840.] [Y.]
 <7 Failed to search[ K_1 ] for TxnReqFlag>
K_1 1101 5 840 => -1 [1101....] [5.......] [840.] <7 Failed to search[ K_1 ] for PrinterFlag>
K_1 1101 5 => -1 [1101....] [5.......] <7 Failed to search[ K_1 ] for CurrCode>
K_1 1101 => -1 [1101....] [........] <7 Failed to search[ K_1 ] for Amount>
K_2 1101 => -1 [........] <7 Failed to search[ K_1 ] for TxnCode>
=> -1 <2 Failed to open file [ ~/cfg/atm/statetable/opkey/F_opk.cfg ]>)"},
    {"cfg/atm/statetable/resptable/*_resp.cfg", 4,
     [](Util& u, Outs o) {
       return u.LoadGoodResponseState("K", "1", o[0], o[1], "A", "B", "C", "F");
     },
     R"(
[GOOD_RESPONSE];K_1 012 7 => 1 [012.] [7.]
 <6 SearchId[ GOOD_RESPONSE#K_1 ] StateNo[ 012 ] ScreenNo[ 7 ]>
[GOOD_RESPONSE];K_1 012 => -1 [012.] <6 Failed to search ScreenNo SearchId[ GOOD_RESPONSE#K_1 ]>
[BAD_RESPONSE];K_1 012 7 => -1 <2 Failed to search StateNo SearchId[ GOOD_RESPONSE#K_1 ]>
=> -1 <6 LoadGoodResponseState : Failed to open file [
 ~/cfg/atm/statetable/resptable/A_B_C_resp.cfg ]>
 <6 LoadGoodResponseState : Failed to open file [ ~/cfg/atm/statetable/resptable/A_B_resp.cfg ]>
 <6 Failed to open file [ ~/cfg/atm/statetable/resptable/F_resp.cfg ]>)"},
    {"cfg/atm/statetable/resptable/*_resp.cfg", 4,
     [](Util& u, Outs o) {
       return u.LoadBadResponseState("K", "1", o[0], o[1], "A", "B", "C", "F");
     },
     R"(
[BAD_RESPONSE];K_1 012 7 => 1 [012.....] [7.......]
[BAD_RESPONSE];K_1 012 => -1 [012.....] [........]
 <2 Failed to search[ BAD_RESPONSE#K_1 ] for ScreenNo>
[GOOD_RESPONSE];K_1 012 7 => -1 [........] <2 Failed to search[ BAD_RESPONSE#K_1 ] for StateNo>
=> -1 <6 Failed to open file [ ~/cfg/atm/statetable/resptable/F_resp.cfg ]>)"},
    {"cfg/atm/statetable/screen/*_screen.cfg", 5,
     [](Util& u, Outs o) { return u.GetEmptyScreen("A", "B", "C", o[0], "F"); },
     R"(
[ATM_RESERVEDSCREEN];EMPTYSCR 099 => 1 [099.]
EMPTYSCR 099 => -1 <6 Search Id [ ATM_RESERVEDSCREEN#EMPTYSCR ]>
=> -1 <6 Failed to open file [ ~/cfg/atm/statetable/screen/DEFAULT_screen.cfg ]>)"},
    {"cfg/atm/templates/*_T_-3.oar", 5, LoadKeys, R"(
[OAR#VAR];A $VAR 5;B 9 10;C $PREVIOUS 0;D $CONTINUE x;F $CANCEL 5;G ABC 6;H $NEXT 7;I $var 8 => 1
 [A195 B8910 C390 D490 F595 G096 H297 I098 .] <6 Unsupported Template[ 9 ]>
[OAR#VAR];A $VAR 5;B $NEXT 10;C $PREVIOUS;D $VAR 1 => -1
 [A195 B2910 C3933 ?8933 ?8933 ?8933 ?8933 ?8933 .] <6 failed to search[ OAR#VAR#C ]>
[OAR#VAR];B $VAR 5 => -1
 [A8933 ?8933 ?8933 ?8933 ?8933 ?8933 ?8933 ?8933 .] <6 failed to search[ OAR#VAR#A ]>
=> -1 [?8933 ?8933 ?8933 ?8933 ?8933 ?8933 ?8933 ?8933 .]
 <6 Failed to open file [ ~/cfg/atm/templates/DEFAULT_T_-3.oar ]>)"},
    {"cfg/atm/templates/*_T_3.oar", 5, PackKeys, R"(
[OAR#CONTROL];DISPLAYFLAG 1;NUMERICKEYS 0;CANCEL 12 => 1 [1010011200-1.] <6 Cancel< 12 >>
[OAR#CONTROL];DISPLAYFLAG x;NUMERICKEYS 1;CANCEL 3 => 1 [011001300-1.] <6 Cancel< 3 >>
[OAR#CONTROL];DISPLAYFLAG 1;NUMERICKEYS 0 => -1 [10.] <2 failed to search[ OAR#CONTROL#CANCEL ]>
[OAR#CONTROL];DISPLAYFLAG 1 => -1 [1.] <2 failed to search[ OAR#CONTROL#NUMERICKEYS ]>
[OAR#CONTROL];CANCEL 3 => -1 <2 failed to search[ OAR#CONTROL#DISPLAYFLAG ]>
=> -1 <6 Failed to open file [ ~/cfg/atm/templates/DEFAULT_T_3.oar ]>)"},
    {"cfg/atm/templates/*_T_3.oar", 5,
     [](Util& u, Outs o) { return u.GetOARTimeOut("A", "B", "C", "T", 3, o[0], "F"); },
     R"(
[OAR];OAR_TIMEOUT 030 => 1 [030.]
[OAR];TIMEOUT 030 => -1 <6 failed to search[ OAR#OAR_TIMEOUT ]>)"},
    {"cfg/atm/templates/*_T_3.oar", 5,
     [](Util& u, Outs) { return u.GetTotalVar("A", "B", "C", "T", 3, "F"); },
     R"(
[OAR#VAR];TOTALVAR 12 => 12
[OAR#VAR];TOTAL 12 => -1 <6 failed to search[ OAR#VAR#TOTALVAR ]>)"},
    {"cfg/atm/displogic/*_displogic.cfg", 4,
     [](Util& u, Outs o) {
       return u.GetDispLogic("CASH 1", 4, "A", "B", "C", o[0], "NDC+ATM", "F");
     },
     R"(
[DISPENCE_LOGIC];CASH_4 2 07 120 5 9 => 1 [02071205.] <7 Dispense logic[ 02071205 ]>
[DISPENCE_LOGIC];CASH_4 2 0 1 => -1 [020001..] <2 failed to Search [ DISPENCE_LOGIC#CASH_4 ]>
[DISPENCE_LOGIC];CASH_4 2 -1 1 5 => -1 [02......] <2 Denom Config Error>
=> -1 <6 Failed to open file [ ~/cfg/atm/displogic/F_displogic.cfg ]>)"},
    {"cfg/atm/displogic/*_displogic.cfg", 4,
     [](Util& u, Outs o) {
       return u.GetDispLogic("CASH-OF-16-CHARS", 4, "A", "B", "C", o[0], "D912ATM", "F");
     },
     R"(
[DISPENCE_LOGIC];CASH-OF-16-CHAR_4 1 2 3 4 5 6 7 8 => 1 [0102030405060708.]
 <7 Dispense logic[ 0102030405060708 ]>)"},
    {"cfg/atm/displogic/A_B_C_displogic.cfg", 0,
     [](Util& u, Outs o) { return u.GetDispLogic("C", 4, "A", "B", "C", o[0], "XYZ", "F"); }, R"(
# of any text => -1 [........] <2 Unsupported ATM Model[ X ]>)"},
    {"cfg/atm/bnamap/*_bnamap.cfg", 4,
     [](Util& u, Outs o) {
       char deposit[] = "x07020803";
       return u.GetDepositAmount("A", "B", "C", "F", deposit, o[0], o[1]);
     },
     R"(
[BNA_MAPPING];07 100;08 50 => 1 [350.00.] [100^2|50^3.] <- the length [ 8 ] and string[ 07020803 ]>
 <- Map[07][02][100]> <- Map[08][03][50]> <- Amount[ 350 ] Buffer[ 100^2|50^3 ]>
[BNA_MAPPING];07 100;08 Nill => -1 [] [100^2|..] <- the length [ 8 ] and string[ 07020803 ]>
 <- Map[07][02][100]> <- Id[ BNA_MAPPING#08 ] configured as NILL>
[BNA_MAPPING];07 x => -1 [] [........] <- the length [ 8 ] and string[ 07020803 ]>
 <- Currency Value configured as 0 for Id[ BNA_MAPPING#07 ]>
[BNA_MAPPING];08 1 => -1 [] [........] <- the length [ 8 ] and string[ 07020803 ]>
 <2 Failed to search[ BNA_MAPPING#07 ] >
=> -1 <6 Failed to open file [ ~/cfg/atm/bnamap/F_bnamap.cfg ]>)"},
    {"inf/a.inf", 0, [](Util& u, Outs) { return u.GetTotalData("a.inf"); }, R"(
[OAR];A 1;[VAR];[OAR] => 2
OAR 1 => 0
=> -1 <6 Failed to open file [ ~/inf/a.inf ]>)"},
    {"cfg/vobusiness.cfg", 0, [](Util& u, Outs) { return u.isBadResponsePrintNeeded("I1"); }, R"(
I1_BADRSP_RCPT_NEEDED YES => 1
I1_BADRSP_RCPT_NEEDED Y => 0
I2_BADRSP_RCPT_NEEDED Yes => 0
=> 0)"},
    {"cfg/vobusiness.cfg", 0, [](Util& u, Outs) { return u.getUTCFlag(); }, R"(
[VOBUSINESS];UTCFLAG yEs => 1
[VOBUSINESS];UTCFLAG 1 => 0
UTCFLAG Yes => 0 <2 Error in Searching VOBUSINESS#MAXATM from file[ ~/cfg/vobusiness.cfg ]>
=> 0 <2 Error in opening file[ ~/cfg/vobusiness.cfg ]>)"},
    {"cfg/atm/CARDLESS_TXN.cfg", 0,
     [](Util& u, Outs o) { return u.getCardlessTrack2Data("K", o[0]); }, R"(
[OPKEYMAP];K 4=1;DEFAULT 2 => 1 [4=1.]
[OPKEYMAP];L 4=1;DEFAULT 2 => 1 [2.]
 <2 Error in Searching cfgparam[OPKEYMAP#K] from file[ ~/cfg/atm/CARDLESS_TXN.cfg ] >
[OPKEYMAP];L 4=1 => -1
 <2 Error in Searching cfgparam[OPKEYMAP#K] from file[ ~/cfg/atm/CARDLESS_TXN.cfg ] >
 <2 Error in Searching cfgparam[OPKEYMAP#DEFAULT] from file[ ~/cfg/atm/CARDLESS_TXN.cfg ]>
=> -1 <2 Error in opening file[ ~/cfg/atm/CARDLESS_TXN.cfg ]>)"}};

class ConfiguredValuesTest : public FileTest {
 protected:
  static std::string File(const Operation& operation, const char* scope) {
    std::string file = operation.file;
    if (operation.levels > 0) file.replace(file.find('*'), 1, scope);
    return file;
  }

  // Writes a file, or removes it when the text is empty.
  void Put(const std::string& file, std::string text) const {
    std::replace(text.begin(), text.end(), ';', '\n');
    home_.Remove(file);
    if (!text.empty()) home_.Write(file, text);
  }

  static std::string KnownText(const Operation& operation) {
    return std::string(operation.table + 1, strstr(operation.table, " =>"));
  }

  // What the operation does with the file as it is, with every descriptor closed after it.
  std::string Call(const Operation& operation) {
    const long open = OpenDescriptors();
    std::string done = Done(operation.call(util, outs()));
    EXPECT_EQ(OpenDescriptors(), open) << operation.table;
    return done;
  }

  // What it does with the file when some calls of a function fail, with every error.
  std::set<std::string> Faults(const Operation& operation, const char* function,
                               const std::set<int>& calls) {
    std::set<std::string> done;
    for (const int nth : calls) {
      for (const int error : ErrorsOf(function)) {
        const CallFault fault(function, nth, error);
        done.insert(Call(operation));
      }
    }
    return done;
  }
};

TEST_F(ConfiguredValuesTest, AreWhatTheFileHolds) {
  for (const Operation& operation : kOperations) {
    ExpectDone(operation.table, [&](const std::string& text) {
      Put(File(operation, "A_B_C"), text);
      return operation.call(util, outs());
    });
  }
}

TEST_F(ConfiguredValuesTest, ComeFromTheNarrowestScopeThatOpensOnly) {
  const char* const scopes[] = {"A_B_C", "A_B", "A", "F", "DEFAULT"};
  for (const Operation& operation : kOperations) {
    // Either only the narrowest file has the key, or only the others have it.
    for (int round = 0; round < 10 && operation.levels > 0; ++round) {
      const int narrowest = round / 2;
      const bool has_it = round % 2 == 0;
      home_.Remove("cfg");
      for (int level = narrowest; level < 5; ++level) {
        const bool with_key = (level == narrowest) == has_it;
        Put(File(operation, scopes[level]), with_key ? KnownText(operation) : "# without it");
      }
      EXPECT_EQ(operation.call(util, outs()) >= 0, has_it && narrowest < operation.levels)
          << operation.table << " from " << scopes[narrowest];
    }
  }
}

// The file is the third that is tried, and longer than the reader's buffer, so that each search
// reads. A fault is a file or a field that is missing; one that comes after the value is nothing.
TEST_F(ConfiguredValuesTest, AreMissedWhenTheSystemFails) {
  const std::string ahead = "#" + std::string(20000, '.') + ";";
  for (const Operation& operation : kOperations) {
    const std::string file = File(operation, "A"), text = KnownText(operation);
    home_.Remove("cfg");
    Put(file, "");
    const std::string without_file = Call(operation);
    std::set<std::string> without_field = {"-1 <2 Failed to Count OAR Group>",
                                           "1 [2.] <2 Error in Searching cfgparam[OPKEYMAP#K] from "
                                           "file[ ~/cfg/atm/CARDLESS_TXN.cfg ] >"};
    for (std::size_t cut = text.size(); cut != std::string::npos && cut > 0;) {
      cut = text.find_last_of(" ;", cut - 1);
      Put(file, ahead + text.substr(0, cut == std::string::npos ? 0 : cut));
      without_field.insert(Call(operation));
    }
    Put(file, ahead + text);
    const std::string with_all = Call(operation);
    const auto run = [&] { Call(operation); };
    const int opens = CallsOf("open", run), reads = CallsOf("pread", run);
    EXPECT_EQ(opens, operation.levels > 0 ? 3 : 1) << file;
    const std::set<std::string> all = {with_all}, none = {without_file};
    EXPECT_EQ(Faults(operation, "close", SomeOf(CallsOf("close", run))), all) << file;
    EXPECT_EQ(Faults(operation, "open", {opens}), none) << file;
    for (int nth = 1; nth < opens; ++nth) EXPECT_EQ(Faults(operation, "open", {nth}), all) << file;
    EXPECT_EQ(Faults(operation, "pread", {1}), none) << file;
    std::set<int> later = SomeOf(reads);
    later.erase(1);
    for (const std::string& done : Faults(operation, "pread", later)) {
      EXPECT_EQ(without_field.count(done), 1U) << file << ": " << done;
    }
  }
}

TEST_F(ConfiguredValuesTest, NeedAPathOfUpTo250Or150CharactersThatIsNotCut) {
  for (const Operation& operation : kOperations) {
    const std::string file = "/" + File(operation, "A_B_C"), text = KnownText(operation);
    const std::size_t longest = operation.levels > 0 ? 250 : 150;
    for (std::size_t size = longest; size <= longest + 1 && text[0] != '#'; ++size) {
      const std::string folder(size - home_.path().size() - 1 - file.size(), 'f');
      Put((folder + file).substr(0, longest - home_.path().size() - 1), text);
      setenv("VODIR_HOME", (home_.path() + "/" + folder).c_str(), 1);
      const int missing = operation.levels > 0 ? -1 : 0;
      EXPECT_EQ(operation.call(util, outs()) > missing, size == longest) << operation.table;
    }
  }
}

// A longer key is cut, so it is the same as one of 50 characters.
TEST_F(ConfiguredValuesTest, HaveKeysOfUpTo50Characters) {
  const struct {
    const char* file;
    std::string begin, end;  // of the key, around the caller's text
    int (*call)(Util&, Outs, const char* text);
  } cases[] = {
      {"cfg/atm/statetable/opkey/A_opk.cfg", "", "_1",
       [](Util& u, Outs o, const char* text) {
         return u.LoadTxnCode(text, "1", o[0], o[0], o[0], o[0], o[0], "A", "B", "C", "F");
       }},
      {"cfg/atm/statetable/resptable/A_resp.cfg", "GOOD_RESPONSE#", "_1",
       [](Util& u, Outs o, const char* text) {
         return u.LoadGoodResponseState(text, "1", o[0], o[0], "A", "B", "C", "F");
       }},
      {"cfg/atm/statetable/resptable/A_resp.cfg", "BAD_RESPONSE#", "_1",
       [](Util& u, Outs o, const char* text) {
         return u.LoadBadResponseState(text, "1", o[0], o[0], "A", "B", "C", "F");
       }},
      {"cfg/atm/CARDLESS_TXN.cfg", "OPKEYMAP#", "",
       [](Util& u, Outs o, const char* text) { return u.getCardlessTrack2Data(text, o[0]); }},
      {"cfg/vobusiness.cfg", "", "_BADRSP_RCPT_NEEDED",
       [](Util& u, Outs, const char* text) { return u.isBadResponsePrintNeeded(text) - 1; }}};
  for (const auto& c : cases) {
    for (const std::size_t size : {50U, 51U}) {
      const std::string text(size - c.begin.size() - c.end.size(), 'k');
      const std::string key = (c.begin + text + c.end).substr(0, 50);
      const std::size_t item = key.find('#') + 1;
      const std::string group = item > 0 ? "[" + key.substr(0, item - 1) + "];" : "";
      Put(c.file, group + key.substr(item) + " Yes 2 3 4 5");
      EXPECT_GE(c.call(util, outs(), text.c_str()), 0) << key << size;
    }
  }
}

TEST_F(ConfiguredValuesTest, LieBelowTheRootWithoutAHome) {
  unsetenv("VODIR_HOME");
  EXPECT_EQ(Done(util.GetEmptyScreen("A", "B", "C", Out(0), "F")),
            "-1 <6 Failed to open file [ /cfg/atm/statetable/screen/DEFAULT_screen.cfg ]>");
  EXPECT_EQ(Done(util.getUTCFlag()), "0 <2 Error in opening file[ /cfg/vobusiness.cfg ]>");
}

}  // namespace
