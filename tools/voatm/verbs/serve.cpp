// voatm serve: the development host.
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <utility>

#include "devhost/host.h"
#include "show/output.h"
#include "verbs/verbs.h"

namespace {

struct Options : DataOptions {
  devhost::HostOptions host;
};

void PrintTablesJson(const std::string& home, const devhost::Host& host) {
  Json tables = Json::array();
  for (const devhost::Host::Table& table : host.tables()) {
    tables.push_back({{"table", table.record->name},
                      {"key", table.key},
                      {"slots", table.slots},
                      {"rows", table.rows},
                      {"bytes", table.bytes},
                      {"file", table.has_file ? Json(table.file) : Json()}});
  }
  PrintJsonLine({{"ready", true},
                 {"home", std::filesystem::canonical(home).string()},
                 {"pid", getpid()},
                 {"queue_key", host.queue_key()},
                 {"tables", std::move(tables)}});
}

void PrintTables(const devhost::Host& host) {
  std::printf("%-24s %10s %7s %6s %10s\n", "table", "key", "slots", "rows", "bytes");
  for (const devhost::Host::Table& table : host.tables()) {
    std::printf("%-24s %10d %7d %6d %10zu\n", table.record->name, table.key, table.slots,
                table.rows, table.bytes);
  }
  std::printf("%-24s %10d\nready\n", "queue", host.queue_key());
}

void SayWhatStartsEmpty(const devhost::Host& host) {
  std::string missing;
  for (const devhost::Host::Table& table : host.tables()) {
    if (table.has_file || table.slots == 0) continue;
    missing += (missing.empty() ? "" : ", ") + table.file + " for " + table.record->name;
  }
  if (!missing.empty()) Say("these tables start empty, there is no " + missing);
}

ExitCode Serve(const Options& options) {
  RequireHome(options.home);
  std::signal(SIGPIPE, SIG_IGN);  // a reader that goes away must not leave the tables behind
  devhost::Host host(options.home, options.host);
  SayWhatStartsEmpty(host);
  host.Serve([&] {
    options.json ? PrintTablesJson(options.home, host) : PrintTables(host);
    FlushOutput();
  });
  return kDone;
}

Action Declare(OptionList* list) {
  const auto options = std::make_shared<Options>();
  AddDataOptions(list, options.get());
  list->Flag("--replace", &options->host.replace,
             "Remove a queue and tables that are there already, whoever uses them");
  list->Number("--exit-with", 1, INT_MAX, &options->host.exit_with,
               "End when the process of this number ends");
  const auto mode = std::make_shared<std::string>();
  list->Choice("--mode", {"0600", "0660", "0666"}, mode.get(),
               "Who may use what it creates: the user alone (as without it), the group, all");
  return [options, mode] {
    if (!mode->empty()) options->host.mode = std::stoi(*mode, nullptr, 8);
    return Serve(*options);
  };
}

}  // namespace

const Verb kServe = {
    "serve", "Create the six tables, fill them from tables/ and answer locate requests",
    "The development host. Says what it made and that it is ready, runs until SIGINT, SIGTERM,\n"
    "SIGQUIT or SIGHUP and removes what it created. It refuses to start over tables that exist.\n"
    "A table without a file in tables/ starts empty, and it says so.\n\n"
    "Exit status: 0 ended by a signal or with the process of --exit-with, 2 it could not start,\n"
    "could not say that it is ready, or lost its queue.\n\n"
    "JSON: {ready, home, pid, queue_key, tables: [{table, key, slots, rows, bytes, file}]}, one\n"
    "line once ready; a file that is not there is null.",
    "voatm serve --home examples/home", Declare};
