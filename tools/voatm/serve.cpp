// voatm serve: the development host.
#include <csignal>
#include <cstdio>
#include <memory>
#include <string>

#include "devhost/host.h"
#include "verbs.h"

namespace {

struct Options {
  std::string home;
  bool replace = false;
};

void PrintTables(const devhost::Host& host) {
  std::printf("%-24s %10s %7s %6s %10s\n", "table", "key", "slots", "rows", "bytes");
  for (const devhost::Host::Table& table : host.tables()) {
    std::printf("%-24s %10d %7d %6d %10zu\n", table.record->name, table.key, table.slots,
                table.rows, table.bytes);
  }
  std::printf("%-24s %10d\nready\n", "queue", host.queue_key());
  std::fflush(stdout);
}

ExitCode Serve(const Options& options) {
  RequireHome(options.home);
  std::signal(SIGPIPE, SIG_IGN);  // a reader that goes away must not leave the tables behind
  devhost::Host host(options.home, options.replace);
  host.Serve([&] { PrintTables(host); });
  return kDone;
}

Action Declare(CLI::App* verb) {
  const auto options = std::make_shared<Options>();
  AddHomeOption(verb, &options->home);
  verb->add_flag("--replace", options->replace,
                 "Remove a queue and tables that are there already, whoever uses them");
  return [options] { return Serve(*options); };
}

}  // namespace

const Verb kServe = {
    "serve", "Create the six tables, fill them from tables/ and answer locate requests",
    "The development host. Runs until SIGINT or SIGTERM and removes what it created.",
    "voatm serve --home examples/home", Declare};
