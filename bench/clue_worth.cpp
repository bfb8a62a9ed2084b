// What each entry of the clue table is worth on snippets whose languages are known.
//
//   clue_worth [--misses] FOLDER…
//
// A folder holds one folder of files for each label: a language's ("cpp", "csharp" …, as in
// tests/data/snippets), or any other for texts that are no source; those whose label begins with
// "prose" are counted as prose. Told are the share named rightly of the files in which one of
// their language's signals stands, the prose taken for code, and then for each entry in how many
// files it stands, how many are only right because of it, and how many would be right without it.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "classification/classifier.h"
#include "classification/language_clues.h"
#include "classification/language_detector.h"
#include "classification/language_signals.h"
#include "platform/text.h"

namespace marbelot {
namespace {

namespace fs = std::filesystem;

const std::map<std::string, Language> labels = {{"php", Language::php},
                                                {"cpp", Language::cpp},
                                                {"c", Language::c},
                                                {"swift", Language::swift},
                                                {"python", Language::python},
                                                {"typescript", Language::typeScript},
                                                {"javascript", Language::javaScript},
                                                {"csharp", Language::cSharp},
                                                {"java", Language::java},
                                                {"go", Language::go},
                                                {"rust", Language::rust},
                                                {"ruby", Language::ruby},
                                                {"json", Language::json},
                                                {"shell", Language::shell},
                                                {"html", Language::html},
                                                {"css", Language::css},
                                                {"sql", Language::sql}};

struct Sample {
  std::string path, label, text;
  std::optional<Language> wanted;  // none where no signal of the language stands
  std::optional<std::string_view> named;
  bool byClues = false;  // nothing else decided
  ClueCounts counts;

  std::string_view trimmed() const { return text::trimmedBlanksAndNewlines(text); }
  bool isRight(std::optional<Language> language) const { return language == wanted; }
};

Sample readSample(const fs::path& path) {
  std::ifstream file(path);
  Sample sample{path.string(), path.parent_path().filename().string(), {}, {}, {}, false, {}};
  sample.text = text::sanitized({std::istreambuf_iterator<char>(file), {}});
  const std::string_view trimmed = sample.trimmed();
  const auto label = labels.find(sample.label);
  if (label != labels.end() && carriesSignal(label->second, trimmed)) sample.wanted = label->second;
  sample.named = detectLanguage(sample.text);
  sample.counts = countClues(leadingLines(trimmed));
  const auto likely = likeliest(sample.counts, weighClues(sample.counts), trimmed);
  sample.byClues = sample.named == (likely ? std::optional(languageName(*likely)) : std::nullopt);
  return sample;
}

std::vector<Sample> readSamples(const std::vector<std::string>& folders) {
  std::vector<Sample> samples;
  for (const std::string& folder : folders) {
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
      if (entry.is_regular_file()) samples.push_back(readSample(entry.path()));
    }
  }
  return samples;
}

struct Share {
  std::size_t right = 0, all = 0;
  void add(bool isRight) {
    right += isRight;
    ++all;
  }
  void print(const char* what) const {
    const double share =
        all == 0 ? 0 : 100.0 * static_cast<double>(right) / static_cast<double>(all);
    std::printf("%-28s %5zu of %5zu  %6.2f %%\n", what, right, all, share);
  }
};

void printShares(const std::vector<Sample>& samples, bool misses) {
  std::map<std::string, Share> byLanguage;
  Share all, prose, proseNamed;
  for (const Sample& sample : samples) {
    if (sample.label.starts_with("prose")) {
      prose.add(classify(sample.text) == ClipCategory::code);
      proseNamed.add(sample.named.has_value());
    }
    if (!sample.wanted) continue;
    const bool isRight = sample.named == languageName(*sample.wanted);
    all.add(isRight);
    byLanguage[sample.label].add(isRight);
    if (!isRight && misses) {
      std::printf("%s: %s\n", sample.path.c_str(),
                  std::string(sample.named.value_or("none")).c_str());
    }
  }
  for (const auto& [label, share] : byLanguage) share.print(label.c_str());
  all.print("named rightly");
  proseNamed.print("prose given a language");
  prose.print("prose taken for code");
}

struct Worth {
  std::size_t stands = 0, saves = 0, spoils = 0;
};

Worth worthOf(std::size_t clue, const std::vector<Sample>& samples) {
  Worth worth;
  for (const Sample& sample : samples) {
    if (!sample.byClues || sample.counts.clues[clue] == 0) continue;
    const auto likely = [&](std::size_t without) {
      return likeliest(sample.counts, weighClues(sample.counts, without), sample.trimmed());
    };
    const bool with = sample.isRight(likely(noClue)), without = sample.isRight(likely(clue));
    ++worth.stands;
    worth.saves += with && !without;
    worth.spoils += !with && without;
  }
  return worth;
}

void printWorths(const std::vector<Sample>& samples) {
  std::printf("\n%-28s %7s %7s %7s\n", "entry", "stands", "saves", "spoils");
  for (std::size_t clue = 0; clue < languageClues().size(); ++clue) {
    const Worth worth = worthOf(clue, samples);
    std::printf("%-28s %7zu %7zu %7zu\n", std::string(languageClues()[clue].pattern).c_str(),
                worth.stands, worth.saves, worth.spoils);
  }
}

}  // namespace
}  // namespace marbelot

int main(int argc, char** argv) {
  std::vector<std::string> folders(argv + 1, argv + argc);
  const bool misses = std::erase(folders, "--misses") > 0;
  if (folders.empty()) {
    std::fprintf(stderr, "usage: clue_worth [--misses] FOLDER...\n");
    return 2;
  }
  const auto samples = marbelot::readSamples(folders);
  marbelot::printShares(samples, misses);
  marbelot::printWorths(samples);
}
