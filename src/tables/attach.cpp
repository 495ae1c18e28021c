// Start-up: finds and attaches the six tables.
#include <sys/ipc.h>
#include <sys/msg.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <unistd.h>

#include <cstdlib>

#include "common/config_file.h"
#include "common/text_field.h"
#include "common/trace.h"
#include "tables/locate.h"
#include "voatmutil.h"
#include "vocfgutil.h"
#include "vodebugutil.h"

using namespace voatm;

namespace {

// Opens what exists: with size 0 or no semaphores nothing can be created, but for the queue.
constexpr int kOpenFlags = IPC_CREAT | 0666;

// One table: its name, where its ids and its address go, and what is traced when it cannot be had.
template <typename Record>
struct SharedTable {
  const char* name;
  int VoATMUtil::*shmid;
  int VoATMUtil::*semid;
  int VoATMUtil::*key;
  Record* VoATMUtil::*records;
  const char* segment_error;
  const char* attach_error;
  const char* semaphore_error;
};

constexpr SharedTable<AtmMemoryTable> kAtmMemory = {
    "ATMMEMORY",
    &VoATMUtil::AtmMemoryShmid,
    &VoATMUtil::AtmMemorySemid,
    &VoATMUtil::AtmMemoryKeyId,
    &VoATMUtil::AtmMemoryPtr,
    "Error in Creating Device Memory Table Shared Memory",
    "Error in attaching Device Memory Table Shared Memory",
    "Error in Creating Device Memory Table Semaphore"};

constexpr SharedTable<AtmFit> kAtmFit = {"ATMFITMEMORY",
                                         &VoATMUtil::AtmFitShmid,
                                         &VoATMUtil::AtmFitSemid,
                                         &VoATMUtil::AtmFitKeyId,
                                         &VoATMUtil::AtmFitPtr,
                                         "Error in Creating Device Fit Table Shared Memory",
                                         "Error in attaching Device Fit Table Shared Memory",
                                         "Error in Creating Device Fit Table Semaphore"};

constexpr SharedTable<VoSecurity> kSecurity = {"VOSECURITYMEMORY",
                                               &VoATMUtil::SecurityShmid,
                                               &VoATMUtil::SecuritySemid,
                                               &VoATMUtil::SecurityKeyId,
                                               &VoATMUtil::SecurityPtr,
                                               "Error in Creating VoSecurity Shared Memory",
                                               "Error in attaching VoSecurity Shared Memory",
                                               "Error in Creating VoSecurity Semaphore"};

constexpr SharedTable<VoAtmProperty> kAtmProperty = {"ATMPROPERTYMEMORY",
                                                     &VoATMUtil::AtmPropertyShmid,
                                                     &VoATMUtil::AtmPropertySemid,
                                                     &VoATMUtil::AtmPropertyKeyId,
                                                     &VoATMUtil::AtmPropertyPtr,
                                                     "Error in Creating AtmProperty Shared Memory",
                                                     "Error in attaching AtmProperty Shared Memory",
                                                     "Error in Creating AtmProperty Semaphore"};

constexpr SharedTable<VoAtmActionProperty> kAtmActionProperty = {
    "ATMACTIONPROPERTYMEMORY",
    &VoATMUtil::AtmActionPropertyShmid,
    &VoATMUtil::AtmActionPropertySemid,
    &VoATMUtil::AtmActionPropertyKeyId,
    &VoATMUtil::AtmActionPropertyPtr,
    "Error in Creating AtmActionProperty Shared Memory",
    "Error in attaching AtmActionProperty Shared Memory",
    "Error in Creating AtmActionProperty Semaphore"};

constexpr SharedTable<VoAtmStatus> kAtmStatus = {"ATMSTATUSMEMORY",
                                                 &VoATMUtil::AtmStatusShmid,
                                                 &VoATMUtil::AtmStatusSemid,
                                                 &VoATMUtil::AtmStatusKeyId,
                                                 &VoATMUtil::AtmStatusPtr,
                                                 "Error in Creating AtmStatus Shared Memory",
                                                 "Error in attaching AtmStatus Shared Memory",
                                                 "Error in Creating AtmStatus Semaphore"};

// One slot count of vobusiness.cfg or vosecurity.cfg.
struct SlotCount {
  const char* key;
  int VoATMUtil::*count;
};

constexpr SlotCount kMaxAtm = {"VOBUSINESS#MAXATM", &VoATMUtil::MaxAtm};
constexpr SlotCount kMaxFit = {"VOBUSINESS#MAXFIT", &VoATMUtil::MaxFit};
constexpr SlotCount kMaxAtmProperty = {"VOBUSINESS#MAXATMPROPERTY", &VoATMUtil::MaxAtmProperty};
constexpr SlotCount kMaxAtmStatus = {"VOBUSINESS#MAXATMSTATUS", &VoATMUtil::MaxAtmStatus};
constexpr SlotCount kMaxSecurity = {"MAXSECURITY", &VoATMUtil::MaxSecurity};

// One start-up. A step returns false after tracing why it failed.
class StartUp {
 public:
  explicit StartUp(VoATMUtil& util) : util_(util) {}

  bool Run() {
    return OpenChannel() &&                                                  //
           Locate(kAtmMemory) && OpenFile(kBusinessFile) &&                  //
           ReadCount(kMaxAtm) && Attach(kAtmMemory) &&                       //
           Locate(kAtmFit) && ReadCount(kMaxFit) &&                          //
           ReadCount(kMaxAtmProperty) && ReadCount(kMaxAtmStatus) &&         //
           CloseFile() && Attach(kAtmFit) &&                                 //
           Locate(kSecurity) && ReadSecurityCount() && Attach(kSecurity) &&  //
           Locate(kAtmProperty) && Attach(kAtmProperty) &&                   //
           Locate(kAtmActionProperty) && Attach(kAtmActionProperty) &&       //
           Locate(kAtmStatus) && Attach(kAtmStatus);
  }

 private:
  bool OpenChannel() {
    if (!OpenFile(kKernelFile) || !Search("CHANNEL#ORGKEY")) return false;
    CloseFile();
    // Unsigned, so that the largest configured key wraps instead of overflowing.
    util_.ChannelQKey =
        static_cast<int>(static_cast<unsigned>(atoi(value_)) + unsigned{kChannelKeyDistance});
    util_.ChannelQid = msgget(util_.ChannelQKey, kOpenFlags);
    if (util_.ChannelQid != -1) return true;
    TraceSystemError(util_.dptr, "Error in Creating VoChannelMgr Queue");
    return false;
  }

  bool OpenFile(const FixedFile& file) {
    if (OpenFixedFile(cfg_, path_, file)) return true;
    util_.dptr->trace(kError, "Error in opening file[ %s ]", path_);
    return false;
  }

  bool CloseFile() {
    cfg_.cfg_close();
    return true;
  }

  // Reads a key's value; a missing one closes the file.
  bool Search(const char* key) {
    if (ReadValue(cfg_, key, 2, value_)) return true;
    util_.dptr->trace(kError, "Error in Searching %s from file[ %s ]", key, path_);
    cfg_.cfg_close();
    return false;
  }

  // Intended: an invalid value leaves the file to the reader's destructor.
  bool ReadCount(const SlotCount& count) { return Search(count.key) && StoreCount(count); }

  // Intended: this file is closed for an invalid value too, after the message.
  bool ReadSecurityCount() {
    if (!OpenFile(kSecurityFile) || !Search(kMaxSecurity.key)) return false;
    const bool stored = StoreCount(kMaxSecurity);
    cfg_.cfg_close();
    return stored;
  }

  bool StoreCount(const SlotCount& count) {
    if (util_.CheckInteger(value_) != 1) {
      util_.dptr->trace(kError, "Invalid %s[ %s ] value defined in file[ %s ]", count.key, value_,
                        path_);
      return false;
    }
    util_.*count.count = atoi(value_);
    return true;
  }

  template <typename Record>
  bool Locate(const SharedTable<Record>& table) {
    return AskForKey(table.name, util_.*table.key);
  }

  bool AskForKey(const char* name, int& key) {
    LocateMemoryMsg message = {};
    message.MessageType = kLocateRequestType;
    SetText(message.MemoryName, name);
    message.RequestCode = LOCATE_MEMORY;
    message.ProcessId = getpid();
    if (msgsnd(util_.ChannelQid, &message, kLocateBodySize, IPC_NOWAIT) == -1) {
      TraceSystemError(util_.dptr,
                       "Error in Sending Locate Memory Channel Message to VoChannelMgr Queue");
      return false;
    }
    message = {};
    if (msgrcv(util_.ChannelQid, &message, kLocateBodySize, getpid(), 0) == -1) {
      TraceSystemError(util_.dptr,
                       "Error in Receiving Locate Memory Channel Message From VoChannelMgr Queue");
      return false;
    }
    if (message.LocateStatus < 0) {
      util_.dptr->trace(kError, "Error in Locating Memory[ %s ]", name);
      return false;
    }
    char located[sizeof message.MemoryName + 1];
    CopyOut(located, message.MemoryName);
    util_.dptr->trace(kInformation, "Memory[ %s ] Located with ChannelKeyId[ %d ]", located,
                      message.ChannelKeyId);
    key = message.ChannelKeyId;
    return true;
  }

  template <typename Record>
  bool Attach(const SharedTable<Record>& table) {
    int& shmid = util_.*table.shmid;
    int& semid = util_.*table.semid;
    Record*& records = util_.*table.records;
    const key_t key = util_.*table.key;

    shmid = shmget(key, 0, kOpenFlags);
    if (shmid == -1) return Failed(table.segment_error);
    records = static_cast<Record*>(shmat(shmid, nullptr, 0));
    // Intended: only a null pointer counts as failed; shmat's error address is stored and passes.
    if (records == nullptr) return Failed(table.attach_error);
    semid = semget(key, 0, kOpenFlags);
    if (semid == -1) return Failed(table.semaphore_error);
    return true;
  }

  bool Failed(const char* text) {
    TraceSystemError(util_.dptr, text);
    return false;
  }

  VoATMUtil& util_;
  VoCfgUtil cfg_;
  char path_[kFixedPathSize] = {};
  char value_[kValueSize] = {};
};

}  // namespace

VoATMUtil::VoATMUtil() = default;
VoATMUtil::~VoATMUtil() = default;

int VoATMUtil::InitVoATMUtil(VoDebugUtil* trace, bool lock) {
  dptr = trace;
  LockFlag = lock;
  return StartUp(*this).Run() ? 1 : -1;
}
