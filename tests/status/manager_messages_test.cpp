#include <functional>

#include "support/driver_test.h"
#include "vodatetimeutil.h"

namespace {

// Date and time as they lie in a message, one behind the other.
std::string Now() {
  VoDateTimeUtil clock;
  char now[32] = {};
  snprintf(now, 8, "%06d", clock.getSysDate());
  snprintf(now + 8, 8, "%06d", clock.getSysTime());
  return {now, 16};
}

// A field of a message: where it lies, its bytes, and at most how many of them.
struct Field {
  std::size_t offset;
  std::string bytes;
  std::size_t size = 16;
};

std::string Int(int value) { return {reinterpret_cast<const char*>(&value), sizeof value}; }

using Pack = std::function<int(VoAtmMgrQMsg*)>;

// Expects that the first bytes of a message, '#' before, are these fields and otherwise zero.
void ExpectPacked(std::size_t size, const std::vector<Field>& fields, std::size_t stamp,
                  const Pack& pack) {
  std::string now, packed;
  do {  // until both lie in one second
    now = Now();
    VoAtmMgrQMsg msg;
    memset(&msg, '#', sizeof msg);
    EXPECT_EQ(pack(&msg), 1);
    packed.assign(reinterpret_cast<const char*>(&msg), sizeof msg);
  } while (now != Now());
  std::string expected(size, '\0');
  for (const Field& field : fields) {
    const std::string cut = field.bytes.substr(0, field.size);
    expected.replace(field.offset, cut.size(), cut);
  }
  if (stamp != 0) expected.replace(stamp, 16, now);
  expected.resize(sizeof(VoAtmMgrQMsg), '#');
  EXPECT_EQ(packed, expected);
}

TEST(ManagerMessages, HaveEachFieldAtItsOffsetCutAtItsWidth) {
  VoATMUtil util;
  for (const std::size_t length : {0U, 5U, 2000U}) {
    const std::string id(length, 'i'), text(length, 't'), extra(length, 'x');
    const auto head = [&](int code, int sub_code, std::vector<Field> fields) {
      fields.insert(fields.end(), {{0, Int(2)}, {4, Int(code)}, {8, Int(sub_code)}, {12, id}});
      return fields;
    };
    ExpectPacked(3032, head(9, 13, {{29, id}, {46, text, 100}, {147, extra, 100}}), 248,
                 [&](VoAtmMgrQMsg* msg) {
                   return util.PackAtmStatusMsg(id.c_str(), text.c_str(), extra.c_str(), msg);
                 });
    ExpectPacked(
        3032, head(8, 15, {{29, id}, {46, text, 1024}, {1087, "F"}}), 1071,
        [&](VoAtmMgrQMsg* msg) { return util.PackAtmLogMsg(id.c_str(), text.c_str(), 'F', msg); });
    ExpectPacked(3032, head(11, 13, {{29, id}, {49, Int(70523)}}), 0,
                 [&](VoAtmMgrQMsg* msg) { return util.PackAtmTraceNoMsg(id.c_str(), 70523, msg); });
    AtmDenomStatusMsg denom;
    memset(&denom, 'd', sizeof denom);
    ExpectPacked(3032, head(10, 13, {{29, std::string(92, 'd'), 92}}), 0,
                 [&](VoAtmMgrQMsg* msg) { return util.PackAtmDenomMsg(id.c_str(), &denom, msg); });
    ExpectPacked(138, {{0, Int(1)}, {4, id, 32}, {37, text, 100}}, 0, [&](VoAtmMgrQMsg* msg) {
      return util.PackAtmAlertMsg(id.c_str(), text.c_str(), reinterpret_cast<VoAlertMgrMsg*>(msg));
    });
  }
}

TEST(ManagerMessages, CopyTransactionsWhole) {
  VoATMUtil util;
  VoDevMsg dev = {};
  VoTxnMsg txn;
  memset(static_cast<void*>(&txn), 't', 6296);
  EXPECT_EQ(util.TransformINboundMsg(&dev, &txn), 1);
  EXPECT_EQ(memcmp(&dev, &txn, 6296), 0);
  memset(static_cast<void*>(&dev), 'd', 6296);
  EXPECT_EQ(util.TransformOUTboundMsg(&txn, &dev), 1);
  EXPECT_EQ(memcmp(&dev, &txn, 6296), 0);
  EXPECT_EQ(txn.Uninterpreted5[0], 'd');
}

TEST(OperationalCommands, HaveCodesFrom31InOrderInAnyCase) {
  int code = 31;
  for (const char* command :
       {"!InService", "!outservice", "!GetConfig", "!CloseVShield", "!OPENVSHIELD", "!UnlockSDoor",
        "!LocksDoor", "!GETEMG", "!getcounters", "!ClearCounters", "!GetECounters",
        "!clearECounters", "!RunSelfTest", "!ShutDown", "!GetTally", "!GetError", "!GetHwConfig",
        "!GetDateTime", "!GetEkc"}) {
    EXPECT_EQ(VoATMUtil().GetOpertionalCmd(command), code++) << command;
  }
  for (const char* other : {"", "!", "INSERVICE", "!INSERVICE ", " !GETEKC", "!GETEK"}) {
    EXPECT_EQ(VoATMUtil().GetOpertionalCmd(other), -1) << other;
  }
}

}  // namespace
