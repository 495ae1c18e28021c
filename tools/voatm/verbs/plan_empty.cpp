#include "verbs/plan_empty.h"

#include <cerrno>
#include <fstream>
#include <utility>
#include <vector>

#include "devhost/system_call.h"
#include "show/output.h"
#include "show/picture.h"

namespace {

std::string LabelOf(const EmptyCase& each) { return each.empty.empty() ? "none" : each.empty; }

std::string PercentOf(const EmptyCase& each) {
  return std::to_string(static_cast<int>(each.Share() * 100)) + " %";
}

Json JsonOf(const EmptySweep& sweep) {
  Json cases = Json::array();
  for (const EmptyCase& each : sweep.cases) {
    cases.push_back(
        {{"empty", each.empty}, {"paid", each.paid}, {"share", each.Share()}, {"lost", each.lost}});
  }
  return {{"amounts", sweep.amounts}, {"combinations", std::move(cases)}};
}

Picture PictureOf(const EmptySweep& sweep, const EmptyOutput& output) {
  Picture picture;
  picture.title = "What " + output.model + " pays as its cassettes run out";
  picture.about = {output.about,
                   "Each row takes some cassettes for empty; the amounts go from left to right. "
                   "A pointer that rests on a piece shows its amounts."};
  for (const Payment payment :
       {Payment::kPaid, Payment::kFallsShort, Payment::kRefused, Payment::kNotConfigured}) {
    picture.states.emplace_back(NameOf(payment));
  }
  picture.columns = sweep.amounts;
  picture.row_heading = "Empty";
  picture.note_heading = "Paid";
  picture.details_heading = "Amounts lost";
  for (const EmptyCase& each : sweep.cases) {
    Picture::Row row = {LabelOf(each), {}, PercentOf(each), RunsOf(each.lost, output.step)};
    for (const Payment fate : each.fates) row.cells.push_back(static_cast<std::size_t>(fate));
    picture.rows.push_back(std::move(row));
  }
  return picture;
}

void WriteFile(const std::string& path, const std::string& text) {
  std::ofstream stream(path);
  stream << text;
  if (stream.flush()) return;
  const int error = errno;
  throw devhost::SystemError(error, "cannot write " + path);
}

void PrintTable(const EmptySweep& sweep, int step) {
  TextTable table({{"EMPTY"}, {"PAID", true}, {"SHARE", true}, {"LOST"}});
  for (const EmptyCase& each : sweep.cases) {
    table.AddRow(
        {LabelOf(each), std::to_string(each.paid), PercentOf(each), RunsOf(each.lost, step)},
        each.paid == 0);
  }
  table.Print();
}

}  // namespace

ExitCode ShowEmpty(const EmptySweep& sweep, const EmptyOutput& output) {
  if (!output.page.empty()) WriteFile(output.page, PageOf(PictureOf(sweep, output)));
  output.json ? PrintJson(JsonOf(sweep)) : PrintTable(sweep, output.step);
  const std::size_t amounts = sweep.amounts.size();
  const auto paid = static_cast<std::size_t>(sweep.cases.front().paid);
  Say(std::to_string(amounts - paid) + " of " + std::to_string(amounts) +
      " amounts are not paid in full by all cassettes together");
  return paid == amounts ? kDone : kFindings;
}
