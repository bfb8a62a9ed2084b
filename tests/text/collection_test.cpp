#include "text/collection.h"

#include <gtest/gtest.h>

#include <random>

#include "platform/text.h"

namespace marbelot {
namespace {

TEST(Collection, KeepsWhatIsWorthKeepingAndJoinsIt) {
  Collection collection;
  EXPECT_FALSE(collection.removeLast());
  EXPECT_FALSE(collection.append(share(" \t\r\n\u2028")));
  EXPECT_TRUE(collection.append(share("a")));
  EXPECT_FALSE(collection.append(share("a")));
  EXPECT_TRUE(collection.append(share(" b\n")));
  EXPECT_TRUE(collection.append(share("a")));
  const struct {
    const char* key;
    const char* joined;
  } cases[] = {{"newline", "a\n b\n\na"},
               {"blank", "a\n\n b\n\n\na"},
               {"space", "a  b\n a"},
               {"comma", "a,  b\n, a"},
               {"something else", "a\n b\n\na"}};
  for (const auto& [key, joined] : cases) EXPECT_EQ(collection.joined(key), joined);
  EXPECT_TRUE(collection.removeLast());
  EXPECT_TRUE(collection.removeLast());
  EXPECT_EQ(collection.joined("blank"), "a");
  collection.clear();
  EXPECT_EQ(collection.joined("comma"), "");
  EXPECT_EQ(collection.characterCount("comma"), 0u);
}

// Characters can form across a separator and vanish into it; and counts kept from before a change
// must not outlive it.
TEST(Collection, CountsExactlyWithoutJoining) {
  // clang-format off
  const std::string pieces[] = {
      "a", "", "b\r", "\nc", "\r", "\u0301x", "é", "\u0600", "x\u0600", "\u200D", "\u200D\U0001F469", "🇩",
      "🇩🇪🇫", "\u0903"};
  // clang-format on
  std::mt19937 random(7);
  for (int round = 0; round < 300; ++round) {
    std::vector<SharedText> start(random() % 4);
    for (SharedText& piece : start) piece = share(pieces[random() % std::size(pieces)]);
    Collection collection(start);
    for (int step = 0; step < 12; ++step) {
      if (random() % 3 == 0) {
        collection.removeLast();
      } else {
        collection.append(share(pieces[random() % std::size(pieces)]));
      }
      if (random() % 4 == 0) {
        Collection copy = collection;
        copy.characterCount("space");
        collection.removeLast();
        collection.adoptCounts(copy);
      }
      for (const SeparatorDef& def : separatorDefs) {
        ASSERT_EQ(collection.characterCount(def.key),
                  text::characterCount(collection.joined(def.key)))
            << def.title;
      }
    }
  }
}

TEST(Collection, Titles) {
  EXPECT_EQ(collectionTitle(0), "Collect copies");
  EXPECT_EQ(collectionTitle(3), "Collect copies (3)");
  EXPECT_EQ(collectionSummary(1, 12), "1 pieces · 12 characters");
}

}  // namespace
}  // namespace marbelot
