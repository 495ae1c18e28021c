#include <gtest/gtest.h>

#include "voatmutil_testing.h"

namespace doubles = voatmutil_testing;

namespace {

// Both property tables are searched with one count: the shorter has free slots behind its rows.
TEST(Doubles, PropertyTablesHaveOneCount) {
  doubles::Traces traces;
  doubles::Tables tables(traces.debug());
  VoATMUtil& util = tables.util();
  for (const int number : {7, 8}) {
    tables.Add(doubles::Row<VoAtmActionProperty>({{&VoAtmActionProperty::RecordId, number},
                                                  {&VoAtmActionProperty::StatusCode, "CASHLOW"},
                                                  {&VoAtmActionProperty::ActionFlag, 'Y'}}));
    EXPECT_EQ(util.MaxAtmProperty, number - 6);
    EXPECT_EQ(util.getAtmPropertyCount(), 0);
  }
  tables.Add(doubles::Row<VoAtmProperty>({{&VoAtmProperty::RecordId, 5}}));
  EXPECT_EQ(util.MaxAtmProperty, 2);
  EXPECT_EQ(util.GetAtmPropertyCount(), 1);
  EXPECT_EQ(util.GetAtmActionPropertyCount(), 2);

  VoAtmProperty property = {};
  EXPECT_EQ(util.ReadAtmProperty("I", "G", "A", 10000, 0, 978, &property), 1);
  EXPECT_EQ(property.RecordId, 5);
  EXPECT_EQ(property.PropertySwitch7, 'N');
  EXPECT_EQ(traces.Take().find("7 InstTerminalGroup[I] "), 0U);
  EXPECT_EQ(traces.text(), "");
}

TEST(Doubles, RowsAreWhatIsNamed) {
  doubles::Tables tables(nullptr);
  tables.Add(doubles::Row<AtmMemoryTable>(
      {{&AtmMemoryTable::AtmId, "A"}, {&AtmDetailBlock::GroupingKey, "BRANCH"}}));
  EXPECT_EQ(tables.util().GetAtmCount("BRANCH"), 1);
  tables.Add(doubles::Row<AtmFit>({{&AtmFit::MatchKey1, "I"}, {&AtmFit::IndirectNextState, 'G'}}));
  EXPECT_EQ(tables.util().GetFitCount("I", "any", "any"), 1);
  char state[8];
  EXPECT_EQ(tables.util().ReadIndirectState("", "", "9780", state), 1);
  EXPECT_STREQ(state, "G");

  using StatusField = doubles::Field<VoAtmStatus>;
  EXPECT_NO_THROW(StatusField(&VoAtmStatus::StatusCode, "TEN_LETTER"));
  EXPECT_THROW(StatusField(&VoAtmStatus::StatusCode, "ELEVEN_LETT"), std::runtime_error);
}

TEST(Doubles, AHomeLeavesNothing) {
  std::string inner;
  {
    const doubles::Home outer;
    {
      const doubles::Home home;
      inner = home.path();
      home.Write("cfg/deep/a.cfg", "A 1\n");
      EXPECT_EQ(home.Read("cfg/deep/a.cfg"), "A 1\n");
      EXPECT_EQ(getenv("VODIR_HOME"), inner);
    }
    EXPECT_EQ(getenv("VODIR_HOME"), outer.path());
  }
  EXPECT_EQ(getenv("VODIR_HOME"), nullptr);
  EXPECT_FALSE(std::filesystem::exists(inner));
}

}  // namespace
