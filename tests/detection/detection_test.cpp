// What is found in text and what must not be. In the tables the found piece stands between « and »,
// so a case says what is covered, what value it has, and that nothing else is found.
#include "platform/detection.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <thread>

namespace marbelot {
namespace {

struct Case {
  std::string marked;  // the text with « and » around what is to be found
  std::vector<std::string> values = {};
};

constexpr unsigned allKinds = DetectionKind::link | DetectionKind::phone |
                              static_cast<unsigned>(DetectionKind::address) |
                              static_cast<unsigned>(DetectionKind::date);

// Saturday, 21 November 2026, 10:00 UTC.
constexpr double thatMoment = 1795255200;

std::string unmarked(const std::string& marked) {
  std::string text;
  for (std::size_t i = 0; i < marked.size(); ++i) {
    if (marked.compare(i, 2, "«") == 0 || marked.compare(i, 2, "»") == 0) {
      ++i;
    } else {
      text += marked[i];
    }
  }
  return text;
}

void expectFound(const Case& expected, unsigned kinds, const std::string& region) {
  const std::string text = unmarked(expected.marked);
  const std::vector<Detection> all = detect(text, kinds, {thatMoment, region});
  std::string marked;
  std::vector<std::string> values = {};
  std::size_t at = 0;
  for (const Detection& found : all) {
    ASSERT_GE(found.range.start, at) << text;
    ASSERT_LE(found.range.end(), text.size()) << text;
    marked += text.substr(at, found.range.start - at) + "«" +
              text.substr(found.range.start, found.range.length) + "»";
    at = found.range.end();
    values.push_back(found.value);
  }
  EXPECT_EQ(marked + text.substr(at), expected.marked);
  EXPECT_EQ(values, expected.values) << text;
  const std::optional<Detection> first = firstDetection(text, kinds, {thatMoment, region});
  ASSERT_EQ(first.has_value(), !all.empty()) << text;
  if (first) {
    EXPECT_EQ(first->range, all.front().range) << text;
  }
}

void expectAll(const std::vector<Case>& cases, DetectionKind kind, const std::string& region) {
  for (const Case& expected : cases) {
    SCOPED_TRACE(region + ": " + expected.marked);
    expectFound(expected, static_cast<unsigned>(kind), region);
  }
}

class DetectionTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    setenv("TZ", "UTC", 1);
    tzset();
  }
};

TEST_F(DetectionTest, LinksWithScheme) {
  expectAll(
      {
          {"see «http://example.com».", {"http://example.com"}},
          {"«HTTPS://Example.com/Path?q=1&r=a.b#frag»!",
           {"https://Example.com/Path?q=1&r=a.b#frag"}},
          {"(«https://en.wikipedia.org/wiki/Set_(mathematics)»)",
           {"https://en.wikipedia.org/wiki/Set_(mathematics)"}},
          {"[text](«https://example.com/a»)more", {"https://example.com/a"}},
          {"<«https://example.com/a_b»>, \"«http://a.de/»\"",
           {"https://example.com/a_b", "http://a.de/"}},
          {"'«http://example.com/it»'s' **«http://example.com»**",
           {"http://example.com/it", "http://example.com"}},
          {"«http://localhost:8080/x» «https://user:pw@host.example:444/p?x»,",
           {"http://localhost:8080/x", "https://user:pw@host.example:444/p?x"}},
          {"«http://127.0.0.1:3000» «http://[2001:db8::1]:80/a» http://[zz]/ http://1.2.3",
           {"http://127.0.0.1:3000", "http://[2001:db8::1]:80/a"}},
          {"«https://bücher.example/straße»", {"https://xn--bcher-kva.example/stra%C3%9Fe"}},
          {"请看«https://example.com/a»，谢谢。", {"https://example.com/a"}},
          {"“«https://example.com/x»”", {"https://example.com/x"}},
          {"«http://example.com/{id}»|", {"http://example.com/%7Bid%7D"}},
          {"«ftp://ftp.example.org/pub» «ssh://git@host/repo.git» «file:///etc/hosts» "
           "«tel:+1-202-555-0123»",
           {"ftp://ftp.example.org/pub", "ssh://git@host/repo.git", "file:///etc/hosts",
            "tel:+1-202-555-0123"}},
          {"«mailto:a.b@example.com?subject=x%20y», «magnet:?xt=urn:btih:abc»",
           {"mailto:a.b@example.com?subject=x%20y", "magnet:?xt=urn:btih:abc"}},
          {"https://example..com http://a.example..com/x mailto:a@example..com «http://a.com»... "
           "«http://b.de»...and",
           {"http://a.com", "http://b.de"}},
          {"http:// https://... http://. file:// C:\\x std::vector a:b note: http:/x "
           "$scheme://host"},
      },
      DetectionKind::link, "US");
}

TEST_F(DetectionTest, LinksWithoutScheme) {
  expectAll(
      {
          {"go to «example.com/x», then «www.example.co.uk».",
           {"http://example.com/x", "http://www.example.co.uk"}},
          {"«Example.com» «EXAMPLE.ORG» «sub.a-b.example.de:8080/?q»",
           {"http://Example.com", "http://EXAMPLE.ORG", "http://sub.a-b.example.de:8080/?q"}},
          {"ends in «example.com»? («example.com/(a)») \"«example.net»\" «example.com».",
           {"http://example.com", "http://example.com/(a)", "http://example.net",
            "http://example.com"}},
          {"请看«example.com»的网站", {"http://example.com"}},
          {"«пример.рф» und «münchen.de»",
           {"http://xn--e1afmkfd.xn--p1ai", "http://xn--mnchen-3ya.de"}},
          {"«www.foo.rs» «docs.rs/tokio» «repubblica.it» «youtu.be/xyz» «t.me/joe» «bbc.com.pl»",
           {"http://www.foo.rs", "http://docs.rs/tokio", "http://repubblica.it",
            "http://youtu.be/xyz", "http://t.me/joe", "http://bbc.com.pl"}},
          {"«192.168.1.1:8080» «10.0.0.1/admin» but 10.0.0.0/8 and 192.168.1.1",
           {"http://192.168.1.1:8080", "http://10.0.0.1/admin"}},
          {"file.name main.cpp e.g.this README.md 1.2.3 foo.bar() System.out.println node.js "
           "end.Start"},
          {"lib.rs run.sh a.py libx.so x.zip obj.id logger.info( np.int Safari.app i.e.to go.mod "
           "do.it"},
          {"the end.It was B.Sc. Ph.D U.S.A. 3.5.de foo..com a.b.c localhost:8080 .com example. "
           "com"},
          {"/usr/lib/foo.com C:\\a\\foo.com $foo.com --foo.com x@ @example.com std::foo.com"},
      },
      DetectionKind::link, "US");
}

TEST_F(DetectionTest, Mail) {
  expectAll(
      {
          {"write to «john.doe+tag@example.co.uk», or <«a_b@x.io»>.",
           {"mailto:john.doe+tag@example.co.uk", "mailto:a_b@x.io"}},
          {"'«me@example.com»' ...«x@sub.example.name» «info@bücher.de»",
           {"mailto:me@example.com", "mailto:x@sub.example.name", "mailto:info@xn--bcher-kva.de"}},
          {"git@github.com:user/repo.git a@b foo@1.2.3 @decorator x@y.cpp user.@example.com "
           "icon@2x.png"},
      },
      DetectionKind::link, "US");
}

TEST_F(DetectionTest, Phones) {
  expectAll(
      {
          {"call «202-555-0123» or «(202) 555-0123», «+49 30 901820».",
           {"+12025550123", "+12025550123", "+4930901820"}},
          {"«+1 (415) 555-2671» Tel:«415.555.2671» Room 12 «202-555-0123» x5",
           {"+14155552671", "+14155552671", "+12025550123"}},
          {"«202-555-0123» «202-555-0124»\n«2025550125»",
           {"+12025550123", "+12025550124", "+12025550125"}},
          {"phone no. «202 555 0123»; «011 49 30 901820»", {"+12025550123", "+4930901820"}},
          {"«202\u2011555\u20110123» «+44\u00A020 7946 0958»", {"+12025550123", "+442079460958"}},
          // As nobody's number is written, but written as one.
          {"«(555) 123-4567» «555-123-4567», («212-055-0123»)",
           {"+15551234567", "+15551234567", "+12120550123"}},
          {"order 555-123-4567, 155-123-4567, 555.123.4567, 555 123 4567, $555-123-4567, "
           "555-123-4567-8, 555-123-456, 1.2.3 555-12-4567"},
          {"2026-05-03 14:30 03.05.2026 12/25/2026 192.168.100.200 10.0.19041.1 v4.155.552.671"},
          {"ISBN 978-3-16-148410-0, 0-306-40615-2, $202 555 0123, 1,202,555,0123, 2025550123 €"},
          {"Order 2025550123, #202-555-0123, tracking number: 202 555 0123, id=2025550123x"},
          {"555-0100 1234567890 1700000000 12345678901234567890 3.2025550123 a2025550123 "
           "202-555-01234"},
          {"4111 1111 1111 1111, 114-3941689-8772232, 123-45-6789, 202-555-0123-77, "
           "20:25:55.501234"},
      },
      DetectionKind::phone, "US");
  expectAll({{"Tel. «030 901820», «0800 555 1234» oder «030/901820» und «(030) 901820»",
              {"+4930901820", "+498005551234", "+4930901820", "+4930901820"}},
             {"am 03.05.2026 um 14.30 Uhr, 10115 Berlin, 1.234.567,89 EUR, 12345678"}},
            DetectionKind::phone, "DE");
  expectAll({{"«01 42 68 53 00» «01.42.68.53.00»", {"+33142685300", "+33142685300"}}},
            DetectionKind::phone, "FR");
  expectAll({{"«(01999) 567890» «020-1946-0958»", {"+441999567890", "+442019460958"}},
             {"Invoice 020-1946-0958, 0-306-40615-2, 2026-11-21, (2026) 1234-5678"}},
            DetectionKind::phone, "GB");
  expectAll({{"«020 7946 0958» «+61 2 9374 4000»", {"+442079460958", "+61293744000"}}},
            DetectionKind::phone, "GB");
}

TEST_F(DetectionTest, Addresses) {
  expectAll(
      {
          {"at «1600 Pennsylvania Avenue NW, Washington, DC 20500».",
           {"1600 Pennsylvania Avenue NW, Washington, DC 20500"}},
          {"Joe Doe\n«350 Fifth Avenue, 34th Floor\nNew York, NY 10118-0110\nUSA»\n",
           {"350 Fifth Avenue, 34th Floor, New York, NY 10118-0110, USA"}},
          {"«123 Main St. Apt 4B, Springfield, IL 62701» is home",
           {"123 Main St. Apt 4B, Springfield, IL 62701"}},
          {"«1 Infinite Loop, Cupertino, California 95014»",
           {"1 Infinite Loop, Cupertino, California 95014"}},
          {"«500 El Camino Real, Santa Clara, CA 95050» «100 Main Street, Springfield, IL»",
           {"500 El Camino Real, Santa Clara, CA 95050", "100 Main Street, Springfield, IL"}},
          {"«5 Main Street» is old. Live at «12 St. John's Rd».",
           {"5 Main Street", "12 St. John's Rd"}},
          {"«221B Baker Street, London»\n", {"221B Baker Street, London"}},
          {"«10 Downing Street, London SW1A 2AA, United Kingdom»",
           {"10 Downing Street, London SW1A 2AA, United Kingdom"}},
          {"«Flat 3, 12 High Street\nAmbleside\nCumbria\nLA22 9AN»",
           {"Flat 3, 12 High Street, Ambleside, Cumbria, LA22 9AN"}},
          {"«12/34 Smith St, Richmond VIC 3121» «PO Box 123, Sydney NSW 2001»",
           {"12/34 Smith St, Richmond VIC 3121", "PO Box 123, Sydney NSW 2001"}},
          {"Wir wohnen in der «Hauptstraße 12, 10115 Berlin».", {"Hauptstraße 12, 10115 Berlin"}},
          {"«Karl-Marx-Allee 3a\n10178 Berlin», «Lange Str. 5-7», «Alte Schönhauser Straße 12»",
           {"Karl-Marx-Allee 3a, 10178 Berlin", "Lange Str. 5-7", "Alte Schönhauser Straße 12"}},
          {"«Am Markt 1, D-60311 Frankfurt am Main, Germany» «Postfach 12 34, 10115 Berlin»",
           {"Am Markt 1, D-60311 Frankfurt am Main, Germany", "Postfach 12 34, 10115 Berlin"}},
          {"«Unter den Linden 77, 10117 Berlin» «Bahnhofstrasse 1, 8001 Zürich»",
           {"Unter den Linden 77, 10117 Berlin", "Bahnhofstrasse 1, 8001 Zürich"}},
          {"«12 rue de la Paix, 75002 Paris» «8 bis, avenue d'Alsace\n67000 Strasbourg Cedex 02»",
           {"12 rue de la Paix, 75002 Paris", "8 bis, avenue d'Alsace, 67000 Strasbourg Cedex 02"}},
          {"10 Best Things About Wall Street, 2008 Wall Street crash, 9 Wall Street Journal "
           "stories"},
          {"12 Main 12 Main, Chapter 5 The Way, in 3 place to go, 5th Avenue, $5 Main Street, 3.5 "
           "Oak Rd"},
          {"On May 12, 2026 we met, Version 12, 10115 items, Windows 11 Home, iPhone 15 Pro Max, "
           "Weg 5"},
          {"12 Monkeys, OR 12 Angry Men, IN color. 100 Python, SQL and C, 42 Questions. Step 5 "
           "Way"},
      },
      DetectionKind::address, "US");
}

TEST_F(DetectionTest, Dates) {
  expectAll(
      {
          {"see you «tomorrow at 5pm», or «tonight»", {"2026-11-22T17:00", "2026-11-21T22:00"}},
          {"«Fri 3 May, 14:30–16:00» or «Fri., May 3»", {"2024-05-03T14:30", "2024-05-03"}},
          // A weekday that is given holds; without one, or with none near, the next such day.
          {"«Friday, May 3rd at 2:30 PM», «Thu 19 Nov», «Mon 4 Jan», «Mon, Feb 29»",
           {"2024-05-03T14:30", "2026-11-19", "2027-01-04", "2028-02-29"}},
          {"«Sat, 21 Nov 2026 08:00:00 +0000 (UTC)», «2026-11-21 08:00:00 +0200»",
           {"2026-11-21T08:00:00+00:00", "2026-11-21T08:00:00+02:00"}},
          {"«21 Nov 2026 08:00 GMT+1», «9:30 UTC-5:30», «8:00 UTC−03:00», «9 pm GMT»+",
           {"2026-11-21T08:00+01:00", "2026-11-22T09:30-05:30", "2026-11-22T08:00-03:00",
            "2026-11-21T21:00Z"}},
          {"«Sat Nov 21 08:00:00 2026 +0200» «Sat Nov 21 08:00:00 UTC 2020» «Nov 21 08:00:00» web",
           {"2026-11-21T08:00:00+02:00", "2020-11-21T08:00:00Z", "2026-11-21T08:00:00"}},
          {"«2026-11-21 08:00:00 -05:00» «2026-11-21 08:00 -0930» «2026-11-21 08:00 -10:00»",
           {"2026-11-21T08:00:00-05:00", "2026-11-21T08:00-09:30", "2026-11-21T08:00"}},
          {"«2026-11-21T08:00:00» +2000, «2026-11-21 08:00:00» +02001 «2026-11-21 08:00» + 0200",
           {"2026-11-21T08:00:00", "2026-11-21T08:00:00", "2026-11-21T08:00"}},
          {"«2026-11-21T08:00Z» «2026-05-03 14:30:15+02:00» «2026/5/3»",
           {"2026-11-21T08:00Z", "2026-05-03T14:30:15+02:00", "2026-05-03"}},
          {"«in two weeks», «in 3 hours», «3 days ago», «next Monday», «next week»",
           {"2026-12-05", "2026-11-21T13:00", "2026-11-18", "2026-11-23", "2026-11-28"}},
          {"«3/5/2026», «12/25/26», «13/5/2026», «May 3rd», «May 3, 2025 at noon»",
           {"2026-03-05", "2026-12-25", "2026-05-13", "2027-05-03", "2025-05-03T12:00"}},
          {"«3rd of May 2026» «3-May-2026» «3–5 May 2026» «May 3-5, 2026» «Dec. 12» «Nov 21»",
           {"2026-05-03", "2026-05-03", "2026-05-03", "2026-05-03", "2026-12-12", "2026-11-21"}},
          {"«5 o'clock», «5:30 p.m.», «9 AM EST», «2–4 pm»",
           {"2026-11-21T17:00", "2026-11-21T17:30", "2026-11-22T09:00-05:00", "2026-11-21T14:00"}},
          {"at «14:30», «5pm on Friday», «Sunday at 8»",
           {"2026-11-21T14:30", "2026-11-27T17:00", "2026-11-22T08:00"}},
          {"«tomorrow evening at 8», «this evening», the «day after tomorrow»",
           {"2026-11-22T20:00", "2026-11-21T20:00", "2026-11-23"}},
          {"«Feb 29» «3/5 at 5pm» «midnight tomorrow»",
           {"2028-02-29", "2027-03-05T17:00", "2026-11-22T00:00"}},
          {"you may sat on the sun and march on; may 5 people do so; the second of five"},
          {"1.2.3 v10.4.22 16:9 4:3 1/2 3/4 2026 2026-13-45 31/31/2026 192.168.1.1 12:99 25:00 "
           "10:30:99"},
          {"ratio 16:10, 3 days, 24/7, 1.5.2.0, 2026-05-03-77, May, June, $5 am, a14:30, next "
           "to, today's"},
          {"Feb 30, 2026 and 30.02.2026 and May 3.5 and Mark 5 and 5 a month"},
      },
      DetectionKind::date, "US");
  expectAll(
      {{"am «3. Mai 2026», «3.5.2026», «03.05.26 um 14 Uhr», «3.5. um 14:30 Uhr», «morgen um 9»",
        {"2026-05-03", "2026-05-03", "2026-05-03T14:00", "2027-05-03T14:30", "2026-11-22T09:00"}},
       {"«3/5/2026» «Freitag, den 4. Dezember, 14.30 Uhr» Guten Morgen, um «9 Uhr»",
        {"2026-05-03", "2026-12-04T14:30", "2026-11-22T09:00"}},
       {"Version 1.2.26, 3.5 Prozent, 7 am Markt, so 5, do 3"}},
      DetectionKind::date, "DE");
  expectAll({{"«vendredi 4 décembre 2026 à 14h30», «1er mai», «demain»",
              {"2026-12-04T14:30", "2027-05-01", "2026-11-22"}}},
            DetectionKind::date, "FR");
}

// The values of all that is found, with blanks between.
std::string valuesIn(const std::string& text, DetectionKind kind, const DetectionContext& context) {
  std::string values;
  for (const Detection& found : detect(text, static_cast<unsigned>(kind), context)) {
    values += (values.empty() ? "" : " ") + found.value;
  }
  return values;
}

// The row's text with marks around what is found in it.
std::string marked(const std::string& row, DetectionKind kind) {
  const std::string text = unmarked(row);
  std::string result;
  std::size_t at = 0;
  for (const Detection& found :
       detect(text, static_cast<unsigned>(kind), {thatMoment, "US", "en"})) {
    result += text.substr(at, found.range.start - at) + "«" +
              text.substr(found.range.start, found.range.length) + "»";
    at = found.range.end();
  }
  return result + text.substr(at);
}

// The lines of a file in tests/data/detection, without its headings.
std::vector<std::string> rowsOf(const std::string& name) {
  std::ifstream file(MARBELOT_TEST_DATA "/detection/" + name);
  std::vector<std::string> rows;
  for (std::string row; std::getline(file, row);) {
    if (row.starts_with("# ")) continue;
    // A line end of the text is written as in C.
    for (std::size_t at = 0; (at = row.find("\\n", at)) != std::string::npos; ++at) {
      row.replace(at, 2, "\n");
    }
    rows.push_back(row);
  }
  return rows;
}

TEST_F(DetectionTest, DatesInEnglish) {
  const std::vector<std::string> rows = rowsOf("dates.txt");
  for (const std::string& row : rows) {
    const std::string text = row.substr(0, row.find('\t'));
    EXPECT_EQ(valuesIn(text, DetectionKind::date, {thatMoment, "US", "en"}),
              row.substr(text.size() + 1))
        << text;
  }
  EXPECT_GT(rows.size(), 500u);
}

TEST_F(DetectionTest, AddressesAndLinks) {
  const std::vector<std::string> addresses = rowsOf("addresses.txt"), links = rowsOf("links.txt");
  for (const std::string& row : addresses) EXPECT_EQ(marked(row, DetectionKind::address), row);
  for (const std::string& row : links) EXPECT_EQ(marked(row, DetectionKind::link), row);
  EXPECT_GT(addresses.size() + links.size(), 400u);
}

TEST_F(DetectionTest, DatesWithNamesOfOtherLanguages) {
  const struct {
    const char *language, *text, *values;
  } cases[] = {
      {"es", "viernes 4 de diciembre de 2026, 18:00", "2026-12-04T18:00"},
      {"it", "lunedì 7 dicembre 2026", "2026-12-07"},
      {"nl", "3 maart 2027 om 14:30", "2027-03-03"},
      {"pl", "5 grudnia 2026", "2026-12-05"},
      {"ru", "пятница, 4 декабря 2026", "2026-12-04"},
      {"ja", "2026年12月4日（金）", "2026-12-04"},
      {"en", "3 maart 2027 lunedì", ""},
  };
  for (const auto& [language, text, values] : cases) {
    EXPECT_EQ(valuesIn(text, DetectionKind::date, {thatMoment, "IT", language}), values) << text;
  }
}

// The night of 8 March 2026 has no two o'clock in New York, that of 1 November has it twice.
TEST_F(DetectionTest, DatesAcrossAChangeOfTheClock) {
  setenv("TZ", "America/New_York", 1);
  const double beforeSpring = 1772931600, beforeAutumn = 1793494800;  // 20:00 and 21:00 local
  const struct {
    double now;
    const char *text, *values;
  } cases[] = {
      {beforeSpring, "in 12 hours", "2026-03-08T09:00"},
      {beforeSpring, "in 2 days and 6 hours", "2026-03-10T03:00"},
      {beforeSpring, "tomorrow at 9", "2026-03-08T09:00"},
      {beforeSpring, "a week from today", "2026-03-14"},
      {beforeSpring, "3 PM ET on Sunday", "2026-03-08T15:00-04:00"},
      {beforeAutumn, "in 12 hours", "2026-11-01T08:00"},
      {beforeAutumn, "Sunday at 8 am", "2026-11-01T08:00"},
      {beforeAutumn, "10 am Eastern tomorrow", "2026-11-01T10:00-05:00"},
  };
  for (const auto& [now, text, values] : cases) {
    EXPECT_EQ(valuesIn(text, DetectionKind::date, {now, "US", "en"}), values) << text;
  }
  setenv("TZ", "UTC", 1);
}

// Whole messages, all kinds at once: what the tables above keep apart must not get into each
// other's way.
TEST_F(DetectionTest, Messages) {
  const std::vector<Case> american = {
      {"Let's meet at «7:30pm on Friday, December 4, 2026» at «221B Baker Street, London NW1 6XE».",
       {"2026-12-04T19:30", "221B Baker Street, London NW1 6XE"}},
      {"Moved to «Tue, Dec 1 from 2:00 PM to 3:30 PM EST», or «5 and 6 pm today»",
       {"2026-12-01T14:00-05:00", "2026-11-21T17:00"}},
      {"«Monday, November 30th at 10 a.m.» — call «1-800-555-0199» or «(212) 555-0147» ext. 12",
       {"2026-11-30T10:00", "+18005550199", "+12125550147"}},
      {"Order #123-4567890-1234567 shipped «11/21/2026», $1,234.56. UPS 1Z999AA10123456784",
       {"2026-11-21"}},
      {"Jane Roe\n«4321 Oak Ridge Dr.\nSuite 200\nAustin, TX 78701\nUnited States»\n«joe@a.org»",
       {"4321 Oak Ridge Dr., Suite 200, Austin, TX 78701, United States", "mailto:joe@a.org"}},
      {"«123 N. Main St., Apt. 4, New York, New York 10001, USA»; «1234 SW 5th Ave, Portland OR "
       "97204»",
       {"123 N. Main St., Apt. 4, New York, New York 10001, USA",
        "1234 SW 5th Ave, Portland OR 97204"}},
      {"«700 W Georgia St, Vancouver BC V7Y 1A1» «twitter.com/joe»'s",
       {"700 W Georgia St, Vancouver BC V7Y 1A1", "http://twitter.com/joe"}},
      {"I bought 3 apples and 12 Oranges. He ran 5 Miles. Chapter 12 Main Ideas, Section 3"},
      {"pip install foo==1.2.3 && src/main.cpp:12:5: use of undeclared identifier 'std::string'"},
      {"Room 5, Building 7, Floor 3. 24/7 support, 9-5 job, 50/50 split, score 3-2, 10:1 odds"},
      {"Version 2026.11.21 build 20261121, DOI 10.1000/182, arXiv:2101.12345, RFC 2822, "
       "3.14159265"},
      {"12 Angry Men Drive Home. 3 Doors Down Street Team. 24 Hour Party People, Manchester"},
      {"The 2 Best Place in Town, CA 90210 and 7 Wonders, Volume 2: OR 12345 and id:9876543210"},
      {"ls -l 644 1 root 4096 /dev/sda1 0x7fff5fbff8c8 00:1B:44:11:3A:B7 a1b2c3d4-0001-4000-8000"},
      {"{\"id\": 12345678, \"price\": 12.50, \"size\": [1024, 768], \"rgb\": \"#202555\"}"},
  };
  for (const Case& expected : american) expectFound(expected, allKinds, "US");
  const std::vector<Case> german = {
      {"«Mittwoch, 2. Dezember 2026 um 15 Uhr» in der «Goethestraße 5, 60313 Frankfurt am Main», "
       "Tel. "
       "«069/1234567» oder «0176 12345678»",
       {"2026-12-02T15:00", "Goethestraße 5, 60313 Frankfurt am Main", "+49691234567",
        "+4917612345678"}},
      {"Treffen «24.12. um 18 Uhr», «übermorgen früh», «nächsten Freitag», «in drei Tagen»",
       {"2026-12-24T18:00", "2026-11-23T09:00", "2026-11-27", "2026-11-24"}},
      {"Rechnung 2026-00123 vom «21.11.2026» über 1.234,56 €, IBAN DE89 3704 0044 0532 0130 00",
       {"2026-11-21"}},
      {"Max\n«Musterweg 7 b\n12345 Musterstadt\nDeutschland», «Industriestr. 10, D-70565 "
       "Stuttgart»",
       {"Musterweg 7 b, 12345 Musterstadt, Deutschland", "Industriestr. 10, D-70565 Stuttgart"}},
      {"Er ist 12 Jahre alt, wiegt 45,3 kg und wohnt «Am Alten Markt 3, 50667 Köln».",
       {"Am Alten Markt 3, 50667 Köln"}},
      {"Kontonummer 0123456789 BLZ 37040044, HRB 12345, USt-IdNr. DE123456789, Raum 12, Gleis 7"},
  };
  for (const Case& expected : german) expectFound(expected, allKinds, "DE");
  const std::vector<Case> british = {
      {"«Flat 2, 34 The Avenue, Ealing, London W13 8JR», tel «020 8998 1234»",
       {"Flat 2, 34 The Avenue, Ealing, London W13 8JR", "+442089981234"}},
      {"«3/5/26 at 18:00», «03/05/2026»; «5.30pm tomorrow»; £1,200 on 12 items at 3 for 2",
       {"2026-05-03T18:00", "2026-05-03", "2026-11-22T17:30"}},
      {"«Unit 4/12 George Street, Sydney NSW 2000»; «Level 3, 100 Collins St, Melbourne VIC 3000»",
       {"Unit 4/12 George Street, Sydney NSW 2000", "Level 3, 100 Collins St, Melbourne VIC 3000"}},
      {"«20 rue du 8 mai 1945, 69001 Lyon»; «3 place de la République 75011 Paris»",
       {"20 rue du 8 mai 1945, 69001 Lyon", "3 place de la République 75011 Paris"}},
  };
  for (const Case& expected : british) expectFound(expected, allKinds, "GB");
}

TEST_F(DetectionTest, Overlaps) {
  const std::vector<Case> cases = {
      // A link keeps what looks like a number or a date in it.
      {"«https://example.com/2026-05-03/202-555-0123» «202-555-0123»",
       {"https://example.com/2026-05-03/202-555-0123", "+12025550123"}},
      {"«tel:+12025550123», «tomorrow» at «5 Main Street, Springfield, IL 62701»",
       {"tel:+12025550123", "2026-11-22", "5 Main Street, Springfield, IL 62701"}},
      {"«12 May Street, London SW1A 2AA» «12 May»",
       {"12 May Street, London SW1A 2AA", "2027-05-12"}},
  };
  for (const Case& expected : cases) expectFound(expected, allKinds, "US");
  EXPECT_TRUE(detect("", allKinds).empty());
  EXPECT_TRUE(detect("http://example.com tomorrow", 0).empty());
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
  const auto values = [&] {
    std::string all;
    for (const Detection& found : detect(text, allKinds, {thatMoment, "US"}))
      all += found.value + ' ';
    return all;
  };
  std::vector<std::string> results(4);
  std::vector<std::thread> threads;
  for (std::string& result : results) threads.emplace_back([&] { result = values(); });
  for (std::thread& thread : threads) thread.join();
  for (const std::string& result : results) {
    EXPECT_EQ(result, "http://xn--bcher-kva.de +12025550123 5 Main Street 2026-11-22 ");
  }
}

}  // namespace
}  // namespace marbelot
