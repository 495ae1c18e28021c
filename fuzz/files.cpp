// The operations on files, over one file of any bytes, against what the reader finds there.
#include <strings.h>

#include <optional>

#include "support.h"
#include "vocfgutil.h"

namespace {

constexpr std::size_t kValueSize = 151;  // holds any field
constexpr std::size_t kCut = 50;         // characters kept of the values that are cut

using Found = std::optional<std::string>;
using Outputs = std::vector<Block>;

Found Find(const std::string& key, int field) {
  VoCfgUtil reader;
  Block value(kValueSize);
  Require(reader.cfg_open(InputFile::kPath) == 0, "the file opens");
  if (reader.cfg_search(key.c_str(), value.data(), field) < 0) return std::nullopt;
  return value.Text();
}

std::optional<int> FindNumber(const std::string& key, int field = 2) {
  const Found value = Find(key, field);
  if (!value.has_value()) return std::nullopt;
  return atoi(value->substr(0, kCut).c_str());
}

bool IsYes(const char* key) { return strcasecmp(Find(key, 2).value_or("").c_str(), "Yes") == 0; }

// The operations that hand on the fields of a key, from field 2 on.
struct Reading {
  const char* key;
  const char* other_key;  // when the first is missing
  std::size_t outputs;
  bool cleared;  // whether the first two outputs are cleared
  int done;
  int (*read)(VoATMUtil& util, Outputs& out);
};

constexpr Reading kReadings[] = {
    {"GOOD_RESPONSE#A_B", "", 2, false, 1,
     [](VoATMUtil& util, Outputs& out) {
       return util.LoadGoodResponseState("A", "B", out[0].data(), out[1].data(), "I", "G", "A",
                                         "F");
     }},
    {"BAD_RESPONSE#A_B", "", 2, true, 1,
     [](VoATMUtil& util, Outputs& out) {
       return util.LoadBadResponseState("A", "B", out[0].data(), out[1].data(), "I", "G", "A", "F");
     }},
    {"A_B", "", 5, true, 0,
     [](VoATMUtil& util, Outputs& out) {
       return util.LoadTxnCode("A", "B", out[0].data(), out[1].data(), out[2].data(), out[3].data(),
                               out[4].data(), "I", "G", "A", "F");
     }},
    {"OAR#OAR_TIMEOUT", "", 1, false, 1,
     [](VoATMUtil& util, Outputs& out) {
       return util.GetOARTimeOut("I", "G", "A", "T", 1, out[0].data(), "F");
     }},
    {"ATM_RESERVEDSCREEN#EMPTYSCR", "", 1, false, 1,
     [](VoATMUtil& util, Outputs& out) {
       return util.GetEmptyScreen("I", "G", "A", out[0].data(), "F");
     }},
    {"OPKEYMAP#A", "OPKEYMAP#DEFAULT", 1, false, 1,
     [](VoATMUtil& util, Outputs& out) { return util.getCardlessTrack2Data("A", out[0].data()); }}};

void CheckReading(VoATMUtil& util, const Reading& reading) {
  Outputs out(reading.outputs, Block(kValueSize));
  Outputs expected = out;
  const bool first = Find(reading.key, 2).has_value() || *reading.other_key == '\0';
  std::size_t found = 0;
  for (; found < expected.size(); ++found) {
    if (reading.cleared && found < 2) expected[found].Clear();
    const Found value = Find(first ? reading.key : reading.other_key, static_cast<int>(found) + 2);
    if (!value.has_value()) break;
    expected[found].Put(*value);
  }
  const int result = found == expected.size() ? reading.done : -1;
  Require(reading.read(util, out) == result, "whether all fields are there");
  Require(out == expected, "the fields, up to the first that is missing");
}

void CheckTemplate(VoATMUtil& util) {
  static const std::vector<std::string> kActions = {"$VAR", "$NEXT", "$PREVIOUS", "$CONTINUE",
                                                    "$CANCEL"};
  Block out(sizeof(OARDetails));
  Block expected = out;
  std::size_t read = 0;
  for (const char letter : std::string("ABCDFGHI")) {
    OARKeyEntry& entry = expected.As<OARDetails>()->Keys[read];
    const std::string key = std::string("OAR#VAR#") + letter;
    entry.KeyId = letter;
    const Found action = Find(key, 2);
    if (!action.has_value()) break;
    const auto known = std::find(kActions.begin(), kActions.end(), action->substr(0, kCut));
    if (FindNumber(key) == 0) entry.KeyType = 0;
    if (known != kActions.end()) entry.KeyType = static_cast<int>(known - kActions.begin()) + 1;
    const std::optional<int> value = FindNumber(key, 3);
    if (!value.has_value()) break;
    entry.KeyValue = *value;
    ++read;
  }
  const int result = util.LoadOARTemplate("I", "G", "A", "T", 1, out.As<OARDetails>(), "F");
  Require(result == (read == 8 ? 1 : -1), "the eight keys");
  Require(out == expected, "what each key does");
}

void CheckKeyDetails(VoATMUtil& util, int key_flag) {
  OARDetails details = {};
  std::string flags;
  for (OARKeyEntry& entry : details.Keys) {
    entry.KeyFlag = key_flag++;
    flags += std::to_string(entry.KeyFlag)[0];
  }
  Block out(22);
  const int result = util.PackKeyDetails("I", "G", "A", "T", 1, out.data(), &details, "F");
  const std::optional<int> display = FindNumber("OAR#CONTROL#DISPLAYFLAG");
  const std::optional<int> numeric = FindNumber("OAR#CONTROL#NUMERICKEYS");
  const std::optional<int> cancel = FindNumber("OAR#CONTROL#CANCEL");
  const bool all = display.has_value() && numeric.has_value() && cancel.has_value();
  Require(result == (all ? 1 : -1), "the three controls");
  if (!all) return;
  std::string packed = std::to_string(*display).substr(0, 1) + std::to_string(*numeric);
  packed = (packed + flags).substr(0, packed.size() + 4);
  Require(out.Text() == packed.substr(0, 6) + std::to_string(*cancel) + flags.substr(4),
          "the packed keys");
}

void CheckDispenseLogic(VoATMUtil& util, const char* model, int positions) {
  Block logic(17);
  const int result = util.GetDispLogic("L name", 1, "I", "G", "A", logic.data(), model, "F");
  std::string expected;
  bool whole = true;
  for (int i = 0; whole && i < positions; ++i) {
    const std::string value = Find("DISPENCE_LOGIC#L_1", i + 2).value_or("x").substr(0, kCut);
    whole = value.find_first_not_of("0123456789") == std::string::npos;
    char digits[12];
    std::snprintf(digits, sizeof digits, "%02d", atoi(value.c_str()));
    if (whole) expected += std::string(digits).substr(0, 2);
  }
  Require(result == (whole ? 1 : -1), "a count a position");
  Require(logic.Text() == expected, "the logic");
}

void CheckNumbers(VoATMUtil& util) {
  VoCfgUtil reader;
  reader.cfg_open(InputFile::kPath);
  Require(util.GetTotalData("OAR.inf") == reader.cfg_group_count("OAR"), "headers of a list");
  Require(
      util.GetTotalVar("I", "G", "A", "T", 1, "F") == FindNumber("OAR#VAR#TOTALVAR").value_or(-1),
      "variables of a template");
  Require(util.getUTCFlag() == IsYes("VOBUSINESS#UTCFLAG"), "the UTC flag");
  Require(util.isBadResponsePrintNeeded("I") == IsYes("I_BADRSP_RCPT_NEEDED"), "the receipt flag");
}

}  // namespace

FUZZ_TARGET(files) {
  static InputFile file({"cfg/atm/statetable/opkey/F_opk.cfg",
                         "cfg/atm/statetable/resptable/F_resp.cfg",
                         "cfg/atm/statetable/screen/F_screen.cfg",
                         "cfg/atm/templates/DEFAULT_T_1.oar", "cfg/atm/displogic/F_displogic.cfg",
                         "cfg/atm/CARDLESS_TXN.cfg", "cfg/vobusiness.cfg", "inf/OAR.inf"});
  FuzzedDataProvider input(bytes, size);
  const auto operation = input.ConsumeIntegral<unsigned char>() % (std::size(kReadings) + 4);
  const int key_flag = input.ConsumeIntegralInRange(-128, 127);
  file.Write(input.ConsumeRemainingBytesAsString());
  Driver driver;
  switch (operation) {
    case 0:
      CheckTemplate(driver.util);
      break;
    case 1:
      CheckKeyDetails(driver.util, key_flag);
      break;
    case 2:
      CheckDispenseLogic(driver.util, key_flag < 0 ? "NDC+ATM" : "D912ATM", key_flag < 0 ? 4 : 8);
      break;
    case 3:
      CheckNumbers(driver.util);
      break;
    default:
      CheckReading(driver.util, kReadings[operation - 4]);
  }
  return 0;
}
