#include "output/values.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <sstream>

#include "canned_entries.h"
#include "output/table.h"

namespace orx::orxmaint {
namespace {

TEST(ValuesTest, LocalTimeIsIsoInTheLocalZoneAndADashForNothing) {
    ::setenv("TZ", "UTC", 1);
    ::tzset();
    EXPECT_EQ(LocalTime(test::kNoonMs), "2024-05-01T12:00:00");
    EXPECT_EQ(LocalTime(test::kNoonMs + 999), "2024-05-01T12:00:00");
    ::setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    ::tzset();
    EXPECT_EQ(LocalTime(test::kNoonMs), "2024-05-01T14:00:00");
    EXPECT_EQ(LocalTime(0), "-");
}

TEST(ValuesTest, LatencyKeepsThreeSignificantFiguresWithAFittingUnit) {
    EXPECT_EQ(Latency(0), "0 us");
    EXPECT_EQ(Latency(999), "999 us");
    EXPECT_EQ(Latency(1000), "1.00 ms");
    EXPECT_EQ(Latency(1250), "1.25 ms");
    EXPECT_EQ(Latency(999994), "999.99 ms");
    EXPECT_EQ(Latency(999995), "1.00 s");  // not "1000.00 ms"
    EXPECT_EQ(Latency(2500000), "2.50 s");
}

TEST(TableTest, AlignsColumnsByCharactersWithoutTrailingBlanks) {
    Table table({{"NAME"}, {"COUNT", Table::Align::kRight}, {"NOTE"}});
    table.AddRow({"radar", "7", "ok"});
    table.AddRow({"fusión", "1234"});  // one cell short, and a two-byte character
    std::ostringstream out;
    table.Print(out);
    EXPECT_EQ(out.str(),
              "NAME    COUNT  NOTE\n"
              "radar       7  ok\n"
              "fusión   1234\n");
    EXPECT_EQ(DisplayWidth("fusión"), 6U);
}

}  // namespace
}  // namespace orx::orxmaint
