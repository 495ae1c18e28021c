#include <filesystem>
#include <map>
#include <regex>
#include <set>

#include "support/random_cases.h"
#include "support/served_home.h"
#include "tools/voatm/home/check_configuration.h"
#include "tools/voatm/home/configuration_entries.h"
#include "tools/voatm_output.h"
#include "vocfgutil.h"

namespace {

const std::string kLong(151, 'x');
const std::string kBusiness =
    "[VOBUSINESS]\nMAXATM 4\nMAXFIT 4\nMAXATMPROPERTY 4\nMAXATMSTATUS 4\nUTCFLAG No\n";
const std::string kCardless = "cfg/atm/CARDLESS_TXN.cfg";
const std::string kOpkeys = "cfg/atm/statetable/opkey/";
const std::string kOpkey = kOpkeys + "A_opk.cfg";
const std::string kResponse = "cfg/atm/statetable/resptable/A_resp.cfg";
const std::string kScreen = "cfg/atm/statetable/screen/A_screen.cfg";
const std::string kTemplate = "cfg/atm/templates/A_AMOUNT_1.oar";
const std::string kOar =
    "[OAR]\nOAR_TIMEOUT 45\n[OAR#CONTROL]\nNUMERICKEYS 1\nCANCEL 12\n[OAR#VAR]\nTOTALVAR 1\n"
    "A $VAR 1\nB N 0\nC N 0\nD N 0\nF N 0\nG N 0\nH N 0\n";
const std::string kDisplay = "[OAR#CONTROL]\nDISPLAYFLAG 1\n";
const std::string kLogic = "cfg/atm/displogic/A_displogic.cfg";
const std::string kNotes = "cfg/atm/bnamap/A_bnamap.cfg";

// A file that is added to a sound home, and the one thing wrong with it, without the text.
// clang-format off
const struct {
  std::string file, text, finding;
} kSeeds[] = {
    {"cfg/vokernel.cfg", "", "1:1 error missing-key"},
    {"cfg/vokernel.cfg", "(none)", "1:1 error missing-file"},
    {"cfg/vokernel.cfg", "[CHANNEL]\nORGKEY 2147483646\n", "2:8 error number-too-large"},
    {"cfg/vosecurity.cfg", "MAXSECURITY x\n", "1:13 error not-a-number"},
    {"cfg/vosecurity.cfg", "MAXSECURITY 00\n", "1:13 error no-slots"},
    {"cfg/vosecurity.cfg", "MAXSECURITY 2147483647\n", "1:13 error above-semmsl"},
    {"cfg/vobusiness.cfg", kBusiness + "A_BADRSP_RCPT_NEEDED Yes\n", "7:1 warning unread-key"},
    {"cfg/vobusiness.cfg", "A_BADRSP_RCPT_NEEDED 1\n" + kBusiness, "1:22 warning yes-or-no"},
    {"cfg/vobusiness.cfg", "MAXATM 1\n" + kBusiness, "1:1 warning unread-key"},
    {"cfg/vobusiness.cfg", "VOBUSINESS#MAXFIT 1\n" + kBusiness, "4:1 warning shadowed-key"},
    {kCardless, "[OPKEYMAP]\nA 1=2\n", "1:1 warning missing-key"},
    {kCardless, "[OPKEYMAP]\nDEFAULT \"\"\n", "2:9 error empty-value"},
    {kOpkey, "A_A 010000 0 978 \"Y Y\n", "1:18 error unclosed-quote"},
    {kOpkey, "A_A 010000 0 978 \"Y\"Y Y\n", "1:18 error text-after-quote"},
    {kOpkey, "A_A " + kLong + " 0 978 Y Y\n", "1:5 error field-too-long"},
    {kOpkey, std::string("A_A 010000 0 978 Y \0Y\n", 22), "1:20 error nul-character"},
    {kOpkey, "A_A 010000 0 978 Y\n", "1:19 error missing-field"},
    {kOpkey, "A_A 010000 0 978 Y Y Y\n", "1:22 warning extra-field"},
    {kOpkey, "A_A 01000 0 978 Y Y\n", "1:5 error txn-code"},
    {kOpkey, "A_A 010000 0 EUR Y Y\n", "1:14 error currency-code"},
    {kOpkey, "A_A 010000 0 978 yes Y\n", "1:18 warning flag"},
    {kOpkey, "A_" + kLong.substr(0, 49) + " 010000 0 978 Y Y\n", "1:1 error key-too-long"},
    {kOpkey, "A_" + kLong.substr(0, 48) + " 010000 0 978 Y\n", "1:66 error missing-field"},
    {kOpkey + ".old", "", "1:1 warning unopened-file"},
    {kOpkeys + "DEFAULT_opk.cfg", "", "1:1 warning unopened-file"},
    {"cfg/atm/opkey/A_opk.cfg", "", "1:1 warning unopened-file"},
    {"cfg/old/vobusiness.cfg", "", "1:1 warning unopened-file"},
    {"cfg/atm/templates/A_AMOUNT_01.oar", "", "1:1 warning unopened-file"},
    {kOpkeys + "~251_opk.cfg", "", "1:1 error path-too-long"},
    {kOpkeys + "~250_opk.cfg", "A_A 010000 0 978 Y\n", "1:19 error missing-field"},
    {kOpkeys + "_opk.cfg", "", "1:1 warning unopened-file"},
    {kOpkey + "/note", "", "1:1 error unreadable-file"},
    {kResponse, "[GOOD_RESPONSE]\n1_0 21 071\n", "2:5 error state-number"},
    {kResponse, "[BAD_RESPONSE]\n1_0 021 0710\n", "2:9 error screen-number"},
    {kResponse, "[GOOD_RESPONSE]\n1_0 021 071\n1_0 021 072\n", "3:1 warning duplicate-key"},
    {kScreen, "[ATM_RESERVEDSCREEN\nEMPTYSCR 099\n", "1:1 error open-header"},
    {kScreen, "[" + kLong + "]\n[ATM_RESERVEDSCREEN]\nEMPTYSCR 099\n", "1:1 error header-too-long"},
    {kScreen, "[" + kLong.substr(1) + "]\n[ATM_RESERVEDSCREEN]\nEMPTYSCR 99\n", "3:10 error screen-number"},
    {kTemplate, kOar + "I $LEAVE 0\n" + kDisplay, "15:3 warning key-action"},
    {kTemplate, kOar + "I " + kLong.substr(0, 51) + " 0\n" + kDisplay, "15:3 error value-too-long"},
    {kTemplate, kOar + "I N 0\n[OAR#CONTROL]\nDISPLAYFLAG 10\n", "17:13 error control-digit"},
    {kLogic, "[DISPENCE_LOGIC]\nCASH_20 1 0 0\n", "2:1 error logic-counts"},
    {kLogic, "[DISPENCE_LOGIC]\nCASH_10 99 0 0 0\nCASH_20 1 0 0 100\n", "3:15 error note-count"},
    {kNotes, "[BNA_MAPPING]\n01 5\n02 0\n", "3:4 error note-value"},
    {kOpkey, "[A]\nA_A 010000 0 978 Y Y\n", "2:1 warning unread-key"},
    {kResponse, "[GOOD]\n1_0 021 071\n", "2:1 warning unread-key"},
    {kLogic, "[DISPENCE_LOGIC]\nCASH_020 1 0 0 0\n", "2:1 warning unread-key"},
    {kNotes, "[BNA_MAPPING]\n1 5\n", "2:1 warning unread-key"},
    {"inf/A_OAR.inf", "[OAR]\n[OAR\n", "2:1 error open-header"},
    {"tables/atm_fit.json", "[\n {\"FitId\": \"A\", \"Suffix\": 1}]\n", "2:24 error seed-refused"},
    {"tables/atm_status.json", "[\n {]", "2:3 error seed-refused"},
};
// clang-format on

// The file with what makes its whole path as long as stands behind ~.
std::string Padded(std::string file, const std::string& home) {
  const std::size_t at = file.find('~');
  if (at == std::string::npos) return file;
  const std::size_t length = std::stoul(file.substr(at + 1, 3));
  file.erase(at, 4);
  return file.insert(at, std::string(length - home.size() - 1 - file.size(), 'A'));
}

// SEMMSL is the machine's.
std::string WithoutNumber(const std::string& text) {
  return std::regex_replace(text, std::regex("at most [0-9]+"), "at most SEMMSL");
}

TEST(Check, FindsEachSeededFaultAndNothingElse) {
  std::string texts;
  for (auto seed : kSeeds) {
    const TestHome home;
    seed.file = Padded(seed.file, home.path());
    std::filesystem::copy(SAMPLE_HOME, home.path(), std::filesystem::copy_options::recursive);
    std::filesystem::create_directory_symlink(".", home.path() + "/cfg/loop");
    if (seed.file.rfind("tables/", 0) != 0) home.Remove("tables");  // rows need the counts of cfg/
    home.Remove(seed.file);
    if (seed.text != "(none)") home.Write(seed.file, seed.text);
    const std::string file = home.path() + "/" + seed.file.substr(0, seed.file.find("/note"));
    const Json report = CheckConfiguration(home.path());
    std::string found;
    for (const Json& each : report["findings"]) {
      const std::string text = each["text"], rule = each["rule"];
      texts += rule + ": " + (rule == "above-semmsl" ? WithoutNumber(text) : text) + "\n";
      found += each["path"].get<std::string>() + ":" + each["line"].dump() + ":" +
               each["column"].dump() + " " + each["severity"].get<std::string>() + " " +
               each["rule"].get<std::string>();
    }
    EXPECT_EQ(found, file + ":" + seed.finding);
    const int errors = seed.finding.find(" error ") != std::string::npos ? 1 : 0;
    EXPECT_EQ(report["errors"], errors);
    EXPECT_EQ(report["warnings"], 1 - errors);
  }
  EXPECT_EQ(texts, Transcript("findings"));
}

TEST(Check, FailsForAnErrorAndWhenStrictForAWarning) {
  const TestHome home;
  std::filesystem::copy(SAMPLE_HOME, home.path(), std::filesystem::copy_options::recursive);
  home.Write(kOpkey, "A_A 010000 0 978 Y Y Y\n");
  const std::regex text(": ([a-z]*): .* \\[(.*)\\]\n");
  for (const auto& [arguments, code] : {std::pair{"check", 0}, {"check --strict", 1}}) {
    const Output output = Voatm(arguments + std::string(" 2>/dev/null"));
    EXPECT_EQ(std::regex_replace(output.text, text, " $1 $2"),
              home.path() + "/" + kOpkey + ":1:22 warning extra-field");
    EXPECT_EQ(output.code, code) << arguments;
  }
  home.Write(kOpkey, "A_A 010000 0 978 Y\n");
  EXPECT_EQ(Voatm("check").code, 1);
}

// Each key's first entry is the one that the reader finds, field by field; so are the groups.
TEST(Check, ReadsEntriesAsTheReaderDoes) {
  RandomCases random;
  const TestHome home;
  for (int round = 0; round < 300; ++round) {
    std::string text;
    for (int piece = 0; piece < 60; ++piece) {
      text += random.OneOf<std::string>({"A", "B", "A#B", "[", "]", "[A]", "[A#B]", "#", "\"", "\\",
                                         " ", " ", "\t", "\r", "\n", "\n", kLong});
    }
    home.Write("file", text);
    VoCfgUtil reader;
    ASSERT_EQ(reader.cfg_open((home.path() + "/file").c_str()), 0);
    std::set<std::string> keys;
    std::map<std::string, int> headers;
    for (const ConfigurationEntry& entry : ReadEntries(text)) {
      if (entry.is_header && entry.fault == nullptr) ++headers[entry.group];
      if (entry.key.empty() || entry.hidden || !keys.insert(entry.key).second) continue;
      for (std::size_t field = 1; field <= entry.fields.size(); ++field) {
        char value[VoCfgUtil::kMaxField + 1];
        const bool readable = entry.readable() && field < entry.fields.size();
        const int found = reader.cfg_search(entry.key.c_str(), value, static_cast<int>(field) + 1);
        ASSERT_EQ(found, readable ? 0 : -1) << entry.key << " in " << text;
        ASSERT_EQ(static_cast<std::size_t>(reader.line()), entry.line)
            << entry.key << " in " << text;
        ASSERT_TRUE(!readable || value == entry.fields[field].text) << entry.key << " in " << text;
      }
    }
    for (const auto& [group, count] : headers) {
      ASSERT_EQ(reader.cfg_group_count(group.c_str()), count) << group << " in " << text;
    }
  }
}

}  // namespace
