// voatm serve: the development host.
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>

#include "devhost/host.h"
#include "show/output.h"
#include "verbs/verbs.h"

namespace {

using devhost::HostPlan;
using devhost::PlannedTable;

struct ServeOptions : DataOptions {
  devhost::HostOptions host;
  bool check = false;
};

Json PlanJson(const HostPlan& plan) {
  Json tables = Json::array();
  for (const PlannedTable& table : plan.tables) {
    tables.push_back({{"table", table.record->name},
                      {"key", table.key},
                      {"slots", table.image.slots},
                      {"rows", table.image.rows},
                      {"bytes", table.Segment().size},
                      {"file", table.image.has_file ? Json(table.image.file) : Json()}});
  }
  return {{"queue_key", plan.queue_key}, {"tables", std::move(tables)}};
}

void SayWhatStartsEmpty(const HostPlan& plan) {
  std::string missing;
  for (const PlannedTable& table : plan.tables) {
    if (table.image.has_file || table.image.slots == 0) continue;
    missing += (missing.empty() ? "" : ", ") + table.image.file + " for " + table.record->name;
  }
  if (!missing.empty()) Say("these tables start empty, there is no " + missing);
}

void Print(const ServeOptions& options, const HostPlan& plan, bool ready) {
  SayWhatStartsEmpty(plan);
  if (options.json) {
    Json json = {{"ready", ready},
                 {"home", std::filesystem::canonical(options.home).string()},
                 {"pid", getpid()}};
    json.update(PlanJson(plan));
    if (!ready) json["refusals"] = plan.refusals;
    PrintJsonLine(json);
    return;
  }
  if (plan.refusals.empty()) {
    Json rows = PlanJson(plan)["tables"];
    rows.push_back({{"table", "queue"}, {"key", plan.queue_key}});
    PrintTable(rows, {{"TABLE", "/table"},
                      {"KEY", "/key"},
                      {"SLOTS", "/slots"},
                      {"ROWS", "/rows"},
                      {"BYTES", "/bytes"}});
    if (ready) PrintLine("ready");
  }
  for (const std::string& refusal : plan.refusals) Say(refusal);
}

ExitCode CheckHome(const ServeOptions& options) {
  const HostPlan plan = devhost::PlanHost(options.home, options.host.replace);
  Print(options, plan, false);
  return plan.refusals.empty() ? kDone : kFindings;
}

ExitCode Serve(const ServeOptions& options) {
  RequireHome(options.home);
  if (options.check) return CheckHome(options);
  std::signal(SIGPIPE, SIG_IGN);  // a reader that goes away must not leave the tables behind
  devhost::Host host(options.home, options.host);
  host.Serve([&] {
    Print(options, host.plan(), true);
    FlushOutput();
  });
  return kDone;
}

Action DeclareServe(OptionList* list) {
  const auto options = std::make_shared<ServeOptions>();
  AddDataOptions(list, options.get());
  list->Flag("--replace", &options->host.replace,
             "Remove a queue and tables that are there already, whoever uses them");
  list->Flag("--check", &options->check, "Say what it would make or refuse, and make nothing");
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
    "could not say that it is ready, or lost its queue. With --check: 1 it would refuse to "
    "start.\n\n"
    "JSON: {ready, home, pid, queue_key, tables: [{table, key, slots, rows, bytes, file}]}, one\n"
    "line once ready; a file that is not there is null. With --check ready is false, and there "
    "are\n"
    "refusals: [text].",
    "voatm serve --home examples/home", DeclareServe};
