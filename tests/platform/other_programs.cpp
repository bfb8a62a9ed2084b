#include "tests/platform/other_programs.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <utility>

namespace marbelot {

std::string PrivateProcess::start(std::vector<std::string> command) {
  std::array<int, 2> pipe{};
  if (::pipe2(pipe.data(), O_CLOEXEC) != 0) return {};
  std::vector<char*> arguments;
  for (std::string& word : command) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  process_ = ::fork();
  if (process_ == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    ::dup2(pipe[1], STDOUT_FILENO);
    ::dup2(::open("/dev/null", O_RDWR), STDERR_FILENO);
    ::execvp(arguments.front(), arguments.data());
    ::_exit(127);
  }
  ::close(pipe[1]);
  std::string line;
  for (char said = 0; ::read(pipe[0], &said, 1) == 1 && said != '\n';) line += said;
  ::close(pipe[0]);
  return line;
}

void PrivateProcess::kill() {
  if (process_ <= 0) return;
  ::kill(process_, SIGTERM);
  ::waitpid(process_, nullptr, 0);
  process_ = -1;
}

bool TestOwner::State::takeResume() const {
  eventfd_t ignored = 0;
  return ::eventfd_read(resume, &ignored) == 0;
}

bool TestOwner::State::isQuit() const {
  pollfd watched{quit, POLLIN, 0};
  return ::poll(&watched, 1, 0) > 0;
}

void TestOwner::State::tellReady() {
  ready = true;
  ready.notify_one();
}

TestOwner::TestOwner(Data data, Manners manners, std::function<void(State&)> serve)
    : state_{std::move(data), std::move(manners), ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK),
             ::eventfd(0, EFD_CLOEXEC)} {
  thread_ = std::thread([this, serve = std::move(serve)] { serve(state_); });
  state_.ready.wait(false);
}

TestOwner::~TestOwner() {
  ::eventfd_write(state_.quit, 1);
  thread_.join();
  ::close(state_.quit);
  ::close(state_.resume);
}

void TestOwner::resume() { ::eventfd_write(state_.resume, 1); }

bool TestOwner::await(const std::atomic<bool>& flag) {
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + std::chrono::seconds(20);
  while (!flag && Clock::now() < end) std::this_thread::sleep_for(std::chrono::microseconds(100));
  return flag;
}

}  // namespace marbelot
