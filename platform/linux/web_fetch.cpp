#include "platform/linux/web_fetch.h"

#include <sys/utsname.h>

#include <memory>
#include <utility>

#include "platform/linux/child_process.h"
#include "platform/linux/helper_program.h"

namespace marbelot {
namespace {

constexpr std::size_t mostBytes = std::size_t{4} << 20;

}  // namespace

Fetch webFetch(MainQueue& queue) {
  return [&queue](const std::string& address, std::function<void(Fetched)> fetched) {
    auto child = std::make_shared<std::unique_ptr<ChildProcess>>();
    const auto told = std::make_shared<const std::function<void(Fetched)>>(std::move(fetched));
    *child = ChildProcess::start(
        {helperPath("marbelot-fetch"), address}, [told](ChildProcess::Result result) {
          // Whoever is told may drop the process, and this function with it.
          const auto kept = told;  // NOLINT(performance-unnecessary-copy-initialization)
          if (result.status == 0) return (*kept)({share(contents(result.output, mostBytes)), {}});
          std::string problem = contents(result.errors, 1000);
          problem.resize(std::min(problem.find('\n'), problem.size()));
          (*kept)({nullptr, problem.empty() ? "the helper program ended early" : problem});
        });
    if (*child) return Task(std::move(child));
    return queue.after(0, [told] { (*told)({nullptr, "the helper program is missing"}); });
  };
}

std::string systemVersion() {
  utsname system{};
  if (::uname(&system) != 0) return {};
  const std::string release = system.release;
  return release.substr(0, release.find_first_not_of("0123456789."));
}

}  // namespace marbelot
