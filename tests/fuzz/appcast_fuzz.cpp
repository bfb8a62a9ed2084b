// Built with clang when MARBELOT_FUZZ is on: appcast_fuzz [CORPUS…]. Any bytes as a feed, as a page
// and as two versions.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "updates/appcast.h"
#include "updates/page_text.h"
#include "updates/version.h"
#include "updates/web_address.h"

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace marbelot;
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  if (const auto items = appcastItems(bytes, "linux")) {
    for (const AppcastItem& item : *items)
      require(!item.version.empty() && isSecureAddress(item.downloadAddress));
    if (const auto newer = newerItem(*items, "1.0", "6.1.0"))
      require(compareVersions(newer->version, "1.0") > 0);
  }
  require(pageText(bytes).size() <= plainText(bytes).size() + bytes.size());
  const std::string a = bytes.substr(0, size / 2), b = bytes.substr(size / 2);
  require(compareVersions(a, a) == 0);
  require((compareVersions(a, b) < 0) == (compareVersions(b, a) > 0));
  return 0;
}
