// What is found in text and what must not be, in the tables of tests/data/detection. There the
// found piece stands between « and », so a row says what is covered, and that nothing else is
// found.
#include "platform/detection.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <thread>

#include "tests/support/rows.h"

namespace marbelot {
namespace {

constexpr unsigned allKinds = DetectionKind::link | DetectionKind::phone |
                              static_cast<unsigned>(DetectionKind::address) |
                              static_cast<unsigned>(DetectionKind::date);
const std::map<std::string, unsigned> kindsByName = {
    {"link", static_cast<unsigned>(DetectionKind::link)},
    {"phone", static_cast<unsigned>(DetectionKind::phone)},
    {"address", static_cast<unsigned>(DetectionKind::address)},
    {"date", static_cast<unsigned>(DetectionKind::date)},
    {"any", allKinds}};

// Saturday, 21 November 2026, 10:00 UTC.
constexpr double thatMoment = 1795255200;

std::string unmarked(std::string text) {
  for (const std::string_view mark : {"«", "»"}) {
    for (std::size_t at = 0; (at = text.find(mark)) != std::string::npos;)
      text.erase(at, mark.size());
  }
  return text;
}

struct Found {
  std::string marked;  // the text with marks around what is found in it
  std::vector<std::string> values;
};

// What is found in the text, and that the first of it is found alone, too.
Found found(const std::string& text, const std::string& kind, const DetectionContext& context) {
  const std::vector<Detection> all = detect(text, kindsByName.at(kind), context);
  Found result;
  std::size_t at = 0;
  for (const Detection& each : all) {
    EXPECT_TRUE(each.range.start >= at && each.range.end() <= text.size()) << text;
    result.marked += text.substr(at, each.range.start - at) + "«" +
                     text.substr(each.range.start, each.range.length) + "»";
    at = each.range.end();
    result.values.push_back(each.value);
  }
  result.marked += text.substr(at);
  const auto first = firstDetection(text, kindsByName.at(kind), context);
  EXPECT_EQ(first.has_value(), !all.empty()) << text;
  if (first && !all.empty()) {
    EXPECT_EQ(first->range, all.front().range) << text;
  }
  return result;
}

std::string datesIn(const std::string& text, const DetectionContext& context) {
  std::string values;
  for (const std::string& value : found(text, "date", context).values)
    values += (values.empty() ? "" : " ") + value;
  return values;
}

class DetectionTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    setenv("TZ", "UTC", 1);
    tzset();
  }
};

TEST_F(DetectionTest, FindsWhatIsThereAndNothingElse) {
  for (const Row& row : rowsOf("detection/finds.tsv")) {
    const Found all = found(unmarked(row[2]), row[0], {thatMoment, row[1]});
    EXPECT_EQ(all.marked, row[2]) << row;
    EXPECT_EQ(all.values, std::vector(row.cells.begin() + 3, row.cells.end())) << row;
  }
  EXPECT_TRUE(detect("http://example.com tomorrow", 0).empty());
}

TEST_F(DetectionTest, FindsWhatAmericansWrite) {
  const DetectionContext american{thatMoment, "US", "en"};
  for (const Row& row : rowsOf("detection/dates.txt"))
    EXPECT_EQ(datesIn(row[0], american), row[1]) << row;
  for (const std::string kind : {"address", "link"}) {
    for (const Row& row : rowsOf("detection/" + kind + (kind == "link" ? "s.txt" : "es.txt")))
      EXPECT_EQ(found(unmarked(row[0]), kind, american).marked, row[0]) << row;
  }
}

// Dates in other languages; and where the night of 8 March 2026 has no two o'clock in New York, and
// that of 1 November has it twice.
TEST_F(DetectionTest, FindsDatesElsewhere) {
  for (const Row& row : rowsOf("detection/dates-elsewhere.tsv")) {
    setenv("TZ", row[0].c_str(), 1);
    EXPECT_EQ(datesIn(row[4], {std::stod(row[1]), row[2], row[3]}), row[5]) << row;
  }
  setenv("TZ", "UTC", 1);
}

TEST_F(DetectionTest, FindsPastLongPlainText) {
  // Beyond the stretch that is looked at in one go, and across its edge.
  for (const std::size_t distance : {65500u, 65530u, 65536u, 65540u, 200000u}) {
    std::string text;
    while (text.size() < distance) text += "plain words ";
    text.resize(distance);
    text += " http://example.com/a 202-555-0123 Hauptstraße 12 tomorrow";
    const auto all = detect(text, allKinds, {thatMoment, "US"});
    ASSERT_EQ(all.size(), 4u) << distance;
    EXPECT_EQ(all[0].range.start, distance + 1);
    EXPECT_EQ(all[1].value, "+12025550123");
  }
}

TEST_F(DetectionTest, ManyThreadsAgree) {
  const std::string text = "bücher.de 202-555-0123 5 Main Street tomorrow";
  std::vector<std::vector<std::string>> results(4);
  std::vector<std::thread> threads;
  for (auto& result : results)
    threads.emplace_back([&] { result = found(text, "any", {thatMoment, "US"}).values; });
  for (std::thread& thread : threads) thread.join();
  for (const auto& result : results) {
    EXPECT_EQ(result, (std::vector<std::string>{"http://xn--bcher-kva.de", "+12025550123",
                                                "5 Main Street", "2026-11-22"}));
  }
}

}  // namespace
}  // namespace marbelot
