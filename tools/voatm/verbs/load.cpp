// voatm load: a whole table from a seed file.
#include <algorithm>
#include <memory>
#include <string>

#include "devhost/seed.h"
#include "verbs/served_table.h"
#include "verbs/verbs.h"

namespace {

struct Options : ChangeOptions {
  std::string file;
};

ExitCode Load(const Options& options) {
  ServedTable served(options);
  const devhost::TableImage image = devhost::ReadSeed(
      *options.table, devhost::SeedPath(*options.table, options.file), served.slots());
  if (!image.has_file) throw std::runtime_error("there is no " + image.file);
  const std::size_t size = options.table->record_size;
  for (int slot = 0; slot < served.slots(); ++slot) {
    const char* const wanted = image.records.data() + static_cast<std::size_t>(slot) * size;
    served.Change(slot, [&](char* record) { std::copy_n(wanted, size, record); });
  }
  served.Report();
  return kDone;
}

Action Declare(OptionList* list) {
  const auto options = std::make_shared<Options>();
  AddTableArgument(list, &options->table);
  list->Text("FILE", "", &options->file,
             "A seed file or dump, or a directory that holds the table's")
      .Required();
  AddChangeOptions(list, options.get());
  return [options] { return RunUnlessRefused([&] { return Load(*options); }); };
}

}  // namespace

const Verb kLoad = {"load", "Load a table of voatm serve from a seed file or a dump",
                    "Makes the table what voatm serve would fill it with, slot after slot, each "
                    "under its lock: slots\n"
                    "without a row become free. The file is refused as a whole before anything is "
                    "written. Shows the\n"
                    "fields that change as voatm set does.\n\n"
                    "Exit status: 1 when a slot stays held, or the table is not "
                    "voatm serve's; the\n"
                    "slots before it are then written.\n\n"
                    "JSON: as that of voatm set.",
                    "voatm load fit atm_fit.json --home examples/home", Declare};
