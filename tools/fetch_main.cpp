// marbelot-fetch ADDRESS: what is at a secure address, on standard output. A process of its own, so
// that nothing that comes from the network is dealt with where the clipboard's contents are, and
// the libraries for it cost nothing until they are needed. Exit status 0 done; 1 not to be had, and
// standard error says why in a few words; 2 usage.
#include <curl/curl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <string>

#include "updates/web_address.h"

namespace {

constexpr std::size_t mostBytes = std::size_t{4} << 20;
constexpr long connectSeconds = 10;
constexpr long totalSeconds = 30;
constexpr int mostRedirections = 5;

struct Reading {
  std::string bytes;
  bool tooLarge = false;
};

std::size_t take(char* data, std::size_t size, std::size_t count, void* to) {
  auto& reading = *static_cast<Reading*>(to);
  reading.tooLarge = size * count > mostBytes - reading.bytes.size();
  if (reading.tooLarge) return 0;
  reading.bytes.append(data, size * count);
  return size * count;
}

void limitResources() {
  const auto limit = [](auto resource, rlim_t most) {
    const rlimit both{most, most};
    ::setrlimit(resource, &both);
  };
  limit(RLIMIT_CORE, 0);
  limit(RLIMIT_CPU, 30);  // seconds
}

int fail(const std::string& why) {
  std::fprintf(stderr, "%s\n", why.c_str());
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  limitResources();
  const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> curl(curl_easy_init(),
                                                                 curl_easy_cleanup);
  if (!curl) return fail("there is no network library");
  const auto set = [&](auto option, auto value) { curl_easy_setopt(curl.get(), option, value); };
  std::string address = argv[1];
  for (int step = 0; step <= mostRedirections; ++step) {
    // Each step by itself: a secure address must not lead to one that is not.
    if (!marbelot::isSecureAddress(address)) return fail("its address is not a secure one");
    Reading reading;
    set(CURLOPT_URL, address.c_str());
    set(CURLOPT_PROTOCOLS_STR, "https,http");
    set(CURLOPT_FOLLOWLOCATION, 0L);
    set(CURLOPT_USERAGENT, "Marbelot");
    set(CURLOPT_CONNECTTIMEOUT, connectSeconds);
    set(CURLOPT_TIMEOUT, totalSeconds);
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_WRITEFUNCTION, take);
    set(CURLOPT_WRITEDATA, &reading);
    const CURLcode result = curl_easy_perform(curl.get());
    if (reading.tooLarge) return fail("it is too large");
    if (result != CURLE_OK) return fail(curl_easy_strerror(result));
    long status = 0;
    curl_easy_getinfo(curl.get(), CURLINFO_RESPONSE_CODE, &status);
    const char* next = nullptr;
    curl_easy_getinfo(curl.get(), CURLINFO_REDIRECT_URL, &next);
    if (status >= 300 && status < 400 && next) {
      address = std::string(next);
      continue;
    }
    if (status != 200) return fail("the server answers with " + std::to_string(status));
    return std::fwrite(reading.bytes.data(), 1, reading.bytes.size(), stdout) ==
                       reading.bytes.size() &&
                   std::fflush(stdout) == 0
               ? 0
               : 1;
  }
  return fail("it leads from one address to the next");
}
