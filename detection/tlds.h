// Top-level domains, and how much a bare host name that ends in one of them can be trusted.
#pragma once

#include <string>
#include <string_view>

namespace marbelot::detection {

enum class Tld {
  unknown,
  word,       // only believed with a further sign, such as "www." or a path
  shortWord,  // believed after a domain name of some length
  plain,
};

// `label` is the last label of a host name in lower case, as Unicode or in punycode.
Tld classifyTld(const std::string& label);

// A quick look: false when no top-level domain has this length and these first letters.
bool mayBeTld(std::string_view label);

}  // namespace marbelot::detection
