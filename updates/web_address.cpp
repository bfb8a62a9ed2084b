#include "updates/web_address.h"

#include <algorithm>
#include <string>

namespace marbelot {
namespace {

constexpr std::size_t longestAddress = 4096;

bool isLoopback(std::string_view host) {
  if (host == "localhost" || host == "[::1]") return true;
  const auto isNumeric = [](char c) { return (c >= '0' && c <= '9') || c == '.'; };
  return host.starts_with("127.") && std::all_of(host.begin(), host.end(), isNumeric) &&
         std::count(host.begin(), host.end(), '.') == 3;
}

}  // namespace

bool isSecureAddress(std::string_view address) {
  const auto isStrange = [](char c) {
    return static_cast<unsigned char>(c) <= ' ' || c == '\\' || c == '\x7F' || c == '"' ||
           c == '<' || c == '>';
  };
  if (address.size() > longestAddress || std::any_of(address.begin(), address.end(), isStrange))
    return false;
  const std::size_t colon = address.find("://");
  if (colon == address.npos) return false;
  std::string scheme(address.substr(0, colon));
  for (char& c : scheme) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
  const std::string_view rest = address.substr(colon + 3);
  const std::string_view authority = rest.substr(0, rest.find_first_of("/?#"));
  if (authority.empty() || authority.find('@') != authority.npos) return false;
  const std::size_t bracket = authority.rfind(']');
  const std::size_t port = authority.find(':', bracket == authority.npos ? 0 : bracket);
  const std::string_view host = authority.substr(0, port);
  if (host.empty()) return false;
  return scheme == "https" || (scheme == "http" && isLoopback(host));
}

}  // namespace marbelot
