// The other side of a driver's tables: owns them, fills them, and answers where they are.
#ifndef DEVHOST_HOST_H
#define DEVHOST_HOST_H

#include <array>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "devhost/ipc_object.h"
#include "devhost/settings.h"
#include "devhost/stop_order.h"
#include "records/record_tables.h"

namespace devhost {

struct HostOptions {
  bool replace = false;                     // removes objects that are there already
  int mode = 0600;                          // the rights to what is created
  pid_t exit_with = StopOrder::kNoProcess;  // the process whose end stops the host
};

// Stands for VoChannelMgr and for the tables' owner. From construction to destruction the queue,
// the six segments and the six semaphore sets exist, every semaphore at 2, every slot without a row
// at "NOTDEFINED"; the signals of StopOrder are held back meanwhile. Construct and destroy it on
// one thread; serve there, or on a thread started in between.
class Host {
 public:
  struct Table {
    const records::RecordTable* record;
    int key;  // of the segment and of the semaphore set
    int slots;
    int rows;           // seeded
    std::size_t bytes;  // of the segment
    std::string file;   // that the rows are from
    bool has_file;      // else the table starts empty
  };

  // Reads cfg/ and tables/ of a home and creates the objects, the queue's key being CHANNEL#ORGKEY
  // + 2 and the tables' + 10 to + 15 in the order in which they are located. Existing objects are
  // an error that lists them, or are removed first when the options say so, once the home is known
  // to be good. Throws std::runtime_error; nothing that was created is then left.
  explicit Host(const std::string& home, const HostOptions& options = {});
  ~Host() = default;
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  const std::vector<Table>& tables() const { return tables_; }
  int queue_key() const { return settings_.queue_key; }

  // Answers locate requests until a signal, the end of the process to exit with, or Stop; then
  // removes the queue and returns. Calls `ready` once requests are answered; what that throws ends
  // serving as well. Throws std::runtime_error when somebody else removed the queue, or when it
  // fails. Serves once.
  void Serve(const std::function<void()>& ready);

  // Ends Serve, or the one to come. For any thread.
  void Stop() const { stop_.Give(); }

 private:
  using Images = std::array<std::vector<char>, records::kTableCount>;

  Images LoadTables(const std::string& home);
  void ClearTheWay() const;
  int Create(IpcKind kind, const char* owner, int key, std::size_t size);
  void CreateTable(const Table& table, const std::vector<char>& image);

  const HostOptions options_;
  StopOrder stop_;
  Settings settings_;
  std::vector<Table> tables_;
  std::vector<IpcObject> objects_;  // the queue, then a segment and a set a table
};

}  // namespace devhost

#endif  // DEVHOST_HOST_H
