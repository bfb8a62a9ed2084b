// Top-level domains, and how much a bare host name that ends in one of them can be trusted.
#pragma once

#include <string>

namespace marbelot::detection {

enum class Tld {
  word,       // only believed with a further sign, such as "www." or a path
  shortWord,  // believed after a domain name of some length
  plain,
};

// `label` is the last label of a host name in lower case, as Unicode or in punycode. Its class if
// it is a top-level domain, which takes longer to tell and hardly any label is.
Tld classifyTld(const std::string& label);
bool isTld(const std::string& label);

}  // namespace marbelot::detection
