// voatm serve: the development host.
#include <csignal>
#include <cstdio>
#include <memory>
#include <utility>

#include "devhost/host.h"
#include "show/output.h"
#include "verbs/verbs.h"

namespace {

struct Options : DataOptions {
  bool replace = false;
};

void PrintTablesJson(const devhost::Host& host) {
  Json tables = Json::array();
  for (const devhost::Host::Table& table : host.tables()) {
    tables.push_back({{"table", table.record->name},
                      {"key", table.key},
                      {"slots", table.slots},
                      {"rows", table.rows},
                      {"bytes", table.bytes}});
  }
  PrintJsonLine({{"ready", true}, {"queue_key", host.queue_key()}, {"tables", std::move(tables)}});
}

void PrintTables(const devhost::Host& host) {
  std::printf("%-24s %10s %7s %6s %10s\n", "table", "key", "slots", "rows", "bytes");
  for (const devhost::Host::Table& table : host.tables()) {
    std::printf("%-24s %10d %7d %6d %10zu\n", table.record->name, table.key, table.slots,
                table.rows, table.bytes);
  }
  std::printf("%-24s %10d\nready\n", "queue", host.queue_key());
}

ExitCode Serve(const Options& options) {
  RequireHome(options.home);
  std::signal(SIGPIPE, SIG_IGN);  // a reader that goes away must not leave the tables behind
  devhost::Host host(options.home, options.replace);
  host.Serve([&] {
    options.json ? PrintTablesJson(host) : PrintTables(host);
    std::fflush(stdout);
  });
  return kDone;
}

Action Declare(OptionList* list) {
  const auto options = std::make_shared<Options>();
  AddDataOptions(list, options.get());
  list->Flag("--replace", &options->replace,
             "Remove a queue and tables that are there already, whoever uses them");
  return [options] { return Serve(*options); };
}

}  // namespace

const Verb kServe = {
    "serve", "Create the six tables, fill them from tables/ and answer locate requests",
    "The development host. Says what it made and that it is ready, runs until SIGINT or SIGTERM\n"
    "and removes what it created. It refuses to start over tables that exist.\n\n"
    "Exit status: 0 ended by a signal, 2 it could not start or lost its queue.\n\n"
    "JSON: {ready, queue_key, tables: [{table, key, slots, rows, bytes}]}, one line once ready.",
    "voatm serve --home examples/home", Declare};
